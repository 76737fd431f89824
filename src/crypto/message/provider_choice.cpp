#include "crypto/message/provider_choice.h"

#include "core/check.h"
#include "core/log.h"

#include <algorithm>
#include <vector>

namespace Corvane::Crypto {

SharedProvider getDefaultCryptoProvider() {
    return std::make_shared<CryptoApiProvider>(defaultProviderRecord(providerRecords()));
}

SharedProvider getCryptoProvider(const Certificate& certificate) {
    writeLog(LogLevel::debug, L"Corvane::Crypto::getCryptoProvider", L"[in] certificate: ", certificate);
    const std::vector<ProviderRecord> records = providerRecords();
    const ProviderRecord* record = findProviderRecord(records, certificate.getPublicKeyAlgorithm());
    if (!record)
        throw Exception(E_CRYPTO_UNSUPPORTED_PUBLIC_ALGO);
    return std::make_shared<CryptoApiProvider>(*record);
}

ProviderRecord findProvider(const std::wstring& name, DWORD type) {
    writeLog(LogLevel::debug, L"Corvane::Crypto::findProvider", L"[in] name: ", name, L" [in] type: ", type);
    // The system would open the provider whose name ends before it.
    if (name.find(L'\0') != std::wstring::npos)
        failCrypto(E_CRYPTO_PROVIDER, L"CryptAcquireContextW", static_cast<DWORD>(NTE_KEYSET_NOT_DEF));
    CryptProvider opened;
    checkCrypto(
        ::CryptAcquireContextW(opened.put(), nullptr, name.c_str(), type, CRYPT_VERIFYCONTEXT | CRYPT_SILENT),
        E_CRYPTO_PROVIDER, L"CryptAcquireContextW");
    const std::vector<ProviderRecord> records = providerRecords();
    const auto isSame = [&](const ProviderRecord& one) { return one.name == name && one.type == type; };
    if (const auto found = std::ranges::find_if(records, isSame); found != records.end())
        return *found;
    ProviderRecord record{name, type, {}, {}, {}};
    if (const auto found = std::ranges::find(records, type, &ProviderRecord::type); found != records.end()) {
        record = *found;
        record.name = name;
    }
    return record;
}

SharedProvider ProviderChoice::forKey(const Certificate& certificate) const {
    if (!record_)
        return getCryptoProvider(certificate);
    if (record_->publicKey != certificate.getPublicKeyAlgorithm())
        throw Exception(E_CRYPTO_UNSUPPORTED_PUBLIC_ALGO);
    return std::make_shared<CryptoApiProvider>(*record_);
}

SharedProvider ProviderChoice::forRecipients(const Certificates& recipients) const {
    return recipients.empty() ? forNoKey() : forKey(*recipients.front());
}

SharedProvider ProviderChoice::forNoKey() const {
    if (record_)
        return std::make_shared<CryptoApiProvider>(*record_);
    static const SharedProvider usual = getDefaultCryptoProvider();
    return usual;
}

}  // namespace Corvane::Crypto
