// Tokens, by the stand-in for their modules (tests/platform/token).
#include "asn1/pkix/certification_request.h"
#include "binary/base64.h"
#include "binary/hex.h"
#include "core/exception_text.h"
#include "core/json.h"
#include "core/utf8.h"
#include "platform/import_patch.h"
#include "scratch_registry.h"
#include "support.h"
#include "token/cryptoki/container_path.h"
#include "token/cryptoki/cryptoki_exception.h"
#include "token/cryptoki/driver_path.h"
#include "token/cryptoki/library.h"
#include "token/cryptoki/library_exception.h"
#include "token/cryptoki/module_file.h"
#include "token/cryptoki/return_values.h"
#include "token/cryptoki/session.h"
#include "token/discovery/driver_probe.h"
#include "token/discovery/driver_version.h"
#include "token/discovery/token_containers.h"
#include "token/discovery/tokens.h"
#include "token/discovery/tokens_info.h"
#include "token/enroll/install_certificate.h"
#include "token/enroll/request_on_token.h"
#include "token_folder.h"

#include <wincrypt.h>

#include <map>
#include <optional>
#include <set>
#include <thread>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

constexpr wchar_t slot[] = L"Aktiv Rutoken ECP 0";
constexpr char driver[] = "rtPKCS11ECP";

SecretNarrowText pin(std::string_view text = "12345678") {
    return SecretNarrowText(text);
}

// The text that a script would see.
template <class Work>
std::wstring textOfFailure(Work&& work) {
    try {
        work();
    } catch (const std::exception& exception) {
        return textOf(exception);
    }
    return L"nothing failed";
}

bool isLoaded(const std::string& module) {
    return ::GetModuleHandleA((module + ".dll").c_str()) != nullptr;
}

// CN=Test; keyUsage digitalSignature; 1.2.3.4 = { UTF8String "x" }: by `openssl asn1parse -genconf`.
const Bytes name = hexToBin(std::string_view("300F310D300B06035504030C0454657374"));
const Bytes extensions = hexToBin(std::string_view("300D300B0603551D0F040403020780"));
const Bytes attribute = hexToBin(std::string_view("300A06032A030431030C0178"));

std::wstring request(SecretNarrowText secret = pin(), const std::wstring& where = slot) {
    return createCertificationRequestGOST(where, std::move(secret), {name, extensions, &attribute});
}

TEST(Cryptoki, NamesTheReturnValuesOfTheStandard) {
    const auto values = cryptoki::returnValues();
    EXPECT_EQ(values.size(), 85u);
    EXPECT_TRUE(std::ranges::is_sorted(values, std::less_equal<>(), &cryptoki::ReturnValue::value) &&
                values.front().value == 1);
    for (const auto& [value, text] : std::initializer_list<std::pair<CK_RV, const char*>>{
             {0x01, "CKR_CANCEL (The operation was cancelled)"},
             {0x03, "CKR_SLOT_ID_INVALID (Invalid slot ID)"},
             {0xA0, "CKR_PIN_INCORRECT"},
             {0x191, "CKR_CRYPTOKI_ALREADY_INITIALIZED"},
             {0x80000000, "CKR_VENDOR_DEFINED"},
             {0x80000005, "CKR_VENDOR_DEFINED + 0x5"},
             {0x7777, "0x7777"}})
        EXPECT_EQ(cryptoki::returnValueText(value), text);
}

TEST(Cryptoki, ReadsContainerPaths) {
    const auto path = cryptoki::parseContainerPath(L"\\\\.\\Aktiv 0\\key-1");
    EXPECT_EQ(path.reader + L"|" + path.identifier, L"Aktiv 0|key-1");
    for (const wchar_t* bad : {L"", L"\\\\.\\", L"Aktiv 0\\key", L"\\\\.\\Aktiv 0", L"\\\\.\\Aktiv 0\\",
                               L"\\\\.\\\\key", L"\\\\.\\a\\b\\c", L"//./a/b"})
        EXPECT_EQ(textOfFailure([&] { cryptoki::parseContainerPath(bad); }),
                  L"Не верный формат пути до ключевого контейнера");
}

