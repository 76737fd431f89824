// The object WScript.
#pragma once

#include "dispatch_object.h"
#include "options.h"

namespace ScriptHost {

// `site`: what created objects are given as their site; it must outlive this object. `unset`: how Echo shows
// a variable that has no value, which differs between the languages.
class WScript final : public DispatchObject {
public:
    WScript(const Options& options, const std::wstring& scriptPath, IUnknown& site, const wchar_t* unset);

private:
    void addOutput(const wchar_t* unset);
    void addInformation(const Options& options, const std::wstring& scriptPath);
};

// Creates an object of the class `progId` and hands it `site` if it wants one, as the engines do for
// `new ActiveXObject`. Throws CallError.
ComPtr<IDispatch> createObject(const std::wstring& progId, IUnknown& site);

}  // namespace ScriptHost
