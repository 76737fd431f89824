#include "stream/binary_stream.h"

#include <algorithm>
#include <ostream>

namespace Corvane::Stream {

std::wstring ClosedStreamException::details() const {
    return L"поток закрыт";
}

std::wostream& operator<<(std::wostream& out, const IBinaryStream& stream) {
    try {
        const State state = stream.state();
        out << state.position << L" of " << state.size;
    } catch (const Exception&) {
        // A closed stream, for one. What uses it will fail, in its own words.
        out << L"of unknown size";
    }
    const std::wstring place = stream.place();
    return place.empty() ? out : out << L", " << place;
}

std::shared_ptr<IBinaryStream> keptOpen(IBinaryStream& stream) {
    auto duplicate = stream.duplicate();
    // The other one owns nothing.
    return duplicate ? duplicate : std::shared_ptr<IBinaryStream>(std::shared_ptr<void>(), &stream);
}

std::uint64_t target(std::int64_t offset, Origin origin, const State& state) {
    std::uint64_t base = 0;
    if (origin == Origin::current)
        base = state.position;
    else if (origin == Origin::end)
        base = state.size;
    // Unsigned, since the smallest offset has no positive counterpart of its type.
    const auto distance =
        offset < 0 ? 0 - static_cast<std::uint64_t>(offset) : static_cast<std::uint64_t>(offset);
    const std::uint64_t room = offset < 0 ? base : state.size - std::min(base, state.size);
    if (distance > room)
        throw Exception(E_OFFSET_OUT_OF_RANGE);
    return offset < 0 ? base - distance : base + distance;
}

std::span<const std::uint8_t> part(const Bytes& bytes, std::size_t offset, std::size_t count) {
    if (offset > bytes.size())
        throw Exception(E_OFFSET_OUT_OF_RANGE);
    return std::span(bytes).subspan(offset, std::min(count, bytes.size() - offset));
}

}  // namespace Corvane::Stream
