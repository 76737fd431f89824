// A PKCS#11 module (2.20) with one token that has GOST R 34.10-2001 keys. Each call goes into the log with
// what it returned. Settings, in the section "token": slot (without it there is no token), model, free
// (memory), key, signature (their sizes), fail (settings.h). Which attributes an object has, and in which
// order functions are called, tests see in the files beside the module.
#include "../gost/arithmetic.h"
#include "settings.h"

#include <p11-kit/pkcs11.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <utility>

namespace Corvane::Platform::Token {
namespace {

using Object = std::map<CK_ATTRIBUTE_TYPE, Bytes>;

constexpr wchar_t section[] = L"token";
constexpr CK_SLOT_ID theSlot = 7;
constexpr CK_SESSION_HANDLE theSession = 70;
constexpr char curve[] = "1.2.643.2.2.35.1";
constexpr CK_ULONG keySize = 32;  // and of a digest

// What a function returns but CKR_OK is thrown.
void need(bool isSo, CK_RV otherwise) {
    if (!isSo)
        throw otherwise;
}

bool isInitialized;
struct Session {
    bool isOpen = false, isWritable = false, isLoggedIn = false;
    std::vector<CK_OBJECT_HANDLE> found;
    CK_OBJECT_HANDLE signingKey = 0;
} session;
std::vector<Object> objects;  // by handle, from 1 on

template <std::size_t size>
void fill(unsigned char (&field)[size], const std::wstring& text) {
    std::fill_n(field, size, ' ');
    const std::string bytes = narrow(text);
    std::copy_n(bytes.begin(), std::min(bytes.size(), size), field);
}

// Gives a result as PKCS#11 does, or only its size.
void give(View result, void* out, CK_ULONG* size) {
    const CK_ULONG room = std::exchange(*size, static_cast<CK_ULONG>(result.size()));
    need(!out || room >= result.size(), CKR_BUFFER_TOO_SMALL);
    if (out)
        std::ranges::copy(result, static_cast<unsigned char*>(out));
}

// Of public keys or signatures.
std::size_t sizeOf(const wchar_t* what) {
    return std::stoul(setting(section, what, L"64"));
}

Object objectOf(const CK_ATTRIBUTE* attributes, CK_ULONG count) {
    Object object;
    for (CK_ULONG i = 0; i < count; ++i)
        object[attributes[i].type] = bytesOf(
            {static_cast<const std::uint8_t*>(attributes[i].pValue), std::size_t{attributes[i].ulValueLen}});
    return object;
}

// The objects lie in a file that outlives the module: a line "TYPE HEX" for each attribute, an empty one
// behind each object.
void loadObjects() {
    objects.clear();
    std::ifstream file(narrow(besideModule(L".objects")));
    Object object;
    for (std::string line; std::getline(file, line);) {
        if (line.empty())
            objects.push_back(std::exchange(object, {}));
        else
            object[std::stoul(line, nullptr, 16)] = fromHex(line.substr(line.find(' ') + 1));
    }
}

CK_OBJECT_HANDLE addObject(Object object) {
    need(session.isWritable && session.isLoggedIn, CKR_SESSION_READ_ONLY);
    std::ofstream file(narrow(besideModule(L".objects")), std::ios::app);
    for (const auto& [type, value] : object)
        file << std::hex << type << ' ' << hex(value) << '\n';
    file << '\n';
    objects.push_back(std::move(object));
    return static_cast<CK_OBJECT_HANDLE>(objects.size());
}

void initialize(void* arguments) {
    need(!isInitialized, CKR_CRYPTOKI_ALREADY_INITIALIZED);
    need(!arguments, CKR_ARGUMENTS_BAD);
    Gost::startArithmetic();
    loadObjects();
    isInitialized = true;
}

void finalize(void*) {
    if (session.isOpen)
        log("left open");
    session = {};
    isInitialized = false;
}

void getSlotList(CK_BBOOL, CK_SLOT_ID* list, CK_ULONG* count) {
    const CK_ULONG room = std::exchange(*count, setting(section, L"slot").empty() ? 0 : 1);
    need(!list || room >= *count, CKR_BUFFER_TOO_SMALL);
    if (list && *count)
        *list = theSlot;
}

void getSlotInfo(CK_SLOT_ID, CK_SLOT_INFO* info) {
    *info = {};
    fill(info->slotDescription, setting(section, L"slot"));
}

void getTokenInfo(CK_SLOT_ID, CK_TOKEN_INFO* info) {
    *info = {};
    fill(info->manufacturerID, L"Test tokens");
    fill(info->model, setting(section, L"model", L"Test ECP"));
    fill(info->serialNumber, L"2f5a01c7");
    info->ulTotalPublicMemory = 65536;
    info->ulFreePublicMemory = std::stoul(setting(section, L"free", L"60000"));
}

void openSession(CK_SLOT_ID slot, CK_FLAGS flags, void*, CK_NOTIFY, CK_SESSION_HANDLE* handle) {
    need(slot == theSlot && !session.isOpen, CKR_SLOT_ID_INVALID);
    need(flags & CKF_SERIAL_SESSION, CKR_SESSION_PARALLEL_NOT_SUPPORTED);
    *handle = theSession;
    session.isOpen = true;
    session.isWritable = (flags & CKF_RW_SESSION) != 0;
}

void closeSession(CK_SESSION_HANDLE) {
    if (session.isLoggedIn)
        log("left open");
    session = {};
}

void login(CK_SESSION_HANDLE, CK_USER_TYPE user, unsigned char* pin, CK_ULONG size) {
    need(user == CKU_USER, CKR_USER_TYPE_INVALID);
    need(std::string_view(reinterpret_cast<char*>(pin), size) == "12345678", CKR_PIN_INCORRECT);
    session.isLoggedIn = true;
}

void logout(CK_SESSION_HANDLE) {
    session.isLoggedIn = false;
}

void createObject(CK_SESSION_HANDLE, CK_ATTRIBUTE* attributes, CK_ULONG count, CK_OBJECT_HANDLE* made) {
    *made = addObject(objectOf(attributes, count));
}

// Of one attribute.
void getAttributeValue(CK_SESSION_HANDLE, CK_OBJECT_HANDLE handle, CK_ATTRIBUTE* attribute, CK_ULONG) {
    const auto found = objects.at(handle - 1).find(attribute->type);
    if (found == objects[handle - 1].end())
        attribute->ulValueLen = CK_UNAVAILABLE_INFORMATION;
    need(found != objects[handle - 1].end(), CKR_ATTRIBUTE_TYPE_INVALID);
    give(found->second, attribute->pValue, &attribute->ulValueLen);
}

void findObjectsInit(CK_SESSION_HANDLE, CK_ATTRIBUTE* attributes, CK_ULONG count) {
    const Object wanted = objectOf(attributes, count);
    for (CK_OBJECT_HANDLE each = 1; each <= objects.size(); ++each)
        if (std::ranges::includes(objects[each - 1], wanted))
            session.found.push_back(each);
}

// One at a time.
void findObjects(CK_SESSION_HANDLE, CK_OBJECT_HANDLE* list, CK_ULONG, CK_ULONG* count) {
    *count = session.found.empty() ? 0 : 1;
    if (*count) {
        *list = session.found.front();
        session.found.erase(session.found.begin());
    }
}

void findObjectsFinal(CK_SESSION_HANDLE) {}

void generateKeyPair(CK_SESSION_HANDLE, CK_MECHANISM* mechanism, CK_ATTRIBUTE* ofPublic, CK_ULONG publicCount,
                     CK_ATTRIBUTE* ofPrivate, CK_ULONG privateCount, CK_OBJECT_HANDLE* publicKey,
                     CK_OBJECT_HANDLE* privateKey) {
    need(mechanism->mechanism == CKM_GOSTR3410_KEY_PAIR_GEN, CKR_MECHANISM_INVALID);
    Object first = objectOf(ofPublic, publicCount);
    Object second = objectOf(ofPrivate, privateCount);
    second[CKA_VALUE] = Gost::makePrivateKey(keySize);
    first[CKA_VALUE] = Gost::publicKey(curve, second[CKA_VALUE]);
    first[CKA_VALUE].resize(sizeOf(L"key"));
    *publicKey = addObject(std::move(first));
    *privateKey = addObject(std::move(second));
}

void digestInit(CK_SESSION_HANDLE, CK_MECHANISM* mechanism) {
    need(mechanism->mechanism == CKM_GOSTR3411, CKR_MECHANISM_INVALID);
}

void digest(CK_SESSION_HANDLE, unsigned char* data, CK_ULONG dataSize, unsigned char* out, CK_ULONG* size) {
    Bytes result(keySize);
    ::gcry_md_hash_buffer(GCRY_MD_GOSTR3411_CP, result.data(), data, dataSize);
    give(result, out, size);
}

void signInit(CK_SESSION_HANDLE, CK_MECHANISM* mechanism, CK_OBJECT_HANDLE key) {
    need(mechanism->mechanism == CKM_GOSTR3410, CKR_MECHANISM_INVALID);
    session.signingKey = key;
}

void sign(CK_SESSION_HANDLE, unsigned char* data, CK_ULONG dataSize, unsigned char* out, CK_ULONG* size) {
    need(session.signingKey && dataSize == keySize, CKR_DATA_LEN_RANGE);
    Bytes result = Gost::sign(curve, objects[session.signingKey - 1].at(CKA_VALUE), View(data, dataSize));
    result.resize(sizeOf(L"signature"));
    give(result, out, size);
}

template <class Body>
CK_RV call(const char* name, Body body) {
    return logged<CK_RV>(section, name, "", [&]() -> CK_RV {
        try {
            body();
            return CKR_OK;
        } catch (const CK_RV& value) {
            return value;
        }
    });
}

// A literal as the argument of a template.
template <std::size_t size>
struct Name {
    // NOLINTNEXTLINE(google-explicit-constructor): a literal becomes one
    constexpr Name(const char (&literal)[size]) { std::copy_n(literal, size, text); }
    char text[size] = {};
};

// An entry of the function list.
template <Name name, auto function, class... Arguments>
CK_RV entry(Arguments... arguments) {
    return call(name.text, [&] { function(arguments...); });
}

CK_FUNCTION_LIST makeFunctions() {
    CK_FUNCTION_LIST list{};
    list.version = {2, 20};
    list.C_Initialize = entry<"C_Initialize", initialize>;
    list.C_Finalize = entry<"C_Finalize", finalize>;
    list.C_GetSlotList = entry<"C_GetSlotList", getSlotList>;
    list.C_GetSlotInfo = entry<"C_GetSlotInfo", getSlotInfo>;
    list.C_GetTokenInfo = entry<"C_GetTokenInfo", getTokenInfo>;
    list.C_OpenSession = entry<"C_OpenSession", openSession>;
    list.C_CloseSession = entry<"C_CloseSession", closeSession>;
    list.C_Login = entry<"C_Login", login>;
    list.C_Logout = entry<"C_Logout", logout>;
    list.C_CreateObject = entry<"C_CreateObject", createObject>;
    list.C_GetAttributeValue = entry<"C_GetAttributeValue", getAttributeValue>;
    list.C_FindObjectsInit = entry<"C_FindObjectsInit", findObjectsInit>;
    list.C_FindObjects = entry<"C_FindObjects", findObjects>;
    list.C_FindObjectsFinal = entry<"C_FindObjectsFinal", findObjectsFinal>;
    list.C_GenerateKeyPair = entry<"C_GenerateKeyPair", generateKeyPair>;
    list.C_DigestInit = entry<"C_DigestInit", digestInit>;
    list.C_Digest = entry<"C_Digest", digest>;
    list.C_SignInit = entry<"C_SignInit", signInit>;
    list.C_Sign = entry<"C_Sign", sign>;
    return list;
}

}  // namespace
}  // namespace Corvane::Platform::Token

extern "C" CK_RV C_GetFunctionList(CK_FUNCTION_LIST** list) {
    using namespace Corvane::Platform::Token;
    return call("C_GetFunctionList", [&] {
        static CK_FUNCTION_LIST functions = makeFunctions();
        *list = &functions;
    });
}

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    using namespace Corvane::Platform::Token;
    if (reason == DLL_PROCESS_ATTACH && Corvane::Platform::setting(section, L"fail") == L"DllMain=hang")
        Corvane::Platform::plannedFailure(section, "DllMain");
    if (reason == DLL_PROCESS_DETACH && isInitialized)
        Corvane::Platform::log("left open");
    return TRUE;
}
