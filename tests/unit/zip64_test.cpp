// Archives and entries above 4 GiB. For Windows alone: minizip 1.1 reads zip64 offsets only where a long has
// 32 bits.
#include "compression/zip.h"
#include "compression/zip_archive.h"
#include "support.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>

using namespace Corvane;
using namespace Corvane::Compression;
using namespace Corvane::Test;

namespace {

constexpr std::uint64_t fourGiB = std::uint64_t{1} << 32;

// As large as one likes: only the bytes that are not zero take memory.
class SparseStream : public Stream::MemoryStream {
public:
    explicit SparseStream(std::uint64_t size) : size_(size) {}
    Stream::State state() const override { return {position_, size_}; }
    void resize(std::uint64_t size) override {
        size_ = size;
        bytes.erase(bytes.lower_bound(size), bytes.end());
    }
    using MemoryStream::read;
    std::size_t read(std::span<std::uint8_t> buffer) override {
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), size_ - position_));
        std::fill_n(buffer.begin(), count, std::uint8_t{0});
        const std::uint64_t end = position_ + count;
        for (auto at = bytes.lower_bound(position_); at != bytes.end() && at->first < end; ++at)
            buffer[static_cast<std::size_t>(at->first - position_)] = at->second;
        position_ = end;
        return count;
    }
    void write(std::span<const std::uint8_t> written) override {
        bytes.erase(bytes.lower_bound(position_), bytes.lower_bound(position_ + written.size()));
        for (const std::uint8_t& byte : written) {
            if (byte != 0)
                bytes[position_ + static_cast<std::size_t>(&byte - written.data())] = byte;
        }
        position_ += written.size();
        size_ = std::max(size_, position_);
    }
    SharedBytes seekAndRead(std::int64_t position, std::size_t count) override {
        position_ = static_cast<std::uint64_t>(position);
        auto result = std::make_shared<Bytes>(count);
        result->resize(read(std::span(*result)));
        return result;
    }
    void seekAndWrite(std::int64_t position, std::span<const std::uint8_t> written) override {
        position_ = static_cast<std::uint64_t>(position);
        write(written);
    }

    std::map<std::uint64_t, std::uint8_t> bytes;

private:
    std::uint64_t position_ = 0;
    std::uint64_t size_;
};

TEST(Zip64, AnEntryAboveFourGiBComesBack) {
    constexpr std::uint64_t size = fourGiB + 5;
    SparseStream input(size);
    const auto archive = std::make_shared<Stream::MemoryStream>();
    const auto progress = std::make_shared<Progress>();
    zipFileAsync(input, *archive, progress, 0);
    EXPECT_EQ(progress->fraction(), 1.0);
    const ZipArchive list(archive);
    EXPECT_EQ(list.entries()->at(0).size, size);
    EXPECT_LT(list.entries()->at(0).packedSize, fourGiB / 100);

    SparseStream output(0);
    unzipFileAsync(*archive, output, 0, progress);
    EXPECT_EQ(output.state().size, size);
    EXPECT_TRUE(output.bytes.empty());
}

TEST(Zip64, EntriesBehindFourGiBAreAddedAndFound) {
    // One stored entry of zeros (tests/data/zip/make.sh).
    const auto stream = std::make_shared<SparseStream>(0);
    stream->write(readTestData("zip/beyond-4-gib.head"));
    stream->resize(stream->state().size + fourGiB + 1);
    stream->seekAndWrite(static_cast<std::int64_t>(stream->state().size),
                         readTestData("zip/beyond-4-gib.tail"));
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
