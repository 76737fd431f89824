// Hashes, signatures, ciphers and keys by the system's providers and those of GOST.
#pragma once

#include "../gost/algorithms.h"  // before other headers that declare crypt32

#include "core/handles.h"

#include <iterator>
#include <string>

namespace Corvane::Platform::Messages {

constexpr DWORD encodings = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;

template <class Body>
bool succeeds(Body&& body) noexcept {
    return succeedsWith<CRYPT_E_ASN1_EOD, E_UNEXPECTED>(body);
}

// AlgorithmIdentifier, with NULL where there are no parameters.
inline Bytes algorithm(std::string_view name, const Bytes& parameters = {Tag::null, 0}) {
    return tlv(Tag::sequence, oid(name), parameters);
}

// Fails with CRYPT_E_UNKNOWN_ALGO.
inline ALG_ID algorithmNumber(const std::string& oid, DWORD group = CRYPT_HASH_ALG_OID_GROUP_ID) {
    const CRYPT_OID_INFO* info =
        ::CryptFindOIDInfo(CRYPT_OID_INFO_OID_KEY, const_cast<char*>(oid.c_str()), group);
    return info ? info->Algid : (fail(CRYPT_E_UNKNOWN_ALGO), 0);
}

// Without keys; it stays open.
inline HCRYPTPROV providerForHash(const std::string& hash) {
    const auto acquire = [](DWORD type) {
        HCRYPTPROV provider = 0;
        must(::CryptAcquireContextW(&provider, nullptr, nullptr, type, CRYPT_VERIFYCONTEXT));
        return provider;
    };
    static const HCRYPTPROV open[] = {acquire(Gost::algorithms[0].providerType),
                                      acquire(Gost::algorithms[1].providerType),
                                      acquire(Gost::algorithms[2].providerType), acquire(PROV_RSA_AES)};
    return open[std::ranges::find(Gost::algorithms, hash, &Gost::Algorithm::hashOid) - Gost::algorithms];
}

// A running hash.
class Digest {
public:
    explicit Digest(const std::string& oid) {
        must(::CryptCreateHash(providerForHash(oid), algorithmNumber(oid), 0, 0, hash_.put()));
    }
    void add(View bytes) {
        if (!bytes.empty())
            must(::CryptHashData(hash_.get(), bytes.data(), lengthOf(bytes), 0));
    }
    // Of all that was added; nothing can be added any more.
    const Bytes& value() {
        if (value_.empty())
            value_ = filled([&](BYTE* buffer, DWORD* size) {
                return ::CryptGetHashParam(hash_.get(), HP_HASHVAL, buffer, size, 0);
            });
        return value_;
    }

private:
    CryptHash hash_;
    Bytes value_;
};

inline CryptHash hashWith(HCRYPTPROV provider, const std::string& hash, const Bytes& digest) {
    CryptHash made;
    must(::CryptCreateHash(provider, algorithmNumber(hash), 0, 0, made.put()));
    must(::CryptSetHashParam(made.get(), HP_HASHVAL, digest.data(), 0));
    return made;
}

// Signatures are big-endian, as messages have them.
inline Bytes signDigest(HCRYPTPROV provider, DWORD spec, const std::string& hash, const Bytes& digest) {
    const CryptHash made = hashWith(provider, hash, digest);
    return reversed(filled([&](BYTE* buffer, DWORD* size) {
        return ::CryptSignHashW(made.get(), spec, nullptr, 0, buffer, size);
    }));
}

// Fails with NTE_BAD_SIGNATURE.
inline void verifyDigest(CERT_PUBLIC_KEY_INFO key, const std::string& hash, const Bytes& digest,
                         View signature) {
    const HCRYPTPROV provider = providerForHash(hash);
    CryptKey imported;
    must(::CryptImportPublicKeyInfo(provider, encodings, &key, imported.put()));
    const Bytes value = reversed(signature);
    const CryptHash made = hashWith(provider, hash, digest);
    must(::CryptVerifySignatureW(made.get(), value.data(), lengthOf(value), imported.get(), nullptr, 0));
}

// CryptEncrypt or CryptDecrypt over content that comes in pieces of any size.
class ContentCipher {
public:
    // With a new key.
    ContentCipher(HCRYPTPROV provider, const std::string& cipher) : oid_(cipher), isEncryption_(true) {
        must(::CryptGenKey(provider, algorithmNumber(cipher, CRYPT_ENCRYPT_ALG_OID_GROUP_ID),
                           CRYPT_EXPORTABLE, key_.put()));
        vector_.resize(blockSize());
        must(::CryptGenRandom(provider, lengthOf(vector_), vector_.data()));
        set(KP_IV, vector_.data());
    }

