// Which provider does the work.
#pragma once

#include "crypto/message/crypto_api_provider.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace Corvane::Crypto {

using SharedProvider = std::shared_ptr<const CryptoApiProvider>;

// For work without a key, such as verification: the record that defaultProviderRecord() finds.
SharedProvider getDefaultCryptoProvider();

// The provider for the certificate's key: its hash belongs to such keys. Throws Exception
// E_CRYPTO_UNSUPPORTED_PUBLIC_ALGO where no record is for them.
SharedProvider getCryptoProvider(const Certificate& certificate);

// A provider of the machine by its name and type, beside the records those that the system enumerates. The
// algorithms of one that has no record are those of the first record of its type; with a type that has none
// it has none either. Throws CryptoException E_CRYPTO_PROVIDER where it cannot be opened.
ProviderRecord findProvider(const std::wstring& name, DWORD type);

// A provider that was chosen beforehand, or the one that the key at hand calls for. Choosing may open
// providers and takes its time. Any thread.
class ProviderChoice {
public:
    // By the key.
    ProviderChoice() noexcept = default;
    explicit ProviderChoice(ProviderRecord record) noexcept : record_(std::move(record)) {}

    // Throws Exception E_CRYPTO_UNSUPPORTED_PUBLIC_ALGO: a provider's hash is not for every key.
    SharedProvider forKey(const Certificate& certificate) const;
    // For recipients of one message the first decides; for none, as for work without a key.
    SharedProvider forRecipients(const Certificates& recipients) const;
    // The default one is looked for once in a process: no such work calls it.
    SharedProvider forNoKey() const;

private:
    std::optional<ProviderRecord> record_;
};

}  // namespace Corvane::Crypto
