#include "token/cryptoki/session.h"

#include "token/cryptoki/cryptoki_exception.h"

#include <array>
#include <cassert>
#include <utility>

namespace cryptoki {
namespace {

// Modules take what they only read by pointers to what may be written.
unsigned char* writable(std::span<const std::uint8_t> data) noexcept {
    return const_cast<unsigned char*>(data.data());
}

CK_ULONG sizeOf(const auto& list) noexcept {
    return static_cast<CK_ULONG>(list.size());
}

}  // namespace

Session::Session(Pkcs11Module module, CK_SLOT_ID slot, CK_FLAGS flags) : pkcs11Module_(std::move(module)) {
    CK_SESSION_HANDLE session = 0;
    checkCryptoki(functions().C_OpenSession(slot, flags, nullptr, nullptr, &session), "C_OpenSession");
    session_.attach({&functions(), session});
}

void Session::login(const Corvane::SecretNarrowText& pin) {
    auto* const text = reinterpret_cast<unsigned char*>(const_cast<char*>(pin.data()));
    checkCryptoki(functions().C_Login(handle(), CKU_USER, text, sizeOf(pin)), "C_Login");
    login_.attach(session_.get());
}

CK_OBJECT_HANDLE Session::createObject(AttributeTemplate object) const {
    auto attributes = object.attributes();
    CK_OBJECT_HANDLE created = 0;
    checkCryptoki(functions().C_CreateObject(handle(), attributes.data(), sizeOf(attributes), &created),
                  "C_CreateObject");
    return created;
}

std::vector<CK_OBJECT_HANDLE> Session::findObjects(AttributeTemplate wanted) const {
    auto attributes = wanted.attributes();
    checkCryptoki(functions().C_FindObjectsInit(handle(), attributes.data(), sizeOf(attributes)),
                  "C_FindObjectsInit");
    const Corvane::UniqueHandle<detail::SearchTraits> search(session_.get());
    std::vector<CK_OBJECT_HANDLE> objects;
    std::array<CK_OBJECT_HANDLE, 32> found{};
    CK_ULONG count = 0;
    do {
        checkCryptoki(functions().C_FindObjects(handle(), found.data(), sizeOf(found), &count),
                      "C_FindObjects");
        objects.insert(objects.end(), found.begin(), found.begin() + std::min(count, sizeOf(found)));
    } while (count != 0);
    return objects;
}

Corvane::Bytes Session::getAttributeValue(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type) const {
    return Corvane::twoPass<CryptokiCalls, std::uint8_t, CK_ULONG>(
        [&](std::uint8_t* value, CK_ULONG* size) -> CK_RV {
            CK_ATTRIBUTE attribute{type, nullptr, *size};
            attribute.pValue = value;
            const CK_RV result = functions().C_GetAttributeValue(handle(), object, &attribute, 1);
            *size = attribute.ulValueLen;
            const bool isUnknown = *size == CK_UNAVAILABLE_INFORMATION;
            return result == CKR_OK && isUnknown ? CKR_ATTRIBUTE_TYPE_INVALID : result;
        },
        "C_GetAttributeValue");
}

KeyPair Session::generateKeyPair(CK_MECHANISM_TYPE mechanism, AttributeTemplate publicKey,
                                 AttributeTemplate privateKey) const {
    CK_MECHANISM means{mechanism, nullptr, 0};
    auto ofPublic = publicKey.attributes();
    auto ofPrivate = privateKey.attributes();
    KeyPair pair;
    checkCryptoki(
        functions().C_GenerateKeyPair(handle(), &means, ofPublic.data(), sizeOf(ofPublic), ofPrivate.data(),
                                      sizeOf(ofPrivate), &pair.publicKey, &pair.privateKey),
        "C_GenerateKeyPair");
    return pair;
}

void Session::digest(CK_MECHANISM_TYPE mechanism, std::span<const std::uint8_t> data,
                     std::span<std::uint8_t> digest) const {
    assert(!data.empty() && !digest.empty());
    CK_MECHANISM means{mechanism, nullptr, 0};
    checkCryptoki(functions().C_DigestInit(handle(), &means), "C_DigestInit");
    CK_ULONG size = sizeOf(digest);
    checkCryptoki(functions().C_Digest(handle(), writable(data), sizeOf(data), digest.data(), &size),
                  "C_Digest");
    checkCryptoki(size == digest.size() ? CKR_OK : CKR_DATA_LEN_RANGE, "C_Digest");
}

Corvane::Bytes Session::sign(CK_MECHANISM_TYPE mechanism, CK_OBJECT_HANDLE key,
                             std::span<const std::uint8_t> data) const {
    assert(!data.empty());
    CK_MECHANISM means{mechanism, nullptr, 0};
    checkCryptoki(functions().C_SignInit(handle(), &means, key), "C_SignInit");
    return Corvane::twoPass<CryptokiCalls, std::uint8_t, CK_ULONG>(
        [&](std::uint8_t* signature, CK_ULONG* size) {
            return functions().C_Sign(handle(), writable(data), sizeOf(data), signature, size);
        },
        "C_Sign");
}

}  // namespace cryptoki
