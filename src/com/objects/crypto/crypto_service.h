// CryptoService: search for certificates and their verification, providers, and cryptographic operations
// with the provider that the key at hand belongs to.
#pragma once

#include "com/objects/crypto/crypto_operations.h"

class CCryptoService;
extern template class CCryptoOperations<CCryptoService, CryptoService, ICryptoService>;

class CCryptoService final : public CCryptoOperations<CCryptoService, CryptoService, ICryptoService> {
public:
    static constexpr Corvane::Com::Text className = L"CCryptoService";

#include <methods/ICryptoService.h>
};
