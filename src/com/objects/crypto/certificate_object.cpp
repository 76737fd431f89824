#include "com/objects/crypto/certificate_object.h"

#include "com/objects/binary/binary_object.h"
#include "com/runtime/arguments.h"
#include "com/runtime/dates.h"
#include "core/check.h"
#include "core/wide_text.h"
#include "crypto/certificate/certificate_extensions.h"
#include "crypto/certificate/certificate_json.h"
#include "crypto/certificate/certificate_view.h"

using namespace Corvane;
using namespace Corvane::Com;

namespace {

constexpr DWORD nameForm = CERT_X500_NAME_STR | CERT_NAME_STR_REVERSE_FLAG;

// Object identifiers are digits and dots; anything else is no attribute of a name, and stays none.
std::string toOid(BSTR text) {
    return toUtf8(viewOf(text));
}

}  // namespace

const SharedCertificate& CCertificate::certificate() const {
    if (!certificate_)
        throw Exception(E_CERT_INVALID);
    return certificate_;
}

HRESULT CCertificate::get_CommonName(BSTR* name) {
    return frame(L"CCertificate::get_CommonName", [&] { give(name, certificate()->getName(false)); });
}

HRESULT CCertificate::get_ValidFrom(DATE* date) {
    return frame(L"CCertificate::get_ValidFrom", [&] { give(date, toDate(certificate()->getValidFrom())); });
}

HRESULT CCertificate::get_ValidTo(DATE* date) {
    return frame(L"CCertificate::get_ValidTo", [&] { give(date, toDate(certificate()->getValidTo())); });
}

HRESULT CCertificate::get_IssuerName(BSTR* name) {
    return frame(L"CCertificate::get_IssuerName", [&] { give(name, certificate()->getName(true)); });
}

HRESULT CCertificate::get_HasPrivateKey(VARIANT_BOOL* has) {
    return frame(L"CCertificate::get_HasPrivateKey",
                 [&] { give(has, variantBool(certificate()->hasPrivateKey())); });
}

HRESULT CCertificate::get_Hash(IBinaryObject** hash) {
    return frame(L"CCertificate::get_Hash", [&] { give(hash, makeBinary(certificate()->getHash())); });
}

HRESULT CCertificate::get_SerialNumber(IBinaryObject** number) {
    return frame(L"CCertificate::get_SerialNumber",
                 [&] { give(number, makeBinary(certificate()->getSerialNumber())); });
}

HRESULT CCertificate::get_Description(BSTR* json) {
    return frame(L"CCertificate::get_Description",
                 [&] { give(json, Crypto::getCertDescriptionJson(*certificate())); });
}

HRESULT CCertificate::get_Content(IBinaryObject** content) {
    return frame(L"CCertificate::get_Content",
                 [&] { give(content, makeBinary(certificate()->getContent())); });
}

HRESULT CCertificate::get_PublicKeyLength(UINT* bits) {
    return frame(L"CCertificate::get_PublicKeyLength",
                 [&] { give(bits, static_cast<UINT>(certificate()->getPublicKeyLength())); });
}

HRESULT CCertificate::get_PublicKeyAlgorithm(BSTR* oid) {
    return frame(L"CCertificate::get_PublicKeyAlgorithm",
                 [&] { give(oid, certificate()->getPublicKeyAlgorithm()); });
}

HRESULT CCertificate::Display() {
    return frame(L"CCertificate::Display", [&] { Crypto::viewCertificate(*certificate()); });
}

HRESULT CCertificate::get_Subject(BSTR* name) {
    return frame(L"CCertificate::get_Subject", [&] { give(name, certificate()->getSubject(nameForm)); });
}

HRESULT CCertificate::Uninstall() {
    return frame(L"CCertificate::Uninstall", [&] { certificate()->uninstall(); });
}

HRESULT CCertificate::get_Archived(VARIANT_BOOL* archived) {
    return frame(L"CCertificate::get_Archived",
                 [&] { give(archived, variantBool(certificate()->getArchived())); });
}

HRESULT CCertificate::put_Archived(VARIANT_BOOL archived) {
    return frame(L"CCertificate::put_Archived",
                 [&] { certificate()->setArchived(archived != VARIANT_FALSE); });
}

HRESULT CCertificate::GetExtensions(BSTR* json) {
    return frame(L"CCertificate::GetExtensions",
                 [&] { give(json, Crypto::getCertExtensionJson(*certificate())); });
}

HRESULT CCertificate::get_Issuer(BSTR* name) {
    return frame(L"CCertificate::get_Issuer", [&] { give(name, certificate()->getIssuer(nameForm)); });
}

HRESULT CCertificate::get_Version(LONG* version) {
    return frame(L"CCertificate::get_Version",
                 [&] { give(version, static_cast<LONG>(certificate()->getVersion())); });
}

HRESULT CCertificate::GetRdnValue(BSTR oid, VARIANT_BOOL forIssuer, BSTR* value) {
    return frame(L"CCertificate::GetRdnValue",
                 [&] { give(value, certificate()->getRdnValue(toOid(oid), forIssuer != VARIANT_FALSE)); });
}

HRESULT CCertificate::GetContainerInfo(BSTR* json) {
    return frame(L"CCertificate::GetContainerInfo",
                 [&] { give(json, Crypto::getContainerInfoJson(*certificate())); });
}

HRESULT CCertificate::GetOnlineCertificateStatusProtocol(BSTR* address) {
    return frame(L"CCertificate::GetOnlineCertificateStatusProtocol",
                 [&] { give(address, certificate()->getOnlineCertificateStatusProtocol()); });
}

namespace Corvane::Com {

SharedCertificate certificateOf(ICertificate* object) {
    return resolve<CCertificate>(object)->certificate();
}

ComPtr<CCertificate> makeCertificate(SharedCertificate certificate) {
    return makeObject<CCertificate>(std::move(certificate));
}

}  // namespace Corvane::Com
