// The component's settings: values under Software\ZimVetrel\VetrelCorvane, looked up for the current
// user first and for the machine second.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Corvane {

// Where the settings stand below either hive.
inline constexpr wchar_t settingsKey[] = L"Software\\ZimVetrel\\VetrelCorvane";

// The value, or nothing when neither hive has it with the right type. Never throws for the registry's sake.
std::optional<std::uint32_t> readNumberSetting(const wchar_t* name);
std::optional<std::wstring> readTextSetting(const wchar_t* name);

}  // namespace Corvane
