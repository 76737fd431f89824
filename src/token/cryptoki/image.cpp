#include "token/cryptoki/image.h"

#include <algorithm>
#include <cstddef>

namespace cryptoki {
namespace {

constexpr std::size_t mostLibraries = 1000;
constexpr std::size_t longestName = 260;
constexpr std::uint32_t mostSections = 96;  // that the system loads

// Numbers are little-endian, and 0 beyond the end.
class File {
public:
    explicit File(std::span<const std::uint8_t> bytes) noexcept : bytes_(bytes) {}

    std::uint32_t byte(std::size_t at) const noexcept { return at < bytes_.size() ? bytes_[at] : 0; }
    std::uint32_t word(std::size_t at) const noexcept { return byte(at) | byte(at + 1) << 8; }
    std::uint32_t number(std::size_t at) const noexcept { return word(at) | word(at + 2) << 16; }

    std::string text(std::size_t at) const {
        std::string text;
        while (text.size() < longestName && byte(at) != 0)
            text += static_cast<char>(byte(at++));
        return text;
    }

private:
    std::span<const std::uint8_t> bytes_;
};

class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> bytes) noexcept : file_(bytes) {}

    Image read() {
        constexpr std::uint32_t dosMark = 0x5A4D;
        constexpr std::uint32_t mark = 0x4550;
        Image image;
        header_ = file_.number(0x3C);
        if (file_.word(0) != dosMark || file_.number(header_) != mark)
            return image;
        image.bitness = bitness(file_.word(header_ + 4));
        readLibraries(image.libraries);
        return image;
    }

private:
    static unsigned bitness(std::uint32_t machine) noexcept {
        constexpr std::uint32_t x86 = 0x014C;
        constexpr std::uint32_t x64 = 0x8664;
        return machine == x86 ? 32 : machine == x64 ? 64 : 0;
    }

    // Where in the file an address of the loaded image stands; beyond the file where it is in no section.
    std::size_t place(std::uint32_t address) const noexcept {
        const std::uint32_t count = std::min(file_.word(header_ + 6), mostSections);
        std::size_t section = header_ + 24 + file_.word(header_ + 20);
        for (std::uint32_t i = 0; i < count; ++i, section += 40) {
            const std::uint32_t offset = address - file_.number(section + 12);
            if (offset < file_.number(section + 16))
                return std::size_t{file_.number(section + 20)} + offset;
        }
        return SIZE_MAX / 2;
    }

    // The second data directory is the table of imports: 20 bytes for each library, 0 behind the last.
    void readLibraries(std::vector<std::string>& names) const {
        constexpr std::uint32_t magicOf64 = 0x20B;
        const std::size_t optional = header_ + 24;
        const std::size_t directories = optional + (file_.word(optional) == magicOf64 ? 112 : 96);
        const std::uint32_t table = file_.number(directories + 8);
        if (table == 0)
            return;
        for (std::size_t at = place(table); names.size() < mostLibraries; at += 20) {
            const std::uint32_t name = file_.number(at + 12);
            if (name == 0)
                return;
            names.push_back(file_.text(place(name)));
        }
    }

    File file_;
    std::size_t header_ = 0;
};

}  // namespace

Image readImage(std::span<const std::uint8_t> file) {
    return Reader(file).read();
}

}  // namespace cryptoki
