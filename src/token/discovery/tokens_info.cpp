#include "token/discovery/tokens_info.h"

#include "core/exception.h"
#include "core/json.h"
#include "core/log.h"
#include "core/utf8.h"
#include "token/card/smart_card.h"
#include "token/discovery/fat12_readers.h"
#include "token/discovery/key_carrier.h"
#include "token/discovery/probe_record.h"
#include "token/discovery/tokens.h"

namespace Corvane::Crypto {
namespace {

constexpr wchar_t context[] = L"Corvane::Crypto::getTokensInfo";

Json::Value memoryValue(const std::optional<std::uint64_t>& bytes) {
    return bytes ? Json::Value(Json::UInt64{*bytes}) : Json::Value();
}

// A reader that cannot be reached has an unknown answer, too.
Certified askCard(const std::wstring& reader) {
    if (detail::isLoaderStuck())  // the service's library may not be loaded yet
        return Certified::unknown;
    try {
        Terminal terminal;
        writeLog(LogLevel::debug, context, L"open terminal");
        terminal.open();
        writeLog(LogLevel::debug, context, L"connect to the token: ", reader);
        terminal.connect(reader);
        return SmartCard(terminal).certified(reader);
    } catch (const Exception& exception) {
        writeLog(LogLevel::error, context, fullMessage(exception));
        return Certified::unknown;
    }
}

Json::Value describeMemory(const Token& token) {
    Json::Value item;
    item["slot"] = toUtf8(token.slot);
    item["manufacturer"] = toUtf8(token.manufacturer);
    item["model"] = toUtf8(token.model);
    item["serialNumber"] = toUtf8(token.serialNumber);
    item["totalMemory"] = memoryValue(token.totalMemory);
    item["freeMemory"] = memoryValue(token.freeMemory);
    return item;
}

void addCarrier(Json::Value& item, const KeyCarrier& carrier) {
    item["type"] = toUtf8(carrier.type);
    item["name"] = toUtf8(carrier.name);
    item["nickname"] = toUtf8(carrier.nickname);
    item["media"] = toUtf8(carrier.media);
    item["gost"] = carrier.gost;
    if (carrier.maxContainerCount)
        item["maxContainerCount"] = *carrier.maxContainerCount;
}

}  // namespace

Json::Value describeToken(const Token& token) {
    Json::Value item = describeMemory(token);
    const Certified certified = askCard(token.slot);
    writeLog(LogLevel::debug, context, L"token certified flag: ", static_cast<unsigned>(certified));
    if (certified != Certified::unknown)
        item["certified"] = certified == Certified::yes;
    return item;
}

std::wstring getTokensInfo() {
    Json::Value list(Json::arrayValue);
    for (const Token& token : detail::getTokens()) {
        Json::Value& item = list.append(describeToken(token));
        if (const auto carrier = findKeyCarrier(token))
            addCarrier(item, *carrier);
    }
    for (const auto& [disk, carrier] : detail::getActiveFat12Readers())
        addCarrier(list.append(describeMemory(disk)), carrier);
    return writeJson(list);
}

}  // namespace Corvane::Crypto
