#include "asn1/decoders/signed_data.h"

#include <string_view>

namespace asn1 {
namespace {

constexpr std::string_view signedDataOid = "1.2.840.113549.1.7.2";

}  // namespace

bool hasContent(View message) {
    BerReader contentInfo = BerReader(message, Rules::ber).enter(tag::sequence);
    if (contentInfo.readOid() != signedDataOid)
        throw Asn1Exception("no signed message (RFC 5652 5.1)");
    BerReader signedData = contentInfo.enter(tag::context(0)).enter(tag::sequence);
    signedData.read(tag::integer);  // version
    signedData.read(tag::set);      // digestAlgorithms
    BerReader content = signedData.enter(tag::sequence);
    content.readOid();  // eContentType
    return content.isNext(tag::context(0)) && !content.enter(tag::context(0)).atEnd();
}

}  // namespace asn1
