#include "compression/zip_places.h"

#include "binary/utf.h"

#include <algorithm>
#include <string_view>

#ifdef _WIN32
#include <windows.h>
#else
#include <locale>
#endif

namespace Corvane::Compression::detail {
namespace {

constexpr std::uint8_t usedByFile = 1;
constexpr std::uint8_t usedAsFolder = 2;
constexpr std::uint8_t usedByFolderEntry = 4;

#ifdef _WIN32

// As file systems compare names.
void toUpperCase(std::wstring& text) {
    ::CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
}

#else

void toUpperCase(std::wstring& text) {
    static const std::locale locale("C.UTF-8");
    std::use_facet<std::ctype<wchar_t>>(locale).toupper(text.data(), text.data() + text.size());
}

#endif

std::wstring placeName(std::string_view part) {
    std::wstring name = utf8ToWide({reinterpret_cast<const std::uint8_t*>(part.data()), part.size()}).value();
    toUpperCase(name);
    return name;
}

}  // namespace

std::pair<std::size_t, bool> PathTree::add(std::size_t folder, std::wstring name) {
    const auto [position, isNew] = numbers_.try_emplace({folder, std::move(name)}, numbers_.size() + 1);
    return {position->second, isNew};
}

// Whether nothing is in the way.
bool ZipPlaces::enterFolder(std::size_t place) {
    uses_[place] |= usedAsFolder;
    return (uses_[place] & usedByFile) == 0;
}

ZipPlaces::Meeting ZipPlaces::put(const std::vector<std::string>& parts, bool directory) {
    std::size_t place = PathTree::root;
    bool free = true;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        place = tree_.add(place, placeName(parts[i])).first;
        uses_.resize(std::max(uses_.size(), place + 1));
        if (directory || i + 1 < parts.size())
            free = enterFolder(place) && free;
    }
    if (parts.empty())
        return Meeting::nothing;
    const std::uint8_t before = uses_[place];
    uses_[place] |= directory ? usedByFolderEntry : usedByFile;
    if (!free || (!directory && before != 0))
        return Meeting::obstacle;
    return (before & usedByFolderEntry) != 0 ? Meeting::sameFolder : Meeting::nothing;
}

}  // namespace Corvane::Compression::detail
