// A console host for JScript and VBScript: the command line, and one run from start to end.
#include "console.h"
#include "core/wide_text.h"
#include "engine.h"
#include "exit.h"
#include "options.h"
#include "trust.h"
#include "wscript.h"

#include <objbase.h>

#include <exception>
#include <stdexcept>

namespace ScriptHost {
namespace {

// COM on this thread, which becomes an apartment as scripts expect it.
class Apartment {
public:
    Apartment() : entered_(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() {
        if (entered_)
            ::CoUninitialize();
    }

private:
    bool entered_;
};

std::wstring fullPath(const std::wstring& path) {
    const DWORD size = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    full.resize(::GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
    return full;
}

// They stay for the process's life.
void loadLibraries(const std::vector<std::wstring>& paths, std::wstring& current) {
    for (const std::wstring& path : paths) {
        current = fullPath(path);
        if (!::LoadLibraryW(current.c_str()))
            throw std::runtime_error("the library cannot be loaded");
    }
}

// `current` is the script that an exception is about.
bool runScripts(const Options& options, std::wstring& current) {
    const std::wstring script = fullPath(options.script);
    const Language& language = languageOf(script);
    const auto site = makeObject<Site>(options.url);
    const auto host =
        makeObject<WScript>(options, script, *static_cast<IActiveScriptSite*>(site.get()), language.unset);
    site->setHostObject(host.get());

    Engine engine(language, *site);
    for (const std::wstring& include : options.includes) {
        current = fullPath(include);
        if (!engine.run(current))
            return false;
    }
    current = script;
    return engine.run(current);
}

UINT run(const std::vector<std::wstring>& words) {
    std::wstring current = L"scripthost";
    try {
        const Options options = parseOptions(words);
        if (options.help) {
            write(Stream::output, helpText);
            return 0;
        }
        current = options.script;
        if (options.timeoutSeconds > 0)
            quitAfter(options.timeoutSeconds, options.script);
        if (options.trust)
            trustSite(options.url.empty() ? plainHostAddress() : options.url);
        loadLibraries(options.libraries, current);
        const Apartment apartment;
        return runScripts(options, current) ? 0 : failedStatus;
    } catch (const std::exception& error) {
        write(Stream::error, current + L": " + Corvane::fromUtf8(error.what()) + L"\n");
        return failedStatus;
    }
}

}  // namespace
}  // namespace ScriptHost

int wmain(int count, wchar_t** words) {
    // A crash ends the process; nobody is there to answer a message box.
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    return static_cast<int>(ScriptHost::run({words + 1, words + count}));
}