// Which module is chosen by the slot and two settings; "-" stands for a value that is not there.
TEST(Cryptoki, ChoosesTheModule) {
    struct Row {
        const wchar_t *slot, *local, *location, *request, *discovery;
    };
    const std::wstring noFolder = L"Не найден каталог установки плагина";
    for (const Row& row : {
             Row{L"ARDS JaCarta 0", L"0", L"C:\\P", L"jcPKCS11-2.dll", L"jcPKCS11-2.dll"},
             Row{L"ARDS JaCarta 0", L"1", L"C:\\P", L"C:\\P\\pkcs11\\jcPKCS11.dll",
                 L"C:\\P\\pkcs11\\jcPKCS11.dll"},
             Row{L"the ARDS 0", L"-", L"C:\\P\\", L"C:\\P\\pkcs11\\jcPKCS11.dll",
                 L"C:\\P\\pkcs11\\jcPKCS11.dll"},
             Row{L"ARDS JaCarta 0", L"-", L"-", noFolder.c_str(), L"jcPKCS11-2.dll"},
             Row{L"ARDS JaCarta 0", L"-", L"", noFolder.c_str(), L"jcPKCS11-2.dll"},
             Row{L"ARDS JaCarta 0", L"5", L"-", noFolder.c_str(), L"jcPKCS11-2.dll"},
             Row{slot, L"0", L"-", L"rtPKCS11ECP.dll", L"jcPKCS11-2.dll"},
             Row{L"ACS ACR38 0", L"-", L"-", L"Не определен путь до модуля pkcs11 ", L"jcPKCS11-2.dll"},
         }) {
        SCOPED_TRACE(toUtf8(row.slot) + " " + toUtf8(row.local) + " " + toUtf8(row.location));
        const ScratchRegistry registry;
        const wchar_t key[] = L"Software\\ZimVetrel\\VetrelCorvane";
        if (*row.local != L'-') {
            const auto number = static_cast<DWORD>(*row.local - L'0');
            ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, key, L"UseLocalPkcs11Drivers", REG_DWORD, &number,
                              sizeof number);
        }
        if (*row.location != L'-')
            ::RegSetKeyValueW(HKEY_CURRENT_USER, key, L"Location", REG_SZ, row.location,
                              static_cast<DWORD>((std::wcslen(row.location) + 1) * sizeof(wchar_t)));
        std::wstring chosen;
        const std::wstring failure = textOfFailure([&] { chosen = cryptoki::driverPathFor(row.slot); });
        EXPECT_EQ(chosen.empty() ? failure : chosen, row.request);
        EXPECT_EQ(cryptoki::jaCartaDriverPath(), row.discovery);
    }
}

TEST(Cryptoki, FindsModulesOnThePathButNotInTheCurrentFolder) {
    const TokenFolder folder;
    folder.addDriver("elsewhere");
    EXPECT_EQ(cryptoki::findModuleFile(L"elsewhere.dll"), (folder.path() / "elsewhere.dll").wstring());
    EXPECT_EQ(cryptoki::findModuleFile((folder.path() / "none.dll").wstring()), L"");

    const auto inner = folder.path() / "inner";
    std::filesystem::create_directory(inner);
    std::filesystem::copy_file(folder.path() / "elsewhere.dll", inner / "near.dll");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(inner);
    ::SetEnvironmentVariableW(L"PATH", L".;;\"\";..\\inner");
    EXPECT_EQ(cryptoki::findModuleFile(L"near.dll"), L"");
    ::SetEnvironmentVariableW(L"PATH", (L"\"" + inner.wstring() + L"\"").c_str());
    EXPECT_EQ(cryptoki::findModuleFile(L"near.dll"), (inner / "near.dll").wstring());
    std::filesystem::current_path(before);
}

