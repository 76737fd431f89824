#include "crypto/message/message_content.h"

#include "asn1/decoders/signed_data.h"
#include "core/log.h"

namespace Corvane::detail {

Content contentOf(std::span<const std::uint8_t> message) {
    try {
        return asn1::hasContent(message) ? Content::inside : Content::detached;
    } catch (const asn1::Asn1Exception& exception) {
        writeLog(LogLevel::error, L"asn1::hasContent", exception.what());
        return Content::unreadable;
    }
}

}  // namespace Corvane::detail
