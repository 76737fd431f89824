// Tokens and cards, by the stand-ins for their modules and for the service (tests/platform/token). What
// scripts see of them is in scripts/tokens.js.
#include "api_faults.h"
#include "binary/base64.h"
#include "core/exception_text.h"
#include "core/json.h"
#include "core/settings.h"
#include "core/utf8.h"
#include "platform/import_patch.h"
#include "scratch_registry.h"
#include "token/card/smart_card.h"
#include "token/cryptoki/container_path.h"
#include "token/cryptoki/driver_path.h"
#include "token/cryptoki/library.h"
#include "token/cryptoki/module_file.h"
#include "token/cryptoki/pkcs11_module.h"
#include "token/cryptoki/return_values.h"
#include "token/discovery/driver_probe.h"
#include "token/discovery/driver_version.h"
#include "token/discovery/token_containers.h"
#include "token/discovery/tokens.h"
#include "token/discovery/tokens_info.h"
#include "token/enroll/install_certificate.h"
#include "token/enroll/request_on_token.h"
#include "token_folder.h"

#include <map>
#include <regex>
#include <set>
#include <thread>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

constexpr wchar_t slot[] = L"Aktiv Rutoken ECP 0";
constexpr char driver[] = "rtPKCS11ECP";
constexpr std::string_view pin = "12345678";

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

// CN=Test; keyUsage digitalSignature; 1.2.3.4 = { UTF8String "x" }: by `openssl asn1parse -genconf`.
const std::string nameHex = "300F310D300B06035504030C0454657374";
const std::string extensionsHex = "300D300B0603551D0F040403020780";
const std::string attributeHex = "300A06032A030431030C0178";

std::wstring request() {
    const Bytes more = hexToBin(attributeHex);
    return createCertificationRequestGOST(slot, SecretNarrowText(pin),
                                          {hexToBin(nameHex), hexToBin(extensionsHex), &more});
}

TEST(Cryptoki, TextsAreReadAndTold) {
    const std::vector<Token> tokens{{L"Aktiv 1", L"", L"first", L"", {}, {}},
                                    {L"Aktiv 10", L"", L"second", L"", {}, {}},
                                    {L"ARDS 0", L"", L"JaCarta GOST", L"", {}, {}},
                                    {L"ARDS 0", L"", L"JaCarta LT", L"", {}, {}}};
    const std::map<std::string, std::function<std::wstring(const std::wstring&)>> readers{
        {"value", [](auto& text) { return wide(cryptoki::returnValueText(std::stoul(text, nullptr, 16))); }},
        {"path",
         [](auto& text) {
             const auto path = cryptoki::parseContainerPath(text);
             return path.reader + L"|" + path.identifier;
         }},
        {"token",
         [&](auto& text) {
             const Token* const found = detail::findTokenOf(text, tokens);
             return found ? found->model : L"none";
         }},
        {"slot", cryptoki::driverPathFor},
        {"discovery", [](auto&) { return cryptoki::jaCartaDriverPath(); }},
    };
    for (const auto& row : readTable("token/texts.txt", 5)) {
        const ScratchRegistry registry;
        if (!row[3].empty() && row[3] != "-")
            ScratchRegistry::add(HKEY_LOCAL_MACHINE, settingsKey, L"UseLocalPkcs11Drivers",
                                 std::stoul(row[3]));
        if (row[4] != "-")
            ScratchRegistry::add(HKEY_CURRENT_USER, settingsKey, L"Location", fromUtf8(row[4]));
        std::wstring outcome;
        const std::wstring failure = textOfFailure([&] { outcome = readers.at(row[0])(fromUtf8(row[1])); });
        EXPECT_EQ(outcome.empty() ? failure : outcome, fromUtf8(row[2]))
            << row[0] << ' ' << row[1] << ' ' << row[3];
    }
    EXPECT_TRUE(
        std::ranges::is_sorted(cryptoki::returnValues(), std::less_equal<>(), &cryptoki::ReturnValue::value));
}

