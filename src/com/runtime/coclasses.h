// The table of the component's coclasses. The class factory and registration both read it; a coclass
// that is not in it does not exist.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <span>

namespace Corvane::Com {

struct Coclass {
    const CLSID* clsid;
    const wchar_t* name;     // second part of the ProgIDs
    const wchar_t* version;  // last part of the versioned ProgID
    IUnknown* (*create)();   // a new object with one reference; may throw. Null for what is registered only
};

std::span<const Coclass> coclasses();

}  // namespace Corvane::Com
