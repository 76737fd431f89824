#include "com/diagnose/machine_report.h"

#include "binary/hex.h"
#include "com/runtime/module.h"
#include "com/runtime/registration.h"
#include "core/settings.h"
#include "core/system_exception.h"
#include "core/utf8.h"
#include "files/file.h"
#include "sites/trusted_sites.h"
#include "token/card/readers.h"

#include <winscard.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace Corvane::Com {
namespace {

struct Name {
    DWORD value;
    const char* text;
};

constexpr Name serviceStates[] = {
    {SERVICE_STOPPED, "stopped"}, {SERVICE_START_PENDING, "starting"},    {SERVICE_STOP_PENDING, "stopping"},
    {SERVICE_RUNNING, "running"}, {SERVICE_CONTINUE_PENDING, "resuming"}, {SERVICE_PAUSE_PENDING, "pausing"},
    {SERVICE_PAUSED, "paused"},
};
constexpr Name serviceStarts[] = {
    {SERVICE_AUTO_START, "automatic"},
    {SERVICE_DEMAND_START, "manual"},
    {SERVICE_DISABLED, "disabled"},
};
constexpr Name readerStates[] = {
    {SCARD_STATE_EMPTY, "empty"},
    {SCARD_STATE_PRESENT, "present"},
    {SCARD_STATE_INUSE, "in use"},
    {SCARD_STATE_EXCLUSIVE, "in exclusive use"},
    {SCARD_STATE_MUTE, "mute"},
    {SCARD_STATE_UNPOWERED, "unpowered"},
    {SCARD_STATE_UNAVAILABLE, "unavailable"},
    {SCARD_STATE_UNKNOWN, "unknown"},
};

template <std::size_t size>
std::string nameOf(const Name (&names)[size], DWORD value) {
    const auto* const found = std::ranges::find(names, value, &Name::value);
    return found == std::end(names) ? std::to_string(value) : found->text;
}

Json::Value textSetting(const wchar_t* name) {
    const auto text = readTextSetting(name);
    return text ? Json::Value(toUtf8(*text)) : Json::Value();
}

Json::Value numberSetting(const wchar_t* name) {
    const auto number = readNumberSetting(name);
    return number ? Json::Value(Json::UInt{*number}) : Json::Value();
}

std::wstring searchPath() {
    std::wstring text(32768, L'\0');
    text.resize(::GetEnvironmentVariableW(L"PATH", text.data(), static_cast<DWORD>(text.size())));
    return text;
}

FileIdentity identityOf(const std::wstring& path) {
    constexpr DWORD all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return File::open(path, {0, all, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL})->identity();
}

Json::Value describe(const CardReader& reader) {
    Json::Value item(Json::objectValue);
    item["name"] = toUtf8(reader.name);
    Json::Value& states = item["state"] = Json::Value(Json::arrayValue);
    for (const Name& each : readerStates) {
        if (reader.state & each.value)
            states.append(each.text);
    }
    if (reader.state & SCARD_STATE_PRESENT)
        item["atr"] = toUtf8(binToHex(reader.atr));
    return item;
}

}  // namespace

Json::Value reportSettings() {
    Json::Value settings(Json::objectValue);
    settings["LogLevel"] = numberSetting(L"LogLevel");
    settings["LogPath"] = textSetting(L"LogPath");
    settings["UseLocalPkcs11Drivers"] = numberSetting(L"UseLocalPkcs11Drivers");
    settings["Location"] = textSetting(L"Location");
    settings["PATH"] = toUtf8(searchPath());
    return settings;
}

Json::Value reportInvalidSites() {
    Json::Value list(Json::arrayValue);
    for (const InvalidSitePattern& pattern : invalidTrustedSites()) {
        Json::Value& item = list.append(Json::Value(Json::objectValue));
        item["pattern"] = toUtf8(pattern.text);
        item["list"] = pattern.isOfUser ? "user" : "machine";
    }
    return list;
}

Json::Value knownRegistration() {
    Json::Value known(Json::objectValue);
    known["path"] = toUtf8(registeredFile());
    known["version"] = toUtf8(registeredVersion());
    return known;
}

Json::Value reportRegistration(Json::Value known, const std::wstring& registered) {
    known["isThis"] = !registered.empty() && identityOf(registered) == identityOf(Module::path());
    return known;
}

Json::Value knownLog(const Corvane::detail::LogState& state) {
    Json::Value log(Json::objectValue);
    log["level"] = Json::UInt{state.level};
    log["path"] = toUtf8(state.path);
    return log;
}

Json::Value reportLog(const Corvane::detail::LogState& state) {
    Json::Value log = knownLog(state);
    const DWORD error = Corvane::detail::tryLogFile(state);
    log["writable"] = error == ERROR_SUCCESS;
    if (error != ERROR_SUCCESS)
        log["error"] = toUtf8(numberForLog(error));
    return log;
}

Json::Value knownProvider(const ProviderRecord& record) {
    Json::Value provider(Json::objectValue);
    provider["name"] = toUtf8(record.name);
    provider["type"] = static_cast<Json::UInt>(record.type);
    return provider;
}

Json::Value reportProvider(const ProviderRecord& record) {
    Json::Value provider = knownProvider(record);
    const DWORD error = tryProvider(record);
    provider["opens"] = error == ERROR_SUCCESS;
    if (error != ERROR_SUCCESS)
        provider["error"] = toUtf8(numberForLog(error));
    return provider;
}

Json::Value reportCardService() {
    const CardServiceState service = cardServiceState();
    Json::Value item(Json::objectValue);
    item["state"] = nameOf(serviceStates, service.state);
    item["start"] = nameOf(serviceStarts, service.start);
    return item;
}

Json::Value reportReaders() {
    Json::Value list(Json::arrayValue);
    for (const CardReader& reader : cardReaders())
        list.append(describe(reader));
    return list;
}

}  // namespace Corvane::Com
