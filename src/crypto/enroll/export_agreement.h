// A key on which two contexts of one GOST provider agree, so that a private key leaves the one and enters the
// other encrypted: such providers export private keys no other way.
#pragma once

#include "core/handles.h"

namespace Corvane::detail {

// What a provider's algorithm of keys goes with. The numbers are those that GOST providers share.
struct ExportAlgorithms {
    ALG_ID key;
    ALG_ID exchangeKey;   // the same keys as they are called when they are made for exchange
    ALG_ID ephemeralKey;  // pairs for one agreement
    ALG_ID keyWrap;
};

// Null where keys of this algorithm are exported as they are.
const ExportAlgorithms* findExportAlgorithms(ALG_ID key) noexcept;

// The agreed key in each of the contexts.
struct Agreement {
    CryptKey source;
    CryptKey destination;
};

// Throws CryptoException E_CRYPTO_GEN_KEY, E_CRYPTO_EXPORT_KEY, E_CRYPTO_IMPORT_KEY, E_CRYPTO_SET_KEY_PARAM.
Agreement agreeOnKey(HCRYPTPROV source, HCRYPTPROV destination, const ExportAlgorithms& algorithms);

}  // namespace Corvane::detail
