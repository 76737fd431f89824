#include "core/handles.h"
#include "core/log.h"
#include "core/two_pass.h"
#include "crypto/api/message_size.h"
#include "crypto/message/crypto_api_provider.h"
#include "crypto/message/private_key.h"

#include <algorithm>
#include <string_view>

namespace Corvane {
namespace {

// Numbers that vendors of GOST providers agree on; no header of the system has them.
constexpr ALG_ID gost94 = 0x801E;         // GOST R 34.11-94
constexpr ALG_ID gost2012Short = 0x8021;  // GOST R 34.11-2012, 256 bits
constexpr ALG_ID gost2012Long = 0x8022;   // GOST R 34.11-2012, 512 bits

// Keys by RFC 4491 and RFC 9215.
ALG_ID hashFor(std::wstring_view publicKeyAlgorithm) {
    if (publicKeyAlgorithm == L"1.2.643.2.2.19")
        return gost94;
    if (publicKeyAlgorithm == L"1.2.643.7.1.1.1.1")
        return gost2012Short;
    if (publicKeyAlgorithm == L"1.2.643.7.1.1.1.2")
        return gost2012Long;
    throw Exception(E_CRYPTO_UNSUPPORTED_PUBLIC_ALGO);
}

}  // namespace

Bytes CryptoApiProvider::rawSign(const Bytes& data, const Certificate& certificate) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::rawSign", L"provider name: ", record_.name,
             L"certificate: ", certificate);
    const ALG_ID algorithm = hashFor(certificate.getPublicKeyAlgorithm());
    const DWORD size = detail::messageSize(data);
    const detail::PrivateKey key(certificate, E_CRYPTO_SIGN, detail::PrivateKey::Kind::cryptoApi);
    CryptHash hash;
    checkCrypto(::CryptCreateHash(key.handle(), algorithm, 0, 0, hash.put()), E_CRYPTO_HASH,
                L"CryptCreateHash");
    checkCrypto(::CryptHashData(hash.get(), data.data(), size, 0), E_CRYPTO_HASH, L"CryptHashData");
    Bytes signature =
        twoPass<BYTE>(E_CRYPTO_SIGN, L"CryptSignHashW", [&](BYTE* buffer, DWORD* signatureSize) {
            return ::CryptSignHashW(hash.get(), key.spec(), nullptr, 0, buffer, signatureSize);
        });
    // The system gives it with the least significant byte first, everybody else has it the other way round.
    std::ranges::reverse(signature);
    return signature;
}

}  // namespace Corvane
