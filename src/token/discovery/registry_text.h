// Settings of other programs for the machine.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Corvane {

// Both look below HKEY_LOCAL_MACHINE; `view` is nothing, KEY_WOW64_64KEY or KEY_WOW64_32KEY. A value is none
// where it is missing or of another type. Never throw for the registry's sake.
std::optional<std::wstring> readMachineText(const std::wstring& key, const wchar_t* name,
                                            std::uint32_t view = 0);
std::optional<std::uint32_t> readMachineNumber(const std::wstring& key, const wchar_t* name,
                                               std::uint32_t view = 0);
bool machineKeyExists(const std::wstring& key);

}  // namespace Corvane
