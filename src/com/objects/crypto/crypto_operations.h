// What CryptoService and CryptoProvider have in common: signing, verification, encryption.
#pragma once

#include "com/access/service_object.h"
#include "com/runtime/method_name.h"
#include "crypto/message/provider_choice.h"

#include <VetrelCorvane2_h.h>

#include <utility>

// T: the coclass, which has a constant className; Coclass, Interface: as for Object, where Interface derives
// from ICryptoOperations. The methods are instantiated in crypto_operations.cpp.
template <class T, class Coclass, class Interface>
class CCryptoOperations : public Corvane::Com::ServiceObject<T, Coclass, Interface> {
public:
    // Also answered to.
    using BaseInterface = ::ICryptoOperations;

#include <methods/ICryptoOperations.h>

protected:
    CCryptoOperations() = default;
    explicit CCryptoOperations(Corvane::Crypto::ProviderChoice choice) noexcept
        : choice_(std::move(choice)) {}

private:
    // Of providers; operations take a copy with them.
    Corvane::Crypto::ProviderChoice choice_;
};
