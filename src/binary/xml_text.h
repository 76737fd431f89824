// XML documents as text.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace Corvane::Binary {

// Decodes an XML document by its own encoding; a byte-order mark is not part of the text. Throws `Exception`
// with E_XML_DECODE, E_XML_INVALID or E_XML_ENCODING as `decodeXml` says, and E_XML_ENCODING as well for a
// code page that this system does not have.
[[nodiscard]] std::wstring toXmlString(std::span<const std::uint8_t> bytes);

}  // namespace Corvane::Binary
