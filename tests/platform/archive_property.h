// The archive flag of certificates, which Wine 8 cannot set: kept in a property that nothing else of ours
// uses.
#pragma once

#include "platform/import_patch.h"

#include <wincrypt.h>

namespace Corvane::Test {

// Stands in for the system's property functions within this program, where they do not know the flag.
class ArchiveProperty {
public:
    ArchiveProperty()
        : set_(systemSet = &::CertSetCertificateContextProperty, &set),
          get_(systemGet = &::CertGetCertificateContextProperty, &get) {}

private:
    static DWORD kept(DWORD property) noexcept {
        return property == CERT_ARCHIVED_PROP_ID ? CERT_ENROLLMENT_PROP_ID : property;
    }

    static WINBOOL WINAPI set(PCCERT_CONTEXT certificate, DWORD property, DWORD flags, const void* data) {
        static BYTE present = 1;
        static const CRYPT_DATA_BLOB blob{sizeof(present), &present};
        const bool archive = property == CERT_ARCHIVED_PROP_ID && data;
        return systemSet(certificate, kept(property), flags, archive ? &blob : data);
    }

    static WINBOOL WINAPI get(PCCERT_CONTEXT certificate, DWORD property, void* data, DWORD* size) {
        return systemGet(certificate, kept(property), data, size);
    }

    inline static decltype(&set) systemSet = nullptr;
    inline static decltype(&get) systemGet = nullptr;
    ImportPatch set_;
    ImportPatch get_;
};

}  // namespace Corvane::Test
