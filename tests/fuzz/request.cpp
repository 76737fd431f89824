// Names and extensions as scripts write them, and the parts of a request, one behind the other: what is
// accepted can be read back, and what was read is written alike. The answers of cards, and the files of
// drivers.
#include "crypto/request/distinguished_name.h"
#include "crypto/request/extensions_json.h"
#include "crypto/request/request_json.h"

#include "asn1/decoders/ber_reader.h"
#include "asn1/pkix/extensions.h"
#include "core/utf8.h"
#include "fuzz.h"
#include "token/card/certified_answer.h"
#include "token/cryptoki/image.h"
#include "token/enroll/gost_request.h"

#include <json/value.h>

#include <algorithm>
#include <array>

using namespace Corvane;

namespace {

void readNameAgain(const asn1::Name& name) {
    const std::wstring text = Crypto::distinguishedNameText(name);
    require(Crypto::distinguishedNameText(Crypto::parseDistinguishedName(text)) == text);
}

// What is accepted stands in the request as it was given.
void encode(const detail::RequestParts& parts) {
    constexpr std::array<std::uint8_t, 64> key{};
    const Bytes der = detail::encodeGostRequest(detail::encodeGostRequestInfo(parts, key), key);
    const asn1::CertificationRequest request = asn1::decodeRequest(der);
    require(std::ranges::equal(request.info.subject, parts.distinguishedName));
    require(std::ranges::equal(request.info.attributes.at(0).values.at(0), parts.extensions));
    require(asn1::encodeAttribute(request.info.attributes.at(1)) == *parts.enrollmentParameters);
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
    cryptoki::readImage(input);
    readRutokenAnswer(input);
    // A text may be too short.
    tolerate<std::out_of_range>([&] { readJaCartaAnswer(input); });
    tolerate<asn1::Asn1Exception>([&] {
        asn1::BerReader values(input);
        detail::RequestParts parts;
        parts.distinguishedName = values.readWhole();
        parts.extensions = values.readWhole();
        const asn1::View last = values.readWhole();
        const Bytes attribute(last.begin(), last.end());
        parts.enrollmentParameters = &attribute;
        encode(parts);
    });
}
