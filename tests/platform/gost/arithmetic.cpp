#include "arithmetic.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <stdexcept>

namespace Corvane::Platform::Gost {
namespace {

constexpr std::size_t keySize = 32, macSize = 4, rounds = 8;

void must(gcry_error_t error) {
    if (error)
        throw std::runtime_error(::gcry_strerror(error));
}

using Number = std::unique_ptr<gcry_mpi, Release<::gcry_mpi_release>>;
using Curve = std::unique_ptr<gcry_context, Release<::gcry_ctx_release>>;
using Point = std::unique_ptr<gcry_mpi_point, Release<::gcry_mpi_point_release>>;

Number number(View littleEndian) {
    const Bytes digits = reversed(littleEndian);
    gcry_mpi_t made = nullptr;
    must(::gcry_mpi_scan(&made, GCRYMPI_FMT_USG, digits.data(), digits.size(), nullptr));
    return Number(made);
}

// Right-aligned, or empty where it does not fit.
Bytes bigEndian(const gcry_mpi* value, std::size_t size) {
    Bytes digits(size + 1);
    std::size_t written = 0;
    if (::gcry_mpi_print(GCRYMPI_FMT_USG, digits.data(), digits.size(), &written,
                         const_cast<gcry_mpi*>(value)) ||
        written > size)
        throw std::runtime_error("a number too long");
    Bytes whole(size - written);
    return append(whole, View(digits).first(written));
}

// The library knows curves by their identifiers, but for this one, which it has under another name.
const char* libraryName(const std::string& curve) {
    return curve == "1.2.643.7.1.2.1.1.1" ? "GOST2012-256-A" : curve.c_str();
}

Curve openCurve(const std::string& name) {
    gcry_ctx_t made = nullptr;
    must(::gcry_mpi_ec_new(&made, nullptr, libraryName(name)));
    return Curve(made);
}

Point point(View publicKey) {
    const Number x = number(publicKey.first(publicKey.size() / 2));
    const Number y = number(publicKey.subspan(publicKey.size() / 2));
    const Number one(::gcry_mpi_set_ui(nullptr, 1));
    return Point(::gcry_mpi_point_set(nullptr, x.get(), y.get(), one.get()));
}

Bytes coordinates(gcry_mpi_point_t value, gcry_ctx_t curve, std::size_t size) {
    const Number x(::gcry_mpi_new(0));
    const Number y(::gcry_mpi_new(0));
    if (::gcry_mpi_ec_get_affine(x.get(), y.get(), value, curve))
        throw std::runtime_error("the point at infinity");
    Bytes both = reversed(bigEndian(x.get(), size));
    return append(both, reversed(bigEndian(y.get(), size)));
}

Bytes mac(const std::string& substitution, View key, View iv, View data) {
    gcry_mac_hd_t made = nullptr;
    must(::gcry_mac_open(&made, GCRY_MAC_GOST28147_IMIT, 0, nullptr));
    const std::unique_ptr<gcry_mac_handle, Release<::gcry_mac_close>> handle(made);
    std::string oid = substitution;
    must(::gcry_mac_ctl(made, GCRYCTL_SET_SBOX, oid.data(), 0));
    must(::gcry_mac_setkey(made, key.data(), key.size()));
    must(::gcry_mac_setiv(made, iv.data(), iv.size()));
    must(::gcry_mac_write(made, data.data(), data.size()));
    Bytes result(macSize);
    std::size_t size = result.size();
    must(::gcry_mac_read(made, result.data(), &size));
    return result;
}

// RFC 4357, 6.5
Bytes diversify(const std::string& substitution, View key, View ukm) {
    Bytes current(key.begin(), key.end());
    for (std::size_t round = 0; round < rounds; ++round) {
        std::uint32_t words[keySize / sizeof(std::uint32_t)];
        std::memcpy(words, current.data(), keySize);
        std::uint32_t sums[2] = {};
        for (std::size_t word = 0; word < std::size(words); ++word)
            sums[ukm[round] >> word & 1 ? 0 : 1] += words[word];
        const View iv(reinterpret_cast<const std::uint8_t*>(sums), sizeof sums);
        current = transform(substitution, GCRY_CIPHER_MODE_CFB, current, iv, current, true);
    }
    return current;
}

}  // namespace

void startArithmetic() {
    static const bool started = [] {
        // The hardware paths of the static library do not run everywhere.
        ::gcry_control(GCRYCTL_DISABLE_HWF, "all", nullptr);
        ::gcry_check_version(nullptr);
        ::gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
        ::gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
        return true;
    }();
    static_cast<void>(started);
}

// Not the library's: to make its own random it asks Wine for the handles of all processes, at which the
// server dies while one of them is just starting, and writes notes about the machine to the program's error
// stream.
Bytes randomBytes(std::size_t size) {
    std::random_device source;
    Bytes bytes(size);
    std::ranges::generate(bytes, [&] { return static_cast<std::uint8_t>(source()); });
    return bytes;
}

Bytes makePrivateKey(std::size_t size) {
    Bytes key = randomBytes(size);
    key.back() = 0;
    return key;
}

Bytes publicKey(const std::string& curve, View privateKey) {
    const Curve context = openCurve(curve);
    const Point base(::gcry_mpi_ec_get_point("g", context.get(), 1));
    const Point result(::gcry_mpi_point_new(0));
    ::gcry_mpi_ec_mul(result.get(), number(privateKey).get(), base.get(), context.get());
    return coordinates(result.get(), context.get(), privateKey.size());
}

// By hand, since the library would take a number of its own random.
Bytes sign(const std::string& curve, View privateKey, View digest) {
    const Number order(::gcry_mpi_ec_get_mpi("n", openCurve(curve).get(), 1));
    const std::size_t size = privateKey.size();
    const Bytes once = makePrivateKey(size);
    const Number r = number(View(publicKey(curve, once)).first(size));
    const Number s(::gcry_mpi_new(0));
    const Number other(::gcry_mpi_new(0));
    ::gcry_mpi_mod(r.get(), r.get(), order.get());
    ::gcry_mpi_mulm(s.get(), r.get(), number(privateKey).get(), order.get());
    ::gcry_mpi_mulm(other.get(), number(once).get(), number(digest).get(), order.get());
    ::gcry_mpi_addm(s.get(), s.get(), other.get(), order.get());
    Bytes result = bigEndian(s.get(), size);
    return append(result, bigEndian(r.get(), size));
}

// By hand as well: GOST R 34.10-2012, 6.2.
bool verify(const std::string& curve, View publicKey, View digest, View signature) {
    const std::size_t size = publicKey.size() / 2;
    if (signature.size() != publicKey.size())
        return false;
    const Curve context = openCurve(curve);
    const Number order(::gcry_mpi_ec_get_mpi("n", context.get(), 1));
    const Number s = number(reversed(signature.first(size)));
    const Number r = number(reversed(signature.subspan(size)));
    const Number e = number(digest);
    const Number inverse(::gcry_mpi_new(0));
    ::gcry_mpi_mod(e.get(), e.get(), order.get());
    ::gcry_mpi_invm(inverse.get(), e.get(), order.get());
    ::gcry_mpi_mulm(s.get(), s.get(), inverse.get(), order.get());
    ::gcry_mpi_mulm(inverse.get(), r.get(), inverse.get(), order.get());
    ::gcry_mpi_sub(inverse.get(), order.get(), inverse.get());
    const Point first(::gcry_mpi_point_new(0));
    const Point second(::gcry_mpi_point_new(0));
    ::gcry_mpi_ec_mul(first.get(), s.get(), Point(::gcry_mpi_ec_get_point("g", context.get(), 1)).get(),
                      context.get());
    ::gcry_mpi_ec_mul(second.get(), inverse.get(), point(publicKey).get(), context.get());
    ::gcry_mpi_ec_add(first.get(), first.get(), second.get(), context.get());
    const Number x = number(View(coordinates(first.get(), context.get(), size)).first(size));
    ::gcry_mpi_mod(x.get(), x.get(), order.get());
    return ::gcry_mpi_cmp(x.get(), r.get()) == 0;
}

Bytes agree(const std::string& curve, View privateKey, View publicKey, View ukm, int digest) {
    const Curve context = openCurve(curve);
    const Number order(::gcry_mpi_ec_get_mpi("n", context.get(), 1));
    const Number cofactor(::gcry_mpi_ec_get_mpi("h", context.get(), 1));
    const Number factor(::gcry_mpi_new(0));
    ::gcry_mpi_mulm(factor.get(), number(ukm).get(), number(privateKey).get(), order.get());
    if (cofactor)
        ::gcry_mpi_mul(factor.get(), factor.get(), cofactor.get());
    const Point result(::gcry_mpi_point_new(0));
    ::gcry_mpi_ec_mul(result.get(), factor.get(), point(publicKey).get(), context.get());
    const Bytes shared = coordinates(result.get(), context.get(), privateKey.size());
    Bytes key(::gcry_md_get_algo_dlen(digest));
    ::gcry_md_hash_buffer(digest, key.data(), shared.data(), shared.size());
    return key;
}

Bytes transform(const std::string& substitution, int mode, View key, View iv, View data, bool encrypt) {
    const Cipher cipher = openCipher(substitution, mode, false, key, iv);
    Bytes result(data.size());
    must((encrypt ? ::gcry_cipher_encrypt : ::gcry_cipher_decrypt)(cipher.get(), result.data(), result.size(),
                                                                   data.data(), data.size()));
    return result;
}

WrappedKey wrap(const std::string& substitution, View keyEncryptionKey, View ukm, View key) {
    const Bytes wrapping = diversify(substitution, keyEncryptionKey, ukm);
    return {transform(substitution, GCRY_CIPHER_MODE_ECB, wrapping, {}, key, true),
            mac(substitution, wrapping, ukm, key)};
}

Bytes unwrap(const std::string& substitution, View keyEncryptionKey, View ukm, const WrappedKey& wrapped) {
    const Bytes wrapping = diversify(substitution, keyEncryptionKey, ukm);
    Bytes key = transform(substitution, GCRY_CIPHER_MODE_ECB, wrapping, {}, wrapped.encrypted, false);
    return mac(substitution, wrapping, ukm, key) == wrapped.mac ? key : Bytes();
}

Cipher openCipher(const std::string& substitution, int mode, bool meshing, View key, View iv) {
    gcry_cipher_hd_t made = nullptr;
    must(::gcry_cipher_open(&made, meshing ? GCRY_CIPHER_GOST28147_MESH : GCRY_CIPHER_GOST28147, mode, 0));
    Cipher cipher(made);
    std::string oid = substitution;
    must(::gcry_cipher_ctl(made, GCRYCTL_SET_SBOX, oid.data(), 0));
    must(::gcry_cipher_setkey(made, key.data(), key.size()));
    if (!iv.empty())
        must(::gcry_cipher_setiv(made, iv.data(), iv.size()));
    return cipher;
}

}  // namespace Corvane::Platform::Gost
