// Memory behind the tags of a structure that a user may have made. An address alone does not say how much stands behind it, but
// no tag reaches into another.
#pragma once

namespace zent::binding {

struct TagSpan {
  const void* first;
  long bytes;
};

template <int n>
bool disjoint(const TagSpan (&spans)[n]) {
  for (const TagSpan& a : spans) {
    for (const TagSpan& b : spans) {
      const auto distance = reinterpret_cast<long>(b.first) - reinterpret_cast<long>(a.first);
      if (&a != &b && distance >= 0 && distance < a.bytes) return false;
    }
  }
  return true;
}

}  // namespace zent::binding
