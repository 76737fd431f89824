#include "objects.h"

#include "settings.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <sstream>
#include <utility>

namespace Corvane::Platform::Token {
namespace {

enum class Kind { number, boolean, bytes, signatureParameters, hashParameters };

struct Known {
    CK_ATTRIBUTE_TYPE type;
    Kind kind;
    std::vector<CK_OBJECT_CLASS> of;
    bool isNeeded = false;
};

const std::vector<CK_OBJECT_CLASS> all{CKO_CERTIFICATE, CKO_PUBLIC_KEY, CKO_PRIVATE_KEY};
const std::vector<CK_OBJECT_CLASS> certificates{CKO_CERTIFICATE};
const std::vector<CK_OBJECT_CLASS> publicKeys{CKO_PUBLIC_KEY};
const std::vector<CK_OBJECT_CLASS> privateKeys{CKO_PRIVATE_KEY};
const std::vector<CK_OBJECT_CLASS> keys{CKO_PUBLIC_KEY, CKO_PRIVATE_KEY};

const Known table[] = {
    {CKA_CLASS, Kind::number, all, true},
    {CKA_TOKEN, Kind::boolean, all},
    {CKA_PRIVATE, Kind::boolean, all},
    {CKA_LABEL, Kind::bytes, all},
    {CKA_ID, Kind::bytes, all},
    {CKA_CERTIFICATE_TYPE, Kind::number, certificates, true},
    {CKA_SUBJECT, Kind::bytes, certificates, true},
    {CKA_ISSUER, Kind::bytes, certificates},
    {CKA_SERIAL_NUMBER, Kind::bytes, certificates},
    {CKA_VALUE, Kind::bytes, certificates, true},
    {CKA_KEY_TYPE, Kind::number, keys},
    {CKA_VERIFY, Kind::boolean, publicKeys},
    {CKA_SIGN, Kind::boolean, privateKeys},
    {CKA_DERIVE, Kind::boolean, privateKeys},
    {CKA_GOSTR3410_PARAMS, Kind::signatureParameters, keys, true},
    {CKA_GOSTR3411_PARAMS, Kind::hashParameters, publicKeys, true},
};

bool isOf(const Known& known, CK_OBJECT_CLASS objectClass) {
    return std::ranges::find(known.of, objectClass) != known.of.end();
}

bool isGood(Kind kind, const Bytes& value) {
    switch (kind) {
        case Kind::number:
            return value.size() == sizeof(CK_ULONG);
        case Kind::boolean:
            return value == Bytes{CK_TRUE} || value == Bytes{CK_FALSE};
        case Kind::signatureParameters:
            return value == oid("1.2.643.2.2.35.1");
        case Kind::hashParameters:
            return value == oid("1.2.643.2.2.30.1");
        default:
            return true;
    }
}

}  // namespace

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

CK_RV checkTemplate(const CK_ATTRIBUTE* attributes, CK_ULONG count, CK_OBJECT_CLASS objectClass) {
    const Object object = objectOf(attributes, count);
    if (object.size() != count || numberOf(object, CKA_CLASS) != objectClass)
        return CKR_TEMPLATE_INCONSISTENT;
    for (const auto& [type, value] : object) {
        const auto* const known = std::ranges::find(table, type, &Known::type);
        if (known == std::end(table) || !isOf(*known, objectClass))
            return CKR_ATTRIBUTE_TYPE_INVALID;
        if (!isGood(known->kind, value))
            return CKR_ATTRIBUTE_VALUE_INVALID;
    }
    for (const Known& known : table) {
        if (known.isNeeded && isOf(known, objectClass) && !object.contains(known.type))
            return CKR_TEMPLATE_INCOMPLETE;
    }
    return CKR_OK;
}

}  // namespace Corvane::Platform::Token
