#include "asn1/decoders/signed_data.h"

#include <string_view>

namespace asn1 {
namespace {

constexpr std::string_view signedDataOid = "1.2.840.113549.1.7.2";
constexpr std::uint8_t endOfContents = 0;

}  // namespace

bool hasContent(View message) {
    BerReader contentInfo = BerReader(message, Rules::ber).enterBeginning(tag::sequence);
    if (contentInfo.readOid() != signedDataOid)
        throw Asn1Exception("no signed message (RFC 5652 5.1)");
    BerReader signedData = contentInfo.enterBeginning(tag::context(0)).enterBeginning(tag::sequence);
    signedData.read(tag::integer);  // version
    signedData.read(tag::set);      // digestAlgorithms
    BerReader contentHead = signedData.enterBeginning(tag::sequence);
    contentHead.readOid();  // eContentType
    if (!contentHead.isNext(tag::context(0)))
        return false;
    const BerReader content = contentHead.enterBeginning(tag::context(0));
    return !content.atEnd() && !content.isNext(endOfContents);
}

Bytes signedAttributes(View signerInfo) {
    BerReader signer = BerReader(signerInfo, Rules::ber).enter(tag::sequence);
    signer.read(tag::integer);  // version
    signer.skip();              // sid
    signer.skip();              // digestAlgorithm
    if (!signer.isNext(tag::context(0)))
        return {};
    const View attributes = signer.readWhole();
    Bytes set(attributes.begin(), attributes.end());
    set.front() = tag::set;
    return set;
}

}  // namespace asn1