void replaceInFile(const std::filesystem::path& file, std::string_view old, std::string_view fresh) {
    std::ifstream in(file, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    in.close();
    const std::size_t at = bytes.find(old);
    ASSERT_NE(at, std::string::npos);
    std::ofstream(file, std::ios::binary) << bytes.replace(at, old.size(), fresh);
}

TEST(Cryptoki, TellsWhyAModuleDoesNotLoad) {
    const TokenFolder folder;
    std::ofstream(folder.path() / "text.dll") << "no library";
    std::filesystem::copy_file(testcard_file, folder.path() / "other.dll");
    folder.addDriver("lonely");
    replaceInFile(folder.path() / "lonely.dll", "ADVAPI32.dll", "ADVAPI3X.dll");
    struct Row {
        const wchar_t* file;
        DWORD error;
        std::wstring begin;
    };
    for (const Row& row :
         {Row{L"missing.dll", 126, L"[0x7e]LoadLibrary "}, Row{L"text.dll", 193, L"[0xc1]LoadLibrary "},
          Row{L"lonely.dll", 126, L"[0x7e]LoadLibrary "}, Row{L"other.dll", 127, L"[0x7f]GetProcAddress "}}) {
        SCOPED_TRACE(toUtf8(row.file));
        const std::wstring text = textOfFailure([&] { cryptoki::Pkcs11Module::load(row.file); });
        const std::wstring ofSystem = systemText(row.error);
        std::wstring wanted = row.begin + ofSystem.substr(ofSystem.find(L':') + 1);
        // Of the two that the system does not tell apart, this one is there.
        if (row.file == std::wstring(L"lonely.dll"))
            wanted += L" (" + (folder.path() / row.file).wstring() + L")";
        EXPECT_EQ(text, wanted);
        EXPECT_EQ(::GetModuleHandleW(row.file), nullptr);
    }
}

TEST(Cryptoki, AModuleHasOneUserAtATime) {
    const TokenFolder folder;
    folder.addDriver(driver, slot);
    const auto module = cryptoki::Pkcs11Module::load(L"rtPKCS11ECP.dll");
    const std::wstring busy = L"C_Initialize: CKR_CRYPTOKI_ALREADY_INITIALIZED";
    EXPECT_EQ(textOfFailure([] { cryptoki::Pkcs11Module::load(L"rtPKCS11ECP.dll"); }), busy);
    // Another thread waits, a probe as long as it may.
    detail::ProbedDriver probed;
    const ULONGLONG begun = ::GetTickCount64();
    std::thread([&] { probed = detail::probeDriver(L"rtPKCS11ECP.dll", 100); }).join();
    EXPECT_GE(::GetTickCount64() - begun, 80u);  // as far as that clock counts
    EXPECT_EQ(probed.failure, busy);
    EXPECT_EQ(module.getSlotList().size(), 1u);
}

// A host that uses the module itself keeps it as it was.
TEST(Cryptoki, LeavesTheModuleOfTheHostAlone) {
    const TokenFolder folder;
    folder.addDriver(driver, slot);
    cryptoki::Library host;
    ASSERT_FALSE(host.load((folder.path() / "rtPKCS11ECP.dll").c_str()).failed());
    ASSERT_FALSE(host.initialize().failed());
    EXPECT_EQ(textOfFailure([] { request(); }), L"C_Initialize: CKR_CRYPTOKI_ALREADY_INITIALIZED");
    CK_ULONG count = 0;
    EXPECT_EQ(host.functions()->C_GetSlotList(CK_TRUE, nullptr, &count), CKR_OK);
}

TEST(TokenRequest, MakesTheCallsAsTheyAreTold) {
    const TokenFolder folder;
    folder.addDriver(driver, slot);
    const Json::Value result = parseJson(request());
    Lines calls = folder.takeLog(driver);
    EXPECT_EQ(calls, (Lines{"C_GetFunctionList 0x0", "C_Initialize 0x0", "C_GetSlotList 0x0",
                            "C_GetSlotList 0x0", "C_GetSlotInfo 0x0", "C_OpenSession 0x0", "C_Login 0x0",
                            "C_GenerateKeyPair 0x0", "C_GetAttributeValue 0x0", "C_GetAttributeValue 0x0",
                            "C_DigestInit 0x0", "C_Digest 0x0", "C_SignInit 0x0", "C_Sign 0x0", "C_Sign 0x0",
                            "C_Logout 0x0", "C_CloseSession 0x0", "C_Finalize 0x0"}));
    EXPECT_FALSE(isLoaded(driver));

    const auto path = cryptoki::parseContainerPath(fromUtf8(result["path"].asString()));
    EXPECT_EQ(path.reader, slot);
    EXPECT_TRUE(result["sid"].asString().starts_with("S-1-"));
    const std::string text = result["request"].asString();
    EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos);

    const auto decoded = asn1::decodeRequest(base64ToBin(std::string_view(text)));
    EXPECT_EQ(decoded.info.subject, name);
    EXPECT_EQ(decoded.info.publicKey.algorithm.oid, "1.2.643.2.2.19");
    EXPECT_EQ(decoded.info.publicKey.algorithm.parameters, hexToBin(std::string_view("301206072A850302022301"
                                                                                     "06072A850302021E01")));
    EXPECT_EQ(binToHex(decoded.info.publicKey.key).substr(0, 4), L"0440");
    EXPECT_EQ(decoded.signatureAlgorithm.oid, "1.2.643.2.2.3");
    EXPECT_TRUE(decoded.signatureAlgorithm.parameters.empty());
    EXPECT_EQ(decoded.signature.size(), 64u);
    ASSERT_EQ(decoded.info.attributes.size(), 2u);
    EXPECT_EQ(decoded.info.attributes[0].oid, "1.2.840.113549.1.9.14");
    EXPECT_EQ(decoded.info.attributes[0].values, std::vector<Bytes>{extensions});
    EXPECT_EQ(asn1::encodeAttribute(decoded.info.attributes[1]), attribute);

    const Json::Value containers = parseJson(Crypto::getTokenContainers(slot));
    ASSERT_EQ(containers.size(), 1u);
    EXPECT_EQ(containers[0]["path"], result["path"]);
    EXPECT_EQ(containers[0]["containerName"].asString(), toUtf8(path.identifier));
}

