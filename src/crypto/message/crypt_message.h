// A CMS message (RFC 5652) in the hands of the system: encoded or decoded in pieces, in constant memory.
#pragma once

#include "binary/bytes.h"
#include "core/check.h"
#include "core/handles.h"
#include "core/two_pass.h"

#include <windows.h>

#include <wincrypt.h>

#include <exception>
#include <functional>
#include <memory>
#include <span>

namespace Corvane::detail {

// Used by one thread at a time. What it was opened with (keys, certificates) must outlive it.
class CryptMessage {
public:
    // Takes the next piece of what the message yields; may throw, and what it throws reaches the caller of
    // update() or control() as it is.
    using Output = std::function<void(std::span<const std::uint8_t>)>;

    // To be encoded from a stream. `info` is the structure of that type of message; `contentSize` what will
    // come, or CMSG_INDEFINITE_LENGTH. Throws CryptoException E_CRYPTO_MESSAGE_OPEN_ENCODE.
    static CryptMessage openToEncode(DWORD flags, DWORD type, const void* info, DWORD contentSize,
                                     Output output);
    // To be decoded: with `output` from a stream, else held in memory. Throws CryptoException
    // E_CRYPTO_MESSAGE_OPEN_DECODE.
    static CryptMessage openToDecode(DWORD flags, Output output);
    static CryptMessage openToDecode(DWORD flags);

    // Throws Exception E_BINARY_MAX_SIZE for 4 GiB and more; CryptoException E_CRYPTO_MESSAGE_UPDATE, after
    // which nothing else works, and what the output throws.
    void update(std::span<const std::uint8_t> bytes, bool last);

    // CryptMsgControl. Throws CryptoException with `descriptor`, and what the output throws.
    void control(DWORD type, const void* argument, const ErrorDescriptor& descriptor);

    // The same, for whom a failure is an answer: the system's error, 0 for success.
    DWORD tryControl(DWORD type, const void* argument);

    // CryptMsgGetParam: a structure whose pointers point into the returned bytes. Throws CryptoException
    // E_CRYPTO_MESSAGE_PARAM.
    Bytes parameter(DWORD type, DWORD index = 0) const;
    // A parameter that is a number.
    DWORD number(DWORD type) const;
    // Whether the parameter can be told (yet); `error` is why not.
    bool has(DWORD type, DWORD index, DWORD& error) const noexcept;

    HCRYPTMSG get() const noexcept { return message_.get(); }

private:
    struct Receiver {
        Receiver(Output sink, DWORD contentSize);

        Output output;
        CMSG_STREAM_INFO info{};
        std::exception_ptr error;
    };

    CryptMessage(std::unique_ptr<Receiver> receiver, HCRYPTMSG message)
        : receiver_(std::move(receiver)), message_(message) {}

    static BOOL WINAPI receive(const void* argument, BYTE* data, DWORD size, BOOL last) noexcept;
    // Ends with what the output threw, if it did.
    void rethrow();

    std::unique_ptr<Receiver> receiver_;  // the system knows its address
    CryptMessageHandle message_;
};

}  // namespace Corvane::detail
