#include "primitives.h"

#include <cstring>
#include <map>
#include <mutex>

namespace Corvane::Platform::Messages {
namespace {

constexpr DWORD encoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;

// The third number of a signature algorithm's ExtraInfo is the type of the provider that makes its hash.
BOOL WINAPI takeProviderType(PCCRYPT_OID_INFO info, void* argument) {
    auto& [hash, type] = *static_cast<std::pair<ALG_ID, DWORD>*>(argument);
    constexpr std::size_t index = 2;
    if (info->Algid != hash || info->ExtraInfo.cbData < (index + 1) * sizeof(DWORD))
        return TRUE;
    std::memcpy(&type, info->ExtraInfo.pbData + index * sizeof(DWORD), sizeof type);
    return type == 0;
}

DWORD providerType(ALG_ID hash) {
    std::pair<ALG_ID, DWORD> search{hash, 0};
    ::CryptEnumOIDInfo(CRYPT_SIGN_ALG_OID_GROUP_ID, 0, &search, takeProviderType);
    return search.second;
}

HCRYPTPROV sharedProvider(DWORD type) {
    static std::mutex mutex;
    static std::map<DWORD, HCRYPTPROV> open;
    const std::lock_guard lock(mutex);
    HCRYPTPROV& provider = open[type];
    if (!provider)
        must(::CryptAcquireContextW(&provider, nullptr, nullptr, type, CRYPT_VERIFYCONTEXT));
    return provider;
}

CryptHash hashWithValue(HCRYPTPROV provider, ALG_ID algorithm, View digest) {
    CryptHash hash;
    must(::CryptCreateHash(provider, algorithm, 0, 0, hash.put()));
    DWORD size = 0;
    DWORD room = sizeof size;
    must(::CryptGetHashParam(hash.get(), HP_HASHSIZE, reinterpret_cast<BYTE*>(&size), &room, 0));
    if (size != digest.size())
        fail(NTE_BAD_HASH);
    must(::CryptSetHashParam(hash.get(), HP_HASHVAL, digest.data(), 0));
    return hash;
}

}  // namespace

AlgorithmId AlgorithmId::read(Reader reader) {
    AlgorithmId algorithm;
    algorithm.oid = oidText(reader.next(Tag::oid).content);
    append(algorithm.parameters, reader.rest());
    return algorithm;
}

AlgorithmId AlgorithmId::of(const CRYPT_ALGORITHM_IDENTIFIER& algorithm) {
    if (!algorithm.pszObjId)
        fail(E_INVALIDARG);
    const View parameters = viewOf(algorithm.Parameters);
    return {algorithm.pszObjId, Bytes(parameters.begin(), parameters.end())};
}

Bytes AlgorithmId::der() const {
    return tlv(Tag::sequence, Platform::oid(oid), parameters);
}

CRYPT_ALGORITHM_IDENTIFIER AlgorithmId::view() {
    return {oid.data(), {sizeOf(parameters), parameters.data()}};
}

ALG_ID algorithmNumber(const std::string& oid, DWORD group) {
    std::string key = oid;
    const CRYPT_OID_INFO* info = ::CryptFindOIDInfo(CRYPT_OID_INFO_OID_KEY, key.data(), group);
    return info ? info->Algid : 0;
}

HCRYPTPROV providerForHash(ALG_ID hash) {
    if (const DWORD type = providerType(hash))
        return sharedProvider(type);
    const HCRYPTPROV usual = sharedProvider(PROV_RSA_AES);
    CryptHash made;
    if (!hash || !::CryptCreateHash(usual, hash, 0, 0, made.put()))
        fail(CRYPT_E_UNKNOWN_ALGO);
    return usual;
}

Digest::Digest(ALG_ID algorithm, HCRYPTPROV provider) {
    must(::CryptCreateHash(provider ? provider : providerForHash(algorithm), algorithm, 0, 0, hash_.put()));
}

void Digest::add(View bytes) {
    if (!value_.empty())
        fail(CRYPT_E_MSG_ERROR);
    if (!bytes.empty())
        must(::CryptHashData(hash_.get(), bytes.data(), sizeOf(bytes), 0));
}

DWORD Digest::size() const {
    DWORD size = 0;
    DWORD room = sizeof size;
    must(::CryptGetHashParam(hash_.get(), HP_HASHSIZE, reinterpret_cast<BYTE*>(&size), &room, 0));
    return size;
}

const Bytes& Digest::value() {
    if (value_.empty()) {
        DWORD length = size();
        Bytes bytes(length);
        must(::CryptGetHashParam(hash_.get(), HP_HASHVAL, bytes.data(), &length, 0));
        value_ = std::move(bytes);
    }
    return value_;
}

Bytes digestOf(ALG_ID algorithm, View bytes) {
    Digest digest(algorithm);
    digest.add(bytes);
    return digest.value();
}

Bytes signDigest(HCRYPTPROV provider, DWORD spec, ALG_ID algorithm, View digest) {
    const CryptHash hash = hashWithValue(provider, algorithm, digest);
    DWORD size = 0;
    must(::CryptSignHashW(hash.get(), spec, nullptr, 0, nullptr, &size));
    Bytes signature(size);
    must(::CryptSignHashW(hash.get(), spec, nullptr, 0, signature.data(), &size));
    signature.resize(size);
    return reversed(signature);
}

DWORD signatureSize(HCRYPTPROV provider, DWORD spec, ALG_ID algorithm) {
    CryptHash hash;
    DWORD size = 0;
    must(::CryptCreateHash(provider, algorithm, 0, 0, hash.put()));
    must(::CryptSignHashW(hash.get(), spec, nullptr, 0, nullptr, &size));
    return size;
}

void verifyDigest(const CERT_PUBLIC_KEY_INFO& key, ALG_ID algorithm, View digest, View signature) {
    const HCRYPTPROV provider = providerForHash(algorithm);
    CERT_PUBLIC_KEY_INFO info = key;
    CryptKey imported;
    must(::CryptImportPublicKeyInfo(provider, encoding, &info, imported.put()));
    const CryptHash hash = hashWithValue(provider, algorithm, digest);
    const Bytes value = reversed(signature);
    must(::CryptVerifySignatureW(hash.get(), value.data(), sizeOf(value), imported.get(), nullptr, 0));
}

}  // namespace Corvane::Platform::Messages