std::size_t countOf(const Lines& lines, const std::string& line) {
    return static_cast<std::size_t>(std::ranges::count(lines, line));
}

// Whether all that was taken is given back, by the module's own account.
void expectAllGivenBack(const Lines& calls) {
    EXPECT_EQ(countOf(calls, "C_OpenSession 0x0"), countOf(calls, "C_CloseSession 0x0"));
    EXPECT_EQ(countOf(calls, "C_Login 0x0"), countOf(calls, "C_Logout 0x0"));
    EXPECT_EQ(countOf(calls, "C_Initialize 0x0"), countOf(calls, "C_Finalize 0x0"));
    EXPECT_EQ(countOf(calls, "left open"), 0u);
    EXPECT_FALSE(isLoaded(driver));
}

// Each call fails in turn, those that give something back excepted; returns how many there were. A failure is
// to name its call, unless `text` is what it is called.
unsigned failEachCall(const TokenFolder& folder, const std::function<void()>& work,
                      const std::function<std::wstring(const std::string&)>& text) {
    folder.takeLog(driver);
    for (unsigned number = 1;; ++number) {
        folder.set(driver, L"token", L"fail", std::to_wstring(number) + L"=0x30");
        const std::wstring failure = textOfFailure(work);
        const Lines calls = folder.takeLog(driver);
        const auto failed =
            std::ranges::find_if(calls, [](const auto& line) { return line.ends_with(" 0x30"); });
        if (failed == calls.end())
            return number - 1;
        const std::string call = failed->substr(0, failed->find(' '));
        SCOPED_TRACE(call);
        if (call == "C_Logout" || call == "C_CloseSession" || call == "C_Finalize" ||
            call == "C_FindObjectsFinal")
            continue;
        EXPECT_EQ(failure, text(call));
        expectAllGivenBack(calls);
    }
}

std::wstring deviceError(const std::string& call) {
    return wide((call == "C_GetFunctionList" ? "CK_FUNCTION_LIST" : call) + ": CKR_DEVICE_ERROR");
}

const Bytes& certificate() {
    static const Bytes der = readTestData("pki/signer.der");
    return der;
}

void install(const std::wstring& identifier = L"key") {
    installCertificateResponseGOST(L"response", cryptoki::makeContainerPath(slot, identifier), pin(),
                                   [](std::wstring_view text) {
                                       EXPECT_EQ(text, L"response");
                                       return certificate();
                                   });
}

