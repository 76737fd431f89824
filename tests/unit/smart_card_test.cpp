// Cards, by the stand-in for the service (tests/platform/token), which comes in its place in this process.
#include "token/card/smart_card.h"
#include "core/system_exception.h"
#include "core/utf8.h"
#include "support.h"
#include "token/discovery/tokens_info.h"
#include "token_folder.h"

#include <optional>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

constexpr wchar_t rutoken[] = L"Aktiv Rutoken ECP 0";
constexpr wchar_t jaCarta[] = L"ARDS JaCarta 0";
constexpr wchar_t rutokenCommand[] = L"00CA01890E";
constexpr wchar_t jaCartaCommand[] = L"00CA000100";

// The first library of its name that is loaded stays the service of the process, so this one comes before all
// tests.
struct CardService : testing::Environment {
    void SetUp() override {
        folder.emplace();
        const auto file = folder->path() / "winscard.dll";
        std::filesystem::copy_file(testcard_file, file);
        library = ::LoadLibraryW(file.c_str());
    }
    void TearDown() override {
        ::FreeLibrary(library);
        folder.reset();
    }
    std::optional<TokenFolder> folder;
    HMODULE library = nullptr;
};

const auto* const service = static_cast<CardService*>(testing::AddGlobalTestEnvironment(new CardService));

class SmartCardTest : public ::testing::Test {
protected:
    SmartCardTest() { set(L"service", L"fail", L""); }

    static void set(const wchar_t* section, const wchar_t* key, const std::wstring& value) {
        service->folder->set("winscard", section, key, value);
    }
    static Lines takeLog() { return service->folder->takeLog("winscard"); }

    static Certified ask(const wchar_t* reader) {
        Terminal terminal;
        terminal.open();
        terminal.connect(reader);
        return SmartCard(terminal).certified(reader);
    }
};

// What scripts are told: nothing where nothing is known, be it that there is no card to ask.
TEST_F(SmartCardTest, TellsWhatTheTokenSays) {
    set(jaCarta, L"00C0000014", L"0000000000000000000000073132333435363190");
    const auto certified = [](const std::wstring& reader) {
        const Json::Value item = Crypto::describeToken({reader, L"", L"", L"", {}, {}});
        return !item.isMember("certified") ? "unknown" : item["certified"].asBool() ? "yes" : "no";
    };
    for (const auto& row : readTable("token/answers.txt", 5)) {
        const std::wstring reader = wide(row[1]);
        const bool isJaCarta = row[1].find("ARDS") != std::string::npos;
        for (const wchar_t* length : {L"", L"no", L"0"}) {
            set(L"service", L"length", length);
            set(reader.c_str(), L"protocol", wide(row[2]));
            set(reader.c_str(), isJaCarta ? jaCartaCommand : rutokenCommand, wide(row[3]));
            EXPECT_EQ(certified(reader), row[4]) << row[0];
        }
    }
    set(rutoken, L"protocol", L"1");
    set(rutoken, rutokenCommand, L"000102030405");
    for (const wchar_t* failing : {L"SCardConnect=0x8010000C", L"SCardEstablishContext=0x8010001D"}) {
        set(L"service", L"fail", failing);
        EXPECT_EQ(certified(rutoken), std::string("unknown")) << toUtf8(failing);
    }
}

TEST_F(SmartCardTest, AsksInTheWayOfTheMaker) {
    set(L"service", L"length", L"");
    set(rutoken, L"protocol", L"0");
    set(rutoken, rutokenCommand, L"6107");
    set(rutoken, L"00C0000007", L"00000000000190");
    set(jaCarta, L"protocol", L"1");
    takeLog();
    EXPECT_EQ(ask(rutoken), Certified::yes);
    EXPECT_EQ(takeLog(), (Lines{"SCardEstablishContext 2 0x0", "SCardConnect Aktiv Rutoken ECP 0 2 3 0x0",
                                "SCardTransmit T0 00CA01890E length 0x0", "SCardTransmit T0 00CA01890E 0x0",
                                "SCardTransmit T0 00C0000007 length 0x0", "SCardTransmit T0 00C0000007 0x0",
                                "SCardDisconnect 0 0x0", "SCardReleaseContext 0x0"}));
    set(rutoken, rutokenCommand, L"6C06");
    set(rutoken, L"00CA018906", L"000000000000");
    EXPECT_EQ(ask(rutoken), Certified::no);
    takeLog();
    ask(jaCarta);
    EXPECT_EQ(takeLog(),
              (Lines{"SCardEstablishContext 2 0x0", "SCardConnect ARDS JaCarta 0 2 3 0x0",
                     "SCardBeginTransaction 0x0", "SCardTransmit T1 00A4040007A000000151000007 length 0x0",
                     "SCardTransmit T1 00A4040007A000000151000007 0x0",
                     "SCardTransmit T1 00CA000100 length 0x0", "SCardTransmit T1 00CA000100 0x0",
                     "SCardEndTransaction 0x0", "SCardDisconnect 0 0x0", "SCardReleaseContext 0x0"}));
}

// Calls are counted from the library's start on, so the number that is to fail is found by the name instead.
TEST_F(SmartCardTest, NothingStaysOpenWhereACallFails) {
    set(L"service", L"length", L"");
    set(jaCarta, L"protocol", L"1");
    for (const wchar_t* call :
         {L"SCardEstablishContext", L"SCardConnect", L"SCardBeginTransaction", L"SCardTransmit"}) {
        SCOPED_TRACE(toUtf8(call));
        takeLog();
        set(L"service", L"fail", std::wstring(call) + L"=0x80100069");
        Certified certified = Certified::unknown;
        const Failure failure = failureOf([&] { certified = ask(jaCarta); });
        const bool isOutside =
            std::wstring_view(call) < L"SCardF" && std::wstring_view(call) != L"SCardBeginTransaction";
        EXPECT_EQ(failure.second, isOutside ? 0x80100069u : 0u);
        EXPECT_EQ(certified, Certified::unknown);
        expectGivenBack(takeLog(), {{"SCardEstablishContext", "SCardReleaseContext"},
                                    {"SCardConnect", "SCardDisconnect"},
                                    {"SCardBeginTransaction", "SCardEndTransaction"}});
    }
}

TEST_F(SmartCardTest, ConnectsAgainAfterAReset) {
    set(rutoken, L"protocol", L"1");
    takeLog();
    set(L"service", L"fail", L"SCardTransmit=0x80100068");
    EXPECT_EQ(ask(rutoken), Certified::unknown);
    EXPECT_EQ(countOf(takeLog(), "SCardReconnect"), 1);
}

}  // namespace
