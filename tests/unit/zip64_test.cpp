// Archives and entries above 4 GiB. For Windows alone: minizip 1.1 reads zip64 offsets only where a long has
// 32 bits.
#include "compression/zip.h"
#include "compression/zip_archive.h"
#include "stream/memory_stream.h"
#include "stream_tools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

using namespace Corvane;
using namespace Corvane::Compression;
using namespace std::string_literals;

namespace {

constexpr std::uint64_t fourGiB = std::uint64_t{1} << 32;

// Zeros without end in sight, and nothing in memory.
class ZeroStream : public Stream::MemoryStream {
public:
    explicit ZeroStream(std::uint64_t size) : size_(size) {}
    Stream::State state() const override { return {position_, size_}; }
    using MemoryStream::read;
    std::size_t read(std::span<std::uint8_t> buffer) override {
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), size_ - position_));
        std::fill_n(buffer.begin(), count, std::uint8_t{0});
        position_ += count;
        return count;
    }

private:
    std::uint64_t size_;
    std::uint64_t position_ = 0;
};

// Counts zeros, and remembers whether there was anything else.
class ZeroCounter : public Stream::MemoryStream {
public:
    Stream::State state() const override { return {zeros, zeros}; }
    void resize(std::uint64_t) override {}
    void write(std::span<const std::uint8_t> bytes) override {
        zeros += static_cast<std::uint64_t>(std::count(bytes.begin(), bytes.end(), std::uint8_t{0}));
        other = other || std::any_of(bytes.begin(), bytes.end(), [](std::uint8_t b) { return b != 0; });
    }
    std::uint64_t zeros = 0;
    bool other = false;
};

// Bytes at the beginning, then zeros up to `tailBegin`, then what is in memory.
class GapStream : public Stream::MemoryStream {
public:
    GapStream(Bytes head, std::uint64_t tailBegin, const Bytes& tail)
        : head_(std::move(head)), tailBegin_(tailBegin) {
        MemoryStream::write(tail);
    }
    Stream::State state() const override {
        const Stream::State tail = MemoryStream::state();
        return {tailBegin_ + tail.position, tailBegin_ + tail.size};
    }
    void resize(std::uint64_t size) override { MemoryStream::resize(size - tailBegin_); }
    SharedBytes seekAndRead(std::int64_t position, std::size_t count) override {
        auto bytes = std::make_shared<Bytes>(count);
        const auto begin = static_cast<std::uint64_t>(position);
        for (std::size_t i = 0; i < count && begin + i < head_.size(); ++i) {
            (*bytes)[i] = head_[static_cast<std::size_t>(begin) + i];
        }
        const auto gap = static_cast<std::size_t>(
            begin >= tailBegin_ ? 0 : std::min<std::uint64_t>(count, tailBegin_ - begin));
        const auto tailOffset = static_cast<std::int64_t>(std::max(begin, tailBegin_) - tailBegin_);
        const SharedBytes tail = MemoryStream::seekAndRead(tailOffset, count - gap);
        bytes->resize(gap);
        bytes->insert(bytes->end(), tail->begin(), tail->end());
        return bytes;
    }
    void seekAndWrite(std::int64_t position, std::span<const std::uint8_t> bytes) override {
        MemoryStream::seekAndWrite(position - static_cast<std::int64_t>(tailBegin_), bytes);
    }

private:
    Bytes head_;
    std::uint64_t tailBegin_;
};

std::string number(std::uint64_t value, int size) {
    std::string bytes;
    for (int i = 0; i < size; ++i) {
        bytes += static_cast<char>(value >> 8 * i);
    }
    return bytes;
}

TEST(Zip64, AnEntryAboveFourGiBComesBack) {
    constexpr std::uint64_t size = fourGiB + 5;
    ZeroStream input(size);
    Stream::MemoryStream archive;
    const auto progress = std::make_shared<Progress>();
    zipFileAsync(input, archive, progress, 0);
    EXPECT_EQ(progress->fraction(), 1.0);
    const ZipArchive list(std::shared_ptr<Stream::IBinaryStream>(&archive, [](auto*) {}));
    EXPECT_EQ(list.entries()->at(0).size, size);
    EXPECT_LT(list.entries()->at(0).packedSize, fourGiB / 100);

    ZeroCounter output;
    unzipFileAsync(archive, output, 0, progress);
    EXPECT_EQ(output.zeros, size);
    EXPECT_FALSE(output.other);
}

// An archive of one stored entry of zeros, written by hand (APPNOTE.TXT 4.3.7, 4.3.12, 4.3.14 to 4.3.16).
std::shared_ptr<GapStream> archiveOfZeros(std::uint64_t size) {
    const std::string sizes = number(size, 8) + number(size, 8);
    const std::string description = "\x2D\0\0\0\0\0\0\0\x21\0"s + number(0, 4) + number(0xFFFFFFFF, 4) +
                                    number(0xFFFFFFFF, 4) + number(5, 2) + number(20, 2);
    const std::string local = "PK\3\4" + description + "zeros" + number(1, 2) + number(16, 2) + sizes;
    const std::uint64_t directoryBegin = local.size() + size;
    const std::string directory =
        "PK\1\2\x2D\0"s + description + number(0, 14) + "zeros" + number(1, 2) + number(16, 2) + sizes;
    const std::string end64 = "PK\6\6" + number(44, 8) + "\x2D\0\x2D\0"s + number(0, 8) + number(1, 8) +
                              number(1, 8) + number(directory.size(), 8) + number(directoryBegin, 8);
    const std::string locator =
        "PK\6\7" + number(0, 4) + number(directoryBegin + directory.size(), 8) + number(1, 4);
    const std::string end = "PK\5\6" + number(0, 4) + number(1, 2) + number(1, 2) +
                            number(directory.size(), 4) + number(0xFFFFFFFF, 4) + number(0, 2);
    return std::make_shared<GapStream>(bytesOf(local), directoryBegin,
                                       bytesOf(directory + end64 + locator + end));
}

TEST(Zip64, EntriesBehindFourGiBAreAddedAndFound) {
    const auto stream = archiveOfZeros(fourGiB + 1);
    ZipArchive archive(stream);
    EXPECT_EQ(archive.entries()->at(0).size, fourGiB + 1);
    archive.add("added", {}, bytesOf("added"));
    archive.add("once more", {}, bytesOf("more"));
    const ZipArchive again(stream);
    ASSERT_EQ(again.entries()->size(), 3u);
    EXPECT_EQ(again.entries()->at(0).packedSize, fourGiB + 1);
    EXPECT_EQ(again.extract(1), bytesOf("added"));
    EXPECT_EQ(again.extract(2), bytesOf("more"));
}

}  // namespace