TEST(Cryptoki, FindsModulesOnThePathButNotInTheCurrentFolder) {
    const TokenFolder folder;
    folder.addDriver("near");
    const std::wstring file = (folder.path / "near.dll").wstring();
    EXPECT_EQ(cryptoki::findModuleFile(L"near.dll"), file);
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path);
    ::SetEnvironmentVariableW(L"PATH", (L".;;\"\";..\\" + folder.path.filename().wstring()).c_str());
    EXPECT_EQ(cryptoki::findModuleFile(L"near.dll"), L"");
    ::SetEnvironmentVariableW(L"PATH", (L"\"" + folder.path.wstring() + L"\"").c_str());
    EXPECT_EQ(cryptoki::findModuleFile(L"near.dll"), file);
    std::filesystem::current_path(before);
}

// With a token in one slot.
class TokenRequest : public testing::Test {
protected:
    TokenRequest() { folder.addDriver(driver, slot); }
    const TokenFolder folder;
};

TEST_F(TokenRequest, AModuleHasOneUserAtATime) {
    const std::wstring busy = L"C_Initialize: CKR_CRYPTOKI_ALREADY_INITIALIZED";
    {
        const auto module = cryptoki::Pkcs11Module::load(L"rtPKCS11ECP.dll");
        EXPECT_EQ(textOfFailure([] { request(); }), busy);
        // Another thread waits, a probe as long as it may.
        detail::ProbedDriver probed;
        const ULONGLONG begun = ::GetTickCount64();
        std::thread([&] { probed = detail::probeDriver(L"rtPKCS11ECP.dll", 100); }).join();
        EXPECT_GE(::GetTickCount64() - begun, 80u);  // as far as that clock counts
        EXPECT_EQ(probed.failure, busy);
        EXPECT_EQ(module.getSlotList().size(), 1u);
    }
    // A host that uses the module itself keeps it as it was.
    cryptoki::Library host;
    ASSERT_FALSE(host.load((folder.path / "rtPKCS11ECP.dll").c_str()).failed());
    ASSERT_FALSE(host.initialize().failed());
    EXPECT_EQ(textOfFailure([] { request(); }), busy);
    CK_ULONG count = 0;
    EXPECT_EQ(host.functions()->C_GetSlotList(CK_TRUE, nullptr, &count), CKR_OK);
}

// A public key or a signature of another size would make a request of which nobody can make anything.
TEST_F(TokenRequest, RefusesOtherSizes) {
    for (const auto& [what, call] : {std::pair(L"key", L"C_GetAttributeValue"), {L"signature", L"C_Sign"}}) {
        for (const wchar_t* size : {L"63", L"65"}) {
            folder.set(driver, L"token", what, size);
            EXPECT_EQ(textOfFailure([] { request(); }), std::wstring(call) + L": CKR_DATA_LEN_RANGE");
        }
        folder.set(driver, L"token", what, L"64");
    }
}

void install(const std::wstring& identifier) {
    installCertificateResponseGOST(L"response", cryptoki::makeContainerPath(slot, identifier),
                                   SecretNarrowText(pin),
                                   [](auto) { return readTestData("pki/signer.der"); });
}

