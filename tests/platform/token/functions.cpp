// A PKCS#11 module (2.20) with one token that has GOST R 34.10-2001 keys. Each call goes into the log with
// what it returned. Settings, in the section "token": slot (without it there is no token), maker, model,
// serial, total, free (memory), pin, tries (left), key, signature (their sizes), fail (settings.h).
#include "../gost/arithmetic.h"
#include "objects.h"
#include "settings.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>
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

bool isInitialized;
bool isLoggedIn;
std::map<CK_SESSION_HANDLE, Session> openSessions;
CK_SESSION_HANDLE lastSession;
std::vector<Object> objects;

template <class Body>
CK_RV call(const char* name, Body body) {
    CK_RV value = plannedFailure(section, name);
    if (value == CKR_OK)
        value = body();
    char line[100];
    std::snprintf(line, sizeof line, "%s 0x%lx", name, value);
    log(line);
    return value;
}

template <class Body>
CK_RV initializedCall(const char* name, Body body) {
    return call(name, [&] { return isInitialized ? body() : CKR_CRYPTOKI_NOT_INITIALIZED; });
}

template <class Body>
CK_RV sessionCall(const char* name, CK_SESSION_HANDLE handle, Body body) {
    return initializedCall(name, [&]() -> CK_RV {
        const auto found = openSessions.find(handle);
        return found == openSessions.end() ? CKR_SESSION_HANDLE_INVALID : body(found->second);
    });
}

bool hasToken() {
    return !setting(section, L"slot").empty();
}

CK_RV checkSlot(CK_SLOT_ID slot) {
    if (slot != theSlot)
        return CKR_SLOT_ID_INVALID;
    return hasToken() ? CKR_OK : CKR_TOKEN_NOT_PRESENT;
}

template <std::size_t size>
void fill(unsigned char (&field)[size], const std::wstring& text) {
    std::fill_n(field, size, ' ');
    const std::string bytes = narrow(text);
    std::copy_n(bytes.begin(), std::min(bytes.size(), size), field);
}

// Gives a result as PKCS#11 does; whether the operation is over.
bool give(View result, unsigned char* out, CK_ULONG* size, CK_RV& value) {
    const CK_ULONG room = *size;
    *size = static_cast<CK_ULONG>(result.size());
    value = out && room < result.size() ? CKR_BUFFER_TOO_SMALL : CKR_OK;
    if (!out || value != CKR_OK)
        return false;
    std::copy(result.begin(), result.end(), out);
    return true;
}

// Of public keys or signatures.
std::size_t sizeOf(const wchar_t* what) {
    return std::stoul(setting(section, what, L"64"));
}

bool isVisible(const Object& object) {
    return isLoggedIn || !isTrue(object, CKA_PRIVATE);
}

Object* findObject(CK_OBJECT_HANDLE handle) {
    return handle >= 1 && handle <= objects.size() && isVisible(objects[handle - 1]) ? &objects[handle - 1]
                                                                                     : nullptr;
}

CK_RV checkNew(const Session& session, const Object& object) {
    if (isTrue(object, CKA_TOKEN) && !session.isWritable)
        return CKR_SESSION_READ_ONLY;
    return isTrue(object, CKA_PRIVATE) && !isLoggedIn ? CKR_USER_NOT_LOGGED_IN : CKR_OK;
}

CK_OBJECT_HANDLE addObject(Object object) {
    objects.push_back(std::move(object));
    storeObjects(objects);
    return static_cast<CK_OBJECT_HANDLE>(objects.size());
}

CK_RV initialize(void* arguments) {
    return call("C_Initialize", [&]() -> CK_RV {
        if (isInitialized)
            return CKR_CRYPTOKI_ALREADY_INITIALIZED;
        if (arguments)
            return CKR_ARGUMENTS_BAD;
        Gost::startArithmetic();
        objects = loadObjects();
        isInitialized = true;
        return CKR_OK;
    });
}

CK_RV finalize(void*) {
    return initializedCall("C_Finalize", [] {
        if (!openSessions.empty() || isLoggedIn)
            log("left open");
        openSessions.clear();
        isInitialized = isLoggedIn = false;
        return CKR_OK;
    });
}

CK_RV getSlotList(CK_BBOOL, CK_SLOT_ID* list, CK_ULONG* count) {
    return initializedCall("C_GetSlotList", [&]() -> CK_RV {
        const CK_ULONG room = *count;
        *count = hasToken() ? 1 : 0;
        if (list && room < *count)
            return CKR_BUFFER_TOO_SMALL;
        if (list && *count)
            *list = theSlot;
        return CKR_OK;
    });
}

