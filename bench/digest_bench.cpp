// Speed of the checksum and the digests beside zlib's and libgcrypt's portable code, on Windows.
#include "bench/measure.h"
#include "binary/crc32.h"
#include "binary/md5.h"
#include "binary/sha256.h"

#include <gcrypt.h>
#include <zlib.h>

namespace {

using bench::compare;
using bench::keep;
using Corvane::Bytes;

// libgcrypt uses the MMX registers in 32-bit code and leaves them so that floating-point numbers, which the
// clock needs, come out wrong.
void leaveMmx() {
#ifdef __i386__
    asm volatile("emms");
#endif
}

template <typename Digest>
void compareDigest(const char* work, const Bytes& data, double wanted, int algorithm) {
    compare(
        work, "gcry_md_hash_buffer", wanted, data.size(), [&] { keep(Digest::of(data).data()); },
        [&] {
            unsigned char digest[Digest::size];
            gcry_md_hash_buffer(algorithm, digest, data.data(), data.size());
            leaveMmx();
            keep(digest);
        });
}

void compareCrc(const char* work, const Bytes& data, double wanted) {
    std::uint32_t crc = 0;
    uLong peer = 0;
    compare(
        work, "zlib crc32", wanted, data.size(),
        [&] {
            crc = Corvane::Binary::getCrc32(data, crc);
            keep(&crc);
        },
        [&] {
            peer = crc32(peer, data.data(), static_cast<uInt>(data.size()));
            keep(&peer);
        });
}

}  // namespace

int main() {
    // Its hardware paths off, the peer runs portable C like ours. This must come before its first use.
    if (gcry_control(GCRYCTL_DISABLE_HWF, "all", nullptr) != 0 || gcry_check_version(nullptr) == nullptr) {
        std::fputs("libgcrypt does not start\n", stderr);
        return 1;
    }
    gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);

    const Bytes large = bench::randomBytes(std::size_t{64} << 20);
    const Bytes small = bench::randomBytes(64);
    compareDigest<Corvane::Binary::SHA256>("SHA-256, 64 MiB", large, 0.95, GCRY_MD_SHA256);
    compareDigest<Corvane::Binary::SHA256>("SHA-256, 64 bytes", small, 1 / 1.1, GCRY_MD_SHA256);
    compareDigest<Corvane::Binary::MD5>("MD5, 64 MiB", large, 1.1, GCRY_MD_MD5);
    compareDigest<Corvane::Binary::MD5>("MD5, 64 bytes", small, 1.1, GCRY_MD_MD5);
    // zlib takes a word at a time from several tables; with 32 bits fewer of our lanes fit into registers.
    constexpr bool wide = sizeof(void*) == 8;
    constexpr double wanted = wide ? 0.35 : 0.2;
    compareCrc("CRC-32, 64 MiB", large, wanted);
    compareCrc("CRC-32, 4 KiB", bench::randomBytes(4096), wanted);
    if (wide)
        compareCrc("CRC-32, 64 bytes", small, 1 / 1.2);
}
