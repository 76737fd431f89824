#include "com/coclasses.h"

#include "com/about.h"
#include "com/binary_object.h"
#include "com/binary_object_service.h"
#include "com/binary_stream.h"
#include "com/certificate.h"
#include "com/certificate_collection.h"
#include "com/certificate_store.h"
#include "com/crypto_service.h"
#include "com/operation_token.h"
#include "com/version_text.h"

namespace Corvane::Com {
namespace {

template <class T>
Coclass coclass(const wchar_t* name)
{
    return {&T::classId(), name, versionShortText, [] {
                return static_cast<IUnknown*>(static_cast<Implementation*>(makeObject<T>().detach()));
            }};
}

} // namespace

std::span<const Coclass> coclasses()
{
    static const Coclass table[] = {
        coclass<CBinaryObject>(L"BinaryObject"),
        coclass<CBinaryObjectService>(L"BinaryObjectService"),
        coclass<CCertificate>(L"Certificate"),
        coclass<CCertificateCollection>(L"CertificateCollection"),
        coclass<CCertificateStore>(L"CertificateStore"),
        coclass<CCryptoService>(L"CryptoService"),
        coclass<CBinaryStream>(L"BinaryStream"),
        coclass<COperationToken>(L"OperationToken"),
        coclass<CAbout>(L"About"),
    };
    return table;
}

} // namespace Corvane::Com
