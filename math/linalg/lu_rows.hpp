// The solution with an LU factor as callers hold it, row-major. It is only read.
#pragma once

#include "math/linalg/lu.hpp"

namespace zent::linalg {

inline constexpr long forward_block = 64, forward_group = 8;

// Rows behind a block of steps that an interchange of the block has brought there, and what the block makes of them.
template <class T>
struct Brought {
  long count, row[forward_block];
  T value[forward_block];
};

// The sum of row[l] x[l].
template <class T>
[[gnu::always_inline]] inline T pending_sum(long n, const T* row, const T* x) {
  constexpr long lanes = 8;
  T sum{};
  long l = 0;
  if (n >= lanes) {
    T partial[lanes] = {};
    for (; l + lanes <= n; l += lanes) {
      for (long k = 0; k < lanes; ++k) partial[k] += row[l + k] * x[l + k];
    }
    for (long half = lanes / 2; half > 0; half /= 2) {
      for (long k = 0; k < half; ++k) partial[k] += partial[k + half];
    }
    sum = partial[0];
  }
  for (; l < n; ++l) sum += row[l] * x[l];
  return sum;
}

// Row i with the steps before k, of which since[i] is the first that it lacks.
template <class T>
[[gnu::always_inline]] inline T settled(long i, long k, const T* fac, long ld, const long* since, const T* x) {
  return x[i] + pending_sum(k - since[i], fac + i * ld + since[i], x + since[i]);
}

// The steps first to last - 1 on the rows that they name. A row's multipliers lie side by side, so a row waits until a step needs
// it. Those that a group of steps names get the earlier ones of the block together: only the short rest waits for each other.
template <class T>
[[gnu::always_inline]] inline void forward_steps_body(long first, long last, const T* fac, long ld, const long* pvt, long* since,
                                                      T* x, Brought<T>* brought) {
  for (long group = first; group < last; group += forward_group) {
    const long end = group + forward_group < last ? group + forward_group : last;
    for (long k = group; k < end; ++k) {
      for (const long i : {k, pvt[k] - 1}) {
        if (since[i] < first) since[i] = first;
        if (since[i] >= group) continue;
        x[i] = settled(i, group, fac, ld, since, x);
        since[i] = group;
      }
    }
    for (long k = group; k < end; ++k) {
      const long p = pvt[k] - 1;
      T own = x[k];
      for (long l = since[k]; l < k; ++l) own += fac[k * ld + l] * x[l];
      if (p != k) {
        T other = x[p];
        for (long l = since[p]; l < k; ++l) other += fac[p * ld + l] * x[l];
        x[k] = other;
        since[p] = k;
      }
      x[p] = own;
    }
  }
  brought->count = 0;
  for (long k = first; k < last; ++k) {
    const long p = pvt[k] - 1;
    if (p < last || since[p] != k) continue;  // the last step that names a row stands for it
    brought->row[brought->count] = p;
    brought->value[brought->count++] = settled(p, last, fac, ld, since, x);
  }
}
ZENT_BY_LEVEL(forward_steps,
              (long first, long last, const T* fac, long ld, const long* pvt, long* since, T* x, Brought<T>* brought),
              (first, last, fac, ld, pvt, since, x, brought))

// x := M_n-1 P_n-1 ... M_1 P_1 x, a block of steps at a time; what the block leaves to the other rows behind it is one product of
// a matrix and a vector. since: n elements of work.
template <class T>
void forward_rows(long n, const T* fac, long ld, const long* pvt, long* since, T* x) {
  std::fill(since, since + n, -1L);
  for (long first = 0; first < n; first += forward_block) {
    const long last = std::min(first + forward_block, n);
    Brought<T> brought;
    forward_steps<T>(first, last, fac, ld, pvt, since, x, &brought);
    if (last == n) break;
    fast::gemv('T', last - first, n - last, from_real<T>(1), fac + last * ld + first, ld, x + first, 1, from_real<T>(1), x + last,
               1);
    for (long c = 0; c < brought.count; ++c) x[brought.row[c]] = brought.value[c];
  }
}

// x := solution of A x = b, or of A^H x = b.
template <class Half, class T>
bool solve_row_major(long n, const T* fac, long ld, const long* pvt, const T* b, bool transposed, T* x) {
  const char* name = frame_name<T>("zent_lfsrg", "zent_dlfsrg", "l_lfscg");
  push<Half>(name);
  if (x != b) std::memmove(x, b, sizeof(T) * n);
  bool done = check_divisors<Half>(n, fac, ld);
  long* since = done && !transposed ? scratch<Half, long>(n) : nullptr;
  if (done && transposed) {
    // U^H = conj(L of the other view): conjugate, solve, conjugate back.
    for (long i = 0; i < n; ++i) x[i] = conj(x[i]);
    fast::trsv('L', 'N', 'N', n, fac, ld, x, 1);
    for (long i = 0; i < n; ++i) x[i] = conj(x[i]);
    multipliers<true>(n, fac, ld, pvt, x).backward();
  } else if (since != nullptr) {
    forward_rows(n, fac, ld, pvt, since, x);
    fast::trsv('L', 'T', 'N', n, fac, ld, x, 1);
  } else if (done) {
    raise_out_of_memory<Half>({n}, {"n"});
    done = false;
  }
  pop<Half>(name);
  return done;
}

}  // namespace zent::linalg