TEST(TokenRequest, EveryCallMayFail) {
    const TokenFolder folder;
    folder.addDriver(driver, slot);
    EXPECT_EQ(failEachCall(
                  folder, [] { request(); }, deviceError),
              18u);
    EXPECT_EQ(failEachCall(
                  folder, [] { install(); },
                  [](const std::string& call) {
                      return call == "C_CreateObject"
                                 ? L"Ошибка при связывании сертификата с ключевым контейнером"
                                 : deviceError(call);
                  }),
              11u);
    EXPECT_EQ(failEachCall(
                  folder, [] { Crypto::getTokenContainers(slot); }, deviceError) > 10u,
              true);
}

// A public key or a signature of another size would make a request of which nobody can make anything.
TEST(TokenRequest, RefusesOtherSizes) {
    const TokenFolder folder;
    folder.addDriver(driver, slot);
    for (const auto& [what, call] : {std::pair(L"key", L"C_GetAttributeValue"), {L"signature", L"C_Sign"}}) {
        for (const wchar_t* size : {L"0", L"63", L"65"}) {
            folder.set(driver, L"token", what, size);
            EXPECT_EQ(textOfFailure([] { request(); }), std::wstring(call) + L": CKR_DATA_LEN_RANGE");
        }
        folder.set(driver, L"token", what, L"64");
    }
    expectAllGivenBack(folder.takeLog(driver));
}

TEST(TokenRequest, RefusesBeforeThereAreKeys) {
    const TokenFolder folder;
    folder.addDriver(driver, slot);
    const auto objects = folder.path() / "rtPKCS11ECP.objects";
    EXPECT_EQ(textOfFailure([] { request(pin("1234")); }), L"C_Login: CKR_PIN_INCORRECT");
    EXPECT_EQ(textOfFailure([] { request(pin(), L"Aktiv Rutoken ECP 1"); }), L"Не найден указанный слот");
    const auto with = [](const Bytes& subject, const Bytes& wanted, const Bytes& more) {
        return textOfFailure([&] { createCertificationRequestGOST(slot, pin(), {subject, wanted, &more}); });
    };
    for (const std::wstring& text :
         {with({0x30, 0x01}, extensions, attribute), with(name, {}, attribute),
          with(name, {0x04, 0x00}, attribute), with(name, extensions, {0x30, 0x00})}) {
        EXPECT_NE(text, L"nothing failed");
        EXPECT_EQ(text.find(L"C_"), std::wstring::npos);
    }
    expectAllGivenBack(folder.takeLog(driver));
    EXPECT_FALSE(std::filesystem::exists(objects));

    folder.set(driver, L"token", L"tries", L"1");
    request();
    folder.set(driver, L"token", L"tries", L"0");
    EXPECT_EQ(textOfFailure([] { request(); }), L"C_Login: CKR_PIN_LOCKED");
}

