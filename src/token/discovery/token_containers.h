// The key containers on a token.
#pragma once

#include <string>
#include <string_view>

namespace Corvane::Crypto {

// The JSON text of a list of "containerName" and "path", one for each public key that the token shows without
// a PIN. `tokenId` is the description of its slot or its serial number. The name is the key's identifier, in
// hexadecimal where that is no text or has a backslash; a key without one is left out. The path is what
// certificates are installed by. Throws Exception E_TOKEN_SLOT where there is no such token,
// E_TOKEN_MODULE_PATH where it is of another maker than the two whose modules are known, and what
// cryptoki::Pkcs11Module and cryptoki::Session throw.
std::wstring getTokenContainers(const std::wstring& tokenId);

}  // namespace Corvane::Crypto
