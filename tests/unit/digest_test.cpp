#include "binary/crc32.h"
#include "binary/hex.h"
#include "binary/md5.h"
#include "binary/sha256.h"
#include "test_data.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iomanip>
#include <sstream>

using namespace Corvane;

namespace {

std::string compute(const std::string& algorithm, const Bytes& message) {
    std::ostringstream text;
    if (algorithm == "crc32") {
        text << std::hex << std::setw(8) << std::setfill('0') << Binary::getCrc32(message, 0);
        return text.str();
    }
    for (const unsigned byte : algorithm == "md5" ? Binary::getMd5(message) : Binary::getSha256(message)) {
        text << std::hex << std::setw(2) << std::setfill('0') << byte;
    }
    return text.str();
}

Bytes parseMessage(const std::string& text) {
    return text.front() == '"' ? Bytes(text.begin() + 1, text.end() - 1) : hexToBin(text);
}

}  // namespace

TEST(Digest, AgreesWithPublishedVectors) {
    std::istringstream lines(readTestText("digests/published.txt"));
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('#')) {
            continue;
        }
        const std::size_t first = line.find(' ');
        const std::size_t last = line.rfind(' ');
        const Bytes message = parseMessage(line.substr(first + 1, last - first - 1));
        EXPECT_EQ(compute(line.substr(0, first), message), line.substr(last + 1)) << line;
        ++count;
    }
    EXPECT_EQ(count, 16);
}

TEST(Digest, AgreesWithOtherToolsOnLengthsAroundTheSizesOfBlocks) {
    const Bytes pattern = readTestData("text/random.bin");
    Bytes data;
    std::istringstream lines(readTestText("digests/prefixes.txt"));
    std::size_t length = 0;
    std::string crc32;
    std::string md5;
    std::string sha256;
    while (lines >> length >> crc32 >> md5 >> sha256) {
        while (data.size() < length) {
            data.insert(data.end(), pattern.begin(), pattern.end());
        }
        const Bytes message(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(compute("crc32", message), crc32) << length;
        EXPECT_EQ(compute("md5", message), md5) << length;
        EXPECT_EQ(compute("sha256", message), sha256) << length;
    }
    EXPECT_EQ(length, 70000U);
}

TEST(Digest, TakesInputInPieces) {
    const Bytes data = readTestData("text/random.bin");
    for (std::size_t first = 0; first <= 130; ++first) {
        for (const std::size_t second :
             {std::size_t{0}, std::size_t{1}, 63 - first % 64, 64 - first % 64, std::size_t{200}}) {
            const std::span<const std::uint8_t> all(data);
            const std::array pieces{all.first(first), all.subspan(first, second),
                                    all.subspan(first + second)};
            std::uint32_t crc32 = 0;
            Binary::MD5 md5;
            Binary::SHA256 sha256;
            for (const auto piece : pieces) {
                crc32 = Binary::getCrc32(piece, crc32);
                md5.update(piece);
                sha256.update(piece);
            }
            ASSERT_EQ(crc32, Binary::getCrc32(data, 0)) << first << '+' << second;
            ASSERT_TRUE(std::ranges::equal(md5.finish(), Binary::getMd5(data))) << first << '+' << second;
            ASSERT_TRUE(std::ranges::equal(sha256.finish(), Binary::getSha256(data)))
                << first << '+' << second;
        }
    }
}

TEST(Digest, OfAMillionLetters) {
    // FIPS 180, third example, and what other tools say of the same text.
    const Bytes letters(1000000, 'a');
    EXPECT_EQ(compute("sha256", letters), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
    EXPECT_EQ(compute("md5", letters), "7707d6ae4e027c70eea2a935c2296f21");
    EXPECT_EQ(compute("crc32", letters), "dc25bfbc");
}

TEST(Crc32, OfNothingIsWhatItBeganWith) {
    EXPECT_EQ(Binary::getCrc32({}, 0), 0U);
    EXPECT_EQ(Binary::getCrc32({}, 0xFFFFFFFF), 0xFFFFFFFFU);
}
