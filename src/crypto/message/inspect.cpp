#include "crypto/message/inspect.h"

#include "asn1/decoders/signed_data.h"
#include "binary/hex.h"
#include "core/check.h"
#include "core/json.h"
#include "core/log.h"
#include "core/moment.h"
#include "core/utf8.h"
#include "crypto/api/blob.h"
#include "crypto/api/encoding.h"
#include "crypto/certificate/certificate_json.h"
#include "crypto/message/attribute_signature.h"
#include "crypto/message/decoded_signatures.h"
#include "crypto/message/message_content.h"
#include "crypto/message/message_feed.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace Corvane::Crypto {
namespace {

using detail::Answer;
using detail::CryptMessage;
using detail::DecodedSignatures;
using detail::SignerLookup;

Json::Value json(Answer answer) {
    return answer == Answer::unknown ? Json::Value() : Json::Value(answer == Answer::yes);
}

// An identifier, which may be missing in odd messages.
Json::Value json(const char* oid) {
    return oid ? Json::Value(oid) : Json::Value();
}

const CRYPT_ATTRIBUTE* findAttribute(const CRYPT_ATTRIBUTES& attributes, std::string_view oid) {
    const std::span all(attributes.rgAttr, attributes.cAttr);
    const auto found = std::ranges::find_if(
        all, [&](const CRYPT_ATTRIBUTE& one) { return one.pszObjId && oid == one.pszObjId; });
    return found == all.end() || found->cValue == 0 ? nullptr : &*found;
}

std::optional<std::wstring> signingTime(const CRYPT_ATTRIBUTES& attributes) {
    const CRYPT_ATTRIBUTE* attribute = findAttribute(attributes, szOID_RSA_signingTime);
    FILETIME time{};
    DWORD size = sizeof(time);
    if (!attribute || !::CryptDecodeObject(messageEncoding, X509_CHOICE_OF_TIME, attribute->rgValue[0].pbData,
                                           attribute->rgValue[0].cbData, 0, &time, &size))
        return std::nullopt;
    return toUtcText(time);
}

// Whether the digest among the attributes is that of the content.
Answer digestAgrees(const CryptMessage& message, DWORD index, const CRYPT_ATTRIBUTES& attributes) {
    DWORD error = ERROR_SUCCESS;
    const CRYPT_ATTRIBUTE* attribute = findAttribute(attributes, szOID_RSA_messageDigest);
    if (!attribute || !message.has(CMSG_COMPUTED_HASH_PARAM, index, error))
        return Answer::unknown;
    const Bytes computed = message.parameter(CMSG_COMPUTED_HASH_PARAM, index);
    Bytes joined;
    try {
        const CRYPT_DATA_BLOB& value = attribute->rgValue[0];
        asn1::BerReader reader({value.pbData, value.cbData}, asn1::Rules::ber);
        return std::ranges::equal(reader.readOctetString(joined), computed) ? Answer::yes : Answer::no;
    } catch (const asn1::Asn1Exception&) {
        return Answer::no;
    }
}

// A message whose bytes have all been read, and its content, if there is any.
class Inspection {
public:
    Inspection(CryptMessage& message, bool hasContent, bool isContentHere, const Certificates& supplied,
               DWORD flags, SharedProgress progress = {})
        : message_(message),
          signatures_(message),
          lookup_(supplied),
          hasContent_(hasContent),
          isContentHere_(isContentHere),
          flags_(flags),
          progress_(std::move(progress)) {}

