#include "crypto/certificate/certificate.h"

#include "binary/hex.h"
#include "core/log.h"
#include "core/two_pass.h"
#include "crypto/api/blob.h"
#include "crypto/api/decode.h"
#include "crypto/api/encoding.h"
#include "crypto/api/message_size.h"

#include <algorithm>
#include <ostream>
#include <span>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace Corvane {
namespace {

// The first byte that tells an encoded certificate from text. It is the decimal number of the SEQUENCE
// tag (0x30), and stays: scripts rely on what follows from it.
constexpr std::uint8_t encodedMark = 0x1E;

Bytes decodeText(const Bytes& text) {
    const DWORD length = detail::messageSize(text);
    return twoPass<BYTE>(E_CRYPTO_PEM_TO_BYTES, L"CryptStringToBinaryA", [&](BYTE* buffer, DWORD* size) {
        return ::CryptStringToBinaryA(reinterpret_cast<const char*>(text.data()), length,
                                      CRYPT_STRING_BASE64_ANY, buffer, size, nullptr, nullptr);
    });
}

Certificate createEncoded(const Bytes& encoded) {
    return Certificate(CertificateContext(checkCrypto(
        ::CertCreateCertificateContext(messageEncoding, encoded.data(), detail::messageSize(encoded)),
        E_CERT_INVALID, L"CertCreateCertificateContext")));
}

}  // namespace

Certificate Certificate::duplicate(PCCERT_CONTEXT context) noexcept {
    return Certificate(CertificateContext(::CertDuplicateCertificateContext(context)));
}

Certificate Certificate::create(const Bytes& bytes) {
    writeLog(LogLevel::debug, L"Corvane::Certificate::create", L"[in] bytes: ", bytes.size());
    if (bytes.empty())
        throw std::out_of_range("invalid vector subscript");
    return createEncoded(bytes.front() == encodedMark ? bytes : decodeText(bytes));
}

std::wstring Certificate::getValue(DWORD type, DWORD flags, const void* typeParameter) const {
    writeLog(LogLevel::debug, L"Corvane::Certificate::getValue", L"[in] type: ", type, L" [in] flags: ",
             flags);
    return detail::readName(L"CertGetNameStringW", [&](wchar_t* buffer, DWORD size) {
        return ::CertGetNameStringW(context(), type, flags, const_cast<void*>(typeParameter), buffer, size);
    });
}

std::wstring Certificate::getName(bool forIssuer) const {
    return getValue(CERT_NAME_SIMPLE_DISPLAY_TYPE, forIssuer ? CERT_NAME_ISSUER_FLAG : 0, nullptr);
}

std::wstring Certificate::getSubjectAttribute(const std::string& oid) const {
    writeLog(LogLevel::debug, L"Corvane::Certificate::getSubjectAttribute", L"[in] oid: ", oid.c_str());
    return getValue(CERT_NAME_ATTR_TYPE, 0, oid.c_str());
}

std::wstring Certificate::getRdnValue(const std::string& oid, bool forIssuer) const {
    writeLog(LogLevel::debug, L"Corvane::Certificate::getRdnValue", L"[in] oid", oid.c_str(),
             L" [in] for issuer: ", forIssuer);
    return getValue(CERT_NAME_ATTR_TYPE, forIssuer ? CERT_NAME_ISSUER_FLAG : 0, oid.c_str());
}

std::wstring Certificate::getSubject(DWORD flags) const {
    writeLog(LogLevel::debug, L"Corvane::Certificate::getSubject", L"[in] flags: ", flags);
    return detail::toText(info().Subject, flags);
}

std::wstring Certificate::getIssuer(DWORD flags) const {
    writeLog(LogLevel::debug, L"Corvane::Certificate::getIssuer", L"[in] flags: ", flags);
    return detail::toText(info().Issuer, flags);
}

bool Certificate::hasProperty(DWORD property) const {
    DWORD size = 0;
    if (::CertGetCertificateContextProperty(context(), property, nullptr, &size))
        return true;
    const DWORD error = ::GetLastError();
    if (error != static_cast<DWORD>(CRYPT_E_NOT_FOUND))
        failCrypto(E_CERT_PROPERTY, L"CertGetCertificateContextProperty", error);
    return false;
}

bool Certificate::hasPrivateKey() const {
    writeLog(LogLevel::debug, L"Corvane::Certificate::hasPrivateKey", L"");
    return hasProperty(CERT_KEY_PROV_INFO_PROP_ID);
}

bool Certificate::getArchived() const {
    writeLog(LogLevel::debug, L"Corvane::Certificate::getArchived", L"");
    return hasProperty(CERT_ARCHIVED_PROP_ID);
}

// NOLINTNEXTLINE(readability-make-member-function-const): the certificate changes
void Certificate::setArchived(bool archived) {
    writeLog(LogLevel::debug, L"Corvane::Certificate::setArchived", L"[in] archived: ", archived);
    const CRYPT_DATA_BLOB present{};
    checkCrypto(::CertSetCertificateContextProperty(context(), CERT_ARCHIVED_PROP_ID, 0,
                                                    archived ? &present : nullptr),
                E_CERT_SET_PROPERTY, L"CertSetCertificateContextProperty");
}

Certificate::Sha1 Certificate::readHash() const {
    Sha1 hash;
    auto size = static_cast<DWORD>(hash.size());
    checkCrypto(::CertGetCertificateContextProperty(context(), CERT_HASH_PROP_ID, hash.data(), &size),
                E_CERT_HASH, L"CertGetCertificateContextProperty");
    return hash;
}

