// What the component writes into the registry so that hosts find it by ProgID.
#pragma once

#include <string>

namespace Corvane::Com {

enum class RegistrationScope {
    machine,  // HKEY_LOCAL_MACHINE; needs an administrator
    user,     // HKEY_CURRENT_USER
};

// Writes the keys of every coclass and of the type library for the DLL this code is in. When a step
// fails, the component is unregistered, also where it was registered before. Throws Win32Exception
// E_REG_KEY_CREATE or E_REG_VALUE_SET, and ComException for the type library.
void registerComponent(RegistrationScope scope);

// Removes all of it. The ProgIDs and the type library serve both bitnesses: they stay as long as the other
// one is registered. Absent keys are no failure; a key that cannot be removed keeps no other from being
// removed.
void unregisterComponent(RegistrationScope scope);

// The version that registration left in the registry, as this process sees it; empty when there is none.
std::wstring registeredVersion();

// The file that the registry names for this process's bitness, with its variables replaced; empty when there
// is none.
std::wstring registeredFile();

}  // namespace Corvane::Com
