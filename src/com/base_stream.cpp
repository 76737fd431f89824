#include "com/base_stream.h"

#include <cmath>

namespace Corvane::Com {

SharedStream streamOf(::IBinaryStream* argument) {
    const ComPtr<Implementation> implementation = implementationOf(argument);
    const auto* holder = dynamic_cast<StreamHolder*>(implementation.get());
    if (!holder)
        throw SilentFailure{E_NOINTERFACE};
    return holder->stream();
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
