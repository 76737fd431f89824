#include "core/json.h"

#include "core/exception.h"
#include "core/utf8.h"

#include <optional>
#include <utility>

// The classes whose layout scripts have seen since the beginning are marked as old in newer
// releases of the library.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <json/reader.h>
#include <json/writer.h>

namespace Corvane {

namespace {

// Reads a text; returns the parser's message where it is not JSON.
std::optional<std::string> read(std::wstring_view text, Json::Value& value) {
    Json::Reader reader;
    try {
        if (reader.parse(toUtf8(text), value, false))
            return std::nullopt;
    } catch (const Json::Exception& exception) {
        return exception.what();  // nested too deeply for the reader
    }
    return reader.getFormattedErrorMessages();
}

}  // namespace

Json::Value readJson(std::wstring_view text, const ErrorDescriptor& descriptor) {
    Json::Value value;
    if (auto fault = read(text, value))
        throw JsonException(descriptor, *std::move(fault));
    return value;
}

Json::Value parseJson(std::wstring_view text) {
    Json::Value value;
    return read(text, value) ? Json::Value() : value;
}

std::wstring writeJson(const Json::Value& value) {
    return fromUtf8(Json::StyledWriter().write(value));
}

}  // namespace Corvane
