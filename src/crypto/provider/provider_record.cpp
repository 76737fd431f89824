#include "crypto/provider/provider_record.h"

#include "core/handles.h"

#include <algorithm>

namespace Corvane {

// Identifiers: GOST R 34.11-94, GOST R 34.10-2001 and GOST 28147-89 from RFC 4357 and RFC 4490; GOST
// R 34.11-2012 and GOST R 34.10-2012 from RFC 9215; RSA from RFC 8017; SHA-256 from RFC 5754; AES-256-CBC
// from RFC 3565. Messages with GOST R 34.10-2012 keys are encrypted with GOST 28147-89 too, as RFC 4490 says
// it for the older keys. The last of the GOST records is for keys of 512 bits. The types are the providers'
// own registrations: 75, 80 and 81 of one vendor, 2 of the other.
std::vector<ProviderRecord> providerRecords() {
    return {
        {L"Crypto-Pro GOST R 34.10-2001 Cryptographic Service Provider", 75, L"1.2.643.2.2.9",
         L"1.2.643.2.2.19", L"1.2.643.2.2.21"},
        {L"Crypto-Pro GOST R 34.10-2012 Cryptographic Service Provider", 80, L"1.2.643.7.1.1.2.2",
         L"1.2.643.7.1.1.1.1", L"1.2.643.2.2.21"},
        {L"Infotecs Cryptographic Service Provider", 2, L"1.2.643.2.2.9", L"1.2.643.2.2.19",
         L"1.2.643.2.2.21"},
        {L"Crypto-Pro GOST R 34.10-2012 Strong Cryptographic Service Provider", 81, L"1.2.643.7.1.1.2.3",
         L"1.2.643.7.1.1.1.2", L"1.2.643.2.2.21"},
        {L"Microsoft Enhanced RSA and AES Cryptographic Provider", PROV_RSA_AES, L"2.16.840.1.101.3.4.2.1",
         L"1.2.840.113549.1.1.1", L"2.16.840.1.101.3.4.1.42"},
    };
}

DWORD tryProvider(const ProviderRecord& record) noexcept {
    CryptProvider provider;
    const BOOL isOpen = ::CryptAcquireContextW(provider.put(), nullptr, record.name.c_str(), record.type,
                                               CRYPT_VERIFYCONTEXT | CRYPT_SILENT);
    if (isOpen)
        return ERROR_SUCCESS;
    // A provider may fail without a number.
    const DWORD error = ::GetLastError();
    return error != ERROR_SUCCESS ? error : static_cast<DWORD>(NTE_FAIL);
}

bool isInstalled(const ProviderRecord& record) noexcept {
    return tryProvider(record) == ERROR_SUCCESS;
}

const ProviderRecord* findProviderRecord(std::span<const ProviderRecord> records,
                                         std::wstring_view publicKeyAlgorithm) noexcept {
    const ProviderRecord* first = nullptr;
    for (const ProviderRecord& record : records) {
        if (record.publicKey != publicKeyAlgorithm)
            continue;
        if (isInstalled(record))
            return &record;
        first = first ? first : &record;
    }
    return first;
}

const ProviderRecord& defaultProviderRecord(std::span<const ProviderRecord> records) noexcept {
    const auto found = std::ranges::find_if(records, isInstalled);
    return found == records.end() ? records.front() : *found;
}

}  // namespace Corvane
