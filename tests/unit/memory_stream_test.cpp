#include "stream/memory_stream.h"

#include "support.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>

using namespace Corvane;
using namespace Corvane::Test;
using Stream::MemoryStream;
using Stream::Origin;

namespace {

constexpr std::uint64_t chunk = 1'048'576;

TEST(MemoryStream, SeekingStaysInsideTheStream) {
    MemoryStream stream;
    stream.write(Bytes(100));
    const auto seek = [&](std::int64_t offset, Origin origin) {
        stream.seek(40, Origin::beginning);
        return errorCode([&] { stream.seek(offset, origin); });
    };
    const std::pair<Origin, std::int64_t> origins[] = {
        {Origin::beginning, 0}, {Origin::current, 40}, {Origin::end, 100}, {static_cast<Origin>(9), 0}};
    for (const auto& [origin, base] : origins) {
        for (const std::int64_t position : {0, 7, 40, 100}) {
            EXPECT_EQ(seek(position - base, origin), 0u) << position << " from " << base;
            EXPECT_EQ(stream.state().position, static_cast<std::uint64_t>(position));
        }
        for (const std::int64_t position : {-1, 101}) {
            EXPECT_EQ(seek(position - base, origin), E_OFFSET_OUT_OF_RANGE.code)
                << position << " from " << base;
            EXPECT_EQ(stream.state().position, 40u) << "a refused move leaves the position";
        }
    }
    EXPECT_EQ(seek(std::numeric_limits<std::int64_t>::max(), Origin::current), E_OFFSET_OUT_OF_RANGE.code);
    EXPECT_EQ(seek(std::numeric_limits<std::int64_t>::min(), Origin::end), E_OFFSET_OUT_OF_RANGE.code);
}

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
    stream.resize(5);
    EXPECT_EQ(stream.state().position, 5u) << "the position moves to the new end";
    stream.resize(chunk + 10);
    Bytes expected(5, 0xFF);
    expected.resize(chunk + 10);
    EXPECT_EQ(contentOf(stream), expected);
    EXPECT_THROW(stream.resize(std::numeric_limits<std::uint64_t>::max()), std::bad_alloc);
    EXPECT_EQ(contentOf(stream), expected) << "more than memory can hold changes nothing";
}

TEST(MemoryStream, AClosedStreamSaysSo) {
    MemoryStream stream;
    stream.write(Bytes{1});
    stream.close();
    stream.close();
    EXPECT_EQ(errorCode([&] { stream.state(); }), E_FILE_SIZE.code);
    EXPECT_EQ(errorCode([&] { stream.seek(0, Origin::beginning); }), E_SEEK_IN_FILE.code);
    EXPECT_EQ(errorCode([&] { stream.read(std::size_t{1}); }), E_FILE_READ.code);
    EXPECT_EQ(errorCode([&] { stream.write(Bytes{1}); }), E_FILE_WRITE.code);
    EXPECT_EQ(errorCode([&] { stream.resize(1); }), E_FILE_WRITE.code);
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

TEST(Stream, PartOfBytes) {
    const Bytes bytes{1, 2, 3};
    EXPECT_EQ(Stream::part(bytes, 1, 10).size(), 2u);
    EXPECT_EQ(Stream::part(bytes, 3, 1).size(), 0u);
    EXPECT_EQ(errorCode([&] { Stream::part(bytes, 4, 0); }), E_OFFSET_OUT_OF_RANGE.code);
}

}  // namespace
