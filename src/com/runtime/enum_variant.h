// What VBScript's For Each and JScript's Enumerator walk through.
#pragma once

#include "com/runtime/ptr.h"

#include <windows.h>

#include <oaidl.h>

#include <vector>

namespace Corvane::Com {

// An enumerator (IEnumVARIANT) over the objects. Changes of the collection they come from do not reach it.
// One thread at a time.
ComPtr<IUnknown> makeEnumerator(std::vector<ComPtr<IDispatch>> items);

}  // namespace Corvane::Com
