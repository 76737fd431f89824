#include "binary/xml_encoding.h"

#include "binary/encoding_guess.h"
#include "binary/encoding_names.h"
#include "binary/utf.h"
#include "binary/xml_declaration.h"
#include "core/errors.h"
#include "core/exception.h"
#include "core/log.h"
#include "core/wide_text.h"

#include <algorithm>
#include <bit>
#include <optional>

namespace Corvane {
namespace {

using namespace std::string_view_literals;

// No identifier of an encoding: single bytes of a character set that is still to be found.
constexpr std::uint32_t codePageUnknown = 0;
// No encoding that can be read: a pattern that says only what it is not.
constexpr std::uint32_t codePageUnsupported = 0xFFFFFFFF;

struct Pattern {
    std::string_view bytes;
    XmlEncoding encoding;
};

// Longer patterns stand before those they begin with.
constexpr Pattern patterns[] = {
    {"\x00\x00\xFE\xFF"sv, {codePageUtf32Be, 4}},
    {"\xFF\xFE\x00\x00"sv, {codePageUtf32Le, 4}},
    {"\x00\x00\xFF\xFE"sv, {codePageUnsupported, 4}},  // UTF-32 in the byte orders 2143 and 3412
    {"\xFE\xFF\x00\x00"sv, {codePageUnsupported, 4}},
    {"\xFE\xFF"sv, {codePageUtf16Be, 2}},
    {"\xFF\xFE"sv, {codePageUtf16Le, 2}},
    {"\xEF\xBB\xBF"sv, {codePageUtf8, 3}},
    {"\x00\x00\x00\x3C"sv, {codePageUtf32Be, 0}},
    {"\x3C\x00\x00\x00"sv, {codePageUtf32Le, 0}},
    {"\x00\x00\x3C\x00"sv, {codePageUnsupported, 0}},
    {"\x00\x3C\x00\x00"sv, {codePageUnsupported, 0}},
    {"\x00\x3C"sv, {codePageUtf16Be, 0}},
    {"\x3C\x00"sv, {codePageUtf16Le, 0}},
    {"\x4C\x6F\xA7\x94"sv, {codePageUnsupported, 0}},  // "<?xm" in EBCDIC
};

std::string_view asText(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

XmlEncoding matchPatterns(std::span<const std::uint8_t> document) {
    const auto starts = [text = asText(document)](const Pattern& pattern) {
        return text.starts_with(pattern.bytes);
    };
    const auto* const found = std::ranges::find_if(patterns, starts);
    if (found == std::end(patterns))
        return {codePageUnknown, 0};
    if (found->encoding.codePage == codePageUnsupported)
        throw Exception(E_XML_DECODE);
    return found->encoding;
}

constexpr std::size_t unitSize(std::uint32_t codePage) noexcept {
    switch (codePage) {
        case codePageUtf16Le:
        case codePageUtf16Be:
            return 2;
        case codePageUtf32Le:
        case codePageUtf32Be:
            return 4;
        default:
            return 1;
    }
}

constexpr std::endian byteOrder(std::uint32_t codePage) noexcept {
    return codePage == codePageUtf16Be || codePage == codePageUtf32Be ? std::endian::big
                                                                      : std::endian::little;
}

// The declared encoding, if the bytes seen before the declaration allow it.
std::uint32_t reconcile(const NamedEncoding& declared, std::uint32_t seen) {
    const bool sizesAgree = unitSize(declared.codePage) == unitSize(seen);
    if (seen == codePageUnknown && sizesAgree)
        return declared.codePage;
    if (declared.codePage == seen || (declared.anyByteOrder && sizesAgree))
        return seen;
    throw Exception(E_XML_ENCODING);
}

std::uint32_t findUndeclared(std::span<const std::uint8_t> text) {
    if (isUtf8(text))
        return codePageUtf8;
    if (const auto guess = guessCodePage(text)) {
        writeLog(LogLevel::info, L"Corvane::findXmlEncoding", L"no encoding declared, guessed code page: ",
                 *guess, L", size: ", text.size());
        return *guess;
    }
    throw Exception(E_XML_DECODE);
}

bool isAscii(std::span<const std::uint8_t> text) {
    return std::ranges::all_of(text, [](std::uint8_t byte) { return byte < 0x80; });
}

// The text in a code page of the system's.
std::optional<std::wstring> decodeCodePage(std::uint32_t codePage, std::span<const std::uint8_t> text) {
    try {
        return multiToWide(codePage, asText(text));
    } catch (const Exception&) {
        // The line in the log is multiToWide's; to the script it is the document's encoding that is wrong.
        return std::nullopt;
    }
}

std::optional<std::wstring> decodeText(std::span<const std::uint8_t> text, std::uint32_t codePage) {
    switch (codePage) {
        case codePageUtf8:
            return utf8ToWide(text);
        case codePageAscii:
            return isAscii(text) ? utf8ToWide(text) : std::nullopt;
        case codePageUtf16Le:
        case codePageUtf16Be:
            return utf16ToWide(text, byteOrder(codePage));
        case codePageUtf32Le:
        case codePageUtf32Be:
            return utf32ToWide(text, byteOrder(codePage));
        default:
            return decodeCodePage(codePage, text);
    }
}

}  // namespace

XmlEncoding findXmlEncoding(std::span<const std::uint8_t> document) {
    XmlEncoding encoding = matchPatterns(document);
    const auto text = document.subspan(encoding.markSize);
    const std::string name =
        readXmlEncodingName(AsciiUnits(text, unitSize(encoding.codePage), byteOrder(encoding.codePage)));
    if (!name.empty()) {
        const auto declared = findEncoding(name);
        if (!declared)
            throw Exception(E_XML_ENCODING);
        encoding.codePage = reconcile(*declared, encoding.codePage);
    } else if (encoding.codePage == codePageUnknown) {
        encoding.codePage = findUndeclared(text);
    }
    return encoding;
}

std::wstring Binary::toXmlString(std::span<const std::uint8_t> document) {
    writeLog(LogLevel::debug, L"Corvane::Binary::toXmlString", L"[in] size: ", document.size());
    const XmlEncoding encoding = findXmlEncoding(document);
    auto text = decodeText(document.subspan(encoding.markSize), encoding.codePage);
    if (!text)
        throw Exception(E_XML_ENCODING);
    return *std::move(text);
}

}  // namespace Corvane
