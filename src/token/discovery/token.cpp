#include "token/discovery/token.h"

#include "token/cryptoki/field_text.h"

namespace Corvane {
namespace {

std::optional<std::uint64_t> memory(CK_ULONG bytes) {
    if (bytes == CK_UNAVAILABLE_INFORMATION)
        return std::nullopt;
    return bytes;
}

}  // namespace

Token makeToken(const CK_SLOT_INFO& slot, const CK_TOKEN_INFO& token) {
    using cryptoki::fieldText;
    return {
        fieldText(slot.slotDescription), fieldText(token.manufacturerID),   fieldText(token.model),
        fieldText(token.serialNumber),   memory(token.ulTotalPublicMemory), memory(token.ulFreePublicMemory)};
}

}  // namespace Corvane
