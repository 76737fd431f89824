#include "stream/memory_stream.h"

#include "stream/stream_loop.h"

#include "support.h"

#include <thread>

using namespace Corvane;
using namespace Corvane::Test;
using Stream::MemoryStream;
using Stream::Origin;

namespace {

constexpr std::int64_t chunk = 1'048'576;

TEST(MemoryStream, DataCrossesChunks) {
    MemoryStream stream;
    Bytes data = sampleBytes(3 * chunk + 17);
    stream.write(std::span(data).first(chunk - 1));
    stream.write(std::span(data).subspan(chunk - 1));
    stream.seek(chunk - 5, Origin::beginning);
    EXPECT_EQ(*stream.read(std::size_t{10}), Bytes(data.begin() + chunk - 5, data.begin() + chunk + 5));
    EXPECT_EQ(stream.state().position, chunk + 5);

    stream.seekAndWrite(2 * chunk - 1, Bytes{1, 2});
    data[2 * chunk - 1] = 1;
    data[2 * chunk] = 2;
    EXPECT_EQ(*stream.seekAndRead(0, data.size() + 1), data);
    EXPECT_TRUE(stream.read(std::size_t{1})->empty());
}

TEST(MemoryStream, ResizingClearsWhatItUncovers) {
    MemoryStream stream;
    stream.write(Bytes(chunk + 10, 0xFF));
    stream.resize(5);
    stream.resize(chunk + 10);
    Bytes expected(5, 0xFF);
    expected.resize(chunk + 10);
    EXPECT_EQ(contentOf(stream), expected);
}

TEST(MemoryStream, PositionedTransfersAreWhole) {
    MemoryStream stream;
    stream.resize(32768);
    std::vector<std::jthread> threads(8);
    for (std::size_t writer = 0; writer < threads.size(); ++writer) {
        threads[writer] = std::jthread([&stream, writer] {
            const Bytes own(4096, static_cast<std::uint8_t>(writer));
            const auto place = static_cast<std::int64_t>(writer * own.size());
            for (int round = 0; round < 500; ++round) {
                stream.seekAndWrite(place, own);
                EXPECT_EQ(*stream.seekAndRead(place, own.size()), own);
            }
        });
    }
}

TEST(StreamLoop, TheLastBlockIsShortAndSaidToBeTheLast) {
    const std::pair<std::size_t, std::vector<std::size_t>> rows[] = {
        {0, {0}},          {1, {1}},          {999, {999}},
        {1000, {1000, 0}}, {1001, {1000, 1}}, {3000, {1000, 1000, 1000, 0}}};
    for (const auto& row : rows) {
        const auto& length = row.first;
        const auto& blocks = row.second;
        for (const std::size_t most : {~std::size_t{0}, std::size_t{7}}) {
            SCOPED_TRACE(testing::Message() << length << " in reads of at most " << most);
            SourceStream input(sampleBytes(length), most);
            const auto progress = std::make_shared<Progress>();
            std::vector<std::size_t> seen;
            Bytes content;
            const auto see = [&](std::span<const std::uint8_t> block, bool last) {
                seen.push_back(block.size());
                content.insert(content.end(), block.begin(), block.end());
                EXPECT_EQ(last, seen.size() == blocks.size());
                if (last)
                    progress->cancel();
            };
            EXPECT_EQ(errorCode([&] { Stream::forEachBlock(input, 1000, progress, see); }), E_CANCELED.code)
                << "canceled after the last block was read";
            EXPECT_EQ(seen, blocks);
            EXPECT_EQ(content, contentOf(input));
            EXPECT_EQ(progress->fraction(), length == 0 ? 0.0 : 1.0);
        }
    }
}

}  // namespace
