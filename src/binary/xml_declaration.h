// The start of an XML document (XML 1.0, fifth edition), read before its encoding is known.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace Corvane {

// Text whose code units have one, two or four bytes, seen as ASCII: all that a declaration may consist of.
class AsciiUnits {
public:
    static constexpr char end = '\0';
    static constexpr char other = '\x7F';

    // A last unit with bytes missing is left out. The bytes must outlive this view.
    AsciiUnits(std::span<const std::uint8_t> bytes, std::size_t unitSize, std::endian order) noexcept
        : bytes_(bytes), unitSize_(unitSize), order_(order) {}

    // The character at an index; `end` behind the last one, `other` for what is not ASCII.
    [[nodiscard]] char at(std::size_t index) const noexcept;

private:
    std::span<const std::uint8_t> bytes_;
    std::size_t unitSize_;
    std::endian order_;
};

// Checks the start of a document and returns the value of its encoding declaration, empty if it has none.
//
// The start is an XML declaration, if there is one, then optional white space, then "<" and what may follow
// it there: a name, "!" or "?". Throws `Exception` with E_XML_INVALID for any other start, a declaration with
// white space before it, without a version, with a version other than 1.x, with attributes that are unknown,
// out of order or badly quoted, or without its end; with E_XML_ENCODING for a value that no encoding's name
// can be.
[[nodiscard]] std::string readXmlEncodingName(const AsciiUnits& text);

}  // namespace Corvane
