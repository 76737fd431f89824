#include "crypto/enroll/export_agreement.h"

#include "core/two_pass.h"

#include <algorithm>
#include <iterator>

namespace Corvane::detail {
namespace {

constexpr wchar_t context[] = L"GetAgreeKey";

// GOST R 34.10-2001, and GOST R 34.10-2012 of 256 and 512 bits.
constexpr ExportAlgorithms table[] = {
    {0x2E23, 0xAA24, 0xAA25, 0x661F},
    {0x2E49, 0xAA46, 0xAA47, 0x6621},
    {0x2E3D, 0xAA42, 0xAA43, 0x6621},
};

CryptKey makeEphemeralKey(HCRYPTPROV provider, const ExportAlgorithms& algorithms) {
    CryptKey key;
    checkCrypto(::CryptGenKey(provider, algorithms.ephemeralKey, CRYPT_EXPORTABLE, key.put()),
                E_CRYPTO_GEN_KEY, context);
    return key;
}

std::vector<BYTE> publicKeyOf(const CryptKey& key) {
    return twoPass<BYTE>(E_CRYPTO_EXPORT_KEY, context, [&](BYTE* buffer, DWORD* size) {
        return ::CryptExportKey(key.get(), 0, PUBLICKEYBLOB, 0, buffer, size);
    });
}

CryptKey agree(HCRYPTPROV provider, const CryptKey& own, const std::vector<BYTE>& other,
               const ExportAlgorithms& algorithms) {
    CryptKey agreed;
    checkCrypto(::CryptImportKey(provider, other.data(), static_cast<DWORD>(other.size()), own.get(), 0,
                                 agreed.put()),
                E_CRYPTO_IMPORT_KEY, context);
    const ALG_ID keyWrap = algorithms.keyWrap;
    checkCrypto(::CryptSetKeyParam(agreed.get(), KP_ALGID, reinterpret_cast<const BYTE*>(&keyWrap), 0),
                E_CRYPTO_SET_KEY_PARAM, context);
    return agreed;
}

}  // namespace

const ExportAlgorithms* findExportAlgorithms(ALG_ID key) noexcept {
    const auto* found = std::ranges::find_if(
        table, [&](const ExportAlgorithms& row) { return row.key == key || row.exchangeKey == key; });
    return found == std::end(table) ? nullptr : found;
}

Agreement agreeOnKey(HCRYPTPROV source, HCRYPTPROV destination, const ExportAlgorithms& algorithms) {
    const CryptKey first = makeEphemeralKey(source, algorithms);
    const CryptKey second = makeEphemeralKey(destination, algorithms);
    Agreement agreement;
    agreement.source = agree(source, first, publicKeyOf(second), algorithms);
    agreement.destination = agree(destination, second, publicKeyOf(first), algorithms);
    return agreement;
}

}  // namespace Corvane::detail
