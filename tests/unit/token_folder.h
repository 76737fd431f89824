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
    TokenFolder() {
        std::filesystem::create_directory(path);
        ::GetEnvironmentVariableW(L"PATH", searched_, 32767);
        ::SetEnvironmentVariableW(L"PATH", (path.wstring() + L";" + searched_).c_str());
    }
    ~TokenFolder() {
        ::SetEnvironmentVariableW(L"PATH", searched_);
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TokenFolder(const TokenFolder&) = delete;
    TokenFolder& operator=(const TokenFolder&) = delete;

    // A driver of this name, with a token in this slot; without one where the slot is empty.
    void addDriver(const std::string& name, const std::wstring& slot = {}) const {
        std::filesystem::copy_file(testtoken_file, path / (name + ".dll"));
        set(name, L"token", L"slot", slot);
    }
    void set(const std::string& module, const wchar_t* section, const wchar_t* key,
             const std::wstring& value) const {
        ::WritePrivateProfileStringW(section, key, value.c_str(), (path / (module + ".ini")).c_str());
    }

    Lines linesOf(const std::string& name) const {
        Lines lines;
        std::ifstream file(path / name);
        for (std::string line; std::getline(file, line);)
            lines.push_back(line);
        return lines;
    }
    // The calls of a module since the last question.
    Lines takeLog(const std::string& module) const {
        Lines lines = linesOf(module + ".log");
        std::filesystem::remove(path / (module + ".log"));
        return lines;
    }

    const std::filesystem::path path = unusedName();

private:
    // A DLL that stayed loaded stays in its folder, where a later program of the same number finds it.
    static std::filesystem::path unusedName() {
        wchar_t file[MAX_PATH];
        ::GetTempFileNameW(std::filesystem::temp_directory_path().c_str(), L"tok", 0, file);
        std::filesystem::remove(file);
        return file;
    }

    wchar_t searched_[32767]{};
};

}  // namespace Corvane::Test
