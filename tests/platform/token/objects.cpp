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
// Classes of objects, for a set of them.
enum : unsigned {
    certificate = 1U << CKO_CERTIFICATE,
    publicKey = 1U << CKO_PUBLIC_KEY,
    privateKey = 1U << CKO_PRIVATE_KEY,
    keys = publicKey | privateKey,
    all = certificate | keys
};

constexpr struct Known {
    CK_ATTRIBUTE_TYPE type;
    Kind kind;
    unsigned of;
    bool isNeeded;
} table[] = {
    {CKA_CLASS, Kind::number, all, true},
    {CKA_TOKEN, Kind::boolean, all, false},
    {CKA_PRIVATE, Kind::boolean, all, false},
    {CKA_LABEL, Kind::bytes, all, false},
    {CKA_ID, Kind::bytes, all, false},
    {CKA_CERTIFICATE_TYPE, Kind::number, certificate, true},
    {CKA_SUBJECT, Kind::bytes, certificate, true},
    {CKA_ISSUER, Kind::bytes, certificate, false},
    {CKA_SERIAL_NUMBER, Kind::bytes, certificate, false},
    {CKA_VALUE, Kind::bytes, certificate, true},
    {CKA_KEY_TYPE, Kind::number, keys, false},
    {CKA_VERIFY, Kind::boolean, publicKey, false},
    {CKA_SIGN, Kind::boolean, privateKey, false},
    {CKA_DERIVE, Kind::boolean, privateKey, false},
    {CKA_GOSTR3410_PARAMS, Kind::signatureParameters, keys, true},
    {CKA_GOSTR3411_PARAMS, Kind::hashParameters, publicKey, true},
};

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
    for (CK_ULONG i = 0; i < count; ++i)
        object[attributes[i].type] = bytesOf(
            {static_cast<const std::uint8_t*>(attributes[i].pValue), std::size_t{attributes[i].ulValueLen}});
    return object;
}

bool isTrue(const Object& object, CK_ATTRIBUTE_TYPE type) {
    const auto found = object.find(type);
    return found != object.end() && found->second == Bytes{CK_TRUE};
}

bool isOf(const Object& object, CK_OBJECT_CLASS objectClass) {
    const auto found = object.find(CKA_CLASS);
    return found != object.end() && found->second.size() == sizeof objectClass &&
           std::memcmp(found->second.data(), &objectClass, sizeof objectClass) == 0;
}

// A line "TYPE HEX" for each attribute, an empty one behind each object.
std::vector<Object> loadObjects() {
    std::vector<Object> objects;
    std::ifstream file(narrow(besideModule(L".objects")));
    Object object;
    for (std::string line; std::getline(file, line);) {
        if (line.empty())
            objects.push_back(std::exchange(object, {}));
        else
            object[std::stoul(line, nullptr, 16)] = fromHex(line.substr(line.find(' ') + 1));
    }
    return objects;
}

void storeObjects(const std::vector<Object>& objects) {
    std::ofstream file(narrow(besideModule(L".objects")));
    for (const Object& object : objects) {
        for (const auto& [type, value] : object)
            file << std::hex << type << ' ' << hex(value, "0123456789abcdef") << '\n';
        file << '\n';
    }
}

CK_RV checkTemplate(const CK_ATTRIBUTE* attributes, CK_ULONG count, CK_OBJECT_CLASS objectClass) {
    const Object object = objectOf(attributes, count);
    if (object.size() != count || !isOf(object, objectClass))
        return CKR_TEMPLATE_INCONSISTENT;
    std::size_t left = object.size();
    for (const Known& known : table) {
        const auto found = object.find(known.type);
        const bool isAllowed = known.of >> objectClass & 1;
        if (found == object.end() && known.isNeeded && isAllowed)
            return CKR_TEMPLATE_INCOMPLETE;
        if (found == object.end() || !isAllowed)
            continue;
        --left;
        if (!isGood(known.kind, found->second))
            return CKR_ATTRIBUTE_VALUE_INVALID;
    }
    return left == 0 ? CKR_OK : CKR_ATTRIBUTE_TYPE_INVALID;
}

}  // namespace Corvane::Platform::Token
