// Large arrays that are filled once (a big table's cell store, the samples gathered for bootstrap
// pooling) ask for transparent huge pages before their memory is first touched: filling many
// megabytes otherwise takes a page fault every 4 KiB, and in a virtual machine each costs
// microseconds.
#pragma once

#include <cstddef>

// Advice only: the whole pages inside [block, block + bytes) of a block of at least 4 MiB; nothing
// on systems without the advice.
void OmPreferHugePages(const void* block, std::size_t bytes);
