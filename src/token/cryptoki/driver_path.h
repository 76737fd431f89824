// Which module is for which token.
#pragma once

#include <string>
#include <string_view>

namespace cryptoki {

// How readers and slots of the two makers' tokens are called.
inline constexpr std::wstring_view jaCartaMark = L"ARDS";
inline constexpr std::wstring_view rutokenMark = L"Aktiv";

// The file, or only its name, of the module for a token with GOST keys, by the description of its slot. The
// settings "UseLocalPkcs11Drivers" and "Location" choose between the JaCarta module of the system and the one
// in the program's own folder. Throws Exception E_TOKEN_LOCATION where that folder is not known,
// E_TOKEN_MODULE_PATH for other tokens.
std::wstring driverPathFor(std::wstring_view slot);

// The first module that is asked for tokens; that of the system where the program's folder is not known.
std::wstring jaCartaDriverPath();

}  // namespace cryptoki
