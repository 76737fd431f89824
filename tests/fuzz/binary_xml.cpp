// Decodes anything as an XML document. A refusal is one of the three errors; a mark changes nothing but the
// encoding.
#include "binary/xml_encoding.h"
#include "core/errors.h"
#include "core/exception.h"
#include "require.h"

using namespace Corvane;

namespace {

std::wstring widen(std::uint32_t codePage, std::string_view text) {
    require(codePage != 0 && codePage != 65001 && codePage != 1200 && codePage != 1201);
    return {text.begin(), text.end()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> document(data, size);
    try {
        const XmlEncoding encoding = findXmlEncoding(document);
        require(encoding.markSize <= 4 && encoding.markSize < size);
        const std::wstring text = decodeXml(document, widen);
        require(text.size() >= 2 && text.find_first_not_of(L" \t\r\n") == text.find(L'<'));
    } catch (const Exception& error) {
        require(error.code() == E_XML_DECODE.code || error.code() == E_XML_INVALID.code ||
                error.code() == E_XML_ENCODING.code);
    }
    return 0;
}
