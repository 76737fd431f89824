#include "crypto/message/crypt_message.h"

#include "core/errors.h"
#include "crypto/api/encoding.h"
#include "crypto/api/message_size.h"

#include <utility>

namespace Corvane::detail {

// Called by the system: nothing may be thrown.
BOOL WINAPI CryptMessage::receive(const void* argument, BYTE* data, DWORD size, BOOL) noexcept {
    auto& receiver = *static_cast<Receiver*>(const_cast<void*>(argument));
    if (!receiver.error) {
        try {
            if (size != 0)
                receiver.output({data, size});
            return TRUE;
        } catch (...) {
            receiver.error = std::current_exception();
        }
    }
    ::SetLastError(ERROR_WRITE_FAULT);
    return FALSE;
}

CryptMessage::Receiver::Receiver(Output sink, DWORD contentSize) : output(std::move(sink)) {
    info.cbContent = contentSize;
    info.pfnStreamOutput = receive;
    info.pvArg = this;
}

CryptMessage CryptMessage::openToEncode(DWORD flags, DWORD type, const void* info, DWORD contentSize,
                                        Output output) {
    auto receiver = std::make_unique<Receiver>(std::move(output), contentSize);
    HCRYPTMSG message =
        checkCrypto(::CryptMsgOpenToEncode(messageEncoding, flags, type, info, nullptr, &receiver->info),
                    E_CRYPTO_MESSAGE_OPEN_ENCODE, L"CryptMsgOpenToEncode");
    return {std::move(receiver), message};
}

CryptMessage CryptMessage::openToDecode(DWORD flags, Output output) {
    auto receiver = std::make_unique<Receiver>(std::move(output), CMSG_INDEFINITE_LENGTH);
    HCRYPTMSG message =
        checkCrypto(::CryptMsgOpenToDecode(messageEncoding, flags, 0, 0, nullptr, &receiver->info),
                    E_CRYPTO_MESSAGE_OPEN_DECODE, L"CryptMsgOpenToDecode");
    return {std::move(receiver), message};
}

CryptMessage CryptMessage::openToDecode(DWORD flags) {
    return {nullptr, checkCrypto(::CryptMsgOpenToDecode(messageEncoding, flags, 0, 0, nullptr, nullptr),
                                 E_CRYPTO_MESSAGE_OPEN_DECODE, L"CryptMsgOpenToDecode")};
}

void CryptMessage::rethrow() {
    if (receiver_ && receiver_->error)
        std::rethrow_exception(std::exchange(receiver_->error, nullptr));
}

void CryptMessage::update(std::span<const std::uint8_t> bytes, bool last) {
    const BOOL updated = ::CryptMsgUpdate(message_.get(), bytes.data(), messageSize(bytes), last);
    const DWORD error = ::GetLastError();
    rethrow();
    if (!updated)
        failCrypto(E_CRYPTO_MESSAGE_UPDATE, L"CryptMsgUpdate", error);
}

DWORD CryptMessage::tryControl(DWORD type, const void* argument) {
    const BOOL done = ::CryptMsgControl(message_.get(), 0, type, argument);
    const DWORD error = ::GetLastError();
    rethrow();
    if (done)
        return ERROR_SUCCESS;
    return error != ERROR_SUCCESS ? error : static_cast<DWORD>(E_FAIL);
}

void CryptMessage::control(DWORD type, const void* argument, const ErrorDescriptor& descriptor) {
    if (const DWORD error = tryControl(type, argument); error != ERROR_SUCCESS)
        failCrypto(descriptor, L"CryptMsgControl", error);
}

Bytes CryptMessage::parameter(DWORD type, DWORD index) const {
    return twoPass<BYTE>(E_CRYPTO_MESSAGE_PARAM, L"CryptMsgGetParam", [&](BYTE* buffer, DWORD* size) {
        return ::CryptMsgGetParam(message_.get(), type, index, buffer, size);
    });
}

DWORD CryptMessage::number(DWORD type) const {
    DWORD value = 0;
    DWORD size = sizeof(value);
    checkCrypto(::CryptMsgGetParam(message_.get(), type, 0, &value, &size), E_CRYPTO_MESSAGE_PARAM,
                L"CryptMsgGetParam");
    return value;
}

bool CryptMessage::has(DWORD type, DWORD index, DWORD& error) const noexcept {
    DWORD size = 0;
    const BOOL told = ::CryptMsgGetParam(message_.get(), type, index, nullptr, &size);
    error = told ? ERROR_SUCCESS : ::GetLastError();
    return told != FALSE;
}

}  // namespace Corvane::detail
