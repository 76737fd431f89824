// Ungzips arbitrary bytes, and gzips them; opens them as an archive, restores what it holds, and adds to it.
#include "compression/gzip.h"
#include "compression/zip_archive.h"
#include "compression/zip_name.h"
#include "fuzz.h"
#include "stream/memory_stream.h"

#include <algorithm>
#include <memory>

using namespace Corvane;
using namespace Corvane::Compression;

namespace {

void fuzzGzip(Input input) {
    Bytes restored;
    errorOf([&] { ungzip(input, restored); });
    Bytes packed;
    gzip(input, packed);
    ungzip(packed, restored);
    require(std::ranges::equal(restored, input));
}

// An entry may be broken.
void extractAll(const ZipArchive& archive) {
    constexpr std::uint64_t maxSize = 1 << 20;
    const SharedZipEntries entries = archive.entries();
    for (std::size_t i = 0; i < entries->size() && i < 16; ++i) {
        errorOf([&] { require(archive.extract(i, maxSize).size() == entries->at(i).size); });
        static_cast<void>(detail::zipNameParts(entries->at(i).name));
    }
}

}  // namespace

void fuzz(Input input) {
    // The first byte of a gzip file; few others get further than that.
    if (!input.empty() && input[0] == 0x1F)
        return fuzzGzip(input);
    const auto stream = std::make_shared<Stream::MemoryStream>();
    stream->write(input);
    std::optional<ZipArchive> archive;
    if (errorOf([&] { archive.emplace(stream); }))
        return;
    extractAll(*archive);
    const Bytes content{1, 2, 3};
    if (errorOf([&] { archive->add("added", {}, content); }))
        require(std::ranges::equal(*stream->seekAndRead(0, stream->state().size), input));
    else
        require(archive->extract(archive->entries()->size() - 1) == content);
}
