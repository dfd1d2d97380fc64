// Makes the k-th allocation of the program's own objects fail, and counts the blocks that they hold. Link with
// -Wl,--wrap=malloc,--wrap=calloc,--wrap=realloc,--wrap=free and tests/support/failing_allocation.cpp.
#pragma once

namespace failing {

void arm(long k);    // the k-th allocation from now on fails; 0: none
bool struck();       // the armed failure came
long live_blocks();  // allocated through the wrapped functions and not freed yet

}  // namespace failing
