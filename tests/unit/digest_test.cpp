#include "binary/crc32.h"
#include "binary/hex.h"
#include "binary/md5.h"
#include "binary/sha256.h"
#include "support.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

std::string compute(const std::string& algorithm, const Bytes& message) {
    std::ostringstream text;
    text << std::hex << std::setfill('0');
    if (algorithm == "crc32") {
        text << std::setw(8) << Binary::getCrc32(message, 0);
        return text.str();
    }
    for (const unsigned byte : algorithm == "md5" ? Binary::getMd5(message) : Binary::getSha256(message))
        text << std::setw(2) << byte;
    return text.str();
}

TEST(Digest, AgreesWithPublishedVectors) {
    for (const auto& row : readTable("digests/published.txt", 3)) {
        const bool quoted = row[1].front() == '"';
        const Bytes message = quoted ? bytesOf(row[1].substr(1, row[1].size() - 2)) : hexToBin(row[1]);
        EXPECT_EQ(compute(row[0], message), row[2]) << row[1];
    }
}

TEST(Digest, AgreesWithOtherToolsOnLengthsAroundTheSizesOfBlocks) {
    const Bytes pattern = readTestData("text/random.bin");
    Bytes data;
    for (int i = 0; i < 70; ++i)
        data.insert(data.end(), pattern.begin(), pattern.end());
    for (const auto& row : readTable("digests/prefixes.txt", 4)) {
        const Bytes message(data.begin(), data.begin() + std::stol(row[0]));
        EXPECT_EQ(compute("crc32", message), row[1]) << row[0];
        EXPECT_EQ(compute("md5", message), row[2]) << row[0];
        EXPECT_EQ(compute("sha256", message), row[3]) << row[0];
    }
}

TEST(Digest, TakesInputInPieces) {
    const Bytes data = readTestData("text/random.bin");
    const std::span<const std::uint8_t> all(data);
    for (std::size_t first = 0; first <= 130; ++first) {
        for (const std::size_t second : {std::size_t{0}, std::size_t{1}, 64 - first % 64, std::size_t{200}}) {
            SCOPED_TRACE(testing::Message() << first << '+' << second);
            std::uint32_t crc32 = 0;
            Binary::MD5 md5;
            Binary::SHA256 sha256;
            for (const auto piece :
                 {all.first(first), all.subspan(first, second), all.subspan(first + second)}) {
                crc32 = Binary::getCrc32(piece, crc32);
                md5.update(piece);
                sha256.update(piece);
            }
            ASSERT_EQ(crc32, Binary::getCrc32(data, 0));
            ASSERT_TRUE(std::ranges::equal(md5.finish(), Binary::getMd5(data)));
            ASSERT_TRUE(std::ranges::equal(sha256.finish(), Binary::getSha256(data)));
        }
    }
}

}  // namespace
