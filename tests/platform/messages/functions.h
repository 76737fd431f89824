// The functions that stand in for those of crypt32.
#pragma once

#include <span>
#include <string_view>

namespace Corvane::Platform::Messages {

struct Replacement {
    std::string_view name;
    void* function;
};
std::span<const Replacement> replacements();

}  // namespace Corvane::Platform::Messages
