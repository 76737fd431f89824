// Decodes anything as UTF-8, UTF-16 and UTF-32; what was decoded gives the same bytes when it is encoded
// again, as only the well-formed shortest forms do.
#include "binary/utf.h"

#include <cstdlib>
#include <type_traits>

using namespace Corvane;

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

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

void appendUtf32Be(Bytes& bytes, std::uint32_t codePoint) {
    for (const unsigned shift : {24U, 16U, 8U, 0U}) {
        append(bytes, codePoint >> shift);
    }
}

std::uint32_t toUnit(wchar_t character) {
    return static_cast<std::make_unsigned_t<wchar_t>>(character);
}

Bytes encode(const std::wstring& text, void (*appendCodePoint)(Bytes&, std::uint32_t)) {
    Bytes bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::uint32_t codePoint = toUnit(text[i]);
        if (codePoint >= 0xD800 && codePoint < 0xDC00) {
            require(i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000);
            codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (toUnit(text[++i]) - 0xDC00);
        }
        require(codePoint <= 0x10FFFF && (codePoint < 0xDC00 || codePoint >= 0xE000));
        appendCodePoint(bytes, codePoint);
    }
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes bytes(data, data + size);
    const auto fromUtf8 = utf8ToWide(bytes);
    require(isUtf8(bytes) == fromUtf8.has_value());
    require(!fromUtf8 || encode(*fromUtf8, appendUtf8) == bytes);

    const auto fromUtf32 = utf32ToWide(bytes, std::endian::big);
    require(!fromUtf32 || encode(*fromUtf32, appendUtf32Be) == bytes);

    const auto fromUtf16 = utf16ToWide(bytes, std::endian::little);
    require(fromUtf16 == utf16ToWide(Binary::detail::swapBytes(bytes), std::endian::big));
    if (fromUtf16) {
        const Bytes utf8 = encode(*fromUtf16, appendUtf8);
        require(utf8ToWide(utf8) == fromUtf16);
    }
    return 0;
}
