#include "stream/memory_stream.h"

#include "support.h"

#include <thread>

using namespace Corvane;
using namespace Corvane::Test;
using Stream::MemoryStream;

namespace {

constexpr std::int64_t chunk = 1'048'576;

TEST(MemoryStream, ResizingClearsWhatItUncovers) {
    MemoryStream stream;
    stream.write(Bytes(chunk + 10, 0xFF));
    stream.resize(5);
    stream.resize(chunk + 10);
    Bytes expected(5, 0xFF);
    expected.resize(chunk + 10);
    EXPECT_EQ(contentOf(stream), expected);
}

// One of them across the border of two chunks.
TEST(MemoryStream, PositionedTransfersAreWhole) {
    MemoryStream stream;
    stream.resize(chunk + 32768);
    std::vector<std::jthread> threads(8);
    for (std::size_t writer = 0; writer < threads.size(); ++writer) {
        threads[writer] = std::jthread([&stream, writer] {
            const Bytes own(4096, static_cast<std::uint8_t>(writer));
            const auto place = chunk - 10000 + static_cast<std::int64_t>(writer * own.size());
            for (int round = 0; round < 500; ++round) {
                stream.seekAndWrite(place, own);
                EXPECT_EQ(*stream.seekAndRead(place, own.size()), own);
            }
        });
    }
}

}  // namespace
