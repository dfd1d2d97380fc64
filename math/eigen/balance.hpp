// Balancing of a general matrix: eigenvalues that exchanges alone can isolate are moved to the ends of the diagonal, and a
// diagonal similarity by powers of 16 makes row and column norms of the rest alike (Parlett and Reinsch 1969).
#pragma once

#include <cmath>

#include "runtime/kernels/fast.hpp"
#include "runtime/machine.hpp"

namespace zent::eigen {

// The block [low, high] that is left to work on; outside it the matrix is triangular.
struct Block {
  long low, high;
};

// Exchanges rows and columns i and j of the column-major matrix where they can be other than zero.
template <class T>
void exchange(long n, T* a, long lda, long i, long j, Block block) {
  if (i == j) return;
  fast::swap(block.high + 1, a + i * lda, 1, a + j * lda, 1);
  fast::swap(n - block.low, a + i + block.low * lda, lda, a + j + block.low * lda, lda);
}

// scale[i] is the index that i was exchanged with outside the block, and the scale factor inside; without `scaling` that is 1.
template <class T>
Block l_e9crg(long n, T* a, long lda, kernel::RealOf<T>* scale, bool scaling = true) {
  using Real = kernel::RealOf<T>;
  Block block{0, n - 1};
  for (bool found = true; found;) {  // rows that are zero off the diagonal go to the bottom
    found = false;
    for (long i = block.high; i >= 0 && !found; --i) {
      found = true;
      for (long j = 0; j <= block.high && found; ++j) found = j == i || a[i + j * lda] == T{};
      if (!found) continue;
      scale[block.high] = static_cast<Real>(i);
      exchange(n, a, lda, i, block.high, block);
      if (block.high == 0) {  // all of it is triangular; the last one stays where it is
        scale[0] = 1;
        return {0, 0};
      }
      --block.high;
    }
  }
  for (bool found = true; found;) {  // columns that are zero off the diagonal go to the left
    found = false;
    for (long j = block.low; j <= block.high && !found; ++j) {
      found = true;
      for (long i = block.low; i <= block.high && found; ++i) found = i == j || a[i + j * lda] == T{};
      if (!found) continue;
      scale[block.low] = static_cast<Real>(j);
      exchange(n, a, lda, j, block.low, block);
      ++block.low;
    }
  }
  for (long i = block.low; i <= block.high; ++i) scale[i] = 1;
  // A factor changes a norm by 256 at most a turn of the loops, so sums near the ends of the exponent range are left alone.
  const Real limit = Machine<Real>::largest / 65536, tiny = Machine<Real>::smallest * 65536;
  for (bool changed = scaling; changed;) {
    changed = false;
    for (long i = block.low; i <= block.high; ++i) {
      Real c = 0, r = 0;
      for (long j = block.low; j <= block.high; ++j) {
        if (j == i) continue;
        c += kernel::abs1(a[j + i * lda]);
        r += kernel::abs1(a[i + j * lda]);
      }
      if (c == 0 || r == 0) continue;
      Real f = 1;
      const Real s = c + r;
      for (; c < r * Real(0.0625) && f < limit; c *= 256) f *= 16;
      for (; c >= r * 16 && f > tiny; c /= 256) f *= Real(0.0625);
      if ((c + r) / f >= Real(0.95) * s) continue;
      if (!(scale[i] * f < limit && scale[i] * f > tiny)) continue;
      scale[i] *= f;
      changed = true;
      for (long j = block.low; j < n; ++j) a[i + j * lda] = (1 / f) * a[i + j * lda];
      for (long j = 0; j <= block.high; ++j) a[j + i * lda] = f * a[j + i * lda];
    }
  }
  return block;
}

// Vectors of the balanced matrix, columns of v, become those of the matrix itself.
template <class T>
void l_e6crg(long n, Block block, const kernel::RealOf<T>* scale, long columns, T* v, long ldv) {
  for (long j = 0; j < columns; ++j) {
    for (long i = block.low; i <= block.high; ++i) v[i + j * ldv] = scale[i] * v[i + j * ldv];
  }
  for (long i = block.low - 1; i >= 0; --i) fast::swap(columns, v + i, ldv, v + static_cast<long>(scale[i]), ldv);
  for (long i = block.high + 1; i < n; ++i) fast::swap(columns, v + i, ldv, v + static_cast<long>(scale[i]), ldv);
}

}  // namespace zent::eigen
