#include "com/objects/crypto/crypto_provider.h"

#include "com/runtime/arguments.h"

using namespace Corvane;
using namespace Corvane::Com;

CCryptoProvider::CCryptoProvider(ProviderRecord record)
    : CCryptoOperations(Crypto::ProviderChoice(record)), record_(std::move(record)) {
    setAccess(PageAccess::checked());
}

ProviderRecord CCryptoProvider::record() const {
    return record_ ? *record_ : Crypto::getDefaultCryptoProvider()->record();
}

HRESULT CCryptoProvider::get_Name(BSTR* name) {
    return serviceFrame(L"CCryptoProvider::get_Name", [&] { give(name, record().name); });
}

HRESULT CCryptoProvider::get_Type(ULONG* type) {
    return serviceFrame(L"CCryptoProvider::get_Type", [&] { give(type, record().type); });
}
