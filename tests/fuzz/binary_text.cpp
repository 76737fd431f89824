// Decodes anything as each kind of text, and holds the result, or the refusal, to what the input is; encodes
// it and gets it back.
#include "binary/base64.h"
#include "binary/hex.h"
#include "binary/utf.h"
#include "binary/xml_encoding.h"
#include "core/errors.h"
#include "fuzz.h"

#include <cctype>
#include <string>

using namespace Corvane;

namespace {

void fuzzHex(const std::string& text, const Bytes& bytes) {
    const bool isHex =
        text.size() % 2 == 0 && text.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos;
    Bytes decoded;
    require(errorOf([&] { decoded = hexToBin(text); }).has_value() != isHex);
    for (std::size_t i = 0; i < decoded.size(); ++i)
        require(decoded[i] == std::stoul(text.substr(2 * i, 2), nullptr, 16));
    require(hexToBin(binToHex(bytes)) == bytes);
}

// What is not of the alphabet is passed over, also where its low byte alone would be.
void fuzzBase64(const std::string& text, const Bytes& bytes) {
    std::wstring some;
    std::wstring all;
    for (const char character : text) {
        const auto byte = static_cast<std::uint8_t>(character);
        const bool isDigit = byte < 0x80 && (std::isalnum(byte) || byte == '+' || byte == '/');
        all += static_cast<wchar_t>(isDigit ? byte : byte | 0x100);
        if (isDigit)
            some += static_cast<wchar_t>(byte);
    }
    require(base64ToBin(all) == base64ToBin(some) && base64ToBin(text) == base64ToBin(some));
    for (std::uint32_t flags = 0; flags < 4; ++flags) {
        const std::wstring encoded = binToBase64(bytes, flags);
        require(base64ToBin(encoded) == bytes);
        require((flags & base64NoLineBreaks) == 0 || encoded.find(L'\r') == std::wstring::npos);
    }
}

void fuzzUtf(const Bytes& bytes) {
    const auto fromUtf8 = utf8ToWide(bytes);
    require(isUtf8(bytes) == fromUtf8.has_value());
    // Nothing but the shortest form is taken.
    std::size_t shortest = 0;
    for (const wchar_t unit : fromUtf8.value_or(L"")) {
        const bool isHalf = unit >= 0xD800 && unit < 0xE000;
        shortest += unit < 0x80 ? 1 : unit < 0x800 || isHalf ? 2 : 3;
    }
    require(!fromUtf8 || shortest == bytes.size());
    const auto fromUtf16 = utf16ToWide(bytes, std::endian::little);
    require(fromUtf16 == utf16ToWide(Binary::detail::swapBytes(bytes), std::endian::big));
    Bytes units;
    for (const wchar_t unit : fromUtf16.value_or(L"")) {
        units.push_back(static_cast<std::uint8_t>(unit));
        units.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    require(!fromUtf16 || units == bytes);
    const auto fromUtf32 = utf32ToWide(bytes, std::endian::big);
    require(!fromUtf32 || fromUtf32->size() * 4 >= bytes.size());
}

void fuzzXml(Input document) {
    const auto error = errorOf([&] {
        const XmlEncoding encoding = findXmlEncoding(document);
        require(encoding.markSize <= 4 && encoding.markSize < document.size());
        const std::wstring text = Binary::toXmlString(document);
        require(text.size() >= 2 && text.find_first_not_of(L" \t\r\n") == text.find(L'<'));
    });
    require(!error || error == E_XML_DECODE.code || error == E_XML_INVALID.code ||
            error == E_XML_ENCODING.code);
}

}  // namespace

void fuzz(Input input) {
    const Bytes bytes(input.begin(), input.end());
    const std::string text(input.begin(), input.end());
    fuzzHex(text, bytes);
    fuzzBase64(text, bytes);
    fuzzUtf(bytes);
    fuzzXml(input);
}
