#include "crypto/enroll/certificate_response.h"

#include "core/check.h"
#include "crypto/request/response_text.h"

#include <utility>

namespace Corvane::detail {

Certificate queryCertificate(std::wstring_view response) {
    Bytes bytes = responseBytes(response);
    if (bytes.empty())
        failCrypto(E_CRYPTO_QUERY_OBJECT, L"CryptQueryObject", static_cast<DWORD>(CRYPT_E_NO_MATCH));
    CRYPT_DATA_BLOB blob{static_cast<DWORD>(bytes.size()), bytes.data()};
    CertificateContext context;
    checkCrypto(::CryptQueryObject(CERT_QUERY_OBJECT_BLOB, &blob, CERT_QUERY_CONTENT_FLAG_CERT,
                                   CERT_QUERY_FORMAT_FLAG_ALL, 0, nullptr, nullptr, nullptr, nullptr, nullptr,
                                   reinterpret_cast<const void**>(context.put())),
                E_CRYPTO_QUERY_OBJECT, L"CryptQueryObject");
    return Certificate(std::move(context));
}

}  // namespace Corvane::detail
