// The certificates and messages of tests/data/pki, and keys to sign with.
#pragma once

#include "platform/pfx_import.h"
#include "support.h"

namespace Corvane::Test {

inline Bytes pkiFile(const std::string& name) {
    return readTestData("pki/" + name);
}

inline Certificate pkiCertificate(const std::string& name) {
    return certificateOf(pkiFile(name + ".der"));
}

// The certificate of a PFX file, tied to its key.
inline Certificate pkiSigner(const std::string& name) {
    return importPfx(pkiFile(name + ".pfx"), L"corvane");
}

using Names = std::vector<std::wstring>;

inline Names namesOf(const Certificates& certificates) {
    Names names;
    for (const SharedCertificate& certificate : certificates)
        names.push_back(certificate->getName(false));
    return names;
}

}  // namespace Corvane::Test
