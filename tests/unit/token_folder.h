// A folder with the test token's module under the names of drivers, on the search path as long as it lives.
#pragma once

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace Corvane::Test {

using Lines = std::vector<std::string>;

class TokenFolder {
public:
    TokenFolder() : path_(make()) {
        wchar_t old[32767]{};
        ::GetEnvironmentVariableW(L"PATH", old, 32767);
        searched_ = old;
        ::SetEnvironmentVariableW(L"PATH", (path_.wstring() + L";" + searched_).c_str());
    }
    ~TokenFolder() {
        ::SetEnvironmentVariableW(L"PATH", searched_.c_str());
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TokenFolder(const TokenFolder&) = delete;
    TokenFolder& operator=(const TokenFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    // A driver of this name, with a token in this slot; without one where the slot is empty.
    void addDriver(const std::string& name, const std::wstring& slot = {}) const {
        std::filesystem::copy_file(testtoken_file, path_ / (name + ".dll"));
        set(name, L"token", L"slot", slot);
    }
    void set(const std::string& module, const wchar_t* section, const wchar_t* key,
             const std::wstring& value) const {
        ::WritePrivateProfileStringW(section, key, value.c_str(), (path_ / (module + ".ini")).c_str());
    }

    // The calls of a module since the last question.
    Lines takeLog(const std::string& module) const {
        const auto file = path_ / (module + ".log");
        Lines lines;
        std::ifstream log(file);
        for (std::string line; std::getline(log, line);)
            lines.push_back(line);
        log.close();
        std::filesystem::remove(file);
        return lines;
    }

private:
    // A DLL that stayed loaded stays in its folder, where a later program of the same number finds it.
    static std::filesystem::path make() {
        const auto name = L"corvane-token-" + std::to_wstring(::GetCurrentProcessId()) + L"-";
        for (int number = 1;; ++number) {
            auto folder = std::filesystem::temp_directory_path() / (name + std::to_wstring(number));
            if (std::filesystem::create_directory(folder))
                return folder;
        }
    }

    std::filesystem::path path_;
    std::wstring searched_;
};

}  // namespace Corvane::Test
