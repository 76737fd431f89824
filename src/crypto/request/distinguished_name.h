// Distinguished names as text (RFC 4514): the person comes first, the country last.
//
//     CN=Иванов Иван,O=ООО \"Ромашка\",SNILS=12345678901,1.2.643.100.113.1=текст,C=RU
//
// Pure, any thread.
#pragma once

#include "asn1/pkix/name.h"
#include "core/exception.h"

#include <string>
#include <string_view>

namespace Corvane::Crypto {

// The text of a name could not be read; the details tell at which character, and why.
class NameTextException : public CustomException {
public:
    NameTextException(std::size_t position, const wchar_t* reason);

    std::wstring details() const override { return details_; }

private:
    std::wstring details_;
};

// The name that the text says. Beyond the standard: spaces around "," "+" and "=" mean nothing, a value may
// stand in quotation marks (RFC 2253; two of them inside are one, as Windows writes it), and "OID." may stand
// before an identifier. Values are written as UTF8String, but as the standards want it where an attribute is
// known: PrintableString for countries, IA5String for addresses, NumericString for the numbers of the Russian
// registers; "#" and hexadecimal digits are a whole value in DER. No text is a name without parts. Throws
// NameTextException E_DISTINGUISHED_NAME for an unknown attribute, an empty value, a character that the
// attribute's type does not have, NUL, and what else is no name.
asn1::Name parseDistinguishedName(std::wstring_view text);

// The same in DER.
Bytes encodeDistinguishedName(std::wstring_view text);

// The text of a name, which parseDistinguishedName() reads. Values of an unknown attribute, and those that
// could not be given as text, are "#" and hexadecimal.
std::wstring distinguishedNameText(const asn1::Name& name);

}  // namespace Corvane::Crypto
