// The cryptographic service providers that the component knows how to work with.
#pragma once

#include <windows.h>

#include <span>
#include <string_view>

namespace Corvane {

// A provider with the algorithms that are used with it, as dotted object identifiers.
struct ProviderRecord {
    const wchar_t* name;
    DWORD type;
    const wchar_t* hash;
    const wchar_t* publicKey;
    const wchar_t* cipher;
};

// All records, in the order in which they are tried.
std::span<const ProviderRecord> providerRecords() noexcept;

// The first record for keys of this algorithm, or null.
const ProviderRecord* findProviderRecord(std::wstring_view publicKeyAlgorithm) noexcept;

// The first record whose provider can be opened on this machine; the first of all where none can.
const ProviderRecord& defaultProviderRecord() noexcept;

}  // namespace Corvane
