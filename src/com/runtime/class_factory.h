// The class object through which COM creates one coclass.
#pragma once

#include "com/runtime/coclasses.h"

namespace Corvane::Com {

// What DllGetClassObject answers: a class object for one coclass of the table, under the interface wanted.
HRESULT getClassObject(const CLSID& clsid, REFIID iid, void** object) noexcept;

}  // namespace Corvane::Com
