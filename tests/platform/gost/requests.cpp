// What a request's part that is signed looks like in DER (RFC 2986 4.1), for the system's encoder of
// requests.
#include "algorithms.h"

#include <span>

namespace Corvane::Platform::Gost {
namespace {

View viewOf(const CRYPT_DATA_BLOB& blob) {
    return {blob.pbData, blob.cbData};
}

Bytes attribute(const CRYPT_ATTRIBUTE& attribute) {
    Bytes values;
    for (const CRYPT_ATTR_BLOB& value : std::span(attribute.rgValue, attribute.cValue)) {
        if (value.cbData == 0)
            fail(CRYPT_E_BAD_ENCODE);
        append(values, viewOf(value));
    }
    return tlv(Tag::sequence, oid(attribute.pszObjId), tlv(Tag::set, values));
}

Bytes publicKey(const CERT_PUBLIC_KEY_INFO& info) {
    const Bytes bits{static_cast<std::uint8_t>(info.PublicKey.cUnusedBits)};
    const View key(info.PublicKey.pbData, info.PublicKey.cbData);
    return tlv(Tag::sequence,
               tlv(Tag::sequence, oid(info.Algorithm.pszObjId), viewOf(info.Algorithm.Parameters)),
               tlv(Tag::bitString, bits, key));
}

Bytes requestInfo(const CERT_REQUEST_INFO& info) {
    Bytes attributes;
    for (const CRYPT_ATTRIBUTE& one : std::span(info.rgAttribute, info.cAttribute))
        append(attributes, attribute(one));
    return tlv(Tag::sequence, integer(info.dwVersion), viewOf(info.Subject),
               publicKey(info.SubjectPublicKeyInfo), tlv(Tag::within(0), attributes));
}

}  // namespace
}  // namespace Corvane::Platform::Gost

extern "C" BOOL WINAPI gostEncodeRequest(DWORD, LPCSTR, const void* info, BYTE* encoded, DWORD* size) {
    using namespace Corvane::Platform::Gost;
    return entry([&] { give(encoded, size, requestInfo(*static_cast<const CERT_REQUEST_INFO*>(info))); });
}
