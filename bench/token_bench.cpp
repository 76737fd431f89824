// Tokens: discovery beside the bare calls of the same module, and the work on a request that is not the
// token's.
#include "bench/measure.h"
#include "binary/hex.h"
#include "tests/unit/token_folder.h"
#include "token/cryptoki/library.h"
#include "token/discovery/tokens.h"
#include "token/enroll/gost_request.h"
#include "token/enroll/user_sid.h"

#include <array>

namespace {

using Corvane::Bytes;
using Corvane::Test::TokenFolder;

// The least that has to be done to learn of a token.
void bareCalls(const std::filesystem::path& file) {
    cryptoki::Library library;
    if (library.load(file.c_str()).failed() || library.initialize().failed())
        std::fputs("the test token does not load\n", stderr);
    const CK_FUNCTION_LIST& functions = *library.functions();
    CK_SLOT_ID slot = 0;
    CK_ULONG count = 0;
    functions.C_GetSlotList(CK_TRUE, nullptr, &count);
    functions.C_GetSlotList(CK_TRUE, &slot, &count);
    CK_SLOT_INFO slotInfo{};
    CK_TOKEN_INFO tokenInfo{};
    functions.C_GetSlotInfo(slot, &slotInfo);
    functions.C_GetTokenInfo(slot, &tokenInfo);
    bench::keep(&tokenInfo);
}

double microsecondsOf(const bench::Work& work) {
    double best = 1e9;
    for (int turn = 0; turn < 50; ++turn)
        best = std::min(best, bench::secondsOf(work, 1) * 1e6);
    return best;
}

void printLimit(const char* work, double microseconds, double limit) {
    std::printf("%-30s %9.0f us    at most %.0f us  %s\n", work, microseconds, limit,
                microseconds <= limit ? "reached" : "MISSED");
}

void request() {
    static const Bytes name = Corvane::hexToBin(std::string_view("300F310D300B06035504030C0454657374"));
    static const Bytes extensions = Corvane::hexToBin(std::string_view("300D300B0603551D0F040403020780"));
    constexpr std::array<std::uint8_t, 64> key{};
    const Bytes info = Corvane::detail::encodeGostRequestInfo({name, extensions}, key);
    bench::keep(Corvane::detail::encodeGostRequest(info, key).data());
    bench::keep(Corvane::detail::getUserSid().data());
}

}  // namespace

int main() {
    const TokenFolder folder;
    printLimit("four missing drivers", microsecondsOf([] { Corvane::detail::getTokens(); }), 50'000);
    folder.addDriver("isbc_pkcs11_main", L"ISBC 0");
    const auto file = folder.path / "isbc_pkcs11_main.dll";
    bench::printTimes("one driver with one token", microsecondsOf([] { Corvane::detail::getTokens(); }),
                      "the bare calls", microsecondsOf([&] { bareCalls(file); }), 1.2);
    printLimit("a request without its token", microsecondsOf(request), 1'000);
}