CK_RV getSlotInfo(CK_SLOT_ID slot, CK_SLOT_INFO* info) {
    return initializedCall("C_GetSlotInfo", [&]() -> CK_RV {
        if (slot != theSlot)
            return CKR_SLOT_ID_INVALID;
        *info = {};
        fill(info->slotDescription, setting(section, L"slot"));
        fill(info->manufacturerID, L"Test readers");
        info->flags = (hasToken() ? CKF_TOKEN_PRESENT : 0) | CKF_REMOVABLE_DEVICE | CKF_HW_SLOT;
        return CKR_OK;
    });
}

CK_RV getTokenInfo(CK_SLOT_ID slot, CK_TOKEN_INFO* info) {
    return initializedCall("C_GetTokenInfo", [&]() -> CK_RV {
        if (const CK_RV value = checkSlot(slot))
            return value;
        *info = {};
        fill(info->label, L"test token");
        fill(info->manufacturerID, setting(section, L"maker", L"Test tokens"));
        fill(info->model, setting(section, L"model", L"Test ECP"));
        fill(info->serialNumber, setting(section, L"serial", L"2f5a01c7"));
        info->flags = CKF_LOGIN_REQUIRED | CKF_USER_PIN_INITIALIZED | CKF_TOKEN_INITIALIZED;
        info->ulTotalPublicMemory = std::stoul(setting(section, L"total", L"65536"));
        info->ulFreePublicMemory = std::stoul(setting(section, L"free", L"60000"));
        info->ulTotalPrivateMemory = info->ulFreePrivateMemory = CK_UNAVAILABLE_INFORMATION;
        fill(info->utcTime, L"");
        return CKR_OK;
    });
}

CK_RV openSession(CK_SLOT_ID slot, CK_FLAGS flags, void*, CK_NOTIFY, CK_SESSION_HANDLE* handle) {
    return initializedCall("C_OpenSession", [&]() -> CK_RV {
        if (const CK_RV value = checkSlot(slot))
            return value;
        if (!(flags & CKF_SERIAL_SESSION))
            return CKR_SESSION_PARALLEL_NOT_SUPPORTED;
        *handle = ++lastSession;
        openSessions[*handle].isWritable = flags & CKF_RW_SESSION;
        return CKR_OK;
    });
}

CK_RV closeSession(CK_SESSION_HANDLE handle) {
    return sessionCall("C_CloseSession", handle, [&](Session&) {
        openSessions.erase(handle);
        isLoggedIn = isLoggedIn && !openSessions.empty();
        return CKR_OK;
    });
}

CK_RV login(CK_SESSION_HANDLE handle, CK_USER_TYPE user, unsigned char* pin, CK_ULONG size) {
    return sessionCall("C_Login", handle, [&](Session&) -> CK_RV {
        if (user != CKU_USER)
            return CKR_USER_TYPE_INVALID;
        if (isLoggedIn)
            return CKR_USER_ALREADY_LOGGED_IN;
        const unsigned long tries = std::stoul(setting(section, L"tries", L"10"));
        if (tries == 0)
            return CKR_PIN_LOCKED;
        isLoggedIn = std::string_view(reinterpret_cast<char*>(pin), size) ==
                     narrow(setting(section, L"pin", L"12345678"));
        storeSetting(section, L"tries", std::to_wstring(isLoggedIn ? 10 : tries - 1));
        return isLoggedIn ? CKR_OK : CKR_PIN_INCORRECT;
    });
}

CK_RV logout(CK_SESSION_HANDLE handle) {
    return sessionCall("C_Logout", handle, [](Session&) {
        return std::exchange(isLoggedIn, false) ? CKR_OK : CKR_USER_NOT_LOGGED_IN;
    });
}

CK_RV createObject(CK_SESSION_HANDLE handle, CK_ATTRIBUTE* attributes, CK_ULONG count,
                   CK_OBJECT_HANDLE* made) {
    return sessionCall("C_CreateObject", handle, [&](const Session& session) -> CK_RV {
        CK_RV value = checkTemplate(attributes, count, CKO_CERTIFICATE);
        Object object = objectOf(attributes, count);
        if (value == CKR_OK)
            value = checkNew(session, object);
        if (value == CKR_OK)
            *made = addObject(std::move(object));
        return value;
    });
}

