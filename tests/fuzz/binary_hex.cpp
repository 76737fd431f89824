// Decodes anything as hexadecimal text and holds the result, or the refusal, to what the text is; encodes it
// and gets it back.
#include "binary/hex.h"
#include "core/errors.h"
#include "core/exception.h"
#include "require.h"

#include <cstddef>
#include <optional>
#include <string>

using namespace Corvane;

namespace {

// The error that the first fault of the text calls for.
std::optional<std::uint32_t> expectedError(const std::string& text) {
    const std::size_t wrong = text.find_first_not_of("0123456789ABCDEFabcdef");
    if (wrong != std::string::npos && (wrong | 1) < text.size()) {
        return E_HEX_STRING.code;
    }
    return text.size() % 2 != 0 ? std::optional(E_HEX_STRING_SIZE.code) : std::nullopt;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    std::wstring units;
    for (const char character : text) {
        units += static_cast<wchar_t>(static_cast<std::uint8_t>(character) | 0x0400);
    }
    const auto expected = expectedError(text);
    try {
        const Bytes bytes = hexToBin(text);
        require(!expected && bytes == hexToBin(units));
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            require(bytes[i] == std::stoul(text.substr(2 * i, 2), nullptr, 16));
        }
    } catch (const Exception& error) {
        require(expected == error.code());
    }

    const Bytes bytes(data, data + size);
    require(hexToBin(binToHex(bytes)) == bytes);
    return 0;
}
