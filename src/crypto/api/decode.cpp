#include "crypto/api/decode.h"

#include "core/log.h"
#include "core/two_pass.h"
#include "crypto/api/encoding.h"

namespace Corvane::detail {

Bytes cryptDecodeObject(const char* structType, const CRYPT_DATA_BLOB& encoded) {
    writeLog(LogLevel::debug, L"Corvane::detail::cryptDecodeObject", L"[in] bytes: ", encoded.cbData);
    return twoPass<BYTE>(E_CERT_EXT_DECODE, L"CryptDecodeObject", [&](BYTE* buffer, DWORD* size) {
        return ::CryptDecodeObject(messageEncoding, structType, encoded.pbData, encoded.cbData, 0, buffer,
                                   size);
    });
}

}  // namespace Corvane::detail
