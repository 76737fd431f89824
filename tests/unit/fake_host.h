// A host of the component's objects that answers as a test wants: a browser, or a program with an HTML
// window.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <functional>
#include <map>
#include <string>

namespace Corvane {

// The calls that lead from an object's site to its page.
enum class Step {
    serviceProvider,
    browserService,
    topFrameService,
    topBrowserService,
    topLevelContainer,
    window,
    document,
    htmlDocument,
    url,
    htmlWindowService,
    htmlWindow,
    location,
    href,
};

// One exists at a time.
class FakeHost {
public:
    FakeHost();
    ~FakeHost();
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;

    IUnknown* site();

    // What a step returns; S_OK where nothing stands. Only S_OK hands over a result.
    std::map<Step, HRESULT> answers;

    // Called at each step, before its answer.
    std::function<void(Step)> during = [](Step) {};

    std::wstring url;             // of the top-level browser's document
    std::wstring href;            // of the HTML window
    HWND window = nullptr;        // of the top-level browser
    bool isTopContainer = false;  // what the hosting browser says of itself
    int references = 0;           // held on all objects of the host
};

}  // namespace Corvane
