// A PKCS#11 module that is loaded and initialised.
#pragma once

#include "token/cryptoki/cryptoki.h"

#include <memory>
#include <string>
#include <vector>

namespace cryptoki {

// A shared handle: the last copy finalises the module and unloads it. Not for several threads at once.
// What calls the module throws CryptokiException.
class Pkcs11Module {
public:
    // Loads the module of a file name or a full path. Waits until nobody else in the process uses it. Throws
    // LibraryException where the file is not found or does not load, Exception E_TOKEN_FUNCTION_LIST where it
    // is no such module, CryptokiException where it does not initialise, which goes for one that the host has
    // initialised itself.
    static Pkcs11Module load(const std::wstring& name);

    // Of the slots with a token in them.
    std::vector<CK_SLOT_ID> getSlotList() const;
    CK_SLOT_INFO getSlotInfo(CK_SLOT_ID slot) const;
    CK_TOKEN_INFO getTokenInfo(CK_SLOT_ID slot) const;
    // The first slot with a token whose description is the text. Throws Exception E_TOKEN_SLOT where none is.
    CK_SLOT_ID findSlot(const std::wstring& description) const;

    // The module's own functions, for what is done in sessions.
    const CK_FUNCTION_LIST& functions() const;

private:
    struct ModuleImpl;

    explicit Pkcs11Module(std::shared_ptr<const ModuleImpl> pimpl) noexcept : pimpl_(std::move(pimpl)) {}

    std::shared_ptr<const ModuleImpl> pimpl_;
};

}  // namespace cryptoki
