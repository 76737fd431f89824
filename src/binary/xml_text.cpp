#include "binary/xml_text.h"

#include "binary/xml_encoding.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/system_exception.h"
#include "core/text.h"

namespace Corvane::Binary {

std::wstring toXmlString(std::span<const std::uint8_t> bytes) {
    writeLog(LogLevel::debug, L"Corvane::Binary::toXmlString", L"[in] size: ", bytes.size());
    try {
        return decodeXml(bytes, multiToWide);
    } catch (const Win32Exception& error) {
        writeLog(LogLevel::error, L"Corvane::Binary::toXmlString", fullMessage(error));
        throw Exception(E_XML_ENCODING);
    }
}

}  // namespace Corvane::Binary
