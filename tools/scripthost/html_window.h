// A stand-in for a browser's page: a window that knows its address.
#pragma once

#include "com_object.h"

#include <mshtml.h>

#include <string>

namespace ScriptHost {

// `location.href` is `address`, unchanged.
ComPtr<IHTMLWindow2> makeHtmlWindow(std::wstring address);

}  // namespace ScriptHost
