// Asynchronous calls beside their bare steps.
#pragma once

namespace bench {

// Prints how an asynchronous call compares with its bare steps. COM is initialised, the component registered.
void compareAsync();

}  // namespace bench
