// The one type in which bytes travel through the component.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace Corvane {

using Bytes = std::vector<std::uint8_t>;

// Shared, never copied, and not modified once it has been handed on: any thread may read it.
using SharedBytes = std::shared_ptr<Bytes>;

}  // namespace Corvane
