// The memory that operations on streams take.
#pragma once

namespace bench {

// Prints a line for each operation on 1 GiB: the most memory the process held above what it held before.
void printPeakMemory();

}  // namespace bench
