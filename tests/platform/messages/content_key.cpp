#include "content_key.h"

#include <algorithm>
#include <cstring>

namespace Corvane::Platform::Messages {
namespace {

constexpr DWORD encoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;
constexpr std::size_t bitsOfByte = 8;

void* WINAPI allocate(size_t size) {
    return ::LocalAlloc(LMEM_FIXED, size);
}
void WINAPI release(void* memory) {
    ::LocalFree(memory);
}

// What a provider registered for the identifier; `call` gets it and tells whether it succeeded. False where
// there is none.
template <class Function, class Call>
bool withRegistered(const char* name, const std::string& oid, Call&& call) {
    const HCRYPTOIDFUNCSET set = ::CryptInitOIDFunctionSet(name, 0);
    void* address = nullptr;
    HCRYPTOIDFUNCADDR owner = nullptr;
    if (!set || !::CryptGetOIDFunctionAddress(set, X509_ASN_ENCODING, oid.c_str(), 0, &address, &owner))
        return false;
    const BOOL done = call(reinterpret_cast<Function>(address));
    const DWORD error = ::GetLastError();
    ::CryptFreeOIDFunctionAddress(owner, 0);
    if (!done)
        throw Failure{error};
    return true;
}

DWORD keyParameter(HCRYPTKEY key, DWORD which) {
    DWORD value = 0;
    DWORD size = sizeof value;
    return ::CryptGetKeyParam(key, which, reinterpret_cast<BYTE*>(&value), &size, 0) ? value : 0;
}

void checkRsa(const AlgorithmId& algorithm) {
    if (algorithm.oid != Oid::rsa)
        fail(CRYPT_E_UNKNOWN_ALGO);
}

// SIMPLEBLOB: a header, the algorithm that encrypted the key, and the key little-endian.
Bytes exportForRsa(HCRYPTPROV provider, HCRYPTKEY key, CERT_PUBLIC_KEY_INFO recipient) {
    CryptKey with;
    must(::CryptImportPublicKeyInfoEx(provider, encoding, &recipient, CALG_RSA_KEYX, 0, nullptr, with.put()));
    DWORD size = 0;
    must(::CryptExportKey(key, with.get(), SIMPLEBLOB, 0, nullptr, &size));
    Bytes blob(size);
    must(::CryptExportKey(key, with.get(), SIMPLEBLOB, 0, blob.data(), &size));
    return reversed(View(blob).first(size).subspan(sizeof(BLOBHEADER) + sizeof(ALG_ID)));
}

CryptKey importFromRsa(HCRYPTPROV provider, DWORD spec, ALG_ID algorithm, View encrypted) {
    struct {
        BLOBHEADER head;
        ALG_ID with;
    } const start{{SIMPLEBLOB, CUR_BLOB_VERSION, 0, algorithm}, CALG_RSA_KEYX};
    Bytes blob(sizeof start);
    std::memcpy(blob.data(), &start, sizeof start);
    append(blob, reversed(encrypted));
    CryptKey own;
    must(::CryptGetUserKey(provider, spec, own.put()));
    CryptKey key;
    must(::CryptImportKey(provider, blob.data(), sizeOf(blob), own.get(), 0, key.put()));
    return key;
}

}  // namespace

ContentCipher::ContentCipher(CryptKey key, bool isEncryption)
    : key_(std::move(key)),
      isEncryption_(isEncryption),
      block_(std::max<std::size_t>(keyParameter(key_.get(), KP_BLOCKLEN) / bitsOfByte, 1)) {}

std::uint64_t ContentCipher::encryptedSize(std::uint64_t size) const {
    constexpr std::uint64_t unit = 4096;  // of whole blocks, which stay as long as they are
    auto rest = static_cast<DWORD>(size % unit);
    must(::CryptEncrypt(key_.get(), 0, TRUE, 0, nullptr, &rest, 0));
    return size - size % unit + rest;
}

Bytes ContentCipher::process(View bytes, bool isFinal) {
    append(waiting_, bytes);
    // At least one byte waits for the final call, which alone knows of padding.
    const std::size_t size = isFinal            ? waiting_.size()
                             : waiting_.empty() ? 0
                                                : (waiting_.size() - 1) / block_ * block_;
    if (size == 0 && !isFinal)
        return {};
    Bytes work(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(size));
    waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(size));
    DWORD length = sizeOf(work);
    if (isEncryption_) {
        work.resize(size + 2 * block_);
        must(::CryptEncrypt(key_.get(), 0, isFinal, 0, work.data(), &length, sizeOf(work)));
    } else if (length > 0) {
        must(::CryptDecrypt(key_.get(), 0, isFinal, 0, work.data(), &length));
    } else if (keyParameter(key_.get(), KP_MODE) == CRYPT_MODE_CBC) {
        fail(NTE_BAD_DATA);  // without padding
    }
    work.resize(length);
    return work;
}

NewContentKey::NewContentKey(const CMSG_ENVELOPED_ENCODE_INFO& info)
    : algorithm_(AlgorithmId::of(info.ContentEncryptionAlgorithm)) {
    CMSG_CONTENT_ENCRYPT_INFO content{};
    content.cbSize = sizeof content;
    content.hCryptProv = info.hCryptProv;
    content.ContentEncryptionAlgorithm = algorithm_.view();
    content.cRecipients = info.cRecipients;
    content.pfnAlloc = allocate;
    content.pfnFree = release;
    make(content);
    for (DWORD i = 0; i < info.cRecipients; ++i)
        giveTo(content, *info.rgpRecipients[i], i);
}

