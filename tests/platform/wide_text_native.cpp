// The code pages of Windows for builds without it: iconv's, as far as their numbers name them there.
#include "core/wide_text.h"

#include "core/errors.h"
#include "core/exception.h"

#include <iconv.h>

#include <memory>
#include <utility>

namespace Corvane {
namespace {

std::string nameOf(unsigned codePage) {
    if (codePage == 20866)
        return "KOI8-R";
    if (codePage == 21866)
        return "KOI8-U";
    if (codePage > 28590 && codePage < 28610)
        return "ISO-8859-" + std::to_string(codePage - 28590);
    return "CP" + std::to_string(codePage);
}

}  // namespace

std::wstring multiToWide(unsigned codePage, std::string_view text) {
    const iconv_t converter = ::iconv_open("WCHAR_T", nameOf(codePage).c_str());
    if (converter == iconv_t(-1))
        throw Exception(E_ANSI_TO_WIDE);
    const std::unique_ptr<void, decltype(&::iconv_close)> owner(converter, &::iconv_close);
    std::wstring wide(text.size(), L'\0');
    std::string bytes(text);
    char* in = bytes.data();
    std::size_t inLeft = bytes.size();
    char* out = reinterpret_cast<char*>(wide.data());
    std::size_t outLeft = wide.size() * sizeof(wchar_t);
    while (::iconv(converter, &in, &inLeft, &out, &outLeft) == std::size_t(-1) && inLeft != 0) {
        // What the code page does not have is replaced.
        *reinterpret_cast<wchar_t*>(out) = 0xFFFD;
        out += sizeof(wchar_t);
        outLeft -= sizeof(wchar_t);
        ++in;
        --inLeft;
    }
    wide.resize(wide.size() - outLeft / sizeof(wchar_t));
    return wide;
}

}  // namespace Corvane
