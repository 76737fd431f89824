#include "crypto/provider/provider_list.h"

#include "core/check.h"
#include "core/json.h"
#include "core/log.h"
#include "core/utf8.h"

#include <wincrypt.h>

#include <algorithm>

namespace Corvane {
namespace {

Json::Value describe(const ProviderRecord& record) {
    Json::Value provider(Json::objectValue);
    provider["name"] = toUtf8(record.name);
    provider["type"] = static_cast<Json::UInt>(record.type);
    provider["installed"] = isInstalled(record);
    return provider;
}

// One provider of the enumeration; false behind the last.
bool enumerate(DWORD index, ProviderName& provider) {
    DWORD size = 0;
    for (wchar_t* name = nullptr;; name = provider.name.data()) {
        if (!::CryptEnumProvidersW(index, nullptr, 0, &provider.type, name, &size)) {
            const DWORD error = ::GetLastError();
            if (error == ERROR_NO_MORE_ITEMS)
                return false;
            failCrypto(E_CRYPTO_ENUM_PROVIDERS, L"CryptEnumProvidersW", error);
        }
        if (name)
            break;
        provider.name.assign(size / sizeof(wchar_t), L'\0');
        if (provider.name.empty())
            return true;
    }
    provider.name.resize(provider.name.find(L'\0'));
    return true;
}

}  // namespace

std::vector<ProviderName> enumerateProviders() {
    std::vector<ProviderName> providers;
    for (ProviderName provider; enumerate(static_cast<DWORD>(providers.size()), provider);)
        providers.push_back(provider);
    return providers;
}

std::wstring Crypto::getCryptoProvidersInfo() {
    writeLog(LogLevel::debug, L"Corvane::Crypto::getCryptoProvidersInfo", L"");
    const std::vector<ProviderRecord> records = providerRecords();
    const ProviderRecord& usual = defaultProviderRecord(records);
    Json::Value list(Json::arrayValue);
    for (const ProviderRecord& record : records) {
        Json::Value& provider = list.append(describe(record));
        provider["default"] = &record == &usual;
        provider["hash"] = toUtf8(record.hash);
        provider["publicKey"] = toUtf8(record.publicKey);
        provider["cipher"] = toUtf8(record.cipher);
    }
    for (const ProviderName& other : enumerateProviders()) {
        const bool isRecord = std::ranges::any_of(records, [&](const ProviderRecord& record) {
            return record.name == other.name && record.type == other.type;
        });
        if (isRecord)
            continue;
        list.append(describe({other.name, other.type, {}, {}, {}}))["default"] = false;
    }
    return writeJson(list);
}

}  // namespace Corvane
