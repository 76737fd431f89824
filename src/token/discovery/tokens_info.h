// What pages are told of the tokens at this machine.
#pragma once

#include "token/discovery/token.h"

#include <json/value.h>

#include <string>

namespace Corvane::Crypto {

// Members "slot", "manufacturer", "model", "serialNumber", "totalMemory", "freeMemory" (bytes, or null where
// the token does not tell) and, where its card answers the question, "certified". Asks the card.
Json::Value describeToken(const Token& token);

// The JSON text of a list of all tokens, and of the removable disks that the CSP keeps keys on. Where the CSP
// knows the carrier there are also "type", "name", "nickname", "media", "gost" and, if it is limited,
// "maxContainerCount". Takes at most a minute. Any thread.
std::wstring getTokensInfo();

}  // namespace Corvane::Crypto
