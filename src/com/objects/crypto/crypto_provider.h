// CryptoProvider: cryptographic operations with one provider.
#pragma once

#include "com/objects/crypto/crypto_operations.h"

#include <optional>

class CCryptoProvider;
extern template class CCryptoOperations<CCryptoProvider, CryptoProvider, ICryptoProvider>;

class CCryptoProvider final : public CCryptoOperations<CCryptoProvider, CryptoProvider, ICryptoProvider> {
public:
    static constexpr Corvane::Com::Text className = L"CCryptoProvider";

    // What a page makes itself: it chooses the provider as CryptoService does, tells of the default one, and
    // belongs to the page of its site.
    CCryptoProvider() = default;
    // For services: the page was checked.
    explicit CCryptoProvider(Corvane::ProviderRecord record);

#include <methods/ICryptoProvider.h>

private:
    Corvane::ProviderRecord record() const;

    const std::optional<Corvane::ProviderRecord> record_;
};