    std::wstring run() {
        Json::Value report(Json::objectValue);
        Json::Value signers(Json::arrayValue);
        std::string verdict = signatures_.count() == 0 ? "unsigned" : "good";
        for (DWORD index = 0; index < signatures_.count(); ++index) {
            Stream::throwIfCanceled(progress_);
            const Json::Value& signer = signers.append(inspect(index));
            if (verdict == "good")
                verdict = signer["verdict"].asString();
        }
        const Bytes contentType = message_.parameter(CMSG_INNER_CONTENT_TYPE_PARAM);
        report["contentType"] = reinterpret_cast<const char*>(contentType.data());
        report["hasContent"] = hasContent_;
        report["verdict"] = verdict;
        report["signers"] = std::move(signers);
        return writeJson(report);
    }

private:
    Json::Value inspect(DWORD index) {
        Json::Value report(Json::objectValue);
        const Bytes bytes = message_.parameter(CMSG_SIGNER_INFO_PARAM, index);
        const auto& signer = *reinterpret_cast<const CMSG_SIGNER_INFO*>(bytes.data());
        tellIdentity(report, index);
        report["digestAlgorithm"] = json(signer.HashAlgorithm.pszObjId);
        report["signatureAlgorithm"] = json(signer.HashEncryptionAlgorithm.pszObjId);
        if (const auto time = signingTime(signer.AuthAttrs))
            report["signingTime"] = toUtf8(*time);
        CertificateContext certificate = signatures_.findCertificate(lookup_, index);
        if (!certificate) {
            const Answer agrees =
                isContentHere_ ? digestAgrees(message_, index, signer.AuthAttrs) : Answer::unknown;
            report["digestAgrees"] = json(agrees);
            report["signatureGood"] = Json::Value();
            report["verdict"] = agrees == Answer::no ? "changed" : "noCertificate";
            return report;
        }
        const Certificate found(std::move(certificate));
        report["certificate"] = parseJson(getCertDescriptionJson(found));
        judge(report, index, signer.AuthAttrs, found, tellChain(report["chain"], found));
        return report;
    }

    // None where the system cannot build a chain at all, which is no fault of the message.
    std::optional<DWORD> tellChain(Json::Value& chain, const Certificate& certificate) const {
        chain["status"] = Json::Value();
        chain["names"] = Json::Value(Json::arrayValue);
        try {
            const DWORD status = certificate.verify(flags_, signatures_.store());
            chain["status"] = static_cast<Json::UInt>(status);
            for (const std::string& name : getTrustStatusNames(status))
                chain["names"].append(name);
            return status;
        } catch (const CryptoException& exception) {
            chain["error"] = toUtf8(numberForLog(exception.error()));
            return std::nullopt;
        }
    }

    void tellIdentity(Json::Value& report, DWORD index) const {
        const Bytes bytes = message_.parameter(CMSG_SIGNER_CERT_ID_PARAM, index);
        const auto& id = *reinterpret_cast<const CERT_ID*>(bytes.data());
        if (id.dwIdChoice == CERT_ID_KEY_IDENTIFIER) {
            report["keyIdentifier"] = toUtf8(binToHex({id.KeyId.pbData, id.KeyId.cbData}));
            return;
        }
        report["issuer"] = toUtf8(detail::toText(id.IssuerSerialNumber.Issuer, CERT_X500_NAME_STR));
        report["serialNumber"] = toUtf8(binToHex(detail::toBigEndian(id.IssuerSerialNumber.SerialNumber)));
    }

    void judge(Json::Value& report, DWORD index, const CRYPT_ATTRIBUTES& attributes,
               const Certificate& certificate, std::optional<DWORD> status) {
        const bool hasAttributes = attributes.cAttr != 0;
        Answer agrees = Answer::unknown;
        Answer good = Answer::unknown;
        DWORD error = ERROR_SUCCESS;
        if (isContentHere_) {
            agrees = digestAgrees(message_, index, attributes);
            error = signatures_.verify(index, certificate.context());
            if (error == ERROR_SUCCESS)
                agrees = good = Answer::yes;
            // The system compares the digests even where it does not tell the content's.
            if (error == static_cast<DWORD>(CRYPT_E_HASH_VALUE))
                agrees = Answer::no;
        }
        if (good == Answer::unknown && hasAttributes)
            good = detail::verifyAttributes(message_, index, certificate.context());
        // Nothing else than the signature itself was wrong.
        if (good == Answer::unknown && error == static_cast<DWORD>(NTE_BAD_SIGNATURE) &&
            (!hasAttributes || agrees == Answer::yes))
            good = Answer::no;
        report["digestAgrees"] = json(agrees);
        report["signatureGood"] = json(good);
        if (error != ERROR_SUCCESS)
            report["error"] = toUtf8(numberForLog(error));
        // Whatever else the system has against a signature keeps it from being good.
        report["verdict"] =
            verdict(agrees, good, hasAttributes, error == ERROR_SUCCESS ? status : std::nullopt);
    }

