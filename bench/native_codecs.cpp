// Speed of the text codecs beside OpenSSL's, on the machine this was compiled for.

#include "bench/measure.h"
#include "binary/base64.h"
#include "binary/hex.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <cstdlib>

namespace {

using bench::compare;
using bench::keep;

// Whole lines of 57 bytes, in all a little less than a mebibyte.
constexpr std::size_t dataSize = 57 * 16384;

// A peer that refuses its work would look fast.
void must(bool succeeded) {
    if (!succeeded) {
        std::fputs("the peer failed\n", stderr);
        std::exit(1);
    }
}

const unsigned char* asUnsigned(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

std::string toBase64(const Corvane::Bytes& data, std::uint32_t flags) {
    std::string text(Corvane::getBinToBase64RequiredSize(static_cast<std::int64_t>(data.size()), flags),
                     '\0');
    Corvane::encodeBase64(data, flags, text.data());
    return text;
}

void compareBase64Encoding(const Corvane::Bytes& data) {
    std::vector<unsigned char> text(data.size() * 2);
    auto* const out = reinterpret_cast<char*>(text.data());
    const auto encodeBlock = [&] {
        must(EVP_EncodeBlock(text.data(), data.data(), static_cast<int>(data.size())) > 0);
        keep(text.data());
    };
    compare(
        "Base64 encoding, one line", "EVP_EncodeBlock", 1.5, data.size(),
        [&] { keep(Corvane::encodeBase64(data, Corvane::base64NoLineBreaks, out)); }, encodeBlock);
    compare(
        "Base64 encoding, lines", "EVP_EncodeBlock", 1.5, data.size(),
        [&] { keep(Corvane::encodeBase64(data, 0, out)); }, encodeBlock);
}

void compareBase64Decoding(const Corvane::Bytes& data) {
    std::vector<unsigned char> bytes(data.size() + 64);
    EVP_ENCODE_CTX* const context = EVP_ENCODE_CTX_new();
    for (const bool lines : {false, true}) {
        const std::string text = toBase64(data, lines ? 0 : Corvane::base64NoLineBreaks);
        const auto ours = [&] { keep(Corvane::base64ToBin(text).data()); };
        int size = 0;
        compare(lines ? "Base64 decoding, lines" : "Base64 decoding, one line", "EVP_DecodeUpdate", 4,
                text.size(), ours, [&] {
                    EVP_DecodeInit(context);
                    must(EVP_DecodeUpdate(context, bytes.data(), &size, asUnsigned(text),
                                          static_cast<int>(text.size())) >= 0);
                    keep(bytes.data());
                });
        if (!lines) {
            // Not lenient: it refuses line breaks. Here for comparison.
            compare("Base64 decoding, one line", "EVP_DecodeBlock", 1, text.size(), ours, [&] {
                must(EVP_DecodeBlock(bytes.data(), asUnsigned(text), static_cast<int>(text.size())) > 0);
                keep(bytes.data());
            });
        }
    }
    EVP_ENCODE_CTX_free(context);
}

void compareHex(const Corvane::Bytes& data) {
    std::string text(data.size() * 2 + 1, '\0');
    std::size_t size = 0;
    compare(
        "Hex encoding", "OPENSSL_buf2hexstr_ex", 1, data.size(),
        [&] { keep(Corvane::encodeHex(data, text.data())); },
        [&] {
            must(OPENSSL_buf2hexstr_ex(text.data(), text.size(), &size, data.data(), data.size(), '\0') == 1);
            keep(text.data());
        });
    const std::string_view digits(text.data(), data.size() * 2);
    compare(
        "Hex decoding", "OPENSSL_hexstr2buf", 4, digits.size(),
        [&] { keep(Corvane::hexToBin(digits).data()); },
        [&] {
            long length = 0;
            unsigned char* const buffer = OPENSSL_hexstr2buf(text.c_str(), &length);
            must(buffer != nullptr);
            keep(buffer);
            OPENSSL_free(buffer);
        });
}

}  // namespace

int main() {
    const Corvane::Bytes data = bench::randomBytes(dataSize);
    compareBase64Encoding(data);
    compareBase64Decoding(data);
    compareHex(data);
}
