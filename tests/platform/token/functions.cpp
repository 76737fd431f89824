// A PKCS#11 module (2.20) with one token that has GOST R 34.10-2001 keys. Each call goes into the log with
// what it returned. Settings, in the section "token": slot (without it there is no token), maker, model,
// serial, total, free (memory), pin, tries (left), key, signature (their sizes), fail (settings.h).
#include "../gost/arithmetic.h"
#include "objects.h"
#include "settings.h"

#include <algorithm>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>

namespace Corvane::Platform::Token {
namespace {

constexpr wchar_t section[] = L"token";
constexpr CK_SLOT_ID theSlot = 7;
constexpr char curve[] = "1.2.643.2.2.35.1";
constexpr CK_ULONG digestSize = 32, keySize = 32;

struct Session {
    bool isWritable = false;
    std::optional<std::vector<CK_OBJECT_HANDLE>> found;
    bool isDigesting = false;
    CK_OBJECT_HANDLE signingKey = 0;
};

// What a function returns but CKR_OK is thrown.
void need(bool isSo, CK_RV otherwise) {
    if (!isSo)
        throw otherwise;
}

bool isInitialized;
bool isLoggedIn;
std::map<CK_SESSION_HANDLE, Session> openSessions;
CK_SESSION_HANDLE lastSession;
std::vector<Object> objects;

bool hasToken() {
    return !setting(section, L"slot").empty();
}

void checkToken(CK_SLOT_ID slot) {
    need(slot == theSlot, CKR_SLOT_ID_INVALID);
    need(hasToken(), CKR_TOKEN_NOT_PRESENT);
}

template <std::size_t size>
void fill(unsigned char (&field)[size], const std::wstring& text) {
    std::fill_n(field, size, ' ');
    const std::string bytes = narrow(text);
    std::copy_n(bytes.begin(), std::min(bytes.size(), size), field);
}

// Gives a result as PKCS#11 does; whether it is given, and not only its size.
bool give(View result, void* out, CK_ULONG* size) {
    const CK_ULONG room = std::exchange(*size, static_cast<CK_ULONG>(result.size()));
    need(!out || room >= result.size(), CKR_BUFFER_TOO_SMALL);
    if (out)
        std::ranges::copy(result, static_cast<unsigned char*>(out));
    return out != nullptr;
}

// Of public keys or signatures.
std::size_t sizeOf(const wchar_t* what) {
    return std::stoul(setting(section, what, L"64"));
}

bool isThere(CK_OBJECT_HANDLE handle) {
    return handle >= 1 && handle <= objects.size() &&
           (isLoggedIn || !isTrue(objects[handle - 1], CKA_PRIVATE));
}

Object newObject(const Session& session, CK_ATTRIBUTE* attributes, CK_ULONG count, CK_OBJECT_CLASS ofClass) {
    const CK_RV fault = checkTemplate(attributes, count, ofClass);
    need(fault == CKR_OK, fault);
    Object object = objectOf(attributes, count);
    need(session.isWritable || !isTrue(object, CKA_TOKEN), CKR_SESSION_READ_ONLY);
    need(isLoggedIn || !isTrue(object, CKA_PRIVATE), CKR_USER_NOT_LOGGED_IN);
    return object;
}

CK_OBJECT_HANDLE addObject(Object object) {
    objects.push_back(std::move(object));
    storeObjects(objects);
    return static_cast<CK_OBJECT_HANDLE>(objects.size());
}

void initialize(void* arguments) {
    need(!isInitialized, CKR_CRYPTOKI_ALREADY_INITIALIZED);
    need(!arguments, CKR_ARGUMENTS_BAD);
    Gost::startArithmetic();
    objects = loadObjects();
    isInitialized = true;
}

void finalize(void*) {
    if (!openSessions.empty() || isLoggedIn)
        log("left open");
    openSessions.clear();
    isInitialized = isLoggedIn = false;
}

void getSlotList(CK_BBOOL, CK_SLOT_ID* list, CK_ULONG* count) {
    const CK_ULONG room = std::exchange(*count, hasToken() ? 1 : 0);
    need(!list || room >= *count, CKR_BUFFER_TOO_SMALL);
    if (list && *count)
        *list = theSlot;
}

void getSlotInfo(CK_SLOT_ID slot, CK_SLOT_INFO* info) {
    need(slot == theSlot, CKR_SLOT_ID_INVALID);
    *info = {};
    fill(info->slotDescription, setting(section, L"slot"));
    fill(info->manufacturerID, L"Test readers");
    info->flags = (hasToken() ? CKF_TOKEN_PRESENT : 0) | CKF_REMOVABLE_DEVICE | CKF_HW_SLOT;
}

void getTokenInfo(CK_SLOT_ID slot, CK_TOKEN_INFO* info) {
    checkToken(slot);
    *info = {};
    fill(info->label, L"test token");
    fill(info->manufacturerID, setting(section, L"maker", L"Test tokens"));
    fill(info->model, setting(section, L"model", L"Test ECP"));
    fill(info->serialNumber, setting(section, L"serial", L"2f5a01c7"));
    fill(info->utcTime, L"");
    info->flags = CKF_LOGIN_REQUIRED | CKF_USER_PIN_INITIALIZED | CKF_TOKEN_INITIALIZED;
    info->ulTotalPublicMemory = std::stoul(setting(section, L"total", L"65536"));
    info->ulFreePublicMemory = std::stoul(setting(section, L"free", L"60000"));
    info->ulTotalPrivateMemory = info->ulFreePrivateMemory = CK_UNAVAILABLE_INFORMATION;
}

void openSession(CK_SLOT_ID slot, CK_FLAGS flags, void*, CK_NOTIFY, CK_SESSION_HANDLE* handle) {
    checkToken(slot);
    need(flags & CKF_SERIAL_SESSION, CKR_SESSION_PARALLEL_NOT_SUPPORTED);
    *handle = ++lastSession;
    openSessions[*handle].isWritable = flags & CKF_RW_SESSION;
}

void closeSession(Session& session) {
    std::erase_if(openSessions, [&](const auto& each) { return &each.second == &session; });
    isLoggedIn = isLoggedIn && !openSessions.empty();
}

void login(Session&, CK_USER_TYPE user, unsigned char* pin, CK_ULONG size) {
    need(user == CKU_USER, CKR_USER_TYPE_INVALID);
    need(!isLoggedIn, CKR_USER_ALREADY_LOGGED_IN);
    const unsigned long tries = std::stoul(setting(section, L"tries", L"10"));
    need(tries > 0, CKR_PIN_LOCKED);
    isLoggedIn =
        std::string_view(reinterpret_cast<char*>(pin), size) == narrow(setting(section, L"pin", L"12345678"));
    storeSetting(section, L"tries", std::to_wstring(isLoggedIn ? 10 : tries - 1));
    need(isLoggedIn, CKR_PIN_INCORRECT);
}

void logout(Session&) {
    need(std::exchange(isLoggedIn, false), CKR_USER_NOT_LOGGED_IN);
}

void createObject(Session& session, CK_ATTRIBUTE* attributes, CK_ULONG count, CK_OBJECT_HANDLE* made) {
    *made = addObject(newObject(session, attributes, count, CKO_CERTIFICATE));
}

void getAttributeValue(Session&, CK_OBJECT_HANDLE handle, CK_ATTRIBUTE* attributes, CK_ULONG count) {
    need(isThere(handle), CKR_OBJECT_HANDLE_INVALID);
    const Object& object = objects[handle - 1];
    for (CK_ATTRIBUTE& attribute : std::span(attributes, count)) {
        need(attribute.type != CKA_VALUE || !isOf(object, CKO_PRIVATE_KEY), CKR_ATTRIBUTE_SENSITIVE);
        const auto found = object.find(attribute.type);
        if (found == object.end())
            attribute.ulValueLen = CK_UNAVAILABLE_INFORMATION;
        need(found != object.end(), CKR_ATTRIBUTE_TYPE_INVALID);
        CK_ULONG size = attribute.ulValueLen;
        give(found->second, attribute.pValue, &size);
        attribute.ulValueLen = size;
    }
}

void findObjectsInit(Session& session, CK_ATTRIBUTE* attributes, CK_ULONG count) {
    need(!session.found, CKR_OPERATION_ACTIVE);
    session.found.emplace();
    const Object wanted = objectOf(attributes, count);
    for (CK_OBJECT_HANDLE each = 1; each <= objects.size(); ++each)
        if (isThere(each) && std::ranges::includes(objects[each - 1], wanted))
            session.found->push_back(each);
}

void findObjects(Session& session, CK_OBJECT_HANDLE* list, CK_ULONG room, CK_ULONG* count) {
    need(session.found.has_value(), CKR_OPERATION_NOT_INITIALIZED);
    *count = std::min(room, static_cast<CK_ULONG>(session.found->size()));
    std::copy_n(session.found->begin(), *count, list);
    session.found->erase(session.found->begin(), session.found->begin() + static_cast<long>(*count));
}

void findObjectsFinal(Session& session) {
    need(std::exchange(session.found, std::nullopt).has_value(), CKR_OPERATION_NOT_INITIALIZED);
}

void generateKeyPair(Session& session, CK_MECHANISM* mechanism, CK_ATTRIBUTE* ofPublic, CK_ULONG publicCount,
                     CK_ATTRIBUTE* ofPrivate, CK_ULONG privateCount, CK_OBJECT_HANDLE* publicKey,
                     CK_OBJECT_HANDLE* privateKey) {
    need(mechanism->mechanism == CKM_GOSTR3410_KEY_PAIR_GEN, CKR_MECHANISM_INVALID);
    Object first = newObject(session, ofPublic, publicCount, CKO_PUBLIC_KEY);
    Object second = newObject(session, ofPrivate, privateCount, CKO_PRIVATE_KEY);
    second[CKA_VALUE] = Gost::makePrivateKey(keySize);
    first[CKA_VALUE] = Gost::publicKey(curve, second[CKA_VALUE]);
    first[CKA_VALUE].resize(sizeOf(L"key"));
    *publicKey = addObject(std::move(first));
    *privateKey = addObject(std::move(second));
}

void digestInit(Session& session, CK_MECHANISM* mechanism) {
    need(mechanism->mechanism == CKM_GOSTR3411, CKR_MECHANISM_INVALID);
    need(!std::exchange(session.isDigesting, true), CKR_OPERATION_ACTIVE);
}

void digest(Session& session, unsigned char* data, CK_ULONG dataSize, unsigned char* out, CK_ULONG* size) {
    need(session.isDigesting, CKR_OPERATION_NOT_INITIALIZED);
    Bytes result(digestSize);
    ::gcry_md_hash_buffer(GCRY_MD_GOSTR3411_CP, result.data(), data, dataSize);
    session.isDigesting = !give(result, out, size);
}

void signInit(Session& session, CK_MECHANISM* mechanism, CK_OBJECT_HANDLE key) {
    need(mechanism->mechanism == CKM_GOSTR3410, CKR_MECHANISM_INVALID);
    need(isThere(key), CKR_KEY_HANDLE_INVALID);
    need(isTrue(objects[key - 1], CKA_SIGN), CKR_KEY_FUNCTION_NOT_PERMITTED);
    need(!std::exchange(session.signingKey, key), CKR_OPERATION_ACTIVE);
}

void sign(Session& session, unsigned char* data, CK_ULONG dataSize, unsigned char* out, CK_ULONG* size) {
    need(session.signingKey, CKR_OPERATION_NOT_INITIALIZED);
    need(dataSize == digestSize, CKR_DATA_LEN_RANGE);
    const Bytes& secret = objects[session.signingKey - 1].at(CKA_VALUE);
    Bytes result = out ? Gost::sign(curve, secret, View(data, dataSize)) : Bytes();
    result.resize(sizeOf(L"signature"));
    if (give(result, out, size))
        session.signingKey = 0;
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

// An entry of the function list. Functions that have a Session get it in the place of its handle.
template <Name name, auto function, class... Arguments>
CK_RV entry(Arguments... arguments) {
    return call(name.text, [&] {
        need(isInitialized || std::string_view(name.text) == "C_Initialize", CKR_CRYPTOKI_NOT_INITIALIZED);
        if constexpr (std::is_invocable_v<decltype(function), Arguments...>) {
            function(arguments...);
        } else {
            [](CK_SESSION_HANDLE handle, auto... others) {
                const auto found = openSessions.find(handle);
                need(found != openSessions.end(), CKR_SESSION_HANDLE_INVALID);
                function(found->second, others...);
            }(arguments...);
        }
    });
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
    if (reason == DLL_PROCESS_ATTACH &&
        Corvane::Platform::setting(Corvane::Platform::Token::section, L"fail") == L"DllMain=hang")
        Corvane::Platform::plannedFailure(Corvane::Platform::Token::section, "DllMain");
    return TRUE;
}
