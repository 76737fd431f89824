// Opens arbitrary bytes as an archive, restores what it holds, and adds to it.
#include "compression/zip_archive.h"
#include "compression/zip_name.h"
#include "core/exception.h"
#include "stream/memory_stream.h"

#include <cstdlib>
#include <memory>
#include <string>

using namespace Corvane;
using namespace Corvane::Compression;

namespace {

constexpr std::uint64_t maxSize = 1 << 20;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

Bytes contentOf(Stream::IBinaryStream& stream) {
    return *stream.seekAndRead(0, static_cast<std::size_t>(stream.state().size));
}

void extractAll(const ZipArchive& archive) {
    const SharedZipEntries entries = archive.entries();
    for (std::size_t i = 0; i < entries->size() && i < 16; ++i) {
        try {
            require(archive.extract(i, maxSize).size() == entries->at(i).size);
        } catch (const Exception&) {
            // The archive is broken there.
        }
        try {
            for (const std::string& part : detail::zipNameParts(entries->at(i).name)) {
                require(part != ".." && part.find_first_of("/\\:") == std::string::npos);
            }
        } catch (const Exception&) {
            // Not a name to be extracted.
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto stream = std::make_shared<Stream::MemoryStream>();
    stream->write({data, size});
    try {
        ZipArchive archive(stream);
        extractAll(archive);
        try {
            archive.add("added", {}, Bytes{1, 2, 3});
            require(archive.extract(archive.entries()->size() - 1) == Bytes{1, 2, 3});
        } catch (const Exception&) {
            require(contentOf(*stream) == Bytes(data, data + size));
        }
    } catch (const Exception&) {
        // Not an archive.
    }
    return 0;
}
