// Streams without content, and the memory that is held while an operation uses them.
#pragma once

#include "stream/binary_stream.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>

namespace bench {

inline std::size_t committedPrivate() {
    std::size_t total = 0;
    MEMORY_BASIC_INFORMATION region{};
    const auto* address = static_cast<const char*>(nullptr);
    while (::VirtualQuery(address, &region, sizeof(region)) == sizeof(region)) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            total += region.RegionSize;
        const auto* next = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
        if (next < address)
            break;
        address = next;
    }
    return total;
}

// Sees how much memory is held whenever an operation turns to one of its streams, which is when it has all
// its blocks.
class Watch {
public:
    void look() { peak_ = std::max(peak_, committedPrivate()); }

    // A line of the table: the most memory the process held above what it held before.
    void print(const char* work, const char* amount, double wantedMiB) const {
        const double peak = static_cast<double>(peak_ - std::min(peak_, before_)) / (1 << 20);
        std::printf("%-30s %9.1f MiB at the most on %s, wanted %5.0f  %s\n", work, peak, amount, wantedMiB,
                    peak <= wantedMiB ? "reached" : "MISSED");
        std::fflush(stdout);
    }

private:
    std::size_t before_ = committedPrivate();
    std::size_t peak_ = 0;
};

// A stream that holds no content: it is read as a repeated text, and what is written is only counted. Without
// a watch nobody looks at the memory, which takes its time.
class Hollow final : public Corvane::Stream::IBinaryStream {
public:
    Hollow(Watch* watch, std::uint64_t length) : watch_(watch), size_(length) {}

    Corvane::Stream::State state() const override { return {position_, size_}; }
    std::uint64_t seek(std::int64_t offset, Corvane::Stream::Origin origin) override {
        return position_ = Corvane::Stream::target(offset, origin, state());
    }
    void resize(std::uint64_t length) override { size_ = length; }
    void close() override {}
    std::size_t read(std::span<std::uint8_t> buffer) override {
        look();
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), size_ - position_));
        for (std::size_t done = 0; done < count;) {
            const auto at = static_cast<std::size_t>((position_ + done) % text.size());
            const std::size_t piece = std::min(count - done, text.size() - at);
            std::memcpy(buffer.data() + done, text.data() + at, piece);
            done += piece;
        }
        position_ += count;
        return count;
    }
    void write(std::span<const std::uint8_t> bytes) override {
        look();
        position_ += bytes.size();
        size_ = std::max(size_, position_);
    }
    Corvane::SharedBytes read(std::size_t count) override {
        auto bytes = std::make_shared<Corvane::Bytes>(count);
        bytes->resize(read(std::span(*bytes)));
        return bytes;
    }
    Corvane::SharedBytes seekAndRead(std::int64_t position, std::size_t count) override {
        seek(position, Corvane::Stream::Origin::beginning);
        return read(count);
    }
    void seekAndWrite(std::int64_t position, std::span<const std::uint8_t> bytes) override {
        seek(position, Corvane::Stream::Origin::beginning);
        write(bytes);
    }

private:
    inline static const auto text = [] {
        std::array<std::uint8_t, std::size_t{1} << 15> made{};
        for (std::size_t i = 0; i < made.size(); ++i)
            made[i] = static_cast<std::uint8_t>(i * i >> 7);
        return made;
    }();

    void look() {
        if (watch_)
            watch_->look();
    }

    Watch* watch_;
    std::uint64_t size_;
    std::uint64_t position_ = 0;
};

}  // namespace bench
