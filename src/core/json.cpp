#include "core/json.h"

#include "core/text.h"

// The classes whose layout scripts have seen since the beginning are marked as old in newer
// releases of the library.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
#include <json/reader.h>
#include <json/writer.h>

namespace Corvane {

Json::Value parseJson(std::wstring_view text) {
    try {
        Json::Value value;
        Json::Reader reader;
        if (reader.parse(toUtf8(text), value, false))
            return value;
    } catch (const Json::Exception&) {
        // Nested too deeply for the reader.
    }
    return {};
}

std::wstring writeJson(const Json::Value& value) {
    return fromUtf8(Json::StyledWriter().write(value));
}

}  // namespace Corvane
