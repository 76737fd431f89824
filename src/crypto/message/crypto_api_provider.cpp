#include "crypto/message/crypto_api_provider.h"

#include "core/exception.h"
#include "core/log.h"

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

}  // namespace Corvane::Crypto
