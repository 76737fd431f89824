// What tests of several modules share: texts, the files of tests/data, streams, and how a call failed.
#pragma once

#include "binary/bytes.h"
#include "binary/hex.h"
#include "core/exception.h"
#include "stream/memory_stream.h"
#ifdef _WIN32
#include "core/system_exception.h"
#endif

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Corvane::Test {

inline Bytes bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

inline std::string hexOf(std::span<const std::uint8_t> bytes) {
    const std::wstring digits = binToHex(bytes);
    return {digits.begin(), digits.end()};
}

// ASCII as it stands.
inline std::wstring wide(std::string_view text) {
    return {text.begin(), text.end()};
}

// The content of a file that another tool made, named by its path below tests/data.
inline std::string readTestText(const std::string& name) {
    std::ifstream file(CORVANE_TEST_DATA "/" + name, std::ios::binary);
    if (!file)
        throw std::runtime_error("no test data: " + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline Bytes readTestData(const std::string& name) {
    return bytesOf(readTestText(name));
}

// A table of tests/data: lines of at most so many columns, separated by tabs, and remarks that begin with
// '#'.
inline std::vector<std::vector<std::string>> readTable(const std::string& name, std::size_t columns) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(readTestText(name));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('#'))
            continue;
        auto& row = rows.emplace_back(columns);
        std::istringstream cells(line);
        for (std::size_t column = 0; std::getline(cells, line, '\t'); ++column)
            row.at(column) = line;
    }
    return rows;
}

// What `tell` says of the component's exception that `work` throws; nothing when it throws none.
template <class Work, class Tell>
auto ofException(Work&& work, Tell&& tell) {
    try {
        work();
    } catch (const Exception& exception) {
        return tell(exception);
    }
    return decltype(tell(std::declval<const Exception&>()))();
}

template <class Work>
std::uint32_t errorCode(Work&& work) {
    return ofException(work, [](const Exception& exception) { return std::uint32_t{exception.code()}; });
}

template <class Work>
std::string errorName(Work&& work) {
    return ofException(work, [](const Exception& exception) { return std::string(exception.what()); });
}

#ifdef _WIN32
// The same with the system's number behind it.
using Failure = std::pair<std::uint32_t, std::uint32_t>;

template <class Work>
Failure failureOf(Work&& work) {
    try {
        work();
    } catch (const Win32Exception& exception) {
        return {exception.code(), exception.error()};
    } catch (const Exception& exception) {
        return {exception.code(), 0};
    }
    return {};
}
#endif

// Bytes that deflate can do something with, but not everything: a generator's numbers, each of them repeated.
inline Bytes sampleBytes(std::size_t size) {
    Bytes bytes(size);
    std::uint32_t number = 1;
    for (std::size_t i = 0; i < size; ++i) {
        number = i % 3 == 0 ? number * 1664525u + 1013904223u : number;
        bytes[i] = static_cast<std::uint8_t>(number >> 24);
    }
    return bytes;
}

inline Bytes contentOf(Stream::IBinaryStream& stream) {
    return *stream.seekAndRead(0, static_cast<std::size_t>(stream.state().size));
}

// A stream that stands before its bytes, gives at most `most` of them at a time, as a slow source may, and
// tells each position that it was read to.
class SourceStream : public Stream::MemoryStream {
public:
    using Told = std::function<void(std::uint64_t)>;

    explicit SourceStream(
        std::span<const std::uint8_t> bytes, std::size_t most = ~std::size_t{0},
        Told told = [](std::uint64_t) {})
        : most_(most), told_(std::move(told)) {
        write(bytes);
        seek(0, Stream::Origin::beginning);
    }
    using MemoryStream::read;
    std::size_t read(std::span<std::uint8_t> buffer) override {
        const std::size_t count = MemoryStream::read(buffer.first(std::min(buffer.size(), most_)));
        told_(state().position);
        return count;
    }

private:
    std::size_t most_;
    Told told_;
};

}  // namespace Corvane::Test
