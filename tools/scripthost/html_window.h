// A stand-in for a browser's page: a window that knows its address.
#pragma once

#include "com/runtime/ptr.h"

#include <mshtml.h>

#include <string>

namespace ScriptHost {

using Corvane::Com::ComPtr;
using Corvane::Com::makeObject;

// `location.href` is `address`, unchanged.
ComPtr<IHTMLWindow2> makeHtmlWindow(std::wstring address);

}  // namespace ScriptHost
