// JSON texts from and to scripts.
#pragma once

#include "core/errors.h"

#include <json/value.h>

#include <string>
#include <string_view>

namespace Corvane {

// The value of a JSON text. Throws JsonException with `descriptor` and the parser's own message.
Json::Value readJson(std::wstring_view text, const ErrorDescriptor& descriptor);

// The value of a JSON text, or a null value when it is not JSON.
Json::Value parseJson(std::wstring_view text);

// The text of a value, laid out for reading.
std::wstring writeJson(const Json::Value& value);

}  // namespace Corvane
