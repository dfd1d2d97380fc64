// A window that slides along a band matrix. Band storage with leading dimension ld is dense storage with leading dimension ld -
// 1, as far as its rows reach; with enough spare rows every block that a blocked factorization touches is an ordinary matrix, and
// the matrix kernels serve it without special cases at its slanted edges.
#pragma once

#include <cstring>

#include "runtime/half.hpp"
#include "runtime/scratch.hpp"

namespace zent::band {

template <class T>
struct Window {
  T* storage;
  long above, rows;  // the diagonal stands in row `above` of `rows`
  long capacity;     // columns
  long first, last;  // columns of the matrix that are in it: first to last - 1

  long dense_ld() const {
    return rows - 1;
  }
  T* at(long i, long j) const {
    return storage + (i - j + above) + (j - first) * rows;
  }
  // Drops the columns before `column`, which then leave room for others.
  void drop_before(long column) {
    std::memmove(storage, storage + (column - first) * rows, static_cast<std::size_t>((last - column) * rows) * sizeof(T));
    first = column;
  }
};

// The work memory of a window; storage is null when there is none.
template <class T>
Window<T> window(long above, long below, long columns, long n) {
  const long rows = above + below + 1;
  const long spare = 4 * columns;  // the more, the rarer the moves
  const long capacity = columns + spare < n ? columns + spare : n;
  long count = 0;
  if (__builtin_mul_overflow(rows, capacity, &count)) return {};
  return {.storage = scratch<Math, T>(count), .above = above, .rows = rows, .capacity = capacity, .first = 0, .last = 0};
}

}  // namespace zent::band
