// Which page, or which program, an object lives in: told by the site that the host gives the object.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <optional>
#include <string>

namespace Corvane::Com {

struct HostingPage {
    std::wstring url;           // address of the outermost document, or "name://" and the host's file name
    HWND mainWindow = nullptr;  // the browser's; null when the host is no browser
};

// Follows `site` to the page. In a browser that is the document of the top-level browser, so that a page
// shown in a frame has the address of the page around it. Returns nothing when the host is no browser and
// its file name cannot be read. Throws ComException when a call of the host fails, and Exception when one
// succeeds without a result or `site` is null; their descriptors name the step and have the code 0.
std::optional<HostingPage> findHostingPage(IUnknown* site);

}  // namespace Corvane::Com
