// A real bad access, left alone by the sanitizers: the fault itself is what the test wants.
#pragma once

inline int* volatile nowhere = nullptr;

__attribute__((noinline, no_sanitize("address", "undefined"))) inline void crash() {
  *nowhere = 1;
}
