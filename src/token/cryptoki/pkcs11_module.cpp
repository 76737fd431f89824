#include "token/cryptoki/pkcs11_module.h"

#include "core/errors.h"
#include "core/exception.h"
#include "core/log.h"
#include "token/cryptoki/cryptoki_exception.h"
#include "token/cryptoki/field_text.h"
#include "token/cryptoki/library.h"
#include "token/cryptoki/library_exception.h"
#include "token/cryptoki/module_file.h"
#include "token/cryptoki/module_use.h"

#include <cassert>

namespace cryptoki {

struct Pkcs11Module::ModuleImpl {
    explicit ModuleImpl(const std::wstring& path) : use(path, INFINITE) {
        if (const StepResult result = library.load(path.c_str()); result.failed())
            throwStep(result, path);
        function_list = library.functions();
        if (const StepResult result = library.initialize(); result.failed())
            throwStep(result, path);
    }

    ModuleUse use;
    Library library;
    const CK_FUNCTION_LIST* function_list = nullptr;
};

Pkcs11Module Pkcs11Module::load(const std::wstring& name) {
    const std::wstring path = findModuleFile(name);
    if (path.empty()) {
        Corvane::writeLog(Corvane::LogLevel::error, L"LoadLibrary", L"no such file: ", name);
        throw LibraryException(ERROR_MOD_NOT_FOUND, L"LoadLibrary");
    }
    return Pkcs11Module(std::make_shared<const ModuleImpl>(path));
}

const CK_FUNCTION_LIST& Pkcs11Module::functions() const {
    assert(pimpl_ != nullptr && pimpl_->function_list != nullptr);
    return *pimpl_->function_list;
}

std::vector<CK_SLOT_ID> Pkcs11Module::getSlotList() const {
    return Corvane::twoPass<CryptokiCalls, CK_SLOT_ID, CK_ULONG>(
        [this](CK_SLOT_ID* list, CK_ULONG* count) { return functions().C_GetSlotList(CK_TRUE, list, count); },
        "C_GetSlotList");
}

CK_SLOT_INFO Pkcs11Module::getSlotInfo(CK_SLOT_ID slot) const {
    CK_SLOT_INFO info{};
    checkCryptoki(functions().C_GetSlotInfo(slot, &info), "C_GetSlotInfo");
    return info;
}

CK_TOKEN_INFO Pkcs11Module::getTokenInfo(CK_SLOT_ID slot) const {
    CK_TOKEN_INFO info{};
    checkCryptoki(functions().C_GetTokenInfo(slot, &info), "C_GetTokenInfo");
    return info;
}

CK_SLOT_ID Pkcs11Module::findSlot(const std::wstring& description) const {
    for (const CK_SLOT_ID slot : getSlotList()) {
        if (fieldText(getSlotInfo(slot).slotDescription) == description)
            return slot;
    }
    throw Corvane::Exception(Corvane::E_TOKEN_SLOT);
}

}  // namespace cryptoki
