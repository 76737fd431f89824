#include "crypto.h"

#include "../gost/algorithms.h"
#include "message.h"

#include <map>
#include <mutex>

namespace Corvane::Platform::Messages {
namespace {

ALG_ID algorithmNumber(const std::string& oid, DWORD group) {
    const CRYPT_OID_INFO* info =
        ::CryptFindOIDInfo(CRYPT_OID_INFO_OID_KEY, const_cast<char*>(oid.c_str()), group);
    return info ? info->Algid : 0;
}

ALG_ID cipherNumber(const AlgorithmId& algorithm) {
    const ALG_ID number = algorithmNumber(algorithm.oid, CRYPT_ENCRYPT_ALG_OID_GROUP_ID);
    return number ? number : (fail(CRYPT_E_UNKNOWN_ALGO), number);
}

// Without keys; it stays open.
HCRYPTPROV providerForHash(ALG_ID hash) {
    const auto* const own = Gost::findAlgorithm(hash, &Gost::Algorithm::hashId);
    const DWORD type = own ? own->providerType : PROV_RSA_AES;
    static std::mutex mutex;
    static std::map<DWORD, HCRYPTPROV> open;
    const std::lock_guard lock(mutex);
    HCRYPTPROV& provider = open[type];
    if (!provider)
        must(::CryptAcquireContextW(&provider, nullptr, nullptr, type, CRYPT_VERIFYCONTEXT));
    return provider;
}

CryptHash makeHash(HCRYPTPROV provider, ALG_ID algorithm, const Bytes* value = nullptr) {
    CryptHash hash;
    must(::CryptCreateHash(provider, algorithm, 0, 0, hash.put()));
    if (value)
        must(::CryptSetHashParam(hash.get(), HP_HASHVAL, value->data(), 0));
    return hash;
}

DWORD keyNumber(HCRYPTKEY key, DWORD which) {
    return numberOf(
        [&](BYTE* number, DWORD* size) { return ::CryptGetKeyParam(key, which, number, size, 0); });
}

std::size_t blockSize(HCRYPTKEY key) {
    return keyNumber(key, KP_BLOCKLEN) / 8;
}

}  // namespace

AlgorithmId AlgorithmId::read(Reader reader) {
    const std::string oid = oidText(reader.next(Tag::oid).content);
    return {oid, bytesOf(reader.rest())};
}

AlgorithmId AlgorithmId::of(const CRYPT_ALGORITHM_IDENTIFIER& algorithm) {
    return {algorithm.pszObjId, bytesOf(viewOf(algorithm.Parameters))};
}

Bytes AlgorithmId::der() const {
    return tlv(Tag::sequence, Platform::oid(oid), parameters.empty() ? Bytes{Tag::null, 0} : parameters);
}

ALG_ID hashNumber(const std::string& oid) {
    return algorithmNumber(oid, CRYPT_HASH_ALG_OID_GROUP_ID);
}

Digest::Digest(ALG_ID algorithm, HCRYPTPROV provider) {
    if (!algorithm)
        fail(CRYPT_E_UNKNOWN_ALGO);
    hash_ = makeHash(provider ? provider : providerForHash(algorithm), algorithm);
}

void Digest::add(View bytes) {
    if (!value_.empty())
        fail(CRYPT_E_MSG_ERROR);
    if (!bytes.empty())
        must(::CryptHashData(hash_.get(), bytes.data(), lengthOf(bytes), 0));
}

const Bytes& Digest::value() {
    if (value_.empty())
        value_ = filled([&](BYTE* buffer, DWORD* size) {
            return ::CryptGetHashParam(hash_.get(), HP_HASHVAL, buffer, size, 0);
        });
    return value_;
}

Bytes digestOf(ALG_ID algorithm, View bytes) {
    Digest digest(algorithm);
    digest.add(bytes);
    return digest.value();
}

Bytes signDigest(HCRYPTPROV provider, DWORD spec, ALG_ID algorithm, const Bytes& digest) {
    const CryptHash hash = makeHash(provider, algorithm, &digest);
    return reversed(filled([&](BYTE* buffer, DWORD* size) {
        return ::CryptSignHashW(hash.get(), spec, nullptr, 0, buffer, size);
    }));
}

void verifyDigest(const CERT_PUBLIC_KEY_INFO& key, ALG_ID algorithm, View digest, View signature) {
    const HCRYPTPROV provider = providerForHash(algorithm);
    CERT_PUBLIC_KEY_INFO info = key;
    CryptKey imported;
    must(::CryptImportPublicKeyInfo(provider, encodings, &info, imported.put()));
    const Bytes hashed = bytesOf(digest);
    const Bytes value = reversed(signature);
    const CryptHash hash = makeHash(provider, algorithm, &hashed);
    must(::CryptVerifySignatureW(hash.get(), value.data(), lengthOf(value), imported.get(), nullptr, 0));
}

CryptKey makeContentKey(HCRYPTPROV provider, AlgorithmId& algorithm) {
    const ALG_ID number = cipherNumber(algorithm);
    CryptKey key;
    must(::CryptGenKey(provider, number, CRYPT_EXPORTABLE, key.put()));
    Bytes vector(blockSize(key.get()));
    must(::CryptGenRandom(provider, lengthOf(vector), vector.data()));
    must(::CryptSetKeyParam(key.get(), KP_IV, vector.data(), 0));
    algorithm.parameters = tlv(Tag::octetString, vector);
    if (number == Gost::cipherId) {
        const Bytes name = filled([&](BYTE* buffer, DWORD* size) {
            return ::CryptGetKeyParam(key.get(), Gost::substitutionParameter, buffer, size, 0);
        });
        const Bytes substitution = oid(reinterpret_cast<const char*>(name.data()));
        algorithm.parameters = tlv(Tag::sequence, algorithm.parameters, substitution);
    }
    return key;
}

// SIMPLEBLOB: a header and a GostR3410-KeyTransport, or the algorithm that encrypted the key and the key
// little-endian.
Bytes exportContentKey(HCRYPTPROV provider, HCRYPTKEY key, CERT_PUBLIC_KEY_INFO recipient) {
    CryptKey with;
    must(
        ::CryptImportPublicKeyInfoEx(provider, encodings, &recipient, CALG_RSA_KEYX, 0, nullptr, with.put()));
    const Bytes blob = filled([&](BYTE* buffer, DWORD* size) {
        return ::CryptExportKey(key, with.get(), SIMPLEBLOB, 0, buffer, size);
    });
    const View content = View(blob).subspan(sizeof(BLOBHEADER));
    return keyNumber(key, KP_ALGID) == Gost::cipherId ? bytesOf(content)
                                                      : reversed(content.subspan(sizeof(ALG_ID)));
}

CryptKey importContentKey(HCRYPTPROV provider, DWORD spec, const AlgorithmId& content,
                          const std::string& transport, View encrypted) {
    const ALG_ID number = cipherNumber(content);
    const bool isGost = number == Gost::cipherId;
    if (isGost == (transport == Oid::rsa))
        fail(CRYPT_E_UNKNOWN_ALGO);
    constexpr ALG_ID with = CALG_RSA_KEYX;
    Bytes blob = keyBlob(SIMPLEBLOB, number, isGost ? encrypted : viewOfStructure(with));
    if (!isGost)
        append(blob, reversed(encrypted));
    CryptKey own;
    CryptKey key;
    must(::CryptGetUserKey(provider, spec ? spec : AT_KEYEXCHANGE, own.put()));
    must(::CryptImportKey(provider, blob.data(), lengthOf(blob), own.get(), 0, key.put()));
    Reader parameters(content.parameters);
    if (isGost)
        parameters = parameters.enter(Tag::sequence);
    const View vector = parameters.next(Tag::octetString).content;
    if (vector.size() != blockSize(key.get()))
        fail(NTE_BAD_DATA);
    if (isGost) {
        const std::string name = oidText(parameters.next(Tag::oid).content);
        must(::CryptSetKeyParam(key.get(), Gost::substitutionParameter,
                                reinterpret_cast<const BYTE*>(name.c_str()), 0));
    }
    must(::CryptSetKeyParam(key.get(), KP_IV, vector.data(), 0));
    return key;
}

ContentCipher::ContentCipher(CryptKey key, bool isEncryption)
    : key_(std::move(key)), isEncryption_(isEncryption), block_(blockSize(key_.get())) {}

Bytes ContentCipher::process(View bytes, bool isFinal) {
    append(waiting_, bytes);
    // At least one byte waits for the final call, which alone knows of padding.
    const std::size_t size = isFinal            ? waiting_.size()
                             : waiting_.empty() ? 0
                                                : (waiting_.size() - 1) / block_ * block_;
    if (size == 0 && !isFinal)
        return {};
    const auto end = waiting_.begin() + static_cast<std::ptrdiff_t>(size);
    Bytes work(waiting_.begin(), end);
    waiting_.erase(waiting_.begin(), end);
    DWORD length = lengthOf(work);
    if (isEncryption_) {
        work.resize(size + 2 * block_);
        must(::CryptEncrypt(key_.get(), 0, isFinal, 0, work.data(), &length, lengthOf(work)));
    } else if (length > 0) {
        must(::CryptDecrypt(key_.get(), 0, isFinal, 0, work.data(), &length));
    }
    work.resize(length);
    return work;
}

}  // namespace Corvane::Platform::Messages
