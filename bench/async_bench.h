// What an asynchronous call costs.
#pragma once

namespace bench {

// In a single-threaded apartment. The component must be registered.
void compareAsync();

}  // namespace bench
