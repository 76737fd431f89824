// A session with a token, in which its user may be logged in.
#pragma once

#include "binary/bytes.h"
#include "core/handle.h"
#include "core/secret.h"
#include "token/cryptoki/attribute_template.h"
#include "token/cryptoki/pkcs11_module.h"

#include <span>
#include <vector>

namespace cryptoki {

namespace detail {

// A session is nothing without the functions of its module.
struct SessionHandle {
    const CK_FUNCTION_LIST* functions = nullptr;
    CK_SESSION_HANDLE session = 0;

    bool operator==(const SessionHandle&) const = default;
};

struct SessionTraits {
    using Type = SessionHandle;
    static Type invalid() noexcept { return {}; }
    static void close(Type handle) noexcept { handle.functions->C_CloseSession(handle.session); }
};

struct LoginTraits : SessionTraits {
    static void close(Type handle) noexcept { handle.functions->C_Logout(handle.session); }
};

struct SearchTraits : SessionTraits {
    static void close(Type handle) noexcept { handle.functions->C_FindObjectsFinal(handle.session); }
};

}  // namespace detail

struct KeyPair {
    CK_OBJECT_HANDLE publicKey = 0;
    CK_OBJECT_HANDLE privateKey = 0;
};

// Its end logs the user out and closes the session. Everything throws CryptokiException. For one thread.
class Session {
public:
    // Of PKCS#11's flags CKF_SERIAL_SESSION must be among them.
    Session(Pkcs11Module module, CK_SLOT_ID slot, CK_FLAGS flags);

    // As the token's user; the PIN is UTF-8.
    void login(const Corvane::SecretNarrowText& pin);

    CK_OBJECT_HANDLE createObject(AttributeTemplate object) const;
    std::vector<CK_OBJECT_HANDLE> findObjects(AttributeTemplate wanted) const;
    Corvane::Bytes getAttributeValue(CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type) const;
    KeyPair generateKeyPair(CK_MECHANISM_TYPE mechanism, AttributeTemplate publicKey,
                            AttributeTemplate privateKey) const;
    // Fills `digest`, which has just the size of the mechanism's digests.
    void digest(CK_MECHANISM_TYPE mechanism, std::span<const std::uint8_t> data,
                std::span<std::uint8_t> digest) const;
    Corvane::Bytes sign(CK_MECHANISM_TYPE mechanism, CK_OBJECT_HANDLE key,
                        std::span<const std::uint8_t> data) const;

private:
    const CK_FUNCTION_LIST& functions() const { return pkcs11Module_.functions(); }
    CK_SESSION_HANDLE handle() const noexcept { return session_.get().session; }

    Pkcs11Module pkcs11Module_;
    Corvane::UniqueHandle<detail::SessionTraits> session_;
    Corvane::UniqueHandle<detail::LoginTraits> login_;
};

}  // namespace cryptoki
