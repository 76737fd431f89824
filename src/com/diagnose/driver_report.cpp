#include "com/diagnose/driver_report.h"

#include "com/diagnose/inquiry.h"
#include "core/exception.h"
#include "core/log.h"
#include "core/utf8.h"
#include "files/file.h"
#include "token/cryptoki/image.h"
#include "token/cryptoki/module_file.h"
#include "token/discovery/tokens.h"

#include <algorithm>
#include <cwctype>
#include <set>
#include <string_view>

namespace Corvane::Com {
namespace {

// With less a driver that works might be given up, and would be lost for the process.
constexpr ULONGLONG leastMilliseconds = 2000;
// Less than GetTokensInfo gives each, so that those behind one that hangs are asked as well.
constexpr ULONGLONG mostMilliseconds = 12'000;
// From the end of a driver's time until its answer is here.
constexpr ULONGLONG margin = 500;

std::wstring folderOf(const std::wstring& path) {
    return path.substr(0, path.rfind(L'\\') + 1);
}

std::wstring windowsFolder() {
    wchar_t folder[MAX_PATH]{};
    ::GetWindowsDirectoryW(folder, MAX_PATH);
    return std::wstring(folder) + L"\\";
}

// Names of sets of functions, for which there need not be files.
bool isApiSet(std::wstring_view name) noexcept {
    return name.starts_with(L"api-") || name.starts_with(L"ext-");
}

// Looks for the libraries of a file as the loader does, and for theirs.
class MissingLibraries {
public:
    explicit MissingLibraries(const std::wstring& driver) : folder_(folderOf(driver)) { search(driver); }

    const std::set<std::wstring>& names() const noexcept { return missing_; }

private:
    void search(const std::wstring& file) {
        for (const std::string& each : cryptoki::readImage(readFile(file)).libraries) {
            std::wstring name = fromUtf8(each);
            std::ranges::transform(name, name.begin(),
                                   [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
            if (isApiSet(name) || !seen_.insert(name).second)
                continue;
            const std::wstring path = find(name);
            if (path.empty())
                missing_.insert(name);
            else if (folderOf(path) == folder_)
                search(path);
        }
    }

    std::wstring find(const std::wstring& name) const {
        for (const std::wstring& each : {folder_ + name, name, windowsFolder() + name}) {
            if (std::wstring path = cryptoki::findModuleFile(each); !path.empty())
                return path;
        }
        return {};
    }

    std::wstring folder_;
    std::set<std::wstring> seen_;
    std::set<std::wstring> missing_;
};

Json::Value missingLibraries(const std::wstring& driver) {
    Json::Value list(Json::arrayValue);
    const MissingLibraries missing(driver);
    for (const std::wstring& name : missing.names())
        list.append(toUtf8(name));
    return list;
}

// What stands in the file; it is looked at first, since asking the driver may take all the time.
Json::Value describeFile(const std::wstring& name) {
    Json::Value driver(Json::objectValue);
    driver["name"] = toUtf8(name);
    const std::wstring path = cryptoki::findModuleFile(name);
    driver["found"] = !path.empty();
    if (path.empty())
        return driver;
    driver["path"] = toUtf8(path);
    try {
        if (const unsigned bitness = cryptoki::readImage(readFile(path)).bitness)
            driver["bitness"] = bitness;
    } catch (const Exception&) {
        // Loading it will fail as well, and say why.
    }
    return driver;
}

Json::Value describeAnswer(Json::Value driver, const std::wstring& name, DWORD milliseconds) {
    const Corvane::detail::ProbedDriver probed = Corvane::detail::probeDriver(name, milliseconds);
    if (probed.failure.empty())
        driver["tokens"] = static_cast<Json::UInt>(probed.tokens.size());
    else
        driver["error"] = toUtf8(probed.failure);
    if (probed.error == ERROR_MOD_NOT_FOUND)
        driver["missing"] = answerOf({}, [&probed] { return missingLibraries(probed.path); });
    return driver;
}

Json::Value reportDriver(const std::wstring& name, ULONGLONG until) {
    Json::Value known(Json::objectValue);
    known["name"] = toUtf8(name);
    const ULONGLONG now = ::GetTickCount64();
    if (now + leastMilliseconds > until) {
        known["error"] = "not asked: the drivers before it took the time";
        return known;
    }
    writeLog(LogLevel::debug, L"Corvane::Com::reportDrivers", L"load driver: ", name);
    Json::Value driver = Inquiry(known, [name] { return describeFile(name); }).answer(until);
    if (!driver.get("found", false).asBool())
        return driver;
    const ULONGLONG left = until - std::min(until, ::GetTickCount64());
    const auto milliseconds = static_cast<DWORD>(std::min(left, mostMilliseconds));
    return Inquiry(driver,
                   [driver, name, milliseconds] { return describeAnswer(driver, name, milliseconds); })
        .answer(until + margin);
}

}  // namespace

Json::Value reportDrivers(ULONGLONG until) {
    Json::Value list(Json::arrayValue);
    for (const std::wstring& name : Corvane::detail::driverNames())
        list.append(reportDriver(name, until));
    return list;
}

}  // namespace Corvane::Com
