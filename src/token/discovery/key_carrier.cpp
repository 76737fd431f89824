#include "token/discovery/key_carrier.h"

#include "core/log.h"
#include "token/cryptoki/driver_path.h"
#include "token/discovery/registry_text.h"

#include <algorithm>

namespace Corvane {
namespace {

constexpr wchar_t carriersKey[] = L"SOFTWARE\\Crypto Pro\\Cryptography\\CurrentVersion\\KeyCarriers\\";

// Which token has its settings where. The first that fits counts, so the particular stand before the general.
struct Kind {
    std::wstring_view reader;  // how the reader's name begins
    std::wstring_view model;   // how the model's does
    const wchar_t* type;
    bool gost;
};

constexpr Kind kinds[] = {
    {cryptoki::jaCartaMark, L"JaCarta LT", L"JaCarta_LT", false},
    {cryptoki::jaCartaMark, L"", L"JaCarta", true},
    {cryptoki::rutokenMark, L"Rutoken ECP", L"RutokenECP", true},
    {cryptoki::rutokenMark, L"Rutoken lite", L"RutokenLite", false},
    {cryptoki::rutokenMark, L"", L"Rutoken", false},
};

const Kind* findKind(const Token& token) noexcept {
    const auto* const kind = std::ranges::find_if(kinds, [&](const Kind& each) {
        return token.slot.starts_with(each.reader) && token.model.starts_with(each.model);
    });
    return kind == std::end(kinds) ? nullptr : kind;
}

// A value of the carrier: the subkey "Default" has those of the kind, the key itself those of the module.
std::optional<std::wstring> readValue(const std::wstring& key, const wchar_t* name) {
    auto value = readMachineText(key + L"\\Default", name);
    return value ? value : readMachineText(key, name);
}

// Containers lie in folders of the token, whose names stand one after the other: "0A00\0B00\0C00".
std::optional<unsigned> getMaxContainerCount(const std::wstring& key) {
    const auto folders = readValue(key, L"Folders");
    if (!folders || folders->empty())
        return std::nullopt;
    const auto count = static_cast<unsigned>(std::ranges::count(*folders, L'\\')) + 1;
    writeLog(LogLevel::debug, L"GetMaxContainerCount", key, L": ", count);
    return count;
}

}  // namespace

std::optional<KeyCarrier> findKeyCarrier(const Token& token) {
    const Kind* const kind = findKind(token);
    if (!kind)
        return std::nullopt;
    const std::wstring key = std::wstring(carriersKey) + kind->type;
    if (!machineKeyExists(key))
        return std::nullopt;
    return KeyCarrier{kind->type, readValue(key, L"Name").value_or(kind->type),
                      token.slot, token.serialNumber,
                      kind->gost, getMaxContainerCount(key)};
}

}  // namespace Corvane