CK_RV getAttributeValue(CK_SESSION_HANDLE handle, CK_OBJECT_HANDLE which, CK_ATTRIBUTE* attributes,
                        CK_ULONG count) {
    return sessionCall("C_GetAttributeValue", handle, [&](Session&) -> CK_RV {
        const Object* const object = findObject(which);
        if (!object)
            return CKR_OBJECT_HANDLE_INVALID;
        CK_RV value = CKR_OK;
        for (CK_ULONG i = 0; i < count; ++i) {
            CK_ATTRIBUTE& attribute = attributes[i];
            const auto found = object->find(attribute.type);
            CK_RV one = CKR_ATTRIBUTE_TYPE_INVALID;
            if (numberOf(*object, CKA_CLASS) == CKO_PRIVATE_KEY && attribute.type == CKA_VALUE) {
                one = CKR_ATTRIBUTE_SENSITIVE;
            } else if (found != object->end()) {
                CK_ULONG size = attribute.ulValueLen;
                give(found->second, static_cast<unsigned char*>(attribute.pValue), &size, one);
                attribute.ulValueLen = size;
            }
            if (one != CKR_OK) {
                attribute.ulValueLen = CK_UNAVAILABLE_INFORMATION;
                value = one;
            }
        }
        return value;
    });
}

CK_RV findObjectsInit(CK_SESSION_HANDLE handle, CK_ATTRIBUTE* attributes, CK_ULONG count) {
    return sessionCall("C_FindObjectsInit", handle, [&](Session& session) -> CK_RV {
        if (session.found)
            return CKR_OPERATION_ACTIVE;
        session.found.emplace();
        const Object wanted = objectOf(attributes, count);
        for (CK_OBJECT_HANDLE each = 1; each <= objects.size(); ++each) {
            const Object* const object = findObject(each);
            if (object && std::ranges::all_of(wanted, [&](const auto& attribute) {
                    const auto found = object->find(attribute.first);
                    return found != object->end() && found->second == attribute.second;
                }))
                session.found->push_back(each);
        }
        return CKR_OK;
    });
}

CK_RV findObjects(CK_SESSION_HANDLE handle, CK_OBJECT_HANDLE* list, CK_ULONG room, CK_ULONG* count) {
    return sessionCall("C_FindObjects", handle, [&](Session& session) -> CK_RV {
        if (!session.found)
            return CKR_OPERATION_NOT_INITIALIZED;
        *count = std::min(room, static_cast<CK_ULONG>(session.found->size()));
        std::copy_n(session.found->begin(), *count, list);
        session.found->erase(session.found->begin(), session.found->begin() + static_cast<long>(*count));
        return CKR_OK;
    });
}

CK_RV findObjectsFinal(CK_SESSION_HANDLE handle) {
    return sessionCall("C_FindObjectsFinal", handle, [](Session& session) {
        return std::exchange(session.found, std::nullopt) ? CKR_OK : CKR_OPERATION_NOT_INITIALIZED;
    });
}

CK_RV generateKeyPair(CK_SESSION_HANDLE handle, CK_MECHANISM* mechanism, CK_ATTRIBUTE* ofPublic,
                      CK_ULONG publicCount, CK_ATTRIBUTE* ofPrivate, CK_ULONG privateCount,
                      CK_OBJECT_HANDLE* publicKey, CK_OBJECT_HANDLE* privateKey) {
    return sessionCall("C_GenerateKeyPair", handle, [&](const Session& session) -> CK_RV {
        if (mechanism->mechanism != CKM_GOSTR3410_KEY_PAIR_GEN)
            return CKR_MECHANISM_INVALID;
        Object first = objectOf(ofPublic, publicCount);
        Object second = objectOf(ofPrivate, privateCount);
        CK_RV value = CKR_OK;
        for (const CK_RV each : {checkTemplate(ofPublic, publicCount, CKO_PUBLIC_KEY),
                                 checkTemplate(ofPrivate, privateCount, CKO_PRIVATE_KEY),
                                 checkNew(session, first), checkNew(session, second)})
            value = value == CKR_OK ? each : value;
        if (value != CKR_OK)
            return value;
        second[CKA_VALUE] = Gost::makePrivateKey(curve, keySize);
        first[CKA_VALUE] = Gost::publicKey(curve, second[CKA_VALUE]);
        first[CKA_VALUE].resize(sizeOf(L"key"));
        *publicKey = addObject(std::move(first));
        *privateKey = addObject(std::move(second));
        return CKR_OK;
    });
}

