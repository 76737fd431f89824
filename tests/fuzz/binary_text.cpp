// Reads anything as each kind of text, and as options of a dialog; what text comes of it the tests say.
#include "binary/base64.h"
#include "binary/hex.h"
#include "binary/utf.h"
#include "binary/xml_encoding.h"
#include "core/errors.h"
#include "core/utf8.h"
#include "fuzz.h"
#include "gui/dialog_options.h"

#include <algorithm>

using namespace Corvane;

// Each is read from memory that ends where the text does.
void fuzz(Input input) {
    const Bytes bytes(input.begin(), input.end());
    const std::vector<char> narrow(input.begin(), input.end());
    const std::vector<wchar_t> broad(input.begin(), input.end());
    const std::string_view text(narrow.data(), narrow.size());
    const std::wstring_view wide(broad.data(), broad.size());
    require(errorOf([&] { return hexToBin(text); }) == errorOf([&] { return hexToBin(wide); }));
    require(base64ToBin(text) == base64ToBin(wide));
    require(hexToBin(binToHex(bytes)) == bytes && base64ToBin(binToBase64(bytes, 0)) == bytes);
    require(isUtf8(bytes) == utf8ToWide(bytes).has_value());
    for (const std::endian order : {std::endian::little, std::endian::big}) {
        static_cast<void>(utf16ToWide(bytes, order));
        static_cast<void>(utf32ToWide(bytes, order));
    }
    const auto xmlError = errorOf([&] { return Binary::toXmlString(bytes); });
    require(!xmlError || xmlError == E_XML_DECODE.code || xmlError == E_XML_INVALID.code ||
            xmlError == E_XML_ENCODING.code);

    // No filter leads the system, which reads pairs of strings up to an empty one, beyond its end.
    Gui::DialogOptions options;
    const auto error =
        errorOf([&] { options = Gui::parseJsonOptions(Gui::DialogKind::openFile, fromUtf8(text)); });
    require(!error || error == E_COMMON_DLG_FILTER.code || error == E_COMMON_DLG_OPTIONS.code);
    errorOf([&] { options.filter = Gui::detail::unescapeFilter(fromUtf8(text)); });
    require(std::ranges::count(options.filter, L'\0') % 2 == 0);
    require(options.filter.empty() || options.filter.back() == L'\0');
}
