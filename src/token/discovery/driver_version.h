// The version of an installed product, as the Windows installer has it on record.
#pragma once

#include <string>
#include <string_view>

namespace Corvane::Crypto {

// `guid` is the product's, as the installer's records name it: 32 hexadecimal digits. "DisplayVersion" counts
// before "Version", a number that is written as "4.3.2". Empty where no such product is installed for the
// machine.
std::wstring getTokenDriverVersion(std::wstring_view guid);

}  // namespace Corvane::Crypto