CK_RV digestInit(CK_SESSION_HANDLE handle, CK_MECHANISM* mechanism) {
    return sessionCall("C_DigestInit", handle, [&](Session& session) -> CK_RV {
        if (mechanism->mechanism != CKM_GOSTR3411)
            return CKR_MECHANISM_INVALID;
        return std::exchange(session.isDigesting, true) ? CKR_OPERATION_ACTIVE : CKR_OK;
    });
}

CK_RV digest(CK_SESSION_HANDLE handle, unsigned char* data, CK_ULONG dataSize, unsigned char* out,
             CK_ULONG* size) {
    return sessionCall("C_Digest", handle, [&](Session& session) -> CK_RV {
        if (!session.isDigesting)
            return CKR_OPERATION_NOT_INITIALIZED;
        Bytes result(digestSize);
        ::gcry_md_hash_buffer(GCRY_MD_GOSTR3411_CP, result.data(), data, dataSize);
        CK_RV value = CKR_OK;
        session.isDigesting = !give(result, out, size, value);
        return value;
    });
}

CK_RV signInit(CK_SESSION_HANDLE handle, CK_MECHANISM* mechanism, CK_OBJECT_HANDLE key) {
    return sessionCall("C_SignInit", handle, [&](Session& session) -> CK_RV {
        if (mechanism->mechanism != CKM_GOSTR3410)
            return CKR_MECHANISM_INVALID;
        const Object* const object = findObject(key);
        if (!object)
            return CKR_KEY_HANDLE_INVALID;
        if (!isTrue(*object, CKA_SIGN))
            return CKR_KEY_FUNCTION_NOT_PERMITTED;
        return std::exchange(session.signingKey, key) ? CKR_OPERATION_ACTIVE : CKR_OK;
    });
}

CK_RV sign(CK_SESSION_HANDLE handle, unsigned char* data, CK_ULONG dataSize, unsigned char* out,
           CK_ULONG* size) {
    return sessionCall("C_Sign", handle, [&](Session& session) -> CK_RV {
        if (!session.signingKey)
            return CKR_OPERATION_NOT_INITIALIZED;
        if (dataSize != digestSize)
            return CKR_DATA_LEN_RANGE;
        Bytes result;
        if (out)
            result = Gost::sign(curve, objects[session.signingKey - 1].at(CKA_VALUE), View(data, dataSize));
        result.resize(sizeOf(L"signature"));
        CK_RV value = CKR_OK;
        if (give(result, out, size, value))
            session.signingKey = 0;
        return value;
    });
}

CK_RV unsupported() {
    return CKR_FUNCTION_NOT_SUPPORTED;
}

CK_FUNCTION_LIST makeFunctions() {
    CK_FUNCTION_LIST list{};
    // What is not there says so.
    auto* const slots = reinterpret_cast<unsigned char*>(&list) + sizeof list.version;
    void* const none = reinterpret_cast<void*>(&unsupported);
    for (std::size_t at = 0; at + sizeof none <= sizeof list - sizeof list.version; at += sizeof none)
        std::memcpy(slots + at, &none, sizeof none);
    list.version = {2, 20};
    list.C_Initialize = initialize;
    list.C_Finalize = finalize;
    list.C_GetSlotList = getSlotList;
    list.C_GetSlotInfo = getSlotInfo;
    list.C_GetTokenInfo = getTokenInfo;
    list.C_OpenSession = openSession;
    list.C_CloseSession = closeSession;
    list.C_Login = login;
    list.C_Logout = logout;
    list.C_CreateObject = createObject;
    list.C_GetAttributeValue = getAttributeValue;
    list.C_FindObjectsInit = findObjectsInit;
    list.C_FindObjects = findObjects;
    list.C_FindObjectsFinal = findObjectsFinal;
    list.C_GenerateKeyPair = generateKeyPair;
    list.C_DigestInit = digestInit;
    list.C_Digest = digest;
    list.C_SignInit = signInit;
    list.C_Sign = sign;
    return list;
}

}  // namespace
}  // namespace Corvane::Platform::Token

extern "C" CK_RV C_GetFunctionList(CK_FUNCTION_LIST** list) {
    using namespace Corvane::Platform::Token;
    return call("C_GetFunctionList", [&] {
        static CK_FUNCTION_LIST functions = makeFunctions();
        *list = &functions;
        return CKR_OK;
    });
}

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH &&
        Corvane::Platform::setting(Corvane::Platform::Token::section, L"fail") == L"DllMain=hang")
        Corvane::Platform::plannedFailure(Corvane::Platform::Token::section, "DllMain");
    return TRUE;
}
