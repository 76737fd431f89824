// What a file of a program or library ("Portable Executable" of Microsoft's specification PE/COFF) says of
// itself.
#pragma once

#include "binary/bytes.h"

#include <span>
#include <string>
#include <vector>

namespace cryptoki {

struct Image {
    unsigned bitness = 0;                // 32 or 64; 0 where it is for no processor of the PC
    std::vector<std::string> libraries;  // those it is loaded with, by their names in the file
};

// Pure, any thread; the file may be anything. An image of bitness 0 without libraries for what is none; the
// names as far as they can be read, at most 1,000.
Image readImage(std::span<const std::uint8_t> file);

}  // namespace cryptoki
