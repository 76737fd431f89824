#include "token/discovery/fat12_readers.h"

#include "core/log.h"
#include "token/discovery/registry_text.h"

#include <cstdio>
#include <optional>

namespace Corvane::detail {
namespace {

constexpr wchar_t context[] = L"Corvane::detail::getActiveFat12Readers";
constexpr wchar_t devicesKey[] = L"SOFTWARE\\Crypto Pro\\Cryptography\\CurrentVersion\\KeyDevices\\FAT12";

struct Disk {
    std::wstring label;
    std::wstring serialNumber;
    std::uint64_t total = 0;
    std::uint64_t free = 0;
};

// Nothing where the drive is empty. The system is not to ask for a disk.
std::optional<Disk> readDisk(const std::wstring& root) {
    DWORD mode = 0;
    ::SetThreadErrorMode(SEM_FAILCRITICALERRORS, &mode);
    wchar_t label[MAX_PATH + 1]{};
    DWORD number = 0;
    ULARGE_INTEGER total{};
    ULARGE_INTEGER free{};
    const bool isReady =
        ::GetVolumeInformationW(root.c_str(), label, MAX_PATH, &number, nullptr, nullptr, nullptr, 0) &&
        ::GetDiskFreeSpaceExW(root.c_str(), nullptr, &total, &free);
    ::SetThreadErrorMode(mode, nullptr);
    if (!isReady)
        return std::nullopt;
    wchar_t digits[9]{};
    std::swprintf(digits, std::size(digits), L"%08lX", number);
    return Disk{label, digits, total.QuadPart, free.QuadPart};
}

}  // namespace

std::vector<std::pair<Token, KeyCarrier>> getActiveFat12Readers() {
    std::vector<std::pair<Token, KeyCarrier>> readers;
    if (!machineKeyExists(devicesKey))
        return readers;
    writeLog(LogLevel::debug, context, L"get active fat12 readers");
    for (wchar_t letter = L'A'; letter <= L'Z'; ++letter) {
        const std::wstring root{letter, L':', L'\\'};
        if (::GetDriveTypeW(root.c_str()) != DRIVE_REMOVABLE)
            continue;
        const auto disk = readDisk(root);
        if (!disk)
            continue;
        const std::wstring slot = std::wstring(L"FAT12_") + letter;
        readers.emplace_back(Token{slot, {}, {}, disk->serialNumber, disk->total, disk->free},
                             KeyCarrier{L"FAT12", disk->label.empty() ? root.substr(0, 2) : disk->label, slot,
                                        disk->serialNumber, false, std::nullopt});
    }
    return readers;
}

}  // namespace Corvane::detail
