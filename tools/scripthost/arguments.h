// WScript.Arguments.
#pragma once

#include "dispatch_object.h"

namespace ScriptHost {

// Item(index), the default member; length; Count(); and an enumerator.
class Arguments final : public DispatchObject {
public:
    explicit Arguments(std::vector<std::wstring> words);
};

}  // namespace ScriptHost
