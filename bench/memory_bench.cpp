#include "bench/memory_bench.h"

#include "bench/measure.h"
#include "compression/gzip.h"
#include "compression/zip.h"
#include "compression/zip_archive.h"
#include "stream/digest.h"
#include "stream/memory_stream.h"

#include <windows.h>

namespace bench {
namespace {

using Corvane::Stream::IBinaryStream;
using Corvane::Stream::MemoryStream;
using Corvane::Stream::Origin;
using Corvane::Stream::State;
namespace Compression = Corvane::Compression;

constexpr std::uint64_t size = std::uint64_t{1} << 30;
constexpr double wantedMiB = 16;

std::size_t committedPrivate() {
    std::size_t total = 0;
    MEMORY_BASIC_INFORMATION region{};
    const auto* address = static_cast<const char*>(nullptr);
    while (::VirtualQuery(address, &region, sizeof(region)) == sizeof(region)) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            total += region.RegionSize;
        const auto* next = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
        if (next < address)
            break;
        address = next;
    }
    return total;
}

// Sees how much memory is held whenever an operation turns to one of its streams, which is when it has all
// its blocks.
class Watch {
public:
    void look() { peak_ = std::max(peak_, committedPrivate()); }
    double peakMiB() const { return static_cast<double>(peak_ - std::min(peak_, before_)) / (1 << 20); }

private:
    std::size_t before_ = committedPrivate();
    std::size_t peak_ = 0;
};

// A stream that holds no content: it is read as a repeated text, and what is written is only counted.
class Hollow final : public IBinaryStream {
public:
    Hollow(Watch& watch, std::uint64_t length) : watch_(watch), size_(length) {}

    State state() const override { return {position_, size_}; }
    std::uint64_t seek(std::int64_t offset, Origin origin) override {
        return position_ = Corvane::Stream::target(offset, origin, state());
    }
    void resize(std::uint64_t length) override { size_ = length; }
    void close() override {}
    std::size_t read(std::span<std::uint8_t> buffer) override {
        watch_.look();
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), size_ - position_));
        for (std::size_t i = 0; i < count; ++i)
            buffer[i] = static_cast<std::uint8_t>((position_ + i) * (position_ + i) >> 7);
        position_ += count;
        return count;
    }
    void write(std::span<const std::uint8_t> bytes) override {
        watch_.look();
        position_ += bytes.size();
        size_ = std::max(size_, position_);
    }
    Corvane::SharedBytes read(std::size_t count) override {
        auto bytes = std::make_shared<Corvane::Bytes>(count);
        bytes->resize(read(std::span(*bytes)));
        return bytes;
    }
    Corvane::SharedBytes seekAndRead(std::int64_t position, std::size_t count) override {
        seek(position, Origin::beginning);
        return read(count);
    }
    void seekAndWrite(std::int64_t position, std::span<const std::uint8_t> bytes) override {
        seek(position, Origin::beginning);
        write(bytes);
    }

private:
    Watch& watch_;
    std::uint64_t size_;
    std::uint64_t position_ = 0;
};

template <class Work>
void print(const char* name, Work work) {
    Watch watch;
    work(watch);
    const double peak = watch.peakMiB();
    std::printf("%-30s %9.1f MiB at the most on 1 GiB, wanted %5.0f  %s\n", name, peak, wantedMiB,
                peak <= wantedMiB ? "reached" : "MISSED");
    std::fflush(stdout);
}

// What comes out of packing 1 GiB, to be read again.
template <class Pack>
std::shared_ptr<MemoryStream> packed(Pack pack) {
    Watch watch;
    Hollow input(watch, size);
    auto output = std::make_shared<MemoryStream>();
    pack(input, *output);
    output->seek(0, Origin::beginning);
    return output;
}

}  // namespace

void printPeakMemory() {
    const auto reading = [](const char* name, const auto& work) {
        print(name, [&](Watch& watch) {
            Hollow input(watch, size);
            work(input);
        });
    };
    reading("CRC-32 of a stream", [](Hollow& input) { Corvane::Stream::getCrc32(input, nullptr); });
    reading("MD5 of a stream", [](Hollow& input) { Corvane::Stream::getMd5(input, nullptr); });
    reading("SHA-256 of a stream", [](Hollow& input) { Corvane::Stream::getSha256(input, nullptr); });

    const auto packing = [](const char* name, const auto& pack, const auto& unpack) {
        print((std::string(name) + " stream").c_str(), [&](Watch& watch) {
            Hollow input(watch, size);
            Hollow output(watch, 0);
            pack(input, output);
        });
        const auto input = packed(pack);
        print((std::string("un") + name + " stream").c_str(), [&](Watch& watch) {
            Hollow output(watch, 0);
            unpack(*input, output);
        });
    };
    packing(
        "gzip", [](auto& in, auto& out) { Compression::gzipFileAsync(in, out, nullptr, 1); },
        [](auto& in, auto& out) { Compression::ungzipFileAsync(in, out, nullptr); });
    packing(
        "zip", [](auto& in, auto& out) { Compression::zipFileAsync(in, out, nullptr, 1); },
        [](auto& in, auto& out) { Compression::unzipFileAsync(in, out, 1, nullptr); });

    const auto file = std::make_shared<MemoryStream>();
    Compression::ZipArchive archive(file);
    Watch adding;
    Hollow input(adding, size);
    archive.add("a", {}, input, nullptr);
    print("entry of an archive, adding", [&](Watch& watch) {
        Hollow further(watch, size);
        archive.add("b", {}, further, nullptr);
        // The archive itself lies in memory here.
    });
    print("entry of an archive, extracting", [&](Watch& watch) {
        Hollow output(watch, 0);
        archive.extract(0, output, Compression::unlimitedSize, nullptr);
    });
}

}  // namespace bench