// Each fails in turn, and is to be named by the failure, but for the last of an installation. Those that give
// something back may fail unnoticed.
TEST_F(TokenRequest, MakesTheCallsAsTheyAreToldAndEachMayFail) {
    std::ofstream(folder.path / "rtPKCS11ECP.objects") << "0 02000000\n1 01\n102 6B\n\n";
    const std::map<std::string, std::function<void()>> works{
        {"containers", [] { Crypto::getTokenContainers(slot); }},
        {"install", [] { install(L"6B"); }},
        {"request", [] { request(); }}};
    const std::set<std::string> ends{"C_FindObjectsFinal", "C_Logout", "C_CloseSession", "C_Finalize"};
    for (const auto& row : readTable("token/calls.txt", 2)) {
        for (int number = 1;; ++number) {
            folder.set(driver, L"token", L"fail", std::to_wstring(number) + L"=0x30");
            const std::wstring failure = textOfFailure(works.at(row[0]));
            std::string calls;
            std::string failed;
            const Lines log = folder.takeLog(driver);
            for (const std::string& line : log) {
                calls += line.substr(0, line.find(' ') + 1);
                if (line.ends_with(" 0x30"))
                    failed = line.substr(0, line.find(' '));
            }
            if (ends.contains(failed))
                continue;
            EXPECT_EQ(std::ranges::count(log, "left open"), 0) << "by the module's own account";
            EXPECT_EQ(::GetModuleHandleA("rtPKCS11ECP.dll"), nullptr);
            if (failed.empty()) {
                EXPECT_EQ(calls, row[1] + ' ');
                break;
            }
            EXPECT_EQ(failure, failed == "C_CreateObject"
                                   ? L"Ошибка при связывании сертификата с ключевым контейнером"
                                   : wide((failed == "C_GetFunctionList" ? "CK_FUNCTION_LIST" : failed) +
                                          ": CKR_DEVICE_ERROR"));
        }
    }
}

// And the request by hand, after RFC 2986 4.
TEST_F(TokenRequest, MakesTheObjectsOfTheTable) {
    // Public keys of other programs: without an identifier, and with such as are no text or part of no path.
    std::ofstream(folder.path / "rtPKCS11ECP.objects")
        << "0 02000000\n1 01\n\n0 02000000\n1 01\n102 01AB\n\n0 02000000\n1 01\n102 615C62\n\n";
    const Json::Value result = parseJson(request());
    for (const wchar_t* identifier : {L"key", L"01AB", L"ABCD"})
        install(identifier);

    const std::string path = result["path"].asString();
    const std::string before = toUtf8(cryptoki::makeContainerPath(slot, L""));
    ASSERT_TRUE(path.starts_with(before)) << path;
    const std::string identifier = path.substr(before.size());
    Lines names;
    for (const Json::Value& container : parseJson(Crypto::getTokenContainers(slot))) {
        names.push_back(container["containerName"].asString());
        EXPECT_EQ(container["path"], before + names.back());
    }
    EXPECT_EQ(std::set(names.begin(), names.end()), (std::set<std::string>{"01AB", "615C62", identifier}));

    Lines expected;
    Lines made = folder.linesOf("rtPKCS11ECP.objects");
    for (std::string& line : made)
        line = line == "102 " + hexOf(bytesOf(identifier)) ? "102 <identifier>"
               : line.starts_with("11 ")                   ? "11 <value>"
                                                           : line;
    for (const auto& row : readTable("token/objects.txt", 1))
        expected.push_back(row[0]);
    EXPECT_EQ(made, expected);

    const std::string der = hexOf(base64ToBin(std::string_view(result["request"].asString())));
    EXPECT_TRUE(
        std::regex_match(der, std::regex("3081F53081A5020100" + nameHex +
                                         "3063301C06062A8503020213301206072A85030202230106072A850302021E01"
                                         "0343000440.{128}A02A301C06092A864886F70D01090E310F" +
                                         extensionsHex + attributeHex + "300806062A8503020203034100.{128}")))
        << der;
}

