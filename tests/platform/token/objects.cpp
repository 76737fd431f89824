#include "objects.h"

#include "settings.h"

#include <cstring>
#include <fstream>
#include <sstream>
#include <utility>

namespace Corvane::Platform::Token {

Object objectOf(const CK_ATTRIBUTE* attributes, CK_ULONG count) {
    Object object;
    for (CK_ULONG i = 0; i < count; ++i) {
        const auto* const value = static_cast<const std::uint8_t*>(attributes[i].pValue);
        object[attributes[i].type] = Bytes(value, value + attributes[i].ulValueLen);
    }
    return object;
}

bool isTrue(const Object& object, CK_ATTRIBUTE_TYPE type) {
    const auto found = object.find(type);
    return found != object.end() && found->second == Bytes{CK_TRUE};
}

CK_ULONG numberOf(const Object& object, CK_ATTRIBUTE_TYPE type) {
    CK_ULONG number = CK_UNAVAILABLE_INFORMATION;
    const auto found = object.find(type);
    if (found != object.end() && found->second.size() == sizeof number)
        std::memcpy(&number, found->second.data(), sizeof number);
    return number;
}

// A line "TYPE HEX" for each attribute, an empty one behind each object.
std::vector<Object> loadObjects() {
    std::vector<Object> objects;
    std::ifstream file(narrow(besideModule(L".objects")));
    Object object;
    for (std::string line; std::getline(file, line);) {
        if (line.empty()) {
            objects.push_back(std::exchange(object, {}));
            continue;
        }
        std::istringstream words(line);
        CK_ATTRIBUTE_TYPE type = 0;
        std::string digits;
        words >> std::hex >> type >> digits;
        Bytes& value = object[type];
        for (std::size_t at = 0; at + 1 < digits.size(); at += 2)
            value.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(at, 2), nullptr, 16)));
    }
    return objects;
}

void storeObjects(const std::vector<Object>& objects) {
    std::ofstream file(narrow(besideModule(L".objects")));
    for (const Object& object : objects) {
        for (const auto& [type, value] : object) {
            file << std::hex << type << ' ';
            for (const std::uint8_t byte : value)
                file << "0123456789abcdef"[byte >> 4] << "0123456789abcdef"[byte & 15];
            file << '\n';
        }
        file << '\n';
    }
}

}  // namespace Corvane::Platform::Token
