// Cards, by the stand-in for the service (tests/platform/token), which comes in its place in this process.
#include "token/card/smart_card.h"
#include "core/system_exception.h"
#include "core/utf8.h"
#include "support.h"
#include "token/discovery/tokens_info.h"
#include "token_folder.h"

#include <array>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

constexpr wchar_t rutoken[] = L"Aktiv Rutoken ECP 0";
constexpr wchar_t jaCarta[] = L"ARDS JaCarta 0";
constexpr wchar_t rutokenCommand[] = L"00CA01890E";
constexpr wchar_t jaCartaCommand[] = L"00CA000100";

// The first library of its name that is loaded stays the service of the process, so this one comes before all
// tests.
class CardService : public ::testing::Environment {
public:
    void SetUp() override {
        folder_ = std::make_unique<TokenFolder>();
        const auto file = folder_->path() / "winscard.dll";
        std::filesystem::copy_file(testcard_file, file);
        library_ = ::LoadLibraryW(file.c_str());
    }
    void TearDown() override {
        ::FreeLibrary(library_);
        folder_.reset();
    }
    const TokenFolder& folder() const { return *folder_; }

private:
    std::unique_ptr<TokenFolder> folder_;
    HMODULE library_ = nullptr;
};

const auto* const service = static_cast<CardService*>(::testing::AddGlobalTestEnvironment(new CardService));

class SmartCardTest : public ::testing::Test {
protected:
    SmartCardTest() { set(L"service", L"fail", L""); }

    static void set(const wchar_t* section, const wchar_t* key, const std::wstring& value) {
        service->folder().set("winscard", section, key, value);
    }
    static Lines takeLog() { return service->folder().takeLog("winscard"); }

    static Certified ask(const wchar_t* reader) {
        Terminal terminal;
        terminal.open();
        terminal.connect(reader);
        return SmartCard(terminal).certified(reader);
    }
};

struct Answer {
    const char* what;
    const wchar_t* reader;
    const wchar_t* protocol;
    const wchar_t* command;
    const wchar_t* bytes;
    Certified certified;
};

// The layout: 61 is the tenth byte's place, the length stands at 11, the flag is the seventh character after
// it.
const Answer answers[] = {
    {"Rutoken, flag set", rutoken, L"1", rutokenCommand, L"000102030405", Certified::yes},
    {"Rutoken, flag clear", rutoken, L"1", rutokenCommand, L"0001020304009000", Certified::no},
    {"Rutoken, one byte short", rutoken, L"1", rutokenCommand, L"0001020304", Certified::unknown},
    {"Rutoken, nothing but a status", rutoken, L"1", rutokenCommand, L"6A82", Certified::unknown},
    {"Rutoken at T=0", rutoken, L"0", rutokenCommand, L"0001020304019000", Certified::yes},
    {"JaCarta, '1' is seventh", jaCarta, L"1", jaCartaCommand, L"0000000000000000000000073132333435363190",
     Certified::yes},
    {"JaCarta, '0' is seventh", jaCarta, L"1", jaCartaCommand, L"0000000000000000000000073132333435363090",
     Certified::no},
    {"JaCarta, six characters", jaCarta, L"1", jaCartaCommand, L"0000000000000000000000063132333435363190",
     Certified::unknown},
    {"JaCarta, a length beyond the end", jaCarta, L"1", jaCartaCommand,
     L"00000000000000000000000A3132333435363190", Certified::unknown},
    {"JaCarta, a length that counts itself in", jaCarta, L"1", jaCartaCommand,
     L"00000000000000000000000831323334353631", Certified::yes},
    {"JaCarta, ends before the length", jaCarta, L"1", jaCartaCommand, L"0000000000000000000000",
     Certified::unknown},
    {"JaCarta, asked on at T=0", jaCarta, L"0", jaCartaCommand, L"6114", Certified::yes},
    {"JaCarta, at T=1 that is all it says", jaCarta, L"1", jaCartaCommand, L"6114", Certified::unknown},
    {"JaCarta, ends behind the length", jaCarta, L"1", jaCartaCommand, L"000000000000000000000000",
     Certified::unknown},
    {"Rutoken, the name only later", L"My Aktiv 0", L"1", rutokenCommand, L"000102030405",
     Certified::unknown},
    {"JaCarta, the name only later", L"My ARDS 0", L"1", jaCartaCommand,
     L"0000000000000000000000073132333435363190", Certified::unknown},
    {"another maker's", L"Other 0", L"1", rutokenCommand, L"000102030405", Certified::unknown},
};

TEST_F(SmartCardTest, TellsWhatTheTokenSays) {
    set(jaCarta, L"00C0000014", L"0000000000000000000000073132333435363190");
    for (const Answer& row : answers) {
        for (const wchar_t* length : {L"", L"no", L"0"}) {
            SCOPED_TRACE(row.what);
            set(L"service", L"length", length);
            set(row.reader, L"protocol", row.protocol);
            set(row.reader, row.command, row.bytes);
            EXPECT_EQ(ask(row.reader), row.certified);
        }
    }
}

// What scripts are told: nothing where nothing is known, be it that there is no card to ask.
TEST_F(SmartCardTest, DescribesACertifiedToken) {
    set(rutoken, L"protocol", L"1");
    for (const auto& [bytes, failing, wanted] : std::initializer_list<std::array<const wchar_t*, 3>>{
             {L"000102030405", L"", L"true"},
             {L"000102030400", L"", L"false"},
             {L"6A82", L"", L""},
             {L"000102030405", L"SCardConnect=0x8010000C", L""},
             {L"000102030405", L"SCardEstablishContext=0x8010001D", L""}}) {
        SCOPED_TRACE(toUtf8(bytes) + " " + toUtf8(failing));
        set(rutoken, rutokenCommand, bytes);
        set(L"service", L"fail", failing);
        const Json::Value item = Crypto::describeToken({rutoken, L"", L"", L"", {}, {}});
        EXPECT_EQ(item.isMember("certified") ? item["certified"].asString() : "", toUtf8(wanted));
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

std::size_t countOf(const Lines& log, const std::string& call) {
    return static_cast<std::size_t>(std::ranges::count_if(
        log, [&](const std::string& line) { return line.starts_with(call) && line.ends_with(" 0x0"); }));
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
        const Lines log = takeLog();
        EXPECT_EQ(countOf(log, "SCardEstablishContext"), countOf(log, "SCardReleaseContext"));
        EXPECT_EQ(countOf(log, "SCardConnect"), countOf(log, "SCardDisconnect"));
        EXPECT_EQ(countOf(log, "SCardBeginTransaction"), countOf(log, "SCardEndTransaction"));
    }
}

TEST_F(SmartCardTest, ConnectsAgainAfterAReset) {
    set(rutoken, L"protocol", L"1");
    takeLog();
    set(L"service", L"fail", L"SCardTransmit=0x80100068");
    EXPECT_EQ(ask(rutoken), Certified::unknown);
    EXPECT_EQ(countOf(takeLog(), "SCardReconnect"), 1u);
}

TEST(Apdu, IsSerializedInTheShortForm) {
    EXPECT_EQ((Apdu{0x00, 0xCA, 0x01, 0x89, {}, 0x0E}.serialize()), (Bytes{0x00, 0xCA, 0x01, 0x89, 0x0E}));
    EXPECT_EQ((Apdu{0x80, 0x01, 0x02, 0x03, {0xAA, 0xBB}, 0x00}.serialize()),
              (Bytes{0x80, 0x01, 0x02, 0x03, 0x02, 0xAA, 0xBB, 0x00}));
}

}  // namespace
