#include "options.h"

#include <stdexcept>

namespace ScriptHost {

const wchar_t helpText[] =
    LR"(usage: scripthost [OPTION]... FILE [ARGUMENT...]

Runs a script in the system's JScript (.js) or VBScript (.vbs) engine.

  --url ADDRESS      objects find an HTML window at this address as their host; without it they
                     find a plain host, whose address is name://scripthost.exe
  --trust            adds that address to the current user's trusted sites of the component first
  --include FILE     runs this script first, in the same global scope; may be repeated
  --with FILE        loads this DLL first, which may change what scripts meet; may be repeated
  --timeout SECONDS  ends the process with status 124 after that time
  --help             prints this text

The source is UTF-8, or UTF-16 with a byte order mark; output is UTF-8. An error is printed as
"FILE(LINE, COLUMN) SOURCE: DESCRIPTION [CODE]" to the error stream and ends in status 1.
)";

namespace {

DWORD parseSeconds(const std::wstring& text) {
    constexpr std::size_t mostDigits = 6;
    if (text.empty() || text.size() > mostDigits ||
        text.find_first_not_of(L"0123456789") != std::wstring::npos)
        throw std::invalid_argument("--timeout needs a number of seconds");
    return static_cast<DWORD>(std::stoul(text));
}

}  // namespace

Options parseOptions(const std::vector<std::wstring>& words) {
    Options options;
    auto word = words.begin();
    const auto value = [&]() -> const std::wstring& {
        if (++word == words.end())
            throw std::invalid_argument("the last option lacks its value");
        return *word;
    };
    for (; word != words.end() && word->starts_with(L"--"); ++word) {
        if (*word == L"--help")
            options.help = true;
        else if (*word == L"--trust")
            options.trust = true;
        else if (*word == L"--url")
            options.url = value();
        else if (*word == L"--include")
            options.includes.push_back(value());
        else if (*word == L"--with")
            options.libraries.push_back(value());
        else if (*word == L"--timeout")
            options.timeoutSeconds = parseSeconds(value());
        else
            throw std::invalid_argument("unknown option; --help lists them");
    }
    if (word != words.end())
        options.script = *word++;
    else if (!options.help)
        throw std::invalid_argument("no script is named; --help tells more");
    options.arguments.assign(word, words.end());
    return options;
}

}  // namespace ScriptHost
