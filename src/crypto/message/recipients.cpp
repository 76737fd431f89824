#include "crypto/message/recipients.h"

#include "core/handles.h"
#include "core/log.h"
#include "crypto/api/encoding.h"
#include "stream/stream_loop.h"

#include <functional>
#include <optional>
#include <span>
#include <stdexcept>
#include <utility>

namespace Corvane::detail {
namespace {

// Whether the certificate is the one; what is not is followed by the next.
using UseCertificate = std::function<bool(const Certificate&)>;

class PersonalStores {
public:
    // Offers the recipient's certificates that have a private key, until one is taken.
    bool find(const CERT_ID& id, const UseCertificate& use) {
        for (Place& place : places_) {
            if (!place.store)
                place.store = open(place.location);
            CertificateContext found;
            const auto next = [&] {
                found.attach(::CertFindCertificateInStore(place.store.get(), messageEncoding, 0,
                                                          CERT_FIND_CERT_ID, &id, found.detach()));
                return static_cast<bool>(found);
            };
            while (next()) {
                const Certificate certificate = Certificate::duplicate(found.get());
                if (certificate.hasPrivateKey() && use(certificate))
                    return true;
            }
            if (const DWORD error = ::GetLastError(); error != static_cast<DWORD>(CRYPT_E_NOT_FOUND))
                error_ = error;
        }
        return false;
    }

    // Why a store could not be searched; 0 where all could.
    DWORD error() const noexcept { return error_; }

private:
    struct Place {
        DWORD location;
        CertificateStoreHandle store;
    };

    static CertificateStoreHandle open(DWORD location) {
        return CertificateStoreHandle(checkCrypto(
            ::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, location | CERT_STORE_READONLY_FLAG, L"My"),
            E_CERT_STORE_OPEN, L"CertOpenStore"));
    }

    Place places_[2] = {{CERT_SYSTEM_STORE_CURRENT_USER, {}}, {CERT_SYSTEM_STORE_LOCAL_MACHINE, {}}};
    DWORD error_ = ERROR_SUCCESS;
};

class Decryption {
public:
    Decryption(CryptMessage& message, const SharedProgress& progress)
        : message_(message), progress_(progress) {}

    std::unique_ptr<PrivateKey> run() {
        const DWORD count = message_.number(CMSG_CMS_RECIPIENT_COUNT_PARAM);
        for (DWORD index = 0; index < count; ++index) {
            Stream::throwIfCanceled(progress_);
            const Bytes bytes = message_.parameter(CMSG_CMS_RECIPIENT_INFO_PARAM, index);
            if (tryRecipient(*reinterpret_cast<const CMSG_CMS_RECIPIENT_INFO*>(bytes.data()), index))
                return std::move(key_);
        }
        if (error_)
            failCrypto(E_CRYPTO_DECRYPT, L"CryptMsgControl", *error_);
        if (stores_.error() != ERROR_SUCCESS)
            failCrypto(E_CRYPTO_DECRYPT, L"CertFindCertificateInStore", stores_.error());
        throw std::runtime_error("certificate not found");
    }

private:
    bool tryRecipient(const CMSG_CMS_RECIPIENT_INFO& recipient, DWORD index) {
        if (recipient.dwRecipientChoice == CMSG_KEY_TRANS_RECIPIENT && recipient.pKeyTrans)
            return tryKeyTransport(*recipient.pKeyTrans, index);
        if (recipient.dwRecipientChoice == CMSG_KEY_AGREE_RECIPIENT && recipient.pKeyAgree)
            return tryKeyAgreement(*recipient.pKeyAgree, index);
        return false;
    }

    bool tryKeyTransport(CMSG_KEY_TRANS_RECIPIENT_INFO& info, DWORD index) {
        return stores_.find(info.RecipientId, [&](const Certificate& certificate) {
            return tryKey(certificate, [&](const PrivateKey& key) {
                CMSG_CTRL_KEY_TRANS_DECRYPT_PARA how{};
                how.cbSize = sizeof(how);
                how.hCryptProv = key.handle();
                how.dwKeySpec = key.spec();
                how.pKeyTrans = &info;
                how.dwRecipientIndex = index;
                return message_.tryControl(CMSG_CTRL_KEY_TRANS_DECRYPT, &how);
            });
        });
    }

    // The originator's key comes with the message (RFC 5652 6.2.2); one that must be looked up elsewhere is
    // not supported.
    bool tryKeyAgreement(CMSG_KEY_AGREE_RECIPIENT_INFO& info, DWORD index) {
        if (info.dwOriginatorChoice != CMSG_KEY_AGREE_ORIGINATOR_PUBLIC_KEY)
            return false;
        const std::span keys(info.rgpRecipientEncryptedKeys, info.cRecipientEncryptedKeys);
        for (DWORD i = 0; i < keys.size(); ++i) {
            const bool found = stores_.find(keys[i]->RecipientId, [&](const Certificate& certificate) {
                return tryKey(certificate, [&](const PrivateKey& key) {
                    CMSG_CTRL_KEY_AGREE_DECRYPT_PARA how{};
                    how.cbSize = sizeof(how);
                    how.hCryptProv = key.handle();
                    how.dwKeySpec = key.spec();
                    how.pKeyAgree = &info;
                    how.dwRecipientIndex = index;
                    how.dwRecipientEncryptedKeyIndex = i;
                    how.OriginatorPublicKey = info.OriginatorPublicKeyInfo.PublicKey;
                    return message_.tryControl(CMSG_CTRL_KEY_AGREE_DECRYPT, &how);
                });
            });
            if (found)
                return true;
        }
        return false;
    }

    template <class Use>
    bool tryKey(const Certificate& certificate, Use use) {
        writeLog(LogLevel::debug, L"Corvane::detail::decryptMessage", L"certificate: ", certificate);
        DWORD error = ERROR_SUCCESS;
        try {
            auto key = std::make_unique<PrivateKey>(certificate, E_CRYPTO_DECRYPT);
            error = use(*key);
            if (error == ERROR_SUCCESS)
                key_ = std::move(key);
        } catch (const CryptoException& exception) {
            // Of the key; what the output throws is none of these.
            if (exception.code() != E_CRYPTO_DECRYPT.code)
                throw;
            error = exception.error();
        }
        if (error == ERROR_SUCCESS)
            return true;
        if (!error_)
            error_ = error;
        if (++keyCount_ == keyLimit)
            failCrypto(E_CRYPTO_DECRYPT, L"CryptMsgControl", *error_);
        return false;
    }

    CryptMessage& message_;
    const SharedProgress& progress_;
    PersonalStores stores_;
    std::unique_ptr<PrivateKey> key_;
    std::optional<DWORD> error_;
    int keyCount_ = 0;
};

}  // namespace

std::unique_ptr<PrivateKey> decryptMessage(CryptMessage& message, const SharedProgress& progress) {
    return Decryption(message, progress).run();
}

}  // namespace Corvane::detail
