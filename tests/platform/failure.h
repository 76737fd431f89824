// How what a stand-in throws becomes the last error of its functions; and calls of the system's.
#pragma once

#include "ber/ber.h"

#include <windows.h>

#include <wincrypt.h>

#include <algorithm>
#include <utility>

namespace Corvane::Platform {

// A code of GetLastError.
struct Failure {
    DWORD code;
};

[[noreturn]] inline void fail(LONG code) {
    throw Failure{static_cast<DWORD>(code)};
}

// For calls of the system.
template <class Result>
Result must(Result result) {
    if (!result)
        throw Failure{::GetLastError()};
    return result;
}

// A function's body; the codes are for bytes that are malformed or end too early, and for all else.
template <LONG malformed, LONG other, class Body>
bool succeedsWith(Body&& body) noexcept {
    LONG code = other;
    try {
        body();
        return true;
    } catch (const Failure& failure) {
        code = static_cast<LONG>(failure.code);
    } catch (const Asn1Exception&) {
        code = malformed;
    } catch (...) {
        code = other;
    }
    ::SetLastError(static_cast<DWORD>(code));
    return false;
}

inline DWORD lengthOf(View bytes) {
    return bytes.size() <= MAXDWORD ? static_cast<DWORD>(bytes.size()) : (fail(E_INVALIDARG), DWORD{0});
}

inline View viewOf(const CRYPT_DATA_BLOB& blob) {
    return {blob.pbData, blob.cbData};
}
template <class Structure>
View viewOfStructure(const Structure& structure) {
    return {reinterpret_cast<const std::uint8_t*>(&structure), sizeof structure};
}

// What a function gives that tells the size first: `call` takes a buffer, or null, and its size.
template <class Call>
Bytes filled(Call&& call) {
    DWORD size = 0;
    must(call(static_cast<BYTE*>(nullptr), &size));
    Bytes bytes(size);
    must(call(bytes.data(), &size));
    bytes.resize(size);
    return bytes;
}
template <class Call>
DWORD numberOf(Call&& call) {
    DWORD number = 0;
    DWORD size = sizeof number;
    must(call(reinterpret_cast<BYTE*>(&number), &size));
    return number;
}

// Gives a result as CryptoAPI does: the size where no buffer is given, ERROR_MORE_DATA where it is too small.
inline void give(void* buffer, DWORD* size, View result) {
    const DWORD room = std::exchange(*size, lengthOf(result));
    if (buffer && room < result.size())
        fail(ERROR_MORE_DATA);
    if (buffer)
        std::ranges::copy(result, static_cast<BYTE*>(buffer));
}

// A key's blob: its header, and what the provider has behind it.
inline Bytes keyBlob(BYTE type, ALG_ID algorithm, View key) {
    const BLOBHEADER head{type, CUR_BLOB_VERSION, 0, algorithm};
    Bytes blob = bytesOf(viewOfStructure(head));
    return append(blob, key);
}

}  // namespace Corvane::Platform
