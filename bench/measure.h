// Measuring for the benchmarks: a component's function beside a peer's, in one run.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace bench {

using Work = std::function<void()>;

// The value must be computed, because this might have read it.
inline void keep(const void* value) {
    asm volatile("" : : "r"(value) : "memory");
}

inline double secondsOf(const Work& work, std::size_t rounds) {
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < rounds; ++i)
        work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

struct Rates {
    double ours;
    double peer;
};

// Millions per second of both, of bytes or calls, from the best of turns that alternate so that a busy
// machine disturbs both alike.
inline Rates measure(std::size_t amount, const Work& ours, const Work& peer) {
    // Many short turns: on a busy machine some of them are left alone. Fewer of long ones.
    constexpr double turnSeconds = 0.005;
    constexpr int turns = 50;
    constexpr int fewestTurns = 5;
    constexpr double totalSeconds = 4;
    const auto roundsFor = [](const Work& work) {
        std::size_t rounds = 1;
        while (secondsOf(work, rounds) < turnSeconds / 2)
            rounds *= 2;
        return rounds;
    };
    const std::size_t oursRounds = roundsFor(ours);
    const std::size_t peerRounds = roundsFor(peer);
    Rates best{0, 0};
    double spent = 0;
    for (int turn = 0; turn < turns && (turn < fewestTurns || spent < totalSeconds); ++turn) {
        const auto rate = [amount, &spent](double seconds, std::size_t rounds) {
            spent += seconds;
            return static_cast<double>(amount) * static_cast<double>(rounds) / seconds / 1e6;
        };
        best.ours = std::max(best.ours, rate(secondsOf(ours, oursRounds), oursRounds));
        best.peer = std::max(best.peer, rate(secondsOf(peer, peerRounds), peerRounds));
    }
    return best;
}

// One line of the table, with the work that both do in one turn: `amount` millions of which a second are told
// in `unit`. `wanted` is the ratio that the component is meant to reach.
inline void compareRates(const char* work, const char* peerName, double wanted, std::size_t amount,
                         const char* unit, int decimals, const Work& ours, const Work& peer) {
    const Rates rates = measure(amount, ours, peer);
    const double ratio = rates.ours / rates.peer;
    std::printf("%-30s %9.*f %-4s  %-28s %9.*f %-4s  ratio %6.2f  wanted %5.2f  %s\n", work, decimals,
                rates.ours, unit, peerName, decimals, rates.peer, unit, ratio, wanted,
                ratio >= wanted ? "reached" : "MISSED");
    std::fflush(stdout);
}

// The line of a work for which this system has no peer.
inline void compareWithoutPeer(const char* work, const char* reason, std::size_t bytes, const Work& ours) {
    std::printf("%-30s %9.0f MB/s  %s\n", work, measure(bytes, ours, [] {}).ours, reason);
    std::fflush(stdout);
}

inline void compare(const char* work, const char* peerName, double wanted, std::size_t bytes,
                    const Work& ours, const Work& peer) {
    compareRates(work, peerName, wanted, bytes, "MB/s", 0, ours, peer);
}

// `calls` of them are made by each piece of work.
inline void compareCalls(const char* work, const char* peerName, double wanted, std::size_t calls,
                         const Work& ours, const Work& peer) {
    compareRates(work, peerName, wanted, calls, "M/s", 3, ours, peer);
}

// The line of what is done once, in microseconds, and may take `wanted` times as long as the peer's.
inline void printTimes(const char* work, double ours, const char* peerName, double peer, double wanted) {
    const double ratio = ours / peer;
    std::printf("%-30s %9.0f us    %-28s %9.0f us    ratio %6.2f  at most %4.2f  %s\n", work, ours, peerName,
                peer, ratio, wanted, ratio <= wanted ? "reached" : "MISSED");
    std::fflush(stdout);
}

inline std::vector<std::uint8_t> randomBytes(std::size_t size) {
    std::mt19937_64 random(20110713);
    std::vector<std::uint8_t> bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<std::uint8_t>(random()); });
    return bytes;
}

}  // namespace bench