void NewContentKey::make(CMSG_CONTENT_ENCRYPT_INFO& info) {
    const bool isRegistered = withRegistered<PFN_CMSG_GEN_CONTENT_ENCRYPT_KEY>(
        CMSG_OID_GEN_CONTENT_ENCRYPT_KEY_FUNC, algorithm_.oid,
        [&](auto* function) { return function(&info, 0, nullptr); });
    if (isRegistered) {
        *key_.put() = info.hContentEncryptKey;
        const View parameters = viewOf(info.ContentEncryptionAlgorithm.Parameters);
        Bytes copy(parameters.begin(), parameters.end());
        if (info.dwFlags & CMSG_CONTENT_ENCRYPT_FREE_PARA_FLAG)
            release(info.ContentEncryptionAlgorithm.Parameters.pbData);
        algorithm_.parameters = std::move(copy);
        info.ContentEncryptionAlgorithm = algorithm_.view();
        return;
    }
    const ALG_ID number = algorithmNumber(algorithm_.oid, CRYPT_ENCRYPT_ALG_OID_GROUP_ID);
    if (!number)
        fail(CRYPT_E_UNKNOWN_ALGO);
    if (!info.hCryptProv)
        info.hCryptProv = providerForHash(CALG_SHA_256);
    must(::CryptGenKey(info.hCryptProv, number, CRYPT_EXPORTABLE, key_.put()));
    info.hContentEncryptKey = key_.get();
    Bytes vector(keyParameter(key_.get(), KP_BLOCKLEN) / bitsOfByte);
    if (vector.empty())
        return;
    must(::CryptGenRandom(info.hCryptProv, sizeOf(vector), vector.data()));
    must(::CryptSetKeyParam(key_.get(), KP_IV, vector.data(), 0));
    algorithm_.parameters = tlv(Tag::octetString, vector);
    info.ContentEncryptionAlgorithm = algorithm_.view();
}

void NewContentKey::giveTo(CMSG_CONTENT_ENCRYPT_INFO& info, const CERT_INFO& certificate, DWORD index) {
    const CERT_PUBLIC_KEY_INFO& key = certificate.SubjectPublicKeyInfo;
    Recipient recipient{Identity::of(certificate), AlgorithmId::of(key.Algorithm), {}};
    CMSG_KEY_TRANS_RECIPIENT_ENCODE_INFO how{};
    how.cbSize = sizeof how;
    how.KeyEncryptionAlgorithm = key.Algorithm;
    how.RecipientPublicKey = key.PublicKey;
    CMSG_KEY_TRANS_ENCRYPT_INFO result{};
    result.cbSize = sizeof result;
    result.dwRecipientIndex = index;
    result.KeyEncryptionAlgorithm = key.Algorithm;
    const bool isRegistered = withRegistered<PFN_CMSG_EXPORT_KEY_TRANS>(
        CMSG_OID_EXPORT_KEY_TRANS_FUNC, recipient.keyEncryption.oid,
        [&](auto* function) { return function(&info, &how, &result, 0, nullptr); });
    if (isRegistered) {
        recipient.keyEncryption = AlgorithmId::of(result.KeyEncryptionAlgorithm);
        append(recipient.encryptedKey, viewOf(result.EncryptedKey));
        release(result.EncryptedKey.pbData);
    } else {
        checkRsa(recipient.keyEncryption);
        recipient.encryptedKey = exportForRsa(info.hCryptProv, key_.get(), key);
    }
    recipients_.push_back(std::move(recipient));
}

CryptKey receiveContentKey(const AlgorithmId& content, const Recipient& recipient, HCRYPTPROV provider,
                           DWORD spec) {
    const DWORD keySpec = spec ? spec : AT_KEYEXCHANGE;
    AlgorithmId algorithm = content;
    AlgorithmId transport = recipient.keyEncryption;
    Bytes encrypted = recipient.encryptedKey;
    CMSG_KEY_TRANS_RECIPIENT_INFO info{};
    info.KeyEncryptionAlgorithm = transport.view();
    info.EncryptedKey = {sizeOf(encrypted), encrypted.data()};
    CMSG_CTRL_KEY_TRANS_DECRYPT_PARA how{};
    how.cbSize = sizeof how;
    how.hCryptProv = provider;
    how.dwKeySpec = keySpec;
    how.pKeyTrans = &info;
    CRYPT_ALGORITHM_IDENTIFIER contentView = algorithm.view();
    CryptKey key;
    if (withRegistered<PFN_CMSG_IMPORT_KEY_TRANS>(
            CMSG_OID_IMPORT_KEY_TRANS_FUNC, transport.oid,
            [&](auto* function) { return function(&contentView, &how, 0, nullptr, key.put()); }))
        return key;
    checkRsa(transport);
    const ALG_ID number = algorithmNumber(content.oid, CRYPT_ENCRYPT_ALG_OID_GROUP_ID);
    if (!number)
        fail(CRYPT_E_UNKNOWN_ALGO);
    key = importFromRsa(provider, keySpec, number, encrypted);
    const std::size_t block = keyParameter(key.get(), KP_BLOCKLEN) / bitsOfByte;
    if (block > 0) {
        const Bytes vector = octets(Reader(content.parameters).next(Tag::octetString));
        if (vector.size() != block)
            fail(NTE_BAD_DATA);
        must(::CryptSetKeyParam(key.get(), KP_IV, vector.data(), 0));
    }
    return key;
}

}  // namespace Corvane::Platform::Messages
