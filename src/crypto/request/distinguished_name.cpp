#include "crypto/request/distinguished_name.h"

#include "asn1/decoders/ber_reader.h"
#include "asn1/encoders/der_writer.h"
#include "asn1/encoders/object_identifier.h"
#include "binary/hex.h"
#include "core/log.h"
#include "core/utf8.h"
#include "crypto/request/name_attributes.h"

#include <algorithm>
#include <utility>

namespace Corvane::Crypto {
namespace {

// What has a meaning in a text, so that it stands for itself only behind a backslash.
constexpr std::string_view special = "\"+,;<>\\";

constexpr bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

// Reads UTF-8 from left to right.
class NameParser {
public:
    explicit NameParser(std::wstring_view text) : text_(toUtf8(text)), rest_(text_) {}

    asn1::Name parse() {
        asn1::Name name;
        for (skipSpaces(); !rest_.empty(); skipSpaces()) {
            name.push_back(parseRelative());
            if (rest_.empty())
                break;
            rest_.remove_prefix(1);  // the comma
            skipSpaces();
            if (rest_.empty())
                fail(L"после запятой ничего нет");
        }
        std::ranges::reverse(name);
        return name;
    }

private:
    [[noreturn]] void failAt(std::string_view rest, const wchar_t* reason) const {
        const std::string_view read(text_.data(), text_.size() - rest.size());
        throw NameTextException(fromUtf8(read).size() + 1, reason);
    }
    [[noreturn]] void fail(const wchar_t* reason) const { failAt(rest_, reason); }

    bool isNext(char c) const noexcept { return rest_.starts_with(c); }
    void skipSpaces() noexcept { rest_.remove_prefix(std::min(rest_.size(), rest_.find_first_not_of(' '))); }

    char take() {
        if (rest_.empty())
            fail(L"неожиданный конец");
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    asn1::RelativeName parseRelative() {
        asn1::RelativeName relative;
        for (;;) {
            relative.push_back(parseAttribute());
            skipSpaces();
            if (rest_.empty() || isNext(','))
                return relative;
            if (!isNext('+'))
                fail(L"ожидалась запятая");
            take();
            skipSpaces();
        }
    }

    asn1::NameAttribute parseAttribute() {
        const std::string_view type = rest_.substr(0, rest_.find_first_of("=,+"));
        if (type.size() == rest_.size() || rest_[type.size()] != '=')
            fail(L"ожидался знак равенства");
        auto [oid, stringType] = attributeType(type.substr(0, type.find_last_not_of(' ') + 1));
        rest_.remove_prefix(type.size() + 1);
        skipSpaces();
        return {std::move(oid), parseValue(stringType)};
    }

    std::pair<std::string, std::uint8_t> attributeType(std::string_view type) const {
        if (const NameAttributeType* known = findAttributeByName(type))
            return {std::string(known->oid), known->stringType};
        if (type.starts_with("OID.") || type.starts_with("oid."))
            type.remove_prefix(4);
        if (!asn1::isOid(type))
            fail(L"неизвестный атрибут");
        const NameAttributeType* known = findAttributeByOid(type);
        return {std::string(type), known ? known->stringType : asn1::tag::utf8String};
    }

    Bytes parseValue(std::uint8_t stringType) {
        if (isNext('#'))
            return parseEncoded();
        const std::string_view begin = rest_;
        const std::string value = isNext('"') ? parseQuoted() : parseString();
        if (value.empty())
            failAt(begin, L"пустое значение");
        if (value.find('\0') != std::string::npos || !asn1::fitsStringType(stringType, value))
            failAt(begin, L"значение содержит недопустимые символы");
        return asn1::DerWriter().text(stringType, value).take();
    }

    // "#" and the hexadecimal digits of a value in DER.
    Bytes parseEncoded() {
        const std::string_view digits = rest_.substr(1, rest_.find_first_of(" ,+") - 1);
        try {
            Bytes value = hexToBin(digits);
            asn1::BerReader reader(value);
            reader.skip();
            reader.expectEnd();
            rest_.remove_prefix(digits.size() + 1);
            return value;
        } catch (const Exception&) {
            fail(L"неверное шестнадцатеричное значение");
        } catch (const asn1::Asn1Exception&) {
            fail(L"значение не в кодировке DER");
        }
    }

    // What stands behind a backslash (RFC 4514 2.4).
    char parseEscaped() {
        const char c = take();
        if (special.find(c) != std::string_view::npos || c == ' ' || c == '#' || c == '=')
            return c;
        const char digits[] = {c, rest_.empty() ? '\0' : rest_.front()};
        if (!isHexDigit(digits[0]) || !isHexDigit(digits[1]))
            fail(L"неверная последовательность после обратной косой черты");
        take();
        return static_cast<char>(hexToBin(std::string_view(digits, 2)).front());
    }

    std::string parseString() {
        std::string value;
        std::size_t significant = 0;  // without the spaces at the end
        while (!rest_.empty() && !isNext(',') && !isNext('+')) {
            const bool escaped = isNext('\\');
            if (!escaped && special.find(rest_.front()) != std::string_view::npos)
                fail(L"перед этим символом нужна обратная косая черта");
            const char c = take();
            value += escaped ? parseEscaped() : c;
            if (escaped || c != ' ')
                significant = value.size();
        }
        value.resize(significant);
        return value;
    }

    std::string parseQuoted() {
        std::string value;
        take();
        for (;;) {
            const char c = take();
            if (c == '"' && !isNext('"'))
                return value;
            if (c == '"')
                take();  // two stand for one
            value += c == '\\' ? parseEscaped() : c;
        }
    }

    std::string text_;
    std::string_view rest_;
};

}  // namespace

NameTextException::NameTextException(std::size_t position, const wchar_t* reason)
    : CustomException(E_DISTINGUISHED_NAME),
      details_(L"символ " + std::to_wstring(position) + L": " + reason) {}

asn1::Name parseDistinguishedName(std::wstring_view text) {
    writeLog(LogLevel::debug, L"Corvane::Crypto::parseDistinguishedName", L"[in] length: ", text.size());
    return NameParser(text).parse();
}

Bytes encodeDistinguishedName(std::wstring_view text) {
    return asn1::encodeName(parseDistinguishedName(text));
}

}  // namespace Corvane::Crypto