Bytes Certificate::getHash() const {
    writeLog(LogLevel::debug, L"Corvane::Certificate::getHash", L"");
    const Sha1 hash = readHash();
    return {hash.begin(), hash.end()};
}

bool Certificate::hasHash(const Bytes& hash) const {
    return std::ranges::equal(readHash(), hash);
}

Bytes Certificate::getCertProperty(DWORD property) const {
    writeLog(LogLevel::debug, L"Corvane::Certificate::getCertProperty", L"[in] property: ", property);
    return twoPass<BYTE>(E_CERT_PROPERTY, L"CertGetCertificateContextProperty",
                         [&](BYTE* buffer, DWORD* size) {
                             return ::CertGetCertificateContextProperty(context(), property, buffer, size);
                         });
}

Bytes Certificate::getSerialNumber() const {
    return detail::toBigEndian(info().SerialNumber);
}

Bytes Certificate::getContent() const {
    return {context()->pbCertEncoded, context()->pbCertEncoded + context()->cbCertEncoded};
}

DWORD Certificate::getPublicKeyLength() const {
    writeLog(LogLevel::debug, L"Corvane::Certificate::getPublicKeyLength", L"");
    return ::CertGetPublicKeyLength(messageEncoding, &context()->pCertInfo->SubjectPublicKeyInfo);
}

std::wstring Certificate::getPublicKeyAlgorithm() const {
    const char* oid = info().SubjectPublicKeyInfo.Algorithm.pszObjId;
    return oid ? std::wstring(oid, oid + std::char_traits<char>::length(oid)) : std::wstring();
}

DWORD Certificate::getVersion() const {
    return info().dwVersion + 1;
}

std::wstring Certificate::getOnlineCertificateStatusProtocol() const {
    writeLog(LogLevel::debug, L"Corvane::Certificate::getOnlineCertificateStatusProtocol", L"");
    const CERT_EXTENSION* extension =
        ::CertFindExtension(szOID_AUTHORITY_INFO_ACCESS, info().cExtension, info().rgExtension);
    if (!extension)
        return {};
    const Bytes decoded = detail::cryptDecodeObject(szOID_AUTHORITY_INFO_ACCESS, extension->Value);
    const auto& access = *reinterpret_cast<const CERT_AUTHORITY_INFO_ACCESS*>(decoded.data());
    for (const auto& entry : std::span(access.rgAccDescr, access.cAccDescr)) {
        // Empty identifiers and addresses may come as null.
        if (entry.pszAccessMethod && std::string_view(entry.pszAccessMethod) == szOID_PKIX_OCSP &&
            entry.AccessLocation.dwAltNameChoice == CERT_ALT_NAME_URL && entry.AccessLocation.pwszURL)
            return entry.AccessLocation.pwszURL;
    }
    return {};
}

// NOLINTNEXTLINE(readability-make-member-function-const): the store changes
void Certificate::uninstall() {
    writeLog(LogLevel::debug, L"Corvane::Certificate::uninstall", L"");
    // The call frees the context it is given, whether it succeeds or not.
    checkCrypto(::CertDeleteCertificateFromStore(::CertDuplicateCertificateContext(context())), E_CRYPTO,
                L"CertDeleteCertificateFromStore");
}

Certificates Certificate::getCertificateChain() const {
    writeLog(LogLevel::debug, L"Corvane::Certificate::getCertificateChain", L"");
    CERT_CHAIN_PARA parameters{};
    parameters.cbSize = sizeof(parameters);
    CertificateChain chain;
    checkCrypto(
        ::CertGetCertificateChain(nullptr, context(), nullptr, nullptr, &parameters, 0, nullptr, chain.put()),
        E_CERT_GET_CHAIN, L"CertGetCertificateChain");
    Certificates certificates;
    if (chain.get()->cChain == 0)
        return certificates;
    const CERT_SIMPLE_CHAIN& simple = *chain.get()->rgpChain[0];
    for (const CERT_CHAIN_ELEMENT* element : std::span(simple.rgpElement, simple.cElement))
        certificates.push_back(std::make_shared<Certificate>(duplicate(element->pCertContext)));
    return certificates;
}

DWORD Certificate::verify(DWORD flags) const {
    return verify(flags, nullptr);
}

DWORD Certificate::verify(DWORD flags, HCERTSTORE additional) const {
    writeLog(LogLevel::debug, L"Corvane::Certificate::verify", L"[in] flags: ", flags);
    CERT_CHAIN_PARA parameters{};
    parameters.cbSize = sizeof(parameters);
    parameters.RequestedUsage.dwType = USAGE_MATCH_TYPE_AND;
    CertificateChain chain;
    checkCrypto(::CertGetCertificateChain(nullptr, context(), nullptr, additional, &parameters, flags,
                                          nullptr, chain.put()),
                E_CERT_CHAIN, L"CertGetCertificateChain");
    return chain.get()->TrustStatus.dwErrorStatus;
}

std::wostream& operator<<(std::wostream& out, const Certificate& certificate) {
    return out << certificate.getName(false) << L" (" << binToHex(certificate.getHash()) << L")";
}

std::wostream& operator<<(std::wostream& out, const Certificates& certificates) {
    const wchar_t* separator = L"";
    for (const SharedCertificate& certificate : certificates) {
        out << separator << *certificate;
        separator = L", ";
    }
    return out;
}

}  // namespace Corvane
