// Data for each thread behind small integer keys, once-flags and locks. Built for one thread: locks do nothing.
#pragma once

#include "runtime/half.hpp"

namespace zent {

// The next key, counted from 1. The destructor is ignored: no thread ever ends here.
template <class Half>
long key_create(long* key, void (*destructor)(void*));

// 0, 12 without memory, 22 for a key never handed out.
template <class Half>
long set_specific(long key, void* value);

// Null when nothing is stored.
template <class Half>
void* get_specific(long key);

// Calls the procedure while the flag is 0, then sets the flag.
template <class Half>
long once(long* flag, void (*procedure)()) {
  if (*flag == 0) {
    procedure();
    *flag = 1;
  }
  return 0;
}

}  // namespace zent
