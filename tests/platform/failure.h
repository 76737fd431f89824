// How what a stand-in throws becomes the last error of its functions; and calls of the system's.
#pragma once

#include "ber/ber.h"

#include <windows.h>

#include <wincrypt.h>

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

// A function's body; the codes are for bytes that end too early, that are malformed, and for all else.
template <LONG truncated, LONG malformed, LONG other, class Body>
bool succeedsWith(Body&& body) noexcept {
    LONG code = other;
    try {
        body();
        return true;
    } catch (const Failure& failure) {
        code = static_cast<LONG>(failure.code);
    } catch (const Truncated&) {
        code = truncated;
    } catch (const BerError&) {
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

// A key's blob: its header, and what the provider has behind it.
inline Bytes keyBlob(BYTE type, ALG_ID algorithm, View key) {
    const BLOBHEADER head{type, CUR_BLOB_VERSION, 0, algorithm};
    Bytes blob = bytesOf(viewOfStructure(head));
    return append(blob, key);
}

}  // namespace Corvane::Platform
