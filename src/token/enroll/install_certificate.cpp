#include "token/enroll/install_certificate.h"

#include "asn1/pkix/certificate_fields.h"
#include "binary/hex.h"
#include "core/errors.h"
#include "core/exception.h"
#include "core/log.h"
#include "core/utf8.h"
#include "token/cryptoki/container_path.h"
#include "token/cryptoki/cryptoki_exception.h"
#include "token/cryptoki/driver_path.h"
#include "token/cryptoki/session.h"

namespace Corvane {
namespace {

constexpr wchar_t context[] = L"Corvane::CryptoApiProvider::installCertificateResponseGOST";

// The identifier of a path is the text itself, or the hexadecimal digits of a key's that is no text, as the
// list of containers tells it. Digits that are nobody's are a text.
Bytes identifierIn(const cryptoki::Session& session, const std::wstring& identifier) {
    const std::string text = toUtf8(identifier);
    Bytes plain(text.begin(), text.end());
    if (text.size() % 2 != 0 || text.find_first_not_of("0123456789ABCDEF") != std::string::npos)
        return plain;
    const Bytes octets = hexToBin(text);
    const auto keys = session.findObjects(
        cryptoki::AttributeTemplate().number(CKA_CLASS, CKO_PUBLIC_KEY).bytes(CKA_ID, octets));
    return keys.empty() ? plain : octets;
}

// What is searched for by others stands beside the value (PKCS#11 2.20, 10.6.2).
cryptoki::AttributeTemplate makeTemplate(const Bytes& certificate, const Bytes& identifier) {
    const asn1::CertificateFields fields = asn1::readCertificateFields(certificate);
    return cryptoki::AttributeTemplate()
        .number(CKA_CLASS, CKO_CERTIFICATE)
        .boolean(CKA_TOKEN, true)
        .boolean(CKA_PRIVATE, false)
        .number(CKA_CERTIFICATE_TYPE, CKC_X_509)
        .bytes(CKA_ID, identifier)
        .bytes(CKA_VALUE, certificate)
        .bytes(CKA_SUBJECT, fields.subject)
        .bytes(CKA_ISSUER, fields.issuer)
        .bytes(CKA_SERIAL_NUMBER, fields.serialNumber);
}

}  // namespace

void installCertificateResponseGOST(std::wstring_view response, const std::wstring& containerPath,
                                    SecretNarrowText pin,
                                    const std::function<Bytes(std::wstring_view)>& decode) {
    writeLog(LogLevel::debug, context, L"path: ", containerPath);
    writeLog(LogLevel::debug, context, L"response: ", response.size());
    const cryptoki::ContainerPath path = cryptoki::parseContainerPath(containerPath);
    const std::wstring driver = cryptoki::driverPathFor(path.reader);
    writeLog(LogLevel::debug, context, L"driver path: ", driver);
    const auto module = cryptoki::Pkcs11Module::load(driver);
    cryptoki::Session session(module, module.findSlot(path.reader), CKF_SERIAL_SESSION | CKF_RW_SESSION);
    session.login(pin);

    const cryptoki::AttributeTemplate object =
        makeTemplate(decode(response), identifierIn(session, path.identifier));
    try {
        session.createObject(object);
    } catch (const cryptoki::CryptokiException&) {
        throw Exception(E_TOKEN_BIND_CERTIFICATE);
    }
}

}  // namespace Corvane
