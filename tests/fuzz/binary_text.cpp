// Decodes anything as each kind of text, and holds the result, or the refusal, to what the input is; encodes
// it and gets it back; and reads it as options of a dialog.
#include "binary/base64.h"
#include "binary/hex.h"
#include "binary/utf.h"
#include "binary/xml_encoding.h"
#include "core/errors.h"
#include "core/utf8.h"
#include "fuzz.h"
#include "gui/dialog_options.h"

#include <algorithm>
#include <string>

using namespace Corvane;

namespace {

void fuzzCodecs(const std::string& text, const Bytes& bytes) {
    const bool isHex =
        text.size() % 2 == 0 && text.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos;
    require(errorOf([&] { return hexToBin(text); }).has_value() != isHex);
    require(hexToBin(binToHex(bytes)) == bytes);
    require(base64ToBin(text) == base64ToBin(std::wstring(bytes.begin(), bytes.end())));
    for (std::uint32_t flags = 0; flags < 4; ++flags)
        require(base64ToBin(binToBase64(bytes, flags)) == bytes);
}

void fuzzUtf(const Bytes& bytes) {
    require(isUtf8(bytes) == utf8ToWide(bytes).has_value());
    const auto fromUtf16 = utf16ToWide(bytes, std::endian::little);
    require(fromUtf16 == utf16ToWide(Binary::detail::swapBytes(bytes), std::endian::big));
    require(!fromUtf16 || fromUtf16->size() * 2 == bytes.size());
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

// No filter leads the system, which reads pairs of strings up to an empty one, beyond its end.
void fuzzDialogOptions(Input input) {
    const std::wstring text = fromUtf8({reinterpret_cast<const char*>(input.data()), input.size()});
    Gui::DialogOptions options;
    const auto error = errorOf([&] { options = Gui::parseJsonOptions(Gui::DialogKind::openFile, text); });
    require(!error || error == E_COMMON_DLG_FILTER.code || error == E_COMMON_DLG_OPTIONS.code);
    errorOf([&] { options.filter = Gui::detail::unescapeFilter(text); });
    require(std::ranges::count(options.filter, L'\0') % 2 == 0);
    require(options.filter.empty() || options.filter.back() == L'\0');
}

}  // namespace

void fuzz(Input input) {
    const Bytes bytes(input.begin(), input.end());
    const std::string text(input.begin(), input.end());
    fuzzCodecs(text, bytes);
    fuzzUtf(bytes);
    fuzzXml(input);
    fuzzDialogOptions(input);
}
