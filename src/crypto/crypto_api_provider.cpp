#include "crypto/crypto_api_provider.h"

namespace Corvane::Crypto {

SharedProvider getDefaultCryptoProvider() {
    return std::make_shared<CryptoApiProvider>(defaultProviderRecord());
}

SharedProvider getCryptoProvider(const Certificate& certificate) {
    if (const ProviderRecord* record = findProviderRecord(certificate.getPublicKeyAlgorithm()))
        return std::make_shared<CryptoApiProvider>(*record);
    return getDefaultCryptoProvider();
}

}  // namespace Corvane::Crypto
