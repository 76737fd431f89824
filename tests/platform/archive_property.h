// The archive flag of certificates, which Wine 8 cannot set: kept in a property that nothing else of ours
// uses.
#pragma once

#include "platform/import_patch.h"

#include <wincrypt.h>

namespace Corvane::Test {

// Stands in for the system's property functions within this program, where they do not know the flag.
class ArchiveProperty {
private:
    static constexpr DWORD substitute = CERT_ENROLLMENT_PROP_ID;

    static DWORD kept(DWORD property) noexcept {
        return property == CERT_ARCHIVED_PROP_ID ? substitute : property;
    }

    template <class Function>
    static Function system(const char* name) noexcept {
        return reinterpret_cast<Function>(
            reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"crypt32.dll"), name)));
    }

    static WINBOOL WINAPI set(PCCERT_CONTEXT certificate, DWORD property, DWORD flags, const void* data) {
        static BYTE present = 1;
        static const CRYPT_DATA_BLOB blob{sizeof(present), &present};
        const bool archive = property == CERT_ARCHIVED_PROP_ID && data;
        return system<decltype(&set)>("CertSetCertificateContextProperty")(certificate, kept(property), flags,
                                                                           archive ? &blob : data);
    }

    static WINBOOL WINAPI get(PCCERT_CONTEXT certificate, DWORD property, void* data, DWORD* size) {
        return system<decltype(&get)>("CertGetCertificateContextProperty")(certificate, kept(property), data,
                                                                           size);
    }

    ImportPatch set_{::GetModuleHandleW(nullptr), "CertSetCertificateContextProperty", &set};
    ImportPatch get_{::GetModuleHandleW(nullptr), "CertGetCertificateContextProperty", &get};
};

}  // namespace Corvane::Test
