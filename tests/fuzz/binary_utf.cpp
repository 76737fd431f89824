// Decodes anything as UTF-8, UTF-16 and UTF-32; what was decoded gives the same bytes when it is encoded
// again, as only the well-formed shortest forms do.
#include "binary/utf.h"
#include "require.h"

#include <type_traits>

using namespace Corvane;

namespace {

void append(Bytes& bytes, std::uint32_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
}

void appendUtf8(Bytes& bytes, std::uint32_t codePoint) {
    if (codePoint < 0x80) {
        append(bytes, codePoint);
        return;
    }
    const std::uint32_t followers = codePoint < 0x800 ? 1 : codePoint < 0x10000 ? 2 : 3;
    const std::uint32_t leads[] = {0, 0xC0, 0xE0, 0xF0};
    append(bytes, leads[followers] | (codePoint >> (6 * followers)));
    for (std::uint32_t left = followers; left-- > 0;) {
        append(bytes, 0x80 | ((codePoint >> (6 * left)) & 0x3F));
    }
}

std::uint32_t toUnit(wchar_t character) {
    return static_cast<std::make_unsigned_t<wchar_t>>(character);
}

Bytes encode(const std::wstring& text) {
    Bytes bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::uint32_t codePoint = toUnit(text[i]);
        if (codePoint >= 0xD800 && codePoint < 0xDC00) {
            require(i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000);
            codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (toUnit(text[++i]) - 0xDC00);
        }
        require(codePoint <= 0x10FFFF && (codePoint < 0xDC00 || codePoint >= 0xE000));
        appendUtf8(bytes, codePoint);
    }
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes bytes(data, data + size);
    const auto fromUtf8 = utf8ToWide(bytes);
    require(isUtf8(bytes) == fromUtf8.has_value());
    require(!fromUtf8 || encode(*fromUtf8) == bytes);

    const auto fromUtf32 = utf32ToWide(bytes, std::endian::big);
    require(!fromUtf32 || utf8ToWide(encode(*fromUtf32)) == fromUtf32);

    const auto fromUtf16 = utf16ToWide(bytes, std::endian::little);
    require(fromUtf16 == utf16ToWide(Binary::detail::swapBytes(bytes), std::endian::big));
    require(!fromUtf16 || utf8ToWide(encode(*fromUtf16)) == fromUtf16);
    return 0;
}