TEST(TokenCertificate, LiesBesideItsKey) {
    const TokenFolder folder;
    folder.addDriver(driver, slot);
    // Public keys of other programs: without an identifier, and with such as are no text or part of no path.
    std::ofstream(folder.path() / "rtPKCS11ECP.objects")
        << "0 02000000\n1 01\n\n0 02000000\n1 01\n102 01ab\n\n0 02000000\n1 01\n102 615c62\n\n";
    const Json::Value containers = parseJson(Crypto::getTokenContainers(slot));
    ASSERT_EQ(containers.size(), 2u);
    EXPECT_EQ(containers[0]["containerName"].asString(), "01AB");
    EXPECT_EQ(containers[1]["containerName"].asString(), "615C62");
    install(L"key");
    install(L"01AB");
    install(L"ABCD");
    const auto module = cryptoki::Pkcs11Module::load(L"rtPKCS11ECP.dll");
    const cryptoki::Session session(module, module.findSlot(slot), CKF_SERIAL_SESSION);
    const auto found = session.findObjects(cryptoki::AttributeTemplate().number(CKA_CLASS, CKO_CERTIFICATE));
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(session.getAttributeValue(found[1], CKA_ID), (Bytes{0x01, 0xAB}));
    EXPECT_EQ(session.getAttributeValue(found[2], CKA_ID), bytesOf("ABCD"));
    const CertificateContext context(::CertCreateCertificateContext(
        X509_ASN_ENCODING, certificate().data(), static_cast<DWORD>(certificate().size())));
    const auto& info = *context.get()->pCertInfo;
    const auto value = [&](CK_ATTRIBUTE_TYPE type) { return session.getAttributeValue(found[0], type); };
    const auto blob = [](const CRYPT_DATA_BLOB& data) {
        return Bytes(data.pbData, data.pbData + data.cbData);
    };
    EXPECT_EQ(value(CKA_VALUE), certificate());
    EXPECT_EQ(value(CKA_ID), bytesOf("key"));
    EXPECT_EQ(value(CKA_SUBJECT), blob(info.Subject));
    EXPECT_EQ(value(CKA_ISSUER), blob(info.Issuer));
    // The system has the number's octets the other way round, and without the header.
    Bytes serial = blob(info.SerialNumber);
    serial.push_back(static_cast<std::uint8_t>(serial.size()));
    serial.push_back(0x02);
    EXPECT_EQ(value(CKA_SERIAL_NUMBER), Bytes(serial.rbegin(), serial.rend()));
    EXPECT_EQ(value(CKA_PRIVATE), Bytes{0});
}

TEST(TokenDiscovery, AsksTheDriversInTheirOrder) {
    const ScratchRegistry registry;
    const TokenFolder folder;
    EXPECT_EQ(parseJson(Crypto::getTokensInfo()), Json::Value(Json::arrayValue));
    folder.addDriver("isbc_pkcs11_main", L"ISBC 0");
    folder.addDriver("jcPKCS11-2", L"ARDS JaCarta 0");
    folder.addDriver("rtPKCS11", slot);
    folder.addDriver("jcPKCS11ds");
    folder.set("rtPKCS11", L"token", L"model", L"Rutoken ECP");
    folder.set("rtPKCS11", L"token", L"free", L"4294967295");
    folder.set("jcPKCS11-2", L"token", L"fail", L"C_GetTokenInfo=0xE1");
    ScratchRegistry::addText(
        HKEY_LOCAL_MACHINE,
        L"SOFTWARE\\Crypto Pro\\Cryptography\\CurrentVersion\\KeyCarriers\\RutokenECP\\Default", L"Folders",
        L"0A00\\0B00\\0C00");
    const Json::Value list = parseJson(Crypto::getTokensInfo());
    ASSERT_EQ(list.size(), 2u);
    const Json::Value wanted = parseJson(
        LR"({"slot": "Aktiv Rutoken ECP 0", "manufacturer": "Test tokens", "model": "Rutoken ECP",
            "serialNumber": "2f5a01c7", "totalMemory": 65536, "freeMemory": null, "type": "RutokenECP",
            "name": "RutokenECP", "nickname": "Aktiv Rutoken ECP 0", "media": "2f5a01c7", "gost": true,
            "maxContainerCount": 3})");
    for (const std::string& member : wanted.getMemberNames())
        EXPECT_EQ(list[0][member].asString(), wanted[member].asString()) << member;
    EXPECT_EQ(list[1]["slot"], "ISBC 0");
    EXPECT_FALSE(list[1].isMember("type") || list[1].isMember("certified"));
    EXPECT_EQ(folder.takeLog("jcPKCS11ds"),
              (Lines{"C_GetFunctionList 0x0", "C_Initialize 0x0", "C_GetSlotList 0x0", "C_Finalize 0x0"}));
}

// Drives as the system tells of them, by their letter.
struct Drive {
    UINT type;
    std::optional<std::wstring> label;  // none where there is no medium
    std::optional<ULONGLONG> total;     // none where it cannot be read
};
const std::map<wchar_t, Drive> drives{
    {L'A', {DRIVE_REMOVABLE, std::nullopt, std::nullopt}},     {L'C', {DRIVE_FIXED, L"System", 1}},
    {L'E', {DRIVE_REMOVABLE, L"Ключи", 0x2'0000'0003}},        {L'F', {DRIVE_REMOVABLE, L"", 1'457'664}},
    {L'G', {DRIVE_REMOVABLE, L"not formatted", std::nullopt}}, {L'N', {DRIVE_REMOTE, L"Share", 1}}};
