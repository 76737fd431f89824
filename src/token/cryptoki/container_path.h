// Where a key lies on a token: "\\.\" + its reader's name + "\" + the key's identifier. Pure, any thread.
#pragma once

#include <string>
#include <string_view>

namespace cryptoki {

struct ContainerPath {
    std::wstring reader;
    std::wstring identifier;
};

std::wstring makeContainerPath(std::wstring_view reader, std::wstring_view identifier);

// Throws Exception E_TOKEN_CONTAINER_PATH for any other text.
ContainerPath parseContainerPath(std::wstring_view path);

}  // namespace cryptoki
