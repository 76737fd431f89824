// What CryptoAPI keeps in blobs, as bytes and text.
#pragma once

#include "binary/bytes.h"
#include "core/check.h"

#include <windows.h>

#include <wincrypt.h>

#include <iterator>
#include <string>

namespace Corvane::detail {

// A whole number with the most significant byte first, as DER has it. CryptoAPI keeps it the other way round.
Bytes toBigEndian(const CRYPT_INTEGER_BLOB& number);

// The text that the system's function `name` gives. `call(buffer, size)` returns the length in characters,
// terminator included, and cuts off what finds no room. Throws CryptoException E_CERT_PROPERTY when two calls
// differ about it.
template <class Call>
std::wstring readName(const wchar_t* name, Call call) {
    // Each call decodes the whole name, so most are made once.
    wchar_t usual[128];
    if (const DWORD length = call(usual, static_cast<DWORD>(std::size(usual)));
        length != 0 && length < std::size(usual))
        return {usual, length - 1};
    const DWORD length = call(nullptr, 0);
    std::wstring text(length, L'\0');
    checkCrypto(call(text.data(), length) == length && length != 0, E_CERT_PROPERTY, name);
    text.pop_back();
    return text;
}

// A whole distinguished name as CertNameToStrW writes it; throws as readName() does.
std::wstring toText(const CERT_NAME_BLOB& name, DWORD flags);

}  // namespace Corvane::detail
