// Eigenvalues of a symmetric tridiagonal matrix in an interval by bisection, and their vectors by inverse iteration.
#pragma once

#include "math/eigen/tridiagonal.hpp"
#include "math/random/saved_stream.hpp"

namespace zent::eigen {

inline constexpr long lane_count = 8;  // Sturm counts side by side: one alone waits for its divisions

template <class Real>
struct Lanes;
template <>
struct Lanes<float> {
  typedef float Values __attribute__((vector_size(4 * lane_count)));
  typedef int Counts __attribute__((vector_size(4 * lane_count)));
};
template <>
struct Lanes<double> {
  typedef double Values __attribute__((vector_size(8 * lane_count)));
  typedef long Counts __attribute__((vector_size(8 * lane_count)));
};

// How many eigenvalues are below x, for all lanes of x: the negative pivots of T - x. A pivot smaller than pivot_min stands for
// zero and is replaced by `zero`: by -pivot_min so that an eigenvalue x counts too, by pivot_min so that it does not.
template <class Real>
void sturm_counts(long n, const Real* d, const Real* e2, Real pivot_min, Real zero, const Real* x, long* count) {
  using Values = typename Lanes<Real>::Values;
  using Counts = typename Lanes<Real>::Counts;
  Values shift, q;
  for (long k = 0; k < lane_count; ++k) shift[k] = x[k];
  Counts negative = {};
  for (long i = 0; i < n; ++i) {
    q = i == 0 ? d[0] - shift : d[i] - shift - e2[i] / q;
    q = (q < pivot_min) & (q > -pivot_min) ? Values{} + zero : q;
    negative += q < 0;
  }
  for (long k = 0; k < lane_count; ++k) count[k] = -negative[k];
}

// An unreduced block of the matrix and the eigenvalues that were found in it.
struct SplitBlock {
  long first, last;          // rows
  long value_first, values;  // positions in the list of values
};

template <class Real>
struct Interval {
  Real low, high;
};

// Interval that holds the spectrum of a block, from the rows' sums of moduli.
template <class Real>
Interval<Real> gershgorin(long n, const Real* d, const Real* e) {
  Interval<Real> all = {d[0], d[0]};
  Real norm = 0;
  for (long i = 0; i < n; ++i) {
    const Real radius = (i > 0 ? std::abs(e[i - 1]) : 0) + (i < n - 1 ? std::abs(e[i]) : 0);
    all.low = std::min(all.low, d[i] - radius);
    all.high = std::max(all.high, d[i] + radius);
    norm = std::max(norm, std::abs(d[i]) + radius);
  }
  const Real margin = 2 * Machine<Real>::epsilon * static_cast<Real>(n) * norm + safe_small<Real>;
  return {all.low - margin, all.high + margin};
}

// The values with the numbers first to first + count - 1 (ascending, from 0) of a block, all within `bracket`, by bisection of
// lane_count brackets at a time.
template <class Real>
void bisect(long n, const Real* d, const Real* e2, Real pivot_min, Interval<Real> bracket, long first, long count, Real* value) {
  constexpr Real eps = Machine<Real>::epsilon;
  const Real absolute = eps / 4 * std::max(std::abs(bracket.low), std::abs(bracket.high));
  for (long done = 0; done < count; done += lane_count) {
    Real low[lane_count], high[lane_count], middle[lane_count];
    long below[lane_count];
    std::fill_n(low, lane_count, bracket.low);
    std::fill_n(high, lane_count, bracket.high);
    for (bool open = true; open;) {
      open = false;
      for (long k = 0; k < lane_count; ++k) {
        middle[k] = low[k] + (high[k] - low[k]) / 2;
        const Real size = std::max(std::abs(low[k]), std::abs(high[k]));
        const bool wide = high[k] - low[k] > std::max(absolute, eps * size) && middle[k] > low[k] && middle[k] < high[k];
        open = open || (wide && done + k < count);
      }
      if (!open) break;
      sturm_counts(n, d, e2, pivot_min, -pivot_min, middle, below);
      for (long k = 0; k < lane_count; ++k) {
        if (below[k] > first + done + k) {
          high[k] = middle[k];
        } else {
          low[k] = middle[k];
        }
      }
    }
    for (long k = 0; k < lane_count && done + k < count; ++k) value[done + k] = middle[k];
  }
}

// The eigenvalues in [elow, ehigh], block after block, ascending within a block. e2 has room for n. Returns their number, or -1
// after the warning that there are more than mxeval; *block_count tells how many blocks were split off.
template <class Half, class Real>
long l_e4bsf(long n, const Real* d, const Real* e, Real elow, Real ehigh, long mxeval, Real* value, SplitBlock* block,
             long* block_count, Real* e2) {
  constexpr Real eps = Machine<Real>::epsilon;
  const Interval<Real> whole = gershgorin(n, d, e);
  const Real negligible = eps / 2 * std::max(std::abs(whole.low), std::abs(whole.high));
  long found = 0;
  *block_count = 0;
  for (long first = 0, last = 0; first < n; first = last + 1) {
    for (last = first; last < n - 1 && !(std::abs(e[last]) <= negligible); ++last) {
    }
    const long length = last - first + 1;
    Real largest = 1;
    e2[first] = 0;
    for (long i = first + 1; i <= last; ++i) {
      e2[i] = e[i - 1] * e[i - 1];
      largest = std::max(largest, e2[i]);
    }
    const Real pivot_min = safe_small<Real> * largest;
    const Interval<Real> all = gershgorin(length, d + first, e + first);
    const Real ends[lane_count] = {elow, ehigh};  // both belong to the interval
    long below[lane_count], count[lane_count];
    sturm_counts(length, d + first, e2 + first, pivot_min, pivot_min, ends, below);
    sturm_counts(length, d + first, e2 + first, pivot_min, -pivot_min, ends, count);
    const long inside = length > 1 ? count[1] - below[0] : d[first] >= elow && d[first] <= ehigh;
    if (inside < 1) continue;
    if (found + inside > mxeval) {
      raise<Half>(3, MATH_NO_EIGENVALUES_RETURNED, {.i = {mxeval}});
      return -1;
    }
    block[(*block_count)++] = {first, last, found, inside};
    if (length == 1) {
      value[found] = d[first];
    } else {
      bisect(length, d + first, e2 + first, pivot_min, {std::max(all.low, elow), std::min(all.high, ehigh)}, below[0], inside,
             value + found);
    }
    found += inside;
  }
  return found;
}

// Factors of T - x with exchanges of neighbouring rows: three diagonals of U, the multipliers, and where rows were exchanged.
template <class Real>
struct ShiftedFactors {
  Real *u0, *u1, *u2, *multiplier;
  bool* exchanged;

