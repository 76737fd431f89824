// Files of tests/data, made by other tools.
#pragma once

#include <cstdint>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

// The content of a file, named by its path below tests/data.
inline std::string readTestText(const std::string& name) {
    std::ifstream file(CORVANE_TEST_DATA "/" + name, std::ios::binary);
    if (!file) {
        throw std::runtime_error("no test data: " + name);
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

inline std::vector<std::uint8_t> readTestData(const std::string& name) {
    const std::string text = readTestText(name);
    return {text.begin(), text.end()};
}
