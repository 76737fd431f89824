// Names and extensions as scripts write them: what is accepted can be read back, and what was read is written
// alike.
#include "crypto/request/distinguished_name.h"
#include "crypto/request/extensions_json.h"
#include "crypto/request/request_json.h"

#include "asn1/pkix/extensions.h"
#include "core/utf8.h"
#include "fuzz.h"

#include <json/value.h>

using namespace Corvane;

namespace {

void readNameAgain(const asn1::Name& name) {
    const std::wstring text = Crypto::distinguishedNameText(name);
    require(Crypto::distinguishedNameText(Crypto::parseDistinguishedName(text)) == text);
}

}  // namespace

void fuzz(Input input) {
    const std::wstring text = fromUtf8({reinterpret_cast<const char*>(input.data()), input.size()});
    errorOf([&] { readNameAgain(asn1::decodeName(Crypto::encodeDistinguishedName(text))); });
    errorOf([&] {
        const Bytes der = Crypto::encodeExtensionsJson(text);
        require(asn1::encodeExtensions(asn1::decodeExtensions(der)) == der);
    });
    tolerate<asn1::Asn1Exception>([&] { readNameAgain(asn1::decodeName(input)); });
    errorOf([&] {
        const asn1::CertificationRequest request = Crypto::decodeCertificationRequest(input);
        require(Crypto::describeRequest(request).isObject());
        readNameAgain(asn1::decodeName(request.info.subject));
    });
}
