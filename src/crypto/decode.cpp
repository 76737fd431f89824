#include "crypto/decode.h"

#include "core/two_pass.h"
#include "crypto/encoding.h"

namespace Corvane::detail {

Bytes cryptDecodeObject(const char* structType, const CRYPT_DATA_BLOB& encoded) {
    return twoPass<BYTE>(E_CERT_EXT_DECODE, L"CryptDecodeObject", [&](BYTE* buffer, DWORD* size) {
        return ::CryptDecodeObject(messageEncoding, structType, encoded.pbData, encoded.cbData, 0, buffer,
                                   size);
    });
}

}  // namespace Corvane::detail
