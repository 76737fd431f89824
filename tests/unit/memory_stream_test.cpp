#include "stream/memory_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <thread>

using namespace Corvane;
using Stream::MemoryStream;
using Stream::Origin;

namespace {

constexpr std::uint64_t chunk = 1'048'576;

// The code of the Corvane::Exception that `action` throws; 0 when it throws none.
template <class Action>
std::uint32_t codeOf(Action&& action) {
    try {
        action();
    } catch (const Exception& exception) {
        return exception.code();
    }
    return 0;
}

Bytes pattern(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    return bytes;
}

TEST(MemoryStream, SeekingStaysInsideTheStream) {
    MemoryStream stream;
    stream.write(Bytes(100));
    struct Case {
        std::int64_t offset;
        Origin origin;
        std::int64_t position;  // -1: refused
    };
    // Each starts at position 40.
    const Case cases[] = {
        {0, Origin::beginning, 0},
        {100, Origin::beginning, 100},
        {101, Origin::beginning, -1},
        {-1, Origin::beginning, -1},
        {-40, Origin::current, 0},
        {-41, Origin::current, -1},
        {60, Origin::current, 100},
        {61, Origin::current, -1},
        {0, Origin::end, 100},
        {-100, Origin::end, 0},
        {-101, Origin::end, -1},
        {1, Origin::end, -1},
        {7, static_cast<Origin>(9), 7},
        {std::numeric_limits<std::int64_t>::max(), Origin::current, -1},
        {std::numeric_limits<std::int64_t>::min(), Origin::end, -1},
    };
    for (const Case& c : cases) {
        stream.seek(40, Origin::beginning);
        const auto move = [&] {
            EXPECT_EQ(stream.seek(c.offset, c.origin), static_cast<std::uint64_t>(c.position));
        };
        EXPECT_EQ(codeOf(move), c.position < 0 ? E_OFFSET_OUT_OF_RANGE.code : 0) << c.offset;
        if (c.position < 0) {
            EXPECT_EQ(stream.state().position, 40u) << "a refused move leaves the position";
        }
    }
}

TEST(MemoryStream, DataCrossesChunks) {
    MemoryStream stream;
    const Bytes data = pattern(3 * chunk + 17);
    stream.write(std::span(data).first(chunk - 1));
    stream.write(std::span(data).subspan(chunk - 1));
    EXPECT_EQ(stream.state().size, data.size());

    stream.seek(static_cast<std::int64_t>(chunk) - 5, Origin::beginning);
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
    Bytes expected(chunk + 10, 0);
    std::fill_n(expected.begin(), 5, std::uint8_t{0xFF});
    EXPECT_EQ(*stream.seekAndRead(0, expected.size()), expected);
}

TEST(MemoryStream, MoreThanMemoryCanHoldChangesNothing) {
    MemoryStream stream;
    stream.write(Bytes{1, 2, 3});
    EXPECT_THROW(stream.resize(std::numeric_limits<std::uint64_t>::max()), std::bad_alloc);
    EXPECT_EQ(stream.state().size, 3u);
    EXPECT_EQ(*stream.seekAndRead(0, 10), (Bytes{1, 2, 3}));
}

TEST(MemoryStream, AClosedStreamSaysSo) {
    MemoryStream stream;
    stream.write(Bytes{1});
    stream.close();
    stream.close();
    EXPECT_EQ(codeOf([&] { stream.state(); }), E_FILE_SIZE.code);
    EXPECT_EQ(codeOf([&] { stream.seek(0, Origin::beginning); }), E_SEEK_IN_FILE.code);
    EXPECT_EQ(codeOf([&] { stream.read(std::size_t{1}); }), E_FILE_READ.code);
    EXPECT_EQ(codeOf([&] { stream.write(Bytes{1}); }), E_FILE_WRITE.code);
    EXPECT_EQ(codeOf([&] { stream.resize(1); }), E_FILE_WRITE.code);
}

TEST(MemoryStream, PositionedTransfersAreWhole) {
    MemoryStream stream;
    stream.resize(32768);
    const auto work = [&](std::uint8_t writer) {
        const std::int64_t place = std::int64_t{writer} * 4096;
        for (int round = 0; round < 500; ++round) {
            stream.seekAndWrite(place, Bytes(4096, writer));
            EXPECT_EQ(*stream.seekAndRead(place, 4096), Bytes(4096, writer));
        }
    };
    std::vector<std::thread> threads;
    for (std::uint8_t writer = 0; writer < 8; ++writer)
        threads.emplace_back(work, writer);
    for (std::thread& thread : threads)
        thread.join();
}

TEST(Stream, PartOfBytes) {
    const Bytes bytes{1, 2, 3};
    EXPECT_EQ(Stream::part(bytes, 1, 10).size(), 2u);
    EXPECT_EQ(Stream::part(bytes, 3, 1).size(), 0u);
    EXPECT_EQ(codeOf([&] { Stream::part(bytes, 4, 0); }), E_OFFSET_OUT_OF_RANGE.code);
}

}  // namespace
