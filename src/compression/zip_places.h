// Where the entries of an archive lie below a folder, and which of them are in each other's way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Corvane::Compression::detail {

// A tree of path parts. Paths with the same beginning share it, so the memory that the tree takes grows no
// faster than the text of the paths.
class PathTree {
public:
    static constexpr std::size_t root = 0;

    // The number of a name in the folder of that number, counted from 1, and whether it is new.
    std::pair<std::size_t, bool> add(std::size_t folder, std::wstring name);

private:
    std::map<std::pair<std::size_t, std::wstring>, std::size_t> numbers_;
};

// What exceptions say about an entry that meets another one.
inline constexpr const wchar_t* takenName = L"элемент с таким именем уже есть в архиве";

// The places that entries take, upper and lower case being the same, as file systems take them.
class ZipPlaces {
public:
    enum class Meeting {
        nothing,
        sameFolder,  // another entry for this folder
        obstacle,    // a file or a folder where the file is to lie, or a file where a folder must be
    };

    // Puts an entry there, whatever it meets. `parts` are those of zipNameParts().
    Meeting put(const std::vector<std::string>& parts, bool directory);

private:
    bool enterFolder(std::size_t place);

    PathTree tree_;
    std::vector<std::uint8_t> uses_;  // of the places by their numbers
};

}  // namespace Corvane::Compression::detail
