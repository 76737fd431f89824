// The encoding of an XML document, found in its bytes (XML 1.0, section 4.3.3 and appendix F), and its text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Corvane {

struct XmlEncoding {
    std::uint32_t codePage;  // Windows identifier; see encoding_names.h for those of Unicode
    std::size_t markSize;    // bytes of the byte-order mark at the start, which is not part of the text
};

// Finds the encoding of a document, in this order:
//   1. a byte-order mark of UTF-8, UTF-16 or UTF-32;
//   2. a "<" in two or four bytes: UTF-16 or UTF-32 without a mark;
//   3. the encoding that the XML declaration names;
//   4. UTF-8, if the bytes are well-formed UTF-8;
//   5. what the bytes look like, if that is certain enough (see `guessCodePage`): Russian documents of old
//   programs
//      that declare nothing. A guess is a line in the log.
//
// Throws `Exception`:
//
// E_XML_DECODE: the encoding cannot be determined. It is EBCDIC or an unusual byte order of UTF-32, or
// neither of the last two steps helped.
//
// E_XML_INVALID: the document does not start as XML does, see `readXmlEncodingName`; an empty one included.
//
// E_XML_ENCODING: the declared name is malformed or unknown, or contradicts the byte-order mark or the size
// of the characters ("UTF-16" in a text of single bytes, "windows-1251" behind a mark).
[[nodiscard]] XmlEncoding findXmlEncoding(std::span<const std::uint8_t> document);

namespace Binary {

// The text of an XML document, decoded by its own encoding, as UTF-16 code units and without the byte-order
// mark. Throws like `findXmlEncoding`, and E_XML_ENCODING for bytes that are not well-formed in the
// document's Unicode encoding, or not ASCII if that was declared, and for a code page that this system does
// not have. What other code pages do not know is replaced as the system does.
[[nodiscard]] std::wstring toXmlString(std::span<const std::uint8_t> document);

}  // namespace Binary
}  // namespace Corvane
