#include "token/discovery/tokens.h"

#include "core/log.h"
#include "token/cryptoki/driver_path.h"

#include <utility>

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

std::vector<std::wstring> driverNames() {
    return {cryptoki::jaCartaDriverPath(), L"jcPKCS11ds.dll", L"rtPKCS11.dll", L"isbc_pkcs11_main.dll"};
}

std::vector<Token> getTokens() {
    std::vector<Token> tokens;
    for (const std::wstring& name : driverNames()) {
        writeLog(LogLevel::debug, context, L"load driver: ", name);
        for (Token& token : probeDriver(name).tokens) {
            logToken(token);
            tokens.push_back(std::move(token));
        }
    }
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
