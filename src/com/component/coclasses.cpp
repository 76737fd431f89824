#include "com/runtime/coclasses.h"

#include "com/async/operation_token.h"
#include "com/objects/about/about.h"
#include "com/objects/binary/binary_object.h"
#include "com/objects/binary/binary_object_service.h"
#include "com/objects/binary/binary_stream_object.h"
#include "com/objects/crypto/certificate_collection.h"
#include "com/objects/crypto/certificate_object.h"
#include "com/objects/crypto/certificate_store_object.h"
#include "com/objects/crypto/crypto_provider.h"
#include "com/objects/crypto/crypto_service.h"
#include "com/objects/files/file_object.h"
#include "com/objects/files/file_system_service.h"
#include "com/objects/gui/gui_service.h"
#include "com/objects/zip/compression_service.h"
#include "com/objects/zip/zip_archive_object.h"
#include "com/runtime/version_text.h"

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
        coclass<CCryptoProvider>(L"CryptoProvider"),
        coclass<CCryptoService>(L"CryptoService"),
        coclass<CBinaryStream>(L"BinaryStream"),
        // What BinaryStream and FileObject have in common; scripts know its name, nobody creates it.
        {&baseStreamId, L"BaseStream", L"2.9.0", nullptr},
        coclass<CGuiService>(L"GuiService"),
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
