// WScript.StdOut and WScript.StdErr.
#pragma once

#include "console.h"
#include "dispatch_object.h"

namespace ScriptHost {

// Methods: Write(text), WriteLine([text]).
class OutputStream final : public DispatchObject {
public:
    explicit OutputStream(Stream stream);
};

}  // namespace ScriptHost
