// Memory streams beside memcpy, and the memory that operations on streams take.
#include "bench/measure.h"
#include "bench/memory_bench.h"
#include "stream/memory_stream.h"

#include <cstring>
#include <memory>

namespace {

using Corvane::Bytes;
using Corvane::Stream::MemoryStream;
using Corvane::Stream::Origin;

constexpr std::size_t pieceSize = std::size_t{1} << 20;
constexpr std::size_t pieces = 64;

template <class Work>
void forEachPiece(const Work& work) {
    for (std::size_t i = 0; i < pieces; ++i)
        work(i * pieceSize);
}

}  // namespace

int main() {
    const Bytes source = bench::randomBytes(pieceSize);
    Bytes target(pieceSize);
    Bytes plain(pieces * pieceSize);
    MemoryStream stream;
    forEachPiece([&](std::size_t) { stream.write(source); });

    const auto compare = [](const char* work, const char* peer, const auto& ours, const auto& theirs) {
        bench::compare(work, peer, 0.8, pieces * pieceSize, ours, theirs);
    };
    compare(
        "memory stream, writing", "memcpy",
        [&] {
            stream.seek(0, Origin::beginning);
            forEachPiece([&](std::size_t) { stream.write(source); });
        },
        [&] {
            forEachPiece([&](std::size_t at) { std::memcpy(plain.data() + at, source.data(), pieceSize); });
            bench::keep(plain.data());
        });
    compare(
        "memory stream, reading", "memcpy",
        [&] {
            stream.seek(0, Origin::beginning);
            forEachPiece([&](std::size_t) { stream.read(std::span(target)); });
            bench::keep(target.data());
        },
        [&] {
            forEachPiece([&](std::size_t at) {
                std::memcpy(target.data(), plain.data() + at, pieceSize);
                bench::keep(target.data());
            });
        });
    compare(
        "memory stream, new, writing", "memcpy to new memory",
        [&] {
            MemoryStream growing;
            forEachPiece([&](std::size_t) { growing.write(source); });
        },
        [&] {
            const std::unique_ptr<std::uint8_t[]> fresh(new std::uint8_t[pieces * pieceSize]);
            forEachPiece([&](std::size_t at) { std::memcpy(fresh.get() + at, source.data(), pieceSize); });
            bench::keep(fresh.get());
        });
    bench::printPeakMemory();
}
