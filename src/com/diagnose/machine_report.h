// What is told of the machine but for its tokens: each part as a value of JSON. Those that may wait for
// something else than the registry are for an Inquiry.
#pragma once

#include "core/log_file.h"
#include "crypto/provider/provider_record.h"

#include <json/value.h>

#include <string>

namespace Corvane::Com {

// The settings that the component reads, null where they are missing or of another type, and the variable
// "PATH", by which drivers are found.
Json::Value reportSettings();

// The trusted sites that are none. Throws as invalidTrustedSites().
Json::Value reportInvalidSites();

// The registered file and version. `known` has the members that need no look at the files; the rest: whether
// the file is the one that this code is in. Throws what File throws where there is no such file.
Json::Value knownRegistration();
Json::Value reportRegistration(Json::Value known, const std::wstring& registered);

Json::Value knownLog(const Corvane::detail::LogState& state);
// Whether it can be written.
Json::Value reportLog(const Corvane::detail::LogState& state);

Json::Value knownProvider(const ProviderRecord& record);
// Whether it opens.
Json::Value reportProvider(const ProviderRecord& record);

// Throw as cardServiceState() and cardReaders().
Json::Value reportCardService();
Json::Value reportReaders();

}  // namespace Corvane::Com
