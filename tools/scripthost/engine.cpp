#include "engine.h"

#include "com/runtime/automation.h"
#include "source_file.h"

#include <cwchar>
#include <stdexcept>

namespace ScriptHost {
namespace {

void check(HRESULT hr, const char* message) {
    if (FAILED(hr))
        throw std::runtime_error(message);
}

void chooseVersion(const ComPtr<IActiveScript>& engine) {
    const auto properties = engine.query<IActiveScriptProperty>();
    if (!properties)
        return;
    VARIANT version{};
    version.vt = VT_I4;
    version.lVal = SCRIPTLANGUAGEVERSION_5_8;
    properties->SetProperty(SCRIPTPROP_INVOKEVERSIONING, nullptr, &version);
}

}  // namespace

const Language& languageOf(const std::wstring& path) {
    static constexpr Language jscript{L"JScript", true, L"undefined"};
    static constexpr Language vbscript{L"VBScript", false, L""};
    const std::size_t dot = path.find_last_of(L'.');
    const std::wstring extension = dot == std::wstring::npos ? L"" : path.substr(dot);
    if (_wcsicmp(extension.c_str(), L".js") == 0)
        return jscript;
    if (_wcsicmp(extension.c_str(), L".vbs") == 0)
        return vbscript;
    throw std::invalid_argument("a script's file name ends in .js or .vbs");
}

Engine::Engine(const Language& language, Site& site) : site_(site) {
    constexpr auto missing = "the script engine cannot be started";
    CLSID classId{};
    check(::CLSIDFromProgID(language.engine, &classId), missing);
    check(::CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IActiveScript),
                             engine_.putVoid()),
          missing);
    if (language.hasVersions)
        chooseVersion(engine_);
    parser_ = engine_.query<IActiveScriptParse>();
    check(parser_ ? parser_->InitNew() : E_NOINTERFACE, missing);
    check(engine_->SetScriptSite(&site), missing);
    check(engine_->AddNamedItem(L"WScript", SCRIPTITEM_ISVISIBLE), missing);
    check(engine_->SetScriptState(SCRIPTSTATE_CONNECTED), missing);
}

Engine::~Engine() {
    parser_.reset();
    if (engine_)
        engine_->Close();
}

bool Engine::run(const std::wstring& path) {
    const std::wstring source = readSource(path);
    const DWORD number = site_.addScript(path);
    const HRESULT hr = parser_->ParseScriptText(source.c_str(), nullptr, nullptr, nullptr, number, 0,
                                                SCRIPTTEXT_ISVISIBLE, nullptr, nullptr);
    if (FAILED(hr) && !site_.hasFailed())
        throw std::runtime_error("the script engine failed without naming an error");
    return !site_.hasFailed();
}

}  // namespace ScriptHost
