#include "wscript.h"

#include "arguments.h"
#include "console.h"
#include "core/version.h"
#include "exit.h"
#include "message_loop.h"
#include "output_stream.h"
#include "value_text.h"

#include <ocidl.h>

namespace ScriptHost {
namespace {

void sleep(const CallArguments& arguments, VARIANT&) {
    const long milliseconds = arguments.number(0);
    if (milliseconds < 0)
        throw CallError{E_INVALIDARG, L"The time is negative"};
    pumpMessages(static_cast<DWORD>(milliseconds));
}

}  // namespace

WScript::WScript(const Options& options, const std::wstring& scriptPath, IUnknown& site,
                 const wchar_t* unset) {
    addOutput(unset);
    addInformation(options, scriptPath);
    addMethod(L"Sleep", sleep);
    addMethod(L"Quit", [](const CallArguments& arguments, VARIANT&) {
        quit(arguments.count() == 0 ? 0 : static_cast<UINT>(arguments.number(0)));
    });
    addMethod(L"CreateObject", [&site](const CallArguments& arguments, VARIANT& result) {
        setObject(result, createObject(arguments.text(0), site).get());
    });
}

void WScript::addOutput(const wchar_t* unset) {
    addMethod(L"Echo", [unset](const CallArguments& arguments, VARIANT&) {
        std::wstring line;
        for (std::size_t i = 0; i < arguments.count(); ++i)
            line += (i == 0 ? L"" : L" ") + valueText(arguments.at(i), unset);
        write(Stream::output, line + L'\n');
    });
    const auto output = makeObject<OutputStream>(Stream::output);
    const auto error = makeObject<OutputStream>(Stream::error);
    addProperty(L"StdOut", [output](VARIANT& result) { setObject(result, output.get()); });
    addProperty(L"StdErr", [error](VARIANT& result) { setObject(result, error.get()); });
}

void WScript::addInformation(const Options& options, const std::wstring& scriptPath) {
    const auto arguments = makeObject<Arguments>(options.arguments);
    const std::wstring name = scriptPath.substr(scriptPath.find_last_of(L'\\') + 1);
    addProperty(L"Arguments", [arguments](VARIANT& result) { setObject(result, arguments.get()); });
    addProperty(L"ScriptName", [name](VARIANT& result) { setText(result, name); });
    addProperty(L"ScriptFullName", [scriptPath](VARIANT& result) { setText(result, scriptPath); });
    addProperty(L"Version", [](VARIANT& result) { setText(result, L"" CORVANE_VERSION_TEXT); });
}

ComPtr<IDispatch> createObject(const std::wstring& progId, IUnknown& site) {
    CLSID classId{};
    HRESULT hr = ::CLSIDFromProgID(progId.c_str(), &classId);
    ComPtr<IDispatch> object;
    if (SUCCEEDED(hr))
        hr = ::CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                                __uuidof(IDispatch), object.putVoid());
    if (FAILED(hr))
        throw CallError{hr, L"Could not create object named \"" + progId + L"\""};
    if (const auto client = object.query<IObjectWithSite>())
        client->SetSite(&site);
    return object;
}

}  // namespace ScriptHost
