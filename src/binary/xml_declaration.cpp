#include "binary/xml_declaration.h"

#include "core/errors.h"
#include "core/exception.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace Corvane {
namespace {

constexpr bool isSpace(char character) noexcept {
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

constexpr bool isLetter(char character) noexcept {
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

constexpr bool isDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

// Production 81: EncName ::= [A-Za-z] ([A-Za-z0-9._] | '-')*
bool isEncodingName(std::string_view value) {
    return !value.empty() && isLetter(value.front()) && std::ranges::all_of(value, [](char character) {
        return isLetter(character) || isDigit(character) || character == '.' || character == '_' ||
               character == '-';
    });
}

// Production 26: VersionNum ::= '1.' [0-9]+
bool isVersion(std::string_view value) {
    return value.size() > 2 && value.starts_with("1.") && std::ranges::all_of(value.substr(2), isDigit);
}

// A place in the text that moves forward as what is expected is found.
class Cursor {
public:
    explicit Cursor(const AsciiUnits& text) : text_(text) {}

    [[nodiscard]] char peek() const noexcept { return text_.at(index_); }

    bool skipSpace() noexcept {
        const std::size_t start = index_;
        while (isSpace(peek()))
            ++index_;
        return index_ != start;
    }

    bool take(std::string_view expected) noexcept {
        for (std::size_t i = 0; i < expected.size(); ++i) {
            if (text_.at(index_ + i) != expected[i])
                return false;
        }
        index_ += expected.size();
        return true;
    }

    void require(std::string_view expected) {
        if (!take(expected))
            throw Exception(E_XML_INVALID);
    }

    // White space and `name="value"`, or nothing (and no move) where another thing stands.
    std::optional<std::string> takeAttribute(std::string_view name) {
        const std::size_t start = index_;
        if (!skipSpace() || !take(name)) {
            index_ = start;
            return std::nullopt;
        }
        skipSpace();
        require("=");
        skipSpace();
        return takeQuoted();
    }

private:
    // A value never holds markup, so that a missing quote is noticed at the next "<" and not at the
    // document's end.
    std::string takeQuoted() {
        const char quote = peek();
        if (quote != '"' && quote != '\'')
            throw Exception(E_XML_INVALID);
        std::string value;
        for (++index_; peek() != quote; ++index_) {
            if (peek() == AsciiUnits::end || peek() == '<')
                throw Exception(E_XML_INVALID);
            value += peek();
        }
        ++index_;
        return value;
    }

    const AsciiUnits& text_;
    std::size_t index_{0};
};

// Production 23: XMLDecl ::= '<?xml' VersionInfo EncodingDecl? SDDecl? S? '?>', from behind "<?xml" on.
std::string readDeclaration(Cursor& cursor) {
    const auto version = cursor.takeAttribute("version");
    if (!version || !isVersion(*version))
        throw Exception(E_XML_INVALID);
    const auto encoding = cursor.takeAttribute("encoding");
    const auto standalone = cursor.takeAttribute("standalone");
    if (standalone && *standalone != "yes" && *standalone != "no")
        throw Exception(E_XML_INVALID);
    cursor.skipSpace();
    cursor.require("?>");
    if (encoding && !isEncodingName(*encoding))
        throw Exception(E_XML_ENCODING);
    return encoding.value_or(std::string());
}

// "<?xml" alone; "<?xml-stylesheet" is a processing instruction like others.
bool takeDeclarationStart(Cursor& cursor) {
    Cursor ahead = cursor;
    if (!ahead.take("<?xml") || (!isSpace(ahead.peek()) && ahead.peek() != '?'))
        return false;
    return cursor.take("<?xml");
}

void requireMarkup(Cursor cursor) {
    cursor.skipSpace();
    if (takeDeclarationStart(cursor))
        throw Exception(E_XML_INVALID);
    cursor.require("<");
    const char next = cursor.peek();
    if (!isLetter(next) && std::string_view("_:!?\x7F").find(next) == std::string_view::npos)
        throw Exception(E_XML_INVALID);
}

}  // namespace

char AsciiUnits::at(std::size_t index) const noexcept {
    if (index >= bytes_.size() / unitSize_)
        return end;
    const auto unit = bytes_.subspan(index * unitSize_, unitSize_);
    const std::size_t lowest = order_ == std::endian::little ? 0 : unitSize_ - 1;
    for (std::size_t i = 0; i < unitSize_; ++i) {
        if (i != lowest && unit[i] != 0)
            return other;
    }
    return unit[lowest] < 0x80 ? static_cast<char>(unit[lowest]) : other;
}

std::string readXmlEncodingName(const AsciiUnits& text) {
    Cursor cursor(text);
    std::string name = takeDeclarationStart(cursor) ? readDeclaration(cursor) : std::string();
    requireMarkup(cursor);
    return name;
}

}  // namespace Corvane
