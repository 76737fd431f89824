#include "stream/memory_stream.h"

#include "stream/stream_loop.h"

#include "support.h"

#include <limits>
#include <thread>

using namespace Corvane;
using namespace Corvane::Test;
using Stream::MemoryStream;
using Stream::Origin;

namespace {

constexpr std::uint64_t chunk = 1'048'576;

TEST(MemoryStream, DataCrossesChunks) {
    MemoryStream stream;
    const Bytes data = sampleBytes(3 * chunk + 17);
    stream.write(std::span(data).first(chunk - 1));
    stream.write(std::span(data).subspan(chunk - 1));
    EXPECT_EQ(stream.state().size, data.size());

    EXPECT_EQ(stream.seek(static_cast<std::int64_t>(chunk) - 5, Origin::beginning), chunk - 5);
    EXPECT_EQ(*stream.read(std::size_t{10}), Bytes(data.begin() + chunk - 5, data.begin() + chunk + 5));
    EXPECT_EQ(stream.state().position, chunk + 5);
    EXPECT_EQ(*stream.seekAndRead(0, data.size() + 1), data);
    EXPECT_TRUE(stream.read(std::size_t{1})->empty());

    stream.seekAndWrite(static_cast<std::int64_t>(2 * chunk) - 1, Bytes{1, 2});
    EXPECT_EQ(stream.state().size, data.size()) << "overwriting does not grow";
    EXPECT_EQ(*stream.seekAndRead(static_cast<std::int64_t>(2 * chunk) - 2, 4),
              (Bytes{data[2 * chunk - 2], 1, 2, data[2 * chunk + 1]}));
}

TEST(MemoryStream, ResizingClearsWhatItUncovers) {
    MemoryStream stream;
    stream.write(Bytes(chunk + 10, 0xFF));
    using Offsets = std::numeric_limits<std::int64_t>;
    EXPECT_EQ(errorCode([&] { stream.seek(Offsets::max(), Origin::current); }), E_OFFSET_OUT_OF_RANGE.code);
    EXPECT_EQ(errorCode([&] { stream.seek(Offsets::min(), Origin::end); }), E_OFFSET_OUT_OF_RANGE.code);
    stream.resize(5);
    EXPECT_EQ(stream.state().position, 5u) << "the position moves to the new end";
    stream.resize(chunk + 10);
    Bytes expected(5, 0xFF);
    expected.resize(chunk + 10);
    EXPECT_EQ(contentOf(stream), expected);
    EXPECT_THROW(stream.resize(std::numeric_limits<std::uint64_t>::max()), std::bad_alloc);
    EXPECT_EQ(contentOf(stream), expected) << "more than memory can hold changes nothing";
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
    constexpr std::size_t size = 1000;
    const struct {
        std::size_t length;
        std::vector<std::size_t> blocks;
    } rows[] = {{0, {0}},          {1, {1}},          {999, {999}},
                {1000, {1000, 0}}, {1001, {1000, 1}}, {3000, {1000, 1000, 1000, 0}}};
    for (const auto& row : rows) {
        for (const std::size_t most : {~std::size_t{0}, std::size_t{7}}) {
            SourceStream input(sampleBytes(row.length), most);
            const auto progress = std::make_shared<Progress>();
            std::vector<std::size_t> seen;
            Bytes content;
            Stream::forEachBlock(input, size, progress, [&](std::span<const std::uint8_t> block, bool last) {
                seen.push_back(block.size());
                content.insert(content.end(), block.begin(), block.end());
                EXPECT_EQ(last, seen.size() == row.blocks.size()) << row.length;
            });
            EXPECT_EQ(seen, row.blocks) << row.length << " in reads of at most " << most;
            EXPECT_EQ(content, contentOf(input));
            EXPECT_EQ(progress->fraction(), row.length == 0 ? 0.0 : 1.0);
        }
    }
    SourceStream input(sampleBytes(1500));
    const auto progress = std::make_shared<Progress>();
    const auto cancelAtTheEnd = [&](std::span<const std::uint8_t>, bool last) {
        if (last)
            progress->cancel();
    };
    EXPECT_EQ(errorCode([&] { Stream::forEachBlock(input, size, progress, cancelAtTheEnd); }),
              E_CANCELED.code)
        << "canceled after the last block was read";
}

}  // namespace
