#include "token/discovery/tokens.h"

#include "core/log.h"
#include "token/cryptoki/driver_path.h"

#include <algorithm>
#include <iterator>

namespace Corvane::detail {
namespace {

constexpr wchar_t context[] = L"Corvane::detail::getTokens";

void logToken(const Token& token) {
    writeLog(LogLevel::debug, context, L"slot: ", token.slot, L", manufacturer: ", token.manufacturer,
             L", model: ", token.model, L", serialNumber: ", token.serialNumber, L", totalMemory: ",
             token.totalMemory.value_or(0), L", freeMemory: ", token.freeMemory.value_or(0));
}

// A reader's name may be the beginning of another's: "... 1" and "... 10".
bool isOn(std::wstring_view path, std::wstring_view reader) noexcept {
    if (reader.empty())
        return false;
    std::size_t at = path.find(reader);
    while (at != std::wstring_view::npos) {
        const std::size_t end = at + reader.size();
        if (end == path.size() || path[end] == L'\\')
            return true;
        at = path.find(reader, at + 1);
    }
    return false;
}

}  // namespace

std::vector<ProbedDriver> probeDrivers() {
    std::vector<ProbedDriver> drivers;
    for (const std::wstring& name : {cryptoki::jaCartaDriverPath(), std::wstring(L"jcPKCS11ds.dll"),
                                     std::wstring(L"rtPKCS11.dll"), std::wstring(L"isbc_pkcs11_main.dll")}) {
        writeLog(LogLevel::debug, context, L"load driver: ", name);
        drivers.push_back(probeDriver(name));
        for (const Token& token : drivers.back().tokens)
            logToken(token);
    }
    return drivers;
}

std::vector<Token> getTokens() {
    std::vector<Token> tokens;
    for (ProbedDriver& driver : probeDrivers())
        std::ranges::move(driver.tokens, std::back_inserter(tokens));
    return tokens;
}

const Token* findTokenOf(std::wstring_view containerPath, const std::vector<Token>& tokens) noexcept {
    const Token* found = nullptr;
    for (const Token& token : tokens) {
        if (isOn(containerPath, token.slot) && (!found || token.model == L"JaCarta LT"))
            found = &token;
    }
    return found;
}

}  // namespace Corvane::detail
