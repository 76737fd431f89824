#include "binary/encoding_names.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <string>

namespace Corvane {
namespace {

struct Name {
    std::string_view name;
    NamedEncoding encoding;
};

// Names are written the way `normalize` leaves them.
constexpr Name names[] = {
    {"utf8", {codePageUtf8}},
    {"utf16", {codePageUtf16Le, true}},
    {"utf16le", {codePageUtf16Le}},
    {"utf16be", {codePageUtf16Be}},
    {"ucs2", {codePageUtf16Le, true}},
    {"iso10646ucs2", {codePageUtf16Le, true}},
    {"utf32", {codePageUtf32Le, true}},
    {"utf32le", {codePageUtf32Le}},
    {"utf32be", {codePageUtf32Be}},
    {"ucs4", {codePageUtf32Le, true}},
    {"iso10646ucs4", {codePageUtf32Le, true}},
    {"usascii", {codePageAscii}},
    {"ascii", {codePageAscii}},
    {"ansix341968", {codePageAscii}},
    {"iso646us", {codePageAscii}},
    {"koi8r", {20866}},
    {"cskoi8r", {20866}},
    {"koi8u", {21866}},
    {"koi8ru", {21866}},
    {"csibm866", {866}},
    {"866", {866}},
    {"latin1", {28591}},
    {"l1", {28591}},
    {"latin2", {28592}},
    {"l2", {28592}},
    {"latin3", {28593}},
    {"latin4", {28594}},
    {"cyrillic", {28595}},
    {"arabic", {28596}},
    {"greek", {28597}},
    {"hebrew", {28598}},
    {"iso88598i", {38598}},
    {"latin5", {28599}},
    {"latin9", {28605}},
    {"macintosh", {10000}},
    {"xmaccyrillic", {10007}},
    {"maccyrillic", {10007}},
    {"gb2312", {936}},
    {"gbk", {936}},
    {"xgbk", {936}},
    {"euccn", {936}},
    {"gb18030", {54936}},
    {"hzgb2312", {52936}},
    {"big5", {950}},
    {"shiftjis", {932}},
    {"sjis", {932}},
    {"mskanji", {932}},
    {"windows31j", {932}},
    {"eucjp", {20932}},
    {"iso2022jp", {50220}},
    {"ksc56011987", {949}},
    {"euckr", {949}},  // the code page is a superset of it, as 936 is of EUC-CN
    {"uhc", {949}},
    {"iso2022kr", {50225}},
    {"tis620", {874}},
};

// A family of names that end in the number of the code page, or in one from which it follows.
struct Family {
    std::string_view prefix;
    std::span<const std::uint32_t> numbers;
    std::uint32_t base;
};

constexpr std::uint32_t windowsPages[] = {874, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258};
constexpr std::uint32_t personalComputerPages[] = {
    437, 720, 737, 775, 850, 852, 855,  857,  858,  860,  861,  862,  863,  864,  865, 866,
    869, 874, 932, 936, 949, 950, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258};
constexpr std::uint32_t isoParts[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 13, 15};

constexpr Family families[] = {
    {"windows", windowsPages, 0},      {"cp", personalComputerPages, 0}, {"xcp", windowsPages, 0},
    {"ibm", personalComputerPages, 0}, {"iso8859", isoParts, 28590},
};

std::string normalize(std::string_view name) {
    std::string normal;
    for (const char character : name) {
        if (character >= 'A' && character <= 'Z')
            normal += static_cast<char>(character - 'A' + 'a');
        else if (character != '-' && character != '_' && character != '.')
            normal += character;
    }
    return normal;
}

std::optional<NamedEncoding> findInFamily(const Family& family, std::string_view name) {
    if (!name.starts_with(family.prefix))
        return std::nullopt;
    name.remove_prefix(family.prefix.size());
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (error != std::errc() || end != name.data() + name.size() || name.front() == '0' ||
        std::ranges::find(family.numbers, number) == family.numbers.end())
        return std::nullopt;
    return NamedEncoding{family.base + number};
}

}  // namespace

std::optional<NamedEncoding> findEncoding(std::string_view name) {
    const std::string normal = normalize(name);
    const auto* const found = std::ranges::find(names, std::string_view(normal), &Name::name);
    if (found != std::end(names))
        return found->encoding;
    for (const Family& family : families) {
        if (const auto encoding = findInFamily(family, normal))
            return encoding;
    }
    return std::nullopt;
}

}  // namespace Corvane
