#include "crypto/api/blob.h"

#include "crypto/api/encoding.h"

#include <iterator>

namespace Corvane::detail {

Bytes toBigEndian(const CRYPT_INTEGER_BLOB& number) {
    return {std::make_reverse_iterator(number.pbData + number.cbData),
            std::make_reverse_iterator(number.pbData)};
}

std::wstring toText(const CERT_NAME_BLOB& name, DWORD flags) {
    CERT_NAME_BLOB blob = name;
    return readName(L"CertNameToStrW", [&](wchar_t* buffer, DWORD size) {
        return ::CertNameToStrW(messageEncoding, &blob, flags, buffer, size);
    });
}

}  // namespace Corvane::detail
