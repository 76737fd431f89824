#include "bench/memory_bench.h"

#include "bench/hollow_stream.h"
#include "compression/gzip.h"
#include "compression/zip.h"
#include "compression/zip_archive.h"
#include "stream/digest.h"
#include "stream/memory_stream.h"

namespace bench {
namespace {

using Corvane::Stream::MemoryStream;
using Corvane::Stream::Origin;
namespace Compression = Corvane::Compression;

constexpr std::uint64_t size = std::uint64_t{1} << 30;
constexpr double wantedMiB = 16;

template <class Work>
void print(const char* name, Work work) {
    Watch watch;
    work(watch);
    watch.print(name, "1 GiB", wantedMiB);
}

// What comes out of packing 1 GiB, to be read again.
template <class Pack>
std::shared_ptr<MemoryStream> packed(Pack pack) {
    Watch watch;
    Hollow input(&watch, size);
    auto output = std::make_shared<MemoryStream>();
    pack(input, *output);
    output->seek(0, Origin::beginning);
    return output;
}

}  // namespace

void printPeakMemory() {
    const auto reading = [](const char* name, const auto& work) {
        print(name, [&](Watch& watch) {
            Hollow input(&watch, size);
            work(input);
        });
    };
    reading("CRC-32 of a stream", [](Hollow& input) { Corvane::Stream::getCrc32(input, nullptr); });
    reading("MD5 of a stream", [](Hollow& input) { Corvane::Stream::getMd5(input, nullptr); });
    reading("SHA-256 of a stream", [](Hollow& input) { Corvane::Stream::getSha256(input, nullptr); });

    const auto packing = [](const char* name, const auto& pack, const auto& unpack) {
        print((std::string(name) + " stream").c_str(), [&](Watch& watch) {
            Hollow input(&watch, size);
            Hollow output(&watch, 0);
            pack(input, output);
        });
        const auto input = packed(pack);
        print((std::string("un") + name + " stream").c_str(), [&](Watch& watch) {
            Hollow output(&watch, 0);
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
    Hollow input(&adding, size);
    archive.add("a", {}, input, nullptr);
    print("entry of an archive, adding", [&](Watch& watch) {
        Hollow further(&watch, size);
        archive.add("b", {}, further, nullptr);
        // The archive itself lies in memory here.
    });
    print("entry of an archive, extracting", [&](Watch& watch) {
        Hollow output(&watch, 0);
        archive.extract(0, output, Compression::unlimitedSize, nullptr);
    });
}

}  // namespace bench