bool wasDialogAllowed;

UINT WINAPI driveType(LPCWSTR root) {
    return drives.contains(*root) ? drives.at(*root).type : DRIVE_NO_ROOT_DIR;
}

BOOL WINAPI volumeInformation(LPCWSTR root, LPWSTR label, DWORD room, LPDWORD number, LPDWORD, LPDWORD,
                              LPWSTR, DWORD) {
    wasDialogAllowed = wasDialogAllowed || !(::GetThreadErrorMode() & SEM_FAILCRITICALERRORS);
    const Drive& drive = drives.at(*root);
    if (!drive.label || drive.label->size() >= room)
        return FALSE;
    std::copy_n(drive.label->c_str(), drive.label->size() + 1, label);
    *number = 0x0012ABCD;
    return TRUE;
}

BOOL WINAPI diskFreeSpace(LPCWSTR root, PULARGE_INTEGER, PULARGE_INTEGER total, PULARGE_INTEGER free) {
    const Drive& drive = drives.at(*root);
    free->QuadPart = 512;
    total->QuadPart = drive.total.value_or(0);
    return drive.total ? TRUE : FALSE;
}

TEST(TokenDiscovery, ListsTheRemovableDisksOfTheProvider) {
    const ScratchRegistry registry;
    const TokenFolder folder;
    const ImportPatch type(&::GetDriveTypeW, &driveType);
    const ImportPatch volume(&::GetVolumeInformationW, &volumeInformation);
    const ImportPatch space(&::GetDiskFreeSpaceExW, &diskFreeSpace);
    EXPECT_EQ(parseJson(Crypto::getTokensInfo()), Json::Value(Json::arrayValue))
        << "the provider keeps no keys on disks";
    RegistryKey key;
    ::RegCreateKeyW(HKEY_LOCAL_MACHINE,
                    L"SOFTWARE\\Crypto Pro\\Cryptography\\CurrentVersion\\KeyDevices\\FAT12", key.put());
    const DWORD mode = ::GetThreadErrorMode();
    EXPECT_EQ(
        parseJson(Crypto::getTokensInfo()),
        parseJson(
            LR"([{"slot": "FAT12_E", "nickname": "FAT12_E", "name": "Ключи", "type": "FAT12", "gost": false,
              "manufacturer": "", "model": "", "serialNumber": "0012ABCD", "media": "0012ABCD",
              "totalMemory": 8589934595, "freeMemory": 512},
             {"slot": "FAT12_F", "nickname": "FAT12_F", "name": "F:", "type": "FAT12", "gost": false,
              "manufacturer": "", "model": "", "serialNumber": "0012ABCD", "media": "0012ABCD",
              "totalMemory": 1457664, "freeMemory": 512}])"));
    EXPECT_FALSE(wasDialogAllowed);
    EXPECT_EQ(::GetThreadErrorMode(), mode);
}

TEST(TokenDiscovery, FindsTheTokenOfAContainer) {
    const std::vector<Token> tokens{{L"Aktiv 1", L"", L"first", L"", {}, {}},
                                    {L"Aktiv 10", L"", L"second", L"", {}, {}},
                                    {L"ARDS 0", L"", L"JaCarta GOST", L"", {}, {}},
                                    {L"ARDS 0", L"", L"JaCarta LT", L"", {}, {}}};
    for (const auto& [path, model] : std::initializer_list<std::pair<const wchar_t*, const wchar_t*>>{
             {L"\\\\.\\Aktiv 1\\c", L"first"},
             {L"\\\\.\\Aktiv 10\\c", L"second"},
             {L"\\\\.\\ARDS 0\\c", L"JaCarta LT"},
             {L"\\\\.\\Aktiv 2\\c", nullptr}}) {
        const Token* const found = detail::findTokenOf(path, tokens);
        EXPECT_EQ(found ? found->model : L"none", model ? model : L"none");
    }
}