// The drivers in their order, then the removable disks where the provider keeps keys on such.
TEST(TokenDiscovery, TellsOfTokensAndDisks) {
    const ScratchRegistry registry;
    const TokenFolder folder;
    // As the system tells of them: none has a label where there is no medium, or a size where it cannot be
    // read.
    struct Drive {
        UINT type = DRIVE_NO_ROOT_DIR;
        const wchar_t* label = nullptr;
        ULONGLONG total = 0;
    };
    std::map<wchar_t, Drive> drives{{L'A', {DRIVE_REMOVABLE}},
                                    {L'C', {DRIVE_FIXED, L"System", 1}},
                                    {L'E', {DRIVE_REMOVABLE, L"Ключи", 0x2'0000'0003}},
                                    {L'F', {DRIVE_REMOVABLE, L"", 1'457'664}},
                                    {L'G', {DRIVE_REMOVABLE, L"not formatted"}}};
    const Replaced type(&::GetDriveTypeW, [&](LPCWSTR root) { return drives[*root].type; });
    const Replaced volume(&::GetVolumeInformationW,
                          [&](LPCWSTR root, LPWSTR label, DWORD room, DWORD* number, auto, auto, auto, auto) {
                              EXPECT_TRUE(::GetThreadErrorMode() & SEM_FAILCRITICALERRORS) << "no dialog";
                              const wchar_t* const told = drives[*root].label;
                              *number = 0x0012ABCD;
                              return told && ::lstrcpynW(label, told, static_cast<int>(room));
                          });
    const Replaced space(&::GetDiskFreeSpaceExW, [&](LPCWSTR root, auto, auto total, auto free) {
        free->QuadPart = 512;
        total->QuadPart = drives[*root].total;
        return total->QuadPart != 0;
    });
    EXPECT_EQ(parseJson(Crypto::getTokensInfo()), Json::Value(Json::arrayValue));
    folder.addDriver("isbc_pkcs11_main", L"ISBC 0");
    folder.addDriver("jcPKCS11-2", L"ARDS JaCarta 0");
    folder.addDriver("rtPKCS11", slot);
    folder.addDriver("jcPKCS11ds");
    folder.set("rtPKCS11", L"token", L"model", L"Rutoken ECP");
    folder.set("rtPKCS11", L"token", L"free", L"4294967295");
    folder.set("jcPKCS11-2", L"token", L"fail", L"C_GetTokenInfo=0xE1");
    const std::wstring provider = L"SOFTWARE\\Crypto Pro\\Cryptography\\CurrentVersion\\";
    ScratchRegistry::add(HKEY_LOCAL_MACHINE, provider + L"KeyCarriers\\RutokenECP\\Default", L"Folders",
                         L"0A00\\0B00\\0C00");
    ScratchRegistry::add(HKEY_LOCAL_MACHINE, provider + L"KeyDevices\\FAT12", L"");
    EXPECT_EQ(parseJson(Crypto::getTokensInfo()), parseJson(fromUtf8(readTestText("token/tokens.json"))));
    EXPECT_EQ(folder.takeLog("jcPKCS11ds"),
              (Lines{"C_GetFunctionList 0x0", "C_Initialize 0x0", "C_GetSlotList 0x0", "C_Finalize 0x0"}));
}

// Each in its way; their threads are ended, and what they hold is not used again.
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
        EXPECT_EQ(detail::probeDriver(file).failure, L"C_Initialize: CKR_CRYPTOKI_ALREADY_INITIALIZED");
        EXPECT_TRUE(folder.takeLog(module).empty());
    }
}

// A driver that hangs while the system loads it keeps the loader's lock, and so the whole process, busy: the
// one that sees to that is another one.
TEST(TokenDiscovery, ReturnsFromADriverThatHangsInTheLoader) {
    const auto isGivenUp = [] {
        const TokenFolder folder;
        folder.addDriver("loads_for_ever", slot);
        folder.addDriver("works", slot);
        folder.set("loads_for_ever", L"token", L"fail", L"DllMain=hang");
        return !detail::probeDriver(L"loads_for_ever.dll", 300).failure.empty() &&
               !detail::probeDriver(L"works.dll").failure.empty() &&
               folder.takeLog("loads_for_ever") == Lines{"DllMain hangs"};
    };
    EXPECT_EXIT(::TerminateProcess(::GetCurrentProcess(), isGivenUp() ? 42 : 1), testing::ExitedWithCode(42),
                "");
}