    const char* verdict(Answer agrees, Answer good, bool hasAttributes, std::optional<DWORD> status) const {
        // Without attributes another content and another key look the same; the content is the usual case.
        if (good == Answer::no)
            return hasAttributes ? "forged" : "changed";
        if (agrees == Answer::no)
            return "changed";
        if (!isContentHere_)
            return "noContent";
        if (good == Answer::unknown || agrees == Answer::unknown || !status)
            return "unknown";
        return *status == 0 ? "good" : "untrusted";
    }

    CryptMessage& message_;
    DecodedSignatures signatures_;
    SignerLookup lookup_;
    bool hasContent_;
    bool isContentHere_;
    DWORD flags_;
    SharedProgress progress_;
};

bool hasContent(std::span<const std::uint8_t> message) {
    const detail::Content content = detail::contentOf(message);
    if (content == detail::Content::unreadable)
        failCrypto(E_CRYPTO_VERIFY, L"asn1::hasContent", static_cast<DWORD>(CRYPT_E_UNEXPECTED_MSG_TYPE));
    return content == detail::Content::inside;
}

// The system would take what comes after a message with content for more of it.
bool expectDetached(const Bytes& signature) {
    if (hasContent(signature))
        failCrypto(E_CRYPTO_VERIFY, L"asn1::hasContent", static_cast<DWORD>(CRYPT_E_INVALID_MSG_TYPE));
    return false;
}

constexpr const wchar_t* context = L"Corvane::Crypto::inspectSignature";

}  // namespace

std::wstring inspectSignature(const Bytes& signature, const Bytes* data, const Certificates& supplied,
                              DWORD flags) {
    writeLog(LogLevel::debug, context, L"signature: ", signature.size(), L" bytes, input certificate: ",
             supplied, L", [in] flags: ", flags, L", detached: ", data != nullptr);
    const bool content = data ? expectDetached(signature) : hasContent(signature);
    auto message = CryptMessage::openToDecode(content ? 0 : CMSG_DETACHED_FLAG, [](auto) {});
    message.update(signature, true);
    if (data)
        message.update(*data, true);
    return Inspection(message, content, content || data, supplied, flags).run();
}

std::wstring inspectSignature(const Bytes& signature, Stream::IBinaryStream& data,
                              const Certificates& supplied, DWORD flags, const SharedProgress& progress) {
    writeLog(LogLevel::debug, context, L"signature: ", signature.size(), L" bytes, input certificate: ",
             supplied, L", [in] flags: ", flags, L", data size: ", data.state().size, L", data position: ",
             data.state().position);
    expectDetached(signature);
    auto message = CryptMessage::openToDecode(CMSG_DETACHED_FLAG, [](auto) {});
    message.update(signature, true);
    detail::feed(message, data, progress);
    return Inspection(message, false, true, supplied, flags, progress).run();
}

std::wstring inspectSignature(Stream::IBinaryStream& signature, const Certificates& supplied, DWORD flags,
                              const SharedProgress& progress) {
    writeLog(LogLevel::debug, context, L"input certificate: ", supplied, L", [in] flags: ", flags,
             L", signature size: ", signature.state().size, L", data position: ", signature.state().position);
    auto message = CryptMessage::openToDecode(0, [](auto) {});
    bool content = false;
    detail::feed(message, signature, progress, [&](auto block) { content = hasContent(block); });
    return Inspection(message, content, content, supplied, flags, progress).run();
}

}  // namespace Corvane::Crypto
