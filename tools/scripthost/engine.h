// One of the system's script engines.
#pragma once

#include "site.h"

#include <string>

namespace ScriptHost {

struct Language {
    const wchar_t* engine;  // ProgID
    bool hasVersions;       // takes a language version, without which JScript has no JSON
    const wchar_t* unset;   // how a variable without a value reads
};

// By the file's extension. Throws std::invalid_argument for one that is neither .js nor .vbs.
const Language& languageOf(const std::wstring& path);

// Runs scripts on the thread that made it, an apartment's. Closing it releases what the scripts hold.
class Engine {
public:
    // `site` must outlive the engine. Throws std::runtime_error when the system has no such engine.
    Engine(const Language& language, Site& site);
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    ~Engine();

    // Runs the file's code to its end; false when it failed, which the site has reported then. Throws
    // std::runtime_error for a file that cannot be read.
    bool run(const std::wstring& path);

private:
    Site& site_;
    ComPtr<IActiveScript> engine_;
    ComPtr<IActiveScriptParse> parser_;
};

}  // namespace ScriptHost