TEST(TokenDiscovery, ReadsTheVersionOfAnInstalledDriver) {
    const ScratchRegistry registry;
    const std::wstring products =
        L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1-5-18\\Products\\";
    for (const wchar_t* guid : {L"AA", L"BB"})
        ScratchRegistry::add(HKEY_LOCAL_MACHINE, products + guid + L"\\InstallProperties", L"Version",
                             0x04030002u);
    ScratchRegistry::add(HKEY_LOCAL_MACHINE, products + L"AA\\InstallProperties", L"DisplayVersion",
                         L"4.3.2.1");
    EXPECT_EQ(Crypto::getTokenDriverVersion(L"AA"), L"4.3.2.1");
    EXPECT_EQ(Crypto::getTokenDriverVersion(L"BB"), L"4.3.2");
    for (const wchar_t* none : {L"", L"CC", L"AA\\InstallProperties\\..", L"\\AA"})
        EXPECT_EQ(Crypto::getTokenDriverVersion(none), L"");
}

// The first library of its name that is loaded stays the service of the process, so this one comes before all
// tests.
const struct CardService : TokenFolder {
    CardService() {
        std::filesystem::copy_file(testcard_file, path / "winscard.dll");
        library.attach(::LoadLibraryW((path / "winscard.dll").c_str()));
    }
    UniqueHandle<cryptoki::detail::LibraryTraits> library;
} service;

// What scripts are told: nothing where nothing is known, be it that there is no card to ask.
std::string certified(const std::wstring& reader) {
    service.takeLog("winscard");
    const Json::Value item = Crypto::describeToken({reader, L"", L"", L"", {}, {}});
    return !item.isMember("certified") ? "unknown" : item["certified"].asBool() ? "yes" : "no";
}

TEST(SmartCard, AsksInTheWayOfTheMakerAndLeavesNothingOpen) {
    for (const auto& row : readTable("token/answers.txt", 5)) {
        SCOPED_TRACE(row[0]);
        const bool isJaCarta = row[1].starts_with("ARDS");
        Lines expected{"SCardEstablishContext 2", "SCardConnect " + row[1] + " 2 3"};
        if (isJaCarta)
            expected.emplace_back("SCardBeginTransaction");
        const std::wstring reader = wide(row[1]);
        service.set("winscard", reader.c_str(), L"protocol", wide(row[2]));
        std::istringstream answers(row[3]);
        for (std::string word; answers >> word;) {
            const std::string command = word.substr(0, word.find('='));
            service.set("winscard", reader.c_str(), wide(command).c_str(),
                        wide(word.substr(command.size() + 1)));
            expected.push_back("SCardTransmit T" + row[2] + ' ' + command);
        }
        if (isJaCarta)
            expected.emplace_back("SCardEndTransaction");
        expected.insert(expected.end(), {"SCardDisconnect 0", "SCardReleaseContext"});
        for (std::string& call : expected)
            call += " 0x0";
        EXPECT_EQ(certified(reader), row[4]);
        EXPECT_EQ(service.takeLog("winscard"), expected);
    }
    service.set("winscard", L"ARDS failing", L"00CA000100", L"0000000000000000000000073132333435363190");
    EXPECT_EQ(certified(L"ARDS failing"), "yes");
    for (const std::string call :
         {"SCardEstablishContext", "SCardConnect", "SCardBeginTransaction", "SCardTransmit"}) {
        service.set("winscard", L"service", L"fail", wide(call) + L"=0x80100068");  // SCARD_W_RESET_CARD
        EXPECT_EQ(certified(L"ARDS failing"), "unknown") << call;
        const Lines calls = service.takeLog("winscard");
        // How often they succeeded.
        const auto count = [&](const std::string& name) {
            return std::ranges::count_if(
                calls, [&](auto& line) { return line.starts_with(name) && line.ends_with(" 0x0"); });
        };
        EXPECT_EQ(count("SCardEstablishContext"), count("SCardReleaseContext"));
        EXPECT_EQ(count("SCardConnect"), count("SCardDisconnect"));
        EXPECT_EQ(count("SCardBeginTransaction"), count("SCardEndTransaction"));
        EXPECT_EQ(count("SCardReconnect"), call == "SCardTransmit" ? 1 : 0);
    }
    service.set("winscard", L"service", L"fail", L"");
}

}  // namespace
