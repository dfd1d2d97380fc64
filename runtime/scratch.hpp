// Work memory that belongs to the call. The envelope of the public function frees it when the frame ends, also when a signal or
// a host error jumped over the workers, so a worker holds plain pointers and no cleanup code.
#pragma once

#include <cstddef>

#include "runtime/half.hpp"

namespace zent {

// Uninitialised bytes aligned for any vector type; null when the system has none left or the size overflows. zero: all bytes 0.
template <class Half>
void* scratch_bytes(long count, std::size_t size, bool zero);

// A block from the system allocator that the caller of the library may own: freed like scratch unless kept.
template <class Half>
void* result_bytes(long count, std::size_t size);

// Hands a result over to the caller of the library. Null is allowed.
template <class Half>
void keep(void* result);

// The newest block, and the return to an earlier one: frees what came after, results not kept included.
template <class Half>
struct ScratchStorage {
  static void* newest;
};
extern template void* ScratchStorage<Math>::newest;
extern template void* ScratchStorage<Stat>::newest;
template <class Half>
inline constexpr void*& scratch_newest = ScratchStorage<Half>::newest;
template <class Half>
inline void* scratch_mark() {
  return scratch_newest<Half>;
}
template <class Half>
void scratch_release(void* mark);

template <class Half, class T>
T* scratch(long n) {
  return static_cast<T*>(scratch_bytes<Half>(n, sizeof(T), false));
}
template <class Half, class T>
T* scratch_zero(long n) {
  return static_cast<T*>(scratch_bytes<Half>(n, sizeof(T), true));
}
template <class Half, class T>
T* result(long n) {
  return static_cast<T*>(result_bytes<Half>(n, sizeof(T)));
}

}  // namespace zent