// Of four drivers three fail, each in its way; their threads are ended, and what they hold is not used again.
TEST(TokenDiscovery, GivesUpDriversThatHang) {
    const TokenFolder folder;
    for (const char* call : {"C_Initialize", "C_GetTokenInfo", "C_Finalize"}) {
        SCOPED_TRACE(call);
        const std::string module = std::string("hangs_in_") + call;
        const std::wstring file = wide(module) + L".dll";
        folder.addDriver(module, slot);
        folder.set(module, L"token", L"fail", wide(call) + L"=hang");
        EXPECT_EQ(detail::probeDriver(file, 300).failure, L"the driver does not answer and is given up");
        EXPECT_EQ(folder.takeLog(module).back(), std::string(call) + " hangs");
        folder.set(module, L"token", L"fail", L"");
        EXPECT_EQ(textOfFailure([&] { cryptoki::Pkcs11Module::load(file); }),
                  L"C_Initialize: CKR_CRYPTOKI_ALREADY_INITIALIZED");
        EXPECT_EQ(detail::probeDriver(file).failure, L"C_Initialize: CKR_CRYPTOKI_ALREADY_INITIALIZED");
        EXPECT_TRUE(folder.takeLog(module).empty());
    }
    folder.addDriver("works", slot);
    EXPECT_EQ(detail::probeDriver(L"works.dll").tokens.size(), 1u);
    EXPECT_FALSE(isLoaded("works"));
}

// A driver that hangs while the system loads it keeps the loader's lock, and so the whole process, busy: the
// one that sees to that is another one.
TEST(TokenDiscovery, DISABLED_HangsInTheLoader) {
    const TokenFolder folder;
    folder.addDriver("loads_for_ever", slot);
    folder.addDriver("works", slot);
    folder.set("loads_for_ever", L"token", L"fail", L"DllMain=hang");
    const bool isGivenUp = !detail::probeDriver(L"loads_for_ever.dll", 300).failure.empty() &&
                           !detail::probeDriver(L"works.dll").failure.empty() &&
                           folder.takeLog("loads_for_ever") == Lines{"DllMain hangs"};
    ::TerminateProcess(::GetCurrentProcess(), isGivenUp ? 42 : 1);
}

TEST(TokenDiscovery, ReturnsFromADriverThatHangsInTheLoader) {
    wchar_t program[MAX_PATH]{};
    ::GetModuleFileNameW(nullptr, program, MAX_PATH);
    std::wstring line = std::wstring(L"\"") + program +
                        L"\" --gtest_also_run_disabled_tests --gtest_filter=*DISABLED_HangsInTheLoader";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    ASSERT_TRUE(::CreateProcessW(program, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                                 &process));
    const ThreadHandle thread(process.hThread);
    const ThreadHandle child(process.hProcess);
    EXPECT_EQ(::WaitForSingleObject(child.get(), 60'000), WAIT_OBJECT_0);
    ::TerminateProcess(child.get(), 1);
    DWORD status = 0;
    ::GetExitCodeProcess(child.get(), &status);
    EXPECT_EQ(status, 42u);
}

TEST(TokenDiscovery, ReadsTheVersionOfAnInstalledDriver) {
    const ScratchRegistry registry;
    const std::wstring products =
        L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1-5-18\\Products\\";
    const DWORD number = 0x04030002;
    for (const wchar_t* guid : {L"AA", L"BB"})
        ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, (products + guid + L"\\InstallProperties").c_str(), L"Version",
                          REG_DWORD, &number, sizeof number);
    ScratchRegistry::addText(HKEY_LOCAL_MACHINE, (products + L"AA\\InstallProperties").c_str(),
                             L"DisplayVersion", L"4.3.2.1");
    EXPECT_EQ(Crypto::getTokenDriverVersion(L"AA"), L"4.3.2.1");
    EXPECT_EQ(Crypto::getTokenDriverVersion(L"BB"), L"4.3.2");
    for (const wchar_t* none : {L"", L"CC", L"AA\\InstallProperties\\..", L"\\AA"})
        EXPECT_EQ(Crypto::getTokenDriverVersion(none), L"");
}

}  // namespace
