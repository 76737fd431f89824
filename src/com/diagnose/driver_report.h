// What is told of the drivers of tokens.
#pragma once

#include <json/value.h>

#include <windows.h>

namespace Corvane::Com {

// A list of all drivers in the order in which they are asked. Asks one after the other, each for 12
// seconds at most and none longer than until the system's running, in milliseconds, has reached `until`; one
// that did not answer is lost for the process as with getTokens().
Json::Value reportDrivers(ULONGLONG until);

}  // namespace Corvane::Com
