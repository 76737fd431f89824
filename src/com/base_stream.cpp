#include "com/base_stream.h"

#include "core/log.h"
#include "stream/file.h"

#include <cmath>
#include <string>

namespace Corvane::Com {

SharedStream streamOf(::IBinaryStream* argument) {
    const ComPtr<Implementation> implementation = implementationOf(argument);
    const auto* holder = dynamic_cast<StreamHolder*>(implementation.get());
    if (!holder)
        throw SilentFailure{E_NOINTERFACE};
    return holder->stream();
}

void logStream(const wchar_t* function, const wchar_t* name, const Stream::IBinaryStream& stream) {
    if (!isLogEnabled(LogLevel::debug))
        return;
    const auto* file = dynamic_cast<const File*>(&stream);
    const std::wstring path = file ? L", " + file->path() : L"";
    try {
        const Stream::State state = stream.state();
        writeLog(LogLevel::debug, function, L"[in] ", name, L": ", state.position, L" of ", state.size, path);
    } catch (const Exception&) {
        // A closed stream, for one. What uses it will fail, in its own words.
        writeLog(LogLevel::debug, function, L"[in] ", name, L": of unknown size", path);
    }
}

std::int64_t offsetOf(double number) {
    constexpr double limit = 9007199254740992.0;  // 2^53
    // NaN fails the first comparison.
    if (!(std::abs(number) <= limit) || number != std::trunc(number))
        throw Exception(E_OFFSET_OUT_OF_RANGE);
    return static_cast<std::int64_t>(number);
}

std::uint64_t sizeOf(double number) {
    const std::int64_t size = offsetOf(number);
    if (size < 0)
        throw Exception(E_OFFSET_OUT_OF_RANGE);
    return static_cast<std::uint64_t>(size);
}

}  // namespace Corvane::Com
