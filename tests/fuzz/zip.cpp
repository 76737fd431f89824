// Opens arbitrary bytes as an archive, restores what it holds, and adds to it.
#include "compression/zip_archive.h"
#include "compression/zip_name.h"
#include "fuzz.h"
#include "stream/memory_stream.h"

#include <memory>
#include <string>

using namespace Corvane;
using namespace Corvane::Compression;

namespace {

constexpr std::uint64_t maxSize = 1 << 20;

// An entry may be broken, or have a name that is not to be extracted.
void extractAll(const ZipArchive& archive) {
    const SharedZipEntries entries = archive.entries();
    for (std::size_t i = 0; i < entries->size() && i < 16; ++i) {
        errorOf([&] { require(archive.extract(i, maxSize).size() == entries->at(i).size); });
        errorOf([&] {
            const auto parts = detail::zipNameParts(entries->at(i).name);
            for (const std::string& part : parts.value_or(std::vector<std::string>()))
                require(part != ".." && part.find_first_of("/\\:") == std::string::npos);
        });
    }
}

}  // namespace

void fuzz(Input input) {
    const auto stream = std::make_shared<Stream::MemoryStream>();
    stream->write(input);
    std::optional<ZipArchive> archive;
    if (errorOf([&] { archive.emplace(stream); }))
        return;
    extractAll(*archive);
    const Bytes content{1, 2, 3};
    if (errorOf([&] { archive->add("added", {}, content); }))
        require(*stream->seekAndRead(0, stream->state().size) == Bytes(input.begin(), input.end()));
    else
        require(archive->extract(archive->entries()->size() - 1) == content);
}