    // With one that was received. SIMPLEBLOB: a header and a GostR3410-KeyTransport, or the algorithm that
    // encrypted the key and the key little-endian.
    ContentCipher(HCRYPTPROV provider, DWORD spec, Reader algorithm, View encryptedKey)
        : oid_(algorithm.readOid()), isEncryption_(false) {
        const bool isGost = oid_ == Gost::cipherOid;
        constexpr ALG_ID with = CALG_RSA_KEYX;
        Bytes blob = keyBlob(SIMPLEBLOB, algorithmNumber(oid_, CRYPT_ENCRYPT_ALG_OID_GROUP_ID),
                             isGost ? encryptedKey : viewOfStructure(with));
        if (!isGost)
            append(blob, reversed(encryptedKey));
        CryptKey own;
        must(::CryptGetUserKey(provider, spec ? spec : AT_KEYEXCHANGE, own.put()));
        must(::CryptImportKey(provider, blob.data(), lengthOf(blob), own.get(), 0, key_.put()));
        BerReader parameters = isGost ? algorithm.enter(Tag::sequence) : algorithm;
        vector_ = bytesOf(parameters.read(Tag::octetString));
        if (vector_.size() != blockSize())
            fail(NTE_BAD_DATA);
        if (isGost)
            set(Gost::substitutionParameter, parameters.readOid().c_str());
        set(KP_IV, vector_.data());
    }

    // The algorithm with its parameters.
    Bytes identifier() const {
        const Bytes vector = tlv(Tag::octetString, vector_);
        if (oid_ != Gost::cipherOid)
            return algorithm(oid_, vector);
        const Bytes name = filled([&](BYTE* buffer, DWORD* size) {
            return ::CryptGetKeyParam(key_.get(), Gost::substitutionParameter, buffer, size, 0);
        });
        return algorithm(oid_, tlv(Tag::sequence, vector, oid(reinterpret_cast<const char*>(name.data()))));
    }

    // The key as it is sent to a recipient.
    Bytes keyFor(HCRYPTPROV provider, CERT_PUBLIC_KEY_INFO recipient) const {
        CryptKey with;
        must(::CryptImportPublicKeyInfoEx(provider, encodings, &recipient, CALG_RSA_KEYX, 0, nullptr,
                                          with.put()));
        const Bytes blob = filled([&](BYTE* buffer, DWORD* size) {
            return ::CryptExportKey(key_.get(), with.get(), SIMPLEBLOB, 0, buffer, size);
        });
        const View content = View(blob).subspan(sizeof(BLOBHEADER));
        return oid_ == Gost::cipherOid ? bytesOf(content) : reversed(content.subspan(sizeof(ALG_ID)));
    }

    // The output for what came; at least one byte waits for the final call, which alone knows of padding.
    Bytes process(View bytes, bool isFinal) {
        append(waiting_, bytes);
        const std::size_t block = blockSize();
        const std::size_t size = isFinal            ? waiting_.size()
                                 : waiting_.empty() ? 0
                                                    : (waiting_.size() - 1) / block * block;
        if (size == 0 && (!isFinal || !isEncryption_))
            return {};
        Bytes work(waiting_.begin(), std::next(waiting_.begin(), static_cast<std::ptrdiff_t>(size)));
        waiting_.erase(waiting_.begin(), std::next(waiting_.begin(), static_cast<std::ptrdiff_t>(size)));
        DWORD length = lengthOf(work);
        if (isEncryption_)
            work.resize(size + 2 * block);
        must(isEncryption_ ? ::CryptEncrypt(key_.get(), 0, isFinal, 0, work.data(), &length, lengthOf(work))
                           : ::CryptDecrypt(key_.get(), 0, isFinal, 0, work.data(), &length));
        work.resize(length);
        return work;
    }

private:
    void set(DWORD parameter, const void* value) const {
        must(::CryptSetKeyParam(key_.get(), parameter, static_cast<const BYTE*>(value), 0));
    }

    std::size_t blockSize() const {
        return numberOf([&](BYTE* number, DWORD* size) {
                   return ::CryptGetKeyParam(key_.get(), KP_BLOCKLEN, number, size, 0);
               }) /
               8;
    }

    CryptKey key_;
    std::string oid_;
    Bytes vector_;
    bool isEncryption_;
    Bytes waiting_;
};

}  // namespace Corvane::Platform::Messages
