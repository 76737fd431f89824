// The providers of the machine.
#pragma once

#include "crypto/provider/provider_record.h"

#include <string>
#include <vector>

namespace Corvane {

struct ProviderName {
    std::wstring name;
    DWORD type = 0;
};

// All providers that are registered for this bitness, in the system's order. Throws CryptoException
// E_CRYPTO_ENUM_PROVIDERS.
std::vector<ProviderName> enumerateProviders();

namespace Crypto {

// A JSON list: the component's records, then every other provider that the system enumerates. Of each "name"
// and "type", of records also "hash", "publicKey" and "cipher" (identifiers); "installed", whether it can be
// opened in this bitness, and "default", whether work without a key is done with it. Throws as
// enumerateProviders().
std::wstring getCryptoProvidersInfo();

}  // namespace Crypto
}  // namespace Corvane