  void factor(long n, const Real* d, const Real* e, Real x, Real tiny) const {
    Real pivot = d[0] - x, next = n > 1 ? e[0] : 0;
    for (long i = 0; i < n - 1; ++i) {
      const Real below = d[i + 1] - x, beyond = i < n - 2 ? e[i + 1] : 0;
      exchanged[i] = std::abs(e[i]) > std::abs(pivot);
      if (exchanged[i]) {
        u0[i] = e[i];
        u1[i] = below;
        u2[i] = beyond;
        multiplier[i] = pivot / e[i];
        pivot = next - multiplier[i] * below;
        next = -multiplier[i] * beyond;
      } else {
        if (std::abs(pivot) < tiny) pivot = pivot < 0 ? -tiny : tiny;
        u0[i] = pivot;
        u1[i] = next;
        u2[i] = 0;
        multiplier[i] = e[i] / pivot;
        pivot = below - multiplier[i] * next;
        next = beyond;
      }
    }
    u0[n - 1] = std::abs(pivot) < tiny ? (pivot < 0 ? -tiny : tiny) : pivot;
  }
  void solve(long n, Real* y) const {
    for (long i = 0; i < n - 1; ++i) {
      if (exchanged[i]) std::swap(y[i], y[i + 1]);
      y[i + 1] -= multiplier[i] * y[i];
    }
    for (long i = n - 1; i >= 0; --i) {
      Real sum = y[i];
      if (i < n - 1) sum -= u1[i] * y[i + 1];
      if (i < n - 2) sum -= u2[i] * y[i + 2];
      y[i] = sum / u0[i];
    }
  }
};

// Takes out of y its parts along the `count` columns of z, twice, so that the rest is orthogonal to them also when little is
// left.
template <class Real>
void orthogonalise(long n, long count, const Real* z, long ldz, Real* product, Real* y) {
  for (long pass = 0; count > 0 && pass < 2; ++pass) {
    fast::gemv('T', n, count, 1, z, ldz, y, 1, 0, product, 1);
    fast::gemv('N', n, count, -1, z, ldz, product, 1, 1, y, 1);
  }
}

// Largest component of (T - x) z.
template <class Real>
Real tridiagonal_residual(long n, const Real* d, const Real* e, Real x, const Real* z) {
  Real largest = 0;
  for (long i = 0; i < n; ++i) {
    Real sum = (d[i] - x) * z[i];
    if (i > 0) sum += e[i - 1] * z[i - 1];
    if (i < n - 1) sum += e[i] * z[i + 1];
    largest = std::max(largest, std::abs(sum));
  }
  return largest;
}

// Largest product of two of the columns.
template <class Real>
Real orthogonality(long n, long count, const Real* z, long ldz, Real* product) {
  Real largest = 0;
  for (long j = 1; j < count; ++j) {
    fast::gemv('T', n, j, 1, z, ldz, z + j * ldz, 1, 0, product, 1);
    for (long i = 0; i < j; ++i) largest = std::max(largest, std::abs(product[i]));
  }
  return largest;
}

// One vector: iterates from random values until the solution has grown as it must, and twice more. z: the earlier vectors of the
// group stand in the columns before it.
template <class Half, class Real>
bool inverse_iteration(long n, const Real* d, const Real* e, Real norm, Real x, long group, const ShiftedFactors<Real>& factors,
                       Real* product, Real* z, long ldz) {
  constexpr Real eps = Machine<Real>::epsilon;
  constexpr long most_steps = 5, further_steps = 2;
  if (!uniform::fill<Half>(n, z)) return false;
  for (long i = 0; i < n; ++i) z[i] = 2 * z[i] - 1;
  factors.factor(n, d, e, x, eps * norm);
  const Real enough = std::sqrt(Real(0.1) / static_cast<Real>(n));
  for (long step = 0, grown = 0; step < most_steps && grown <= further_steps; ++step) {
    const Real last = std::abs(factors.u0[n - 1]);
    fast::scal(n, static_cast<Real>(n) * norm * std::max(eps, last / norm) / kernel::asum(n, z, 1), z, 1);
    factors.solve(n, z);
    orthogonalise(n, group, z - group * ldz, ldz, product, z);
    const Real size = std::abs(z[fast::iamax(n, z, 1) - 1]);
    if (!(size > 0)) break;
    if (size >= enough) ++grown;
    if (size > 1 / eps) fast::scal(n, 1 / size, z, 1);
  }
  fast::scal(n, 1 / fast::nrm2(n, z, 1), z, 1);
  return true;
}

// What inverse iteration found wrong: the position of a vector whose residual is too great, or -1.
struct IterationFaults {
  long slow;
  bool not_orthogonal;
};

// Vectors of one block in its rows of z; the other rows of these columns are 0 already.
template <class Half, class Real>
bool block_vectors(const SplitBlock& block, const Real* d, const Real* e, const Real* value, const ShiftedFactors<Real>& factors,
                   Real* product, Real* z, long ldz, IterationFaults& faults) {
  constexpr Real eps = Machine<Real>::epsilon;
  const long n = block.last - block.first + 1;
  d += block.first;
  e += block.first;
  z += block.first + block.value_first * ldz;
  value += block.value_first;
  const Interval<Real> all = gershgorin(n, d, e);
  const Real norm = std::max(std::abs(all.low), std::abs(all.high));
  const Real close = norm / 10;  // values nearer than this have their vectors orthogonalised
  Real shift = 0;
  for (long j = 0, group = 0; j < block.values; ++j) {
    Real* column = z + j * ldz;
    if (n == 1) {
      column[0] = 1;
      continue;
    }
    const Real distance = 10 * eps * std::max(std::abs(value[j]), eps * norm);
    shift = j > 0 && value[j] - shift < distance ? shift + distance : value[j];
    group = j > 0 && value[j] - value[j - 1] < close ? group + 1 : 0;
    if (!inverse_iteration<Half>(n, d, e, norm, shift, group, factors, product, column, ldz)) return false;
    if (!(tridiagonal_residual(n, d, e, value[j], column) <= std::sqrt(eps) * norm)) faults.slow = block.value_first + j;
    if (group > 0 && !(orthogonality(n, 2, column - ldz, ldz, product) <= std::sqrt(eps))) faults.not_orthogonal = true;
  }
  return true;
}

// Vectors of the values that l_e4bsf gave, into the n by found matrix z. The stream that the start vectors come from is put back.
// False without memory.
template <class Half, class Real>
bool l_e6esf(long n, const Real* d, const Real* e, long found, const Real* value, const SplitBlock* block, long block_count,
             Real* z, long ldz, IterationFaults& faults) {
  void* mark = scratch_mark<Half>();
  Real* work = scratch<Half, Real>(5 * n);
  bool* exchanged = scratch<Half, bool>(n);
  bool enough = work != nullptr && exchanged != nullptr;
  uniform::SavedStream<Real> stream;
  if (enough && uniform::save_stream<Half>(stream)) {
    uniform::l_random_seed_set<Half>(123457);
    const ShiftedFactors<Real> factors = {work, work + n, work + 2 * n, work + 3 * n, exchanged};
    for (long j = 0; j < found; ++j) std::fill_n(z + j * ldz, n, Real(0));
    for (long k = 0; enough && k < block_count; ++k) {
      enough = block_vectors<Half>(block[k], d, e, value, factors, work + 4 * n, z, ldz, faults);
    }
    uniform::restore_stream<Half>(stream);
  } else {
    enough = false;
  }
  scratch_release<Half>(mark);
  return enough;
}

}  // namespace zent::eigen
