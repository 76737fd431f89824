#include "com/objects/binary/base_stream.h"

#include <algorithm>
#include <cmath>
#include <limits>

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

std::size_t countOf(double number) {
    constexpr std::uint64_t most = std::numeric_limits<std::size_t>::max();
    return static_cast<std::size_t>(std::min(sizeOf(number), most));
}

}  // namespace Corvane::Com
