#include "signer.h"

#include <algorithm>

namespace Corvane::Platform::Messages {
namespace {

Bytes attribute(std::string_view type, View value) {
    return tlv(Tag::sequence, oid(type), tlv(Tag::set, value));
}

Bytes attribute(const CRYPT_ATTRIBUTE& given) {
    Bytes values;
    for (DWORD i = 0; i < given.cValue; ++i)
        append(values, viewOf(given.rgValue[i]));
    return attribute(given.pszObjId, values);
}

std::vector<Bytes> attributesOf(const CRYPT_ATTRIBUTE* given, DWORD count) {
    std::vector<Bytes> attributes;
    std::transform(given, given + count, std::back_inserter(attributes),
                   [](const CRYPT_ATTRIBUTE& one) { return attribute(one); });
    return attributes;
}

// X.690, 11.6: the elements of a set are sorted.
Bytes sortedSet(std::uint8_t tag, std::vector<Bytes> elements) {
    std::ranges::sort(elements);
    Bytes content;
    for (const Bytes& element : elements)
        append(content, element);
    return tlv(tag, content);
}

Bytes withDefault(AlgorithmId algorithm) {
    if (algorithm.parameters.empty())
        algorithm.parameters = {Tag::null, 0};
    return algorithm.der();
}

template <class Structure, class Member>
bool has(const Structure& structure, Member Structure::*member) {
    const auto* end = reinterpret_cast<const BYTE*>(&(structure.*member) + 1);
    return structure.cbSize >= static_cast<std::size_t>(end - reinterpret_cast<const BYTE*>(&structure));
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

NewSigner::NewSigner(const CMSG_SIGNER_ENCODE_INFO& info, DWORD flags)
    : hash_(AlgorithmId::of(info.HashAlgorithm)),
      hashNumber_(algorithmNumber(hash_.oid, CRYPT_HASH_ALG_OID_GROUP_ID)),
      provider_(info.hCryptProv),
      spec_(info.dwKeySpec ? info.dwKeySpec : AT_SIGNATURE),
      authenticated_(attributesOf(info.rgAuthAttr, info.cAuthAttr)),
      unauthenticated_(attributesOf(info.rgUnauthAttr, info.cUnauthAttr)),
      released_(flags & CMSG_CRYPT_RELEASE_CONTEXT_FLAG ? info.hCryptProv : 0) {
    if (!info.pCertInfo || !info.hCryptProv)
        fail(E_INVALIDARG);
    if (!hashNumber_)
        fail(CRYPT_E_UNKNOWN_ALGO);
    identity_ = Identity::of(*info.pCertInfo);
    if (has(info, &CMSG_SIGNER_ENCODE_INFO::SignerId) && info.SignerId.dwIdChoice == CERT_ID_KEY_IDENTIFIER)
        identity_ = {{}, {}, bytesOf(viewOf(info.SignerId.KeyId))};
    const bool isNamed =
        has(info, &CMSG_SIGNER_ENCODE_INFO::HashEncryptionAlgorithm) && info.HashEncryptionAlgorithm.pszObjId;
    signature_.oid = isNamed ? info.HashEncryptionAlgorithm.pszObjId
                             : info.pCertInfo->SubjectPublicKeyInfo.Algorithm.pszObjId;
}

Bytes NewSigner::attributes(View digest) const {
    std::vector<Bytes> all = authenticated_;
    const auto isGiven = [&](std::string_view type) {
        return std::ranges::any_of(all, [name = oid(type)](const Bytes& one) {
            return std::ranges::equal(Reader(Reader(one).next().content).next().whole, name);
        });
    };
    if (!isGiven(Oid::contentType))
        all.push_back(attribute(Oid::contentType, oid(Oid::data)));
    all.push_back(attribute(Oid::messageDigest, tlv(Tag::octetString, digest)));
    return sortedSet(Tag::set, all);
}

Bytes NewSigner::signerInfo(const Bytes* digest) const {
    const Bytes content = digest ? *digest : Bytes(Digest(hashNumber_, provider_).size());
    Bytes signedAttributes;
    Bytes signature;
    if (!authenticated_.empty()) {
        signedAttributes = attributes(content);
        if (digest)
            signature = signDigest(provider_, spec_, hashNumber_, digestOf(hashNumber_, signedAttributes));
        signedAttributes[0] = Tag::within(0);
    } else if (digest) {
        signature = signDigest(provider_, spec_, hashNumber_, content);
    }
    if (!digest)
        signature.resize(signatureSize(provider_, spec_, hashNumber_));
    return tlv(Tag::sequence, integer(isKeyIdentifier() ? 3 : 1), identity_.der(), withDefault(hash_),
               signedAttributes, withDefault(signature_), tlv(Tag::octetString, signature),
               unauthenticated_.empty() ? Bytes() : sortedSet(Tag::within(1), unauthenticated_));
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
