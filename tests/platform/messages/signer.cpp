#include "signer.h"

#include <algorithm>

namespace Corvane::Platform::Messages {
namespace {

Bytes withDefault(AlgorithmId algorithm) {
    if (algorithm.parameters.empty())
        algorithm.parameters = {Tag::null, 0};
    return algorithm.der();
}

Bytes bytesOf(View view) {
    return {view.begin(), view.end()};
}

}  // namespace

Identity Identity::of(const CERT_INFO& certificate) {
    return {bytesOf(viewOf(certificate.Issuer)),
            tlv(Tag::integer, reversed(viewOf(certificate.SerialNumber))),
            {}};
}

Identity Identity::read(const Element& element) {
    if ((element.tag & ~Tag::constructed) == Tag::context(0))
        return {{}, {}, octets(element)};
    if (element.tag != Tag::sequence)
        throw BerError("neither a name nor a key identifier");
    Reader reader(element.content);
    const Bytes issuer = toDer(reader.next(Tag::sequence));
    return {issuer, toDer(reader.next(Tag::integer)), {}};
}

Bytes Identity::der() const {
    return isKeyIdentifier() ? tlv(Tag::context(0), keyIdentifier) : tlv(Tag::sequence, issuer, serial);
}

Identity Identity::asName() const {
    if (!isKeyIdentifier())
        return *this;
    const Bytes name = tlv(Tag::sequence, oid(Oid::keyIdentifierName), tlv(Tag::octetString, keyIdentifier));
    return {tlv(Tag::sequence, tlv(Tag::set, name)), integer(0), {}};
}

CERT_INFO Identity::certificateInfo(Flat& flat) const {
    const Identity named = asName();
    CERT_INFO info{};
    info.Issuer = flat.blob(named.issuer);
    info.SerialNumber = flat.blob(reversed(Reader(named.serial).next().content));
    return info;
}

CERT_ID Identity::certificateId(Flat& flat) const {
    CERT_ID id{};
    if (isKeyIdentifier()) {
        id.dwIdChoice = CERT_ID_KEY_IDENTIFIER;
        id.KeyId = flat.blob(keyIdentifier);
        return id;
    }
    const CERT_INFO info = certificateInfo(flat);
    id.dwIdChoice = CERT_ID_ISSUER_SERIAL_NUMBER;
    id.IssuerSerialNumber = {info.Issuer, info.SerialNumber};
    return id;
}

NewSigner::NewSigner(const CMSG_SIGNER_ENCODE_INFO& info)
    : hash_(AlgorithmId::of(info.HashAlgorithm)),
      hashNumber_(algorithmNumber(hash_.oid, CRYPT_HASH_ALG_OID_GROUP_ID)),
      provider_(info.hCryptProv),
      spec_(info.dwKeySpec ? info.dwKeySpec : AT_SIGNATURE) {
    if (!info.pCertInfo || !info.hCryptProv || info.cAuthAttr || info.cUnauthAttr)
        fail(E_INVALIDARG);
    if (!hashNumber_)
        fail(CRYPT_E_UNKNOWN_ALGO);
    identity_ = Identity::of(*info.pCertInfo);
    signature_.oid = info.pCertInfo->SubjectPublicKeyInfo.Algorithm.pszObjId;
}

Bytes NewSigner::signerInfo(const Bytes* digest) const {
    const Bytes signature = digest ? signDigest(provider_, spec_, hashNumber_, *digest)
                                   : Bytes(signatureSize(provider_, spec_, hashNumber_));
    return tlv(Tag::sequence, integer(1), identity_.der(), withDefault(hash_), withDefault(signature_),
               tlv(Tag::octetString, signature));
}

ReadSigner::ReadSigner(View element) : whole(element) {
    Reader reader = Reader(element).enter(Tag::sequence);
    for (const std::uint8_t digit : reader.next(Tag::integer).content)
        version = version << 8 | digit;
    identity = Identity::read(reader.next());
    hash = AlgorithmId::read(reader.enter(Tag::sequence));
    if (reader.isNext(Tag::within(0))) {
        attributes = toDer(reader.next());
        attributes[0] = Tag::set;
    }
    signatureAlgorithm = AlgorithmId::read(reader.enter(Tag::sequence));
    signature = octets(reader.next());
    if (reader.isNext(Tag::within(1))) {
        unauthenticated = toDer(reader.next());
        unauthenticated[0] = Tag::set;
    }
}

Bytes ReadSigner::attribute(std::string_view type) const {
    const Bytes name = oid(type);
    if (!attributes.empty()) {
        for (Reader all = Reader(attributes).enter(Tag::set); !all.atEnd();) {
            Reader one = all.enter(Tag::sequence);
            if (std::ranges::equal(one.next(Tag::oid).whole, name))
                return bytesOf(one.enter(Tag::set).next().whole);
        }
    }
    fail(CRYPT_E_AUTH_ATTR_MISSING);
}

Bytes ReadSigner::named() const {
    Bytes signedAttributes = attributes;
    Bytes others = unauthenticated;
    if (!signedAttributes.empty())
        signedAttributes[0] = Tag::within(0);
    if (!others.empty())
        others[0] = Tag::within(1);
    return tlv(Tag::sequence, integer(version), identity.asName().der(), hash.der(), signedAttributes,
               signatureAlgorithm.der(), tlv(Tag::octetString, signature), others);
}

void ReadSigner::verify(const CERT_PUBLIC_KEY_INFO& key, View digest, const std::string& contentType) const {
    const ALG_ID number = algorithmNumber(hash.oid, CRYPT_HASH_ALG_OID_GROUP_ID);
    if (attributes.empty())
        return verifyDigest(key, number, digest, signature);
    if (!std::ranges::equal(octets(Reader(attribute(Oid::messageDigest)).next(Tag::octetString)), digest))
        fail(CRYPT_E_HASH_VALUE);
    if (attribute(Oid::contentType) != oid(contentType))
        fail(CRYPT_E_UNEXPECTED_MSG_TYPE);
    verifyDigest(key, number, digestOf(number, attributes), signature);
}

}  // namespace Corvane::Platform::Messages
