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
    std::istringstream lines(readTestText("digests/published.txt"));
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('#'))
            continue;
        ++count;
        const std::size_t first = line.find(' ');
        const std::size_t last = line.rfind(' ');
        const std::string text = line.substr(first + 1, last - first - 1);
        const bool quoted = text.front() == '"';
        const Bytes message = quoted ? bytesOf(text.substr(1, text.size() - 2)) : hexToBin(text);
        EXPECT_EQ(compute(line.substr(0, first), message), line.substr(last + 1)) << line;
    }
    EXPECT_EQ(count, 16);
}

TEST(Digest, AgreesWithOtherToolsOnLengthsAroundTheSizesOfBlocks) {
    const Bytes pattern = readTestData("text/random.bin");
    Bytes data;
    while (data.size() < 70000)
        data.insert(data.end(), pattern.begin(), pattern.end());
    std::istringstream lines(readTestText("digests/prefixes.txt"));
    std::size_t length = 0;
    for (std::string crc32, md5, sha256; lines >> length >> crc32 >> md5 >> sha256;) {
        const Bytes message(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(compute("crc32", message), crc32) << length;
        EXPECT_EQ(compute("md5", message), md5) << length;
        EXPECT_EQ(compute("sha256", message), sha256) << length;
    }
    EXPECT_EQ(length, 70000U);
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
