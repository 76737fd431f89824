// The cryptographic service providers that the component knows how to work with.
#pragma once

#include <windows.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane {

// A provider with the algorithms that are used with it, as dotted object identifiers. A value: what is found
// on the machine can stand beside the records of the component.
struct ProviderRecord {
    std::wstring name;
    DWORD type = 0;
    std::wstring hash;
    std::wstring publicKey;
    std::wstring cipher;
};

// The component's own records, in the order in which they are tried.
std::vector<ProviderRecord> providerRecords();

// ERROR_SUCCESS where the provider can be opened on this machine, else the system's number. Shows no dialog.
DWORD tryProvider(const ProviderRecord& record) noexcept;

// Whether it can.
bool isInstalled(const ProviderRecord& record) noexcept;

// Of the records for keys of this algorithm the first that is installed or, where none of them is, the first
// of them, with which the system says what is missing. Null where no record is for such keys. Points into
// `records`.
const ProviderRecord* findProviderRecord(std::span<const ProviderRecord> records,
                                         std::wstring_view publicKeyAlgorithm) noexcept;

// The first record that is installed; the first of all where none is. For work without a key. Points into
// `records`, which are not empty.
const ProviderRecord& defaultProviderRecord(std::span<const ProviderRecord> records) noexcept;

}  // namespace Corvane
