// The certificates and messages of tests/data/pki, and keys to sign with.
#pragma once

#include "core/check.h"
#include "crypto/certificate.h"
#include "platform/pfx_import.h"
#include "support.h"

namespace Corvane::Test {

inline Bytes pkiFile(const std::string& name) {
    return readTestData("pki/" + name);
}

inline Certificate pkiCertificate(const std::string& name) {
    const Bytes der = pkiFile(name + ".der");
    return Certificate(CertificateContext(checkCrypto(
        ::CertCreateCertificateContext(X509_ASN_ENCODING, der.data(), static_cast<DWORD>(der.size())),
        E_CERT_INVALID, L"CertCreateCertificateContext")));
}

// The certificate of a PFX file, tied to its key.
inline Certificate pkiSigner(const std::string& name) {
    return importPfx(pkiFile(name + ".pfx"), L"corvane");
}

// What OpenSSL says about a certificate: a line of facts.txt.
struct Facts {
    std::string name;
    std::string hash;
    std::string serial;
    unsigned bits;
};

inline std::vector<Facts> pkiFacts() {
    std::vector<Facts> all;
    for (const auto& row : readTable("pki/facts.txt", 4))
        all.push_back({row[0], row[1], row[2], static_cast<unsigned>(std::stoul(row[3]))});
    return all;
}

using Names = std::vector<std::wstring>;

inline Names namesOf(const Certificates& certificates) {
    Names names;
    for (const SharedCertificate& certificate : certificates)
        names.push_back(certificate->getName(false));
    return names;
}

}  // namespace Corvane::Test
