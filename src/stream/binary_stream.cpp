#include "stream/binary_stream.h"

#include <algorithm>

namespace Corvane::Stream {

std::wstring ClosedStreamException::details() const
{
    return L"поток закрыт";
}

std::span<const std::uint8_t> part(const Bytes& bytes, std::size_t offset, std::size_t count)
{
    if (offset > bytes.size())
        throw Exception(E_OFFSET_OUT_OF_RANGE);
    return std::span(bytes).subspan(offset, std::min(count, bytes.size() - offset));
}

} // namespace Corvane::Stream
