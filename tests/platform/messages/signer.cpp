#include "signer.h"

namespace Corvane::Platform::Messages {
namespace {

Bytes collection(std::uint8_t tag, const std::vector<Bytes>& elements) {
    Bytes content;
    for (const Bytes& element : elements)
        append(content, element);
    return tlv(tag, content);
}

}  // namespace

Identity Identity::of(const CERT_INFO& certificate) {
    return {bytesOf(viewOf(certificate.Issuer)),
            tlv(Tag::integer, reversed(viewOf(certificate.SerialNumber))),
            {}};
}

Identity Identity::read(const Element& element) {
    if (element.tag == Tag::context(0))
        return {{}, {}, bytesOf(element.content)};
    if (element.tag != Tag::sequence)
        throw BerError("neither a name nor a key identifier");
    Reader reader(element.content);
    const View issuer = reader.next(Tag::sequence).whole;
    return {bytesOf(issuer), bytesOf(reader.next(Tag::integer).whole), {}};
}

Bytes Identity::der() const {
    return issuer.empty() ? tlv(Tag::context(0), keyIdentifier) : tlv(Tag::sequence, issuer, serial);
}

Identity Identity::asName() const {
    if (!issuer.empty())
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
    if (issuer.empty()) {
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
    : hash(AlgorithmId::of(info.HashAlgorithm)),
      number(hashNumber(hash.oid)),
      provider(info.hCryptProv),
      spec_(info.dwKeySpec ? info.dwKeySpec : AT_SIGNATURE) {
    if (!info.pCertInfo || !info.hCryptProv || info.cAuthAttr || info.cUnauthAttr)
        fail(E_INVALIDARG);
    if (!number)
        fail(CRYPT_E_UNKNOWN_ALGO);
    identity_ = Identity::of(*info.pCertInfo);
    signature_.oid = info.pCertInfo->SubjectPublicKeyInfo.Algorithm.pszObjId;
}

Bytes NewSigner::signerInfo(const Bytes* digest) const {
    return tlv(Tag::sequence, integer(1), identity_.der(), hash.der(), signature_.der(),
               tlv(Tag::octetString, signDigest(provider, spec_, number, digest)));
}

ReadSigner::ReadSigner(View element) : whole(element) {
    Reader reader = Reader(element).enter(Tag::sequence);
    version = reader.next(Tag::integer).whole;
    identity = Identity::read(reader.next());
    afterIdentity = reader.rest();
    hash = hashNumber(AlgorithmId::read(reader.enter(Tag::sequence)).oid);
    if (reader.isNext(Tag::within(0))) {
        attributes = bytesOf(reader.next().whole);
        attributes[0] = Tag::set;
    }
    reader.next(Tag::sequence);  // the signature's algorithm, which the key tells
    signature = reader.next(Tag::octetString).content;
}

View ReadSigner::attribute(std::string_view type) const {
    for (Reader all = Reader(attributes).enter(Tag::set); !all.atEnd();) {
        Reader one = all.enter(Tag::sequence);
        if (oidText(one.next(Tag::oid).content) == type)
            return one.enter(Tag::set).next().content;
    }
    fail(CRYPT_E_AUTH_ATTR_MISSING);
}

Bytes ReadSigner::named() const {
    return tlv(Tag::sequence, version, identity.asName().der(), afterIdentity);
}

void ReadSigner::verify(const CERT_PUBLIC_KEY_INFO& key, View digest, const std::string& contentType) const {
    if (attributes.empty())
        return verifyDigest(key, hash, digest, signature);
    if (!std::ranges::equal(attribute(Oid::messageDigest), digest))
        fail(CRYPT_E_HASH_VALUE);
    if (oidText(attribute(Oid::contentType)) != contentType)
        fail(CRYPT_E_UNEXPECTED_MSG_TYPE);
    verifyDigest(key, hash, digestOf(hash, attributes), signature);
}

void SignedParts::addDigest(const AlgorithmId& algorithm) {
    if (std::ranges::find(digests, algorithm.oid, &AlgorithmId::oid) == digests.end())
        digests.push_back(algorithm);
}

Layout SignedParts::layout() const {
    std::vector<Bytes> algorithms;
    for (const AlgorithmId& digest : digests)
        algorithms.push_back(digest.der());
    Bytes head = integer(contentType != Oid::data ? 3 : 1);
    append(head, collection(Tag::set, algorithms));
    return {oid(Oid::signedData), head, oid(contentType)};
}

Bytes SignedParts::after() const {
    Bytes rest = certificates.empty() ? Bytes() : collection(Tag::within(0), certificates);
    append(rest, crls);
    return append(rest, collection(Tag::set, signers));
}

}  // namespace Corvane::Platform::Messages
