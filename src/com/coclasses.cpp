#include "com/coclasses.h"

#include "com/about.h"
#include "com/binary_object.h"
#include "com/binary_object_service.h"
#include "com/binary_stream.h"
#include "com/certificate.h"
#include "com/certificate_collection.h"
#include "com/certificate_store.h"
#include "com/compression_service.h"
#include "com/crypto_service.h"
#include "com/file_object.h"
#include "com/file_system_service.h"
#include "com/operation_token.h"
#include "com/version_text.h"
#include "com/zip_archive.h"

namespace Corvane::Com {
namespace {

constexpr CLSID baseStreamId{0x2F8ACEEF, 0xB79D, 0x4836, {0x8E, 0x23, 0xB8, 0xA1, 0x01, 0xDD, 0x15, 0x8C}};

template <class T>
Coclass coclass(const wchar_t* name) {
    return {&T::classId(), name, versionShortText,
            [] { return static_cast<IUnknown*>(static_cast<Implementation*>(makeObject<T>().detach())); }};
}

}  // namespace

std::span<const Coclass> coclasses() {
    static const Coclass table[] = {
        coclass<CBinaryObject>(L"BinaryObject"),
        coclass<CBinaryObjectService>(L"BinaryObjectService"),
        coclass<CCertificate>(L"Certificate"),
        coclass<CCertificateCollection>(L"CertificateCollection"),
        coclass<CCertificateStore>(L"CertificateStore"),
        coclass<CCryptoService>(L"CryptoService"),
        coclass<CBinaryStream>(L"BinaryStream"),
        // What BinaryStream and FileObject have in common; scripts know its name, nobody creates it.
        {&baseStreamId, L"BaseStream", L"2.9.0", nullptr},
        coclass<CFileObject>(L"FileObject"),
        coclass<CFileSystemService>(L"FileSystemService"),
        coclass<COperationToken>(L"OperationToken"),
        coclass<CCompressionService>(L"CompressionService"),
        coclass<CZipArchive>(L"ZipArchive"),
        coclass<CAbout>(L"About"),
    };
    return table;
}

}  // namespace Corvane::Com
