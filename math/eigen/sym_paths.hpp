// The paths to the eigenvalues and vectors of a scaled symmetric or Hermitian matrix: all or those of a range, with vectors or
// without. One template over the element type; the values are real.
#pragma once

#include "math/eigen/sym_reduction.hpp"
#include "math/eigen/tridiagonal.hpp"
#include "math/eigen/tridiagonal_range.hpp"

namespace zent::eigen {

// The triangle's largest modulus (of real and imaginary parts, so that it cannot overflow); infinite when not all are finite.
template <class T>
RealOf<T> largest_modulus(long n, const T* a, long lda) {
  using Real = RealOf<T>;
  Real largest = 0;
  bool finite = true;
  const auto look = [&](Real x) {
    largest = std::max(largest, std::abs(x));
    finite = finite && std::abs(x) <= Machine<Real>::largest;
  };
  for (long j = 0; j < n; ++j) {
    for (long i = j; i < n; ++i) {
      const T x = a[i + j * lda];
      if constexpr (kernel::ComplexRecord<T>) {
        look(x.re);
        look(x.im);
      } else {
        look(x);
      }
    }
  }
  return finite ? largest : Machine<Real>::infinity;
}

// Power of two by which the matrix is multiplied so that its largest modulus comes near 1.
template <class Real>
Real scale_factor(Real largest) {
  const int k = largest == Real(2147483647) ? 1 : static_cast<int>(std::abs(std::log2(largest)));
  constexpr int most = std::is_same_v<Real, float> ? 126 : 1022;
  return std::ldexp(Real(1), largest >= 1 ? -std::min(k, most) : std::min(k, most));
}

// A column-major lower triangle and the arrays of its reduction.
template <class T>
struct Problem {
  using Real = RealOf<T>;
  long n;
  T* a;
  long lda;
  Real *d, *e;
  T* tau;
  Real scale;   // eigenvalues of the matrix are `scale` times those of the tridiagonal one; 0: the matrix is 0
  bool finite;  // false: there is nothing to compute
};

// Elements of an n by n array, or -1, which no allocation grants, when that overflows.
inline long square(long n) {
  long size = 0;
  return __builtin_mul_overflow(n, n, &size) ? -1 : size;
}

template <class Half, class T>
bool make_problem(long n, T* a, long lda, Problem<T>& problem) {
  using Real = RealOf<T>;
  problem = {n, a, lda, scratch<Half, Real>(n), scratch<Half, Real>(n), scratch<Half, T>(n), 1, true};
  return problem.d && problem.e && problem.tau;
}

// Scales the triangle and reduces it. False without memory.
template <class Half, class T>
bool l_e6csf(Problem<T>& p) {
  using Real = RealOf<T>;
  const Real largest = largest_modulus(p.n, p.a, p.lda);
  p.finite = largest <= Machine<Real>::largest;
  p.scale = largest == 0 ? 0 : 1;
  if (!p.finite || largest == 0) return true;
  if (p.n > 1) {
    const Real factor = scale_factor(largest);
    p.scale = 1 / factor;
    for (long j = 0; j < p.n && factor != 1; ++j) fast::scal(p.n - j, factor, p.a + j * (p.lda + 1), 1);
  }
  return reduce<Half>(p.n, p.a, p.lda, p.d, p.e, p.tau);
}

// Eigenvalues of the scaled matrix in ascending order over d.
template <class Half, class T>
bool scaled_values(Problem<T>& p) {
  using Real = RealOf<T>;
  if (!l_e6csf<Half>(p)) return false;
  if (!p.finite || p.scale == 0) {
    if (!p.finite) report_slow<Half>(0);
    std::fill_n(p.d, p.n, p.finite ? Real(0) : Machine<Real>::not_a_number);
    return true;
  }
  return tridiagonal_values<Half>(p.n, p.d, p.e);
}

// All values in decreasing order.
template <class Half, class T>
bool l_e4lsf(Problem<T>& p, RealOf<T>* eval) {
  if (!scaled_values<Half>(p)) return false;
  for (long i = 0; i < p.n; ++i) eval[i] = p.scale == 0 || !p.finite ? p.d[p.n - 1 - i] : p.scale * p.d[p.n - 1 - i];
  return true;
}

// The values in [elow, ehigh] in decreasing order.
template <class Half, class T>
bool l_e5bsf(Problem<T>& p, RealOf<T> elow, RealOf<T> ehigh, RealOf<T>* eval, long* neval) {
  if (!scaled_values<Half>(p)) return false;
  *neval = 0;
  if (!p.finite) return true;
  const RealOf<T> scale = p.scale == 0 ? 1 : p.scale;
  for (long i = p.n - 1; i >= 0; --i) {
    if (p.d[i] >= elow / scale && p.d[i] <= ehigh / scale) eval[(*neval)++] = scale * p.d[i];
  }
  return true;
}

// Positions of the values by decreasing magnitude; of two that differ in sign only the positive one comes first. `key` is work.
template <class Half, class Real>
void order_by_magnitude(long n, const Real* value, Real* key, long* order) {
  for (long i = 0; i < n; ++i) {
    key[i] = -value[i];
    order[i] = i;
  }
  kernel::sort_with_index<Half, Real>(n, key, key, order);
  for (long i = 0; i < n; ++i) key[i] = -std::abs(key[i]);
  kernel::sort_with_index<Half, Real>(n, key, key, order);
}

// All values, unsorted over d, and their vectors in v, n by n. A matrix that is not finite gives not-a-numbers.
template <class Half, class T>
bool unsorted_vectors(Problem<T>& p, T* v, long ldv) {
  using Real = RealOf<T>;
  constexpr long parts = sizeof(T) / sizeof(Real);
  if (!l_e6csf<Half>(p)) return false;
  for (long j = 0; j < p.n; ++j) {
    std::fill_n(v + j * ldv, p.n, p.finite ? T{} : from_real<T>(Machine<Real>::not_a_number));
    if (p.finite) v[j + j * ldv] = from_real<T>(1);
  }
  if (!p.finite || p.scale == 0) {
    if (!p.finite) report_slow<Half>(0);
    std::fill_n(p.d, p.n, p.finite ? Real(0) : Machine<Real>::not_a_number);
    return true;
  }
  if (!apply_reflections<Half>(p.n, p.a, p.lda, p.tau, p.n, v, ldv, true)) return false;
  // The rotations are real: a complex column is a real one of twice the length.
  if (!tridiagonal_vectors<Half, Real>(p.n, p.d, p.e, parts * p.n, reinterpret_cast<Real*>(v), parts * ldv)) return false;
  for (long i = 0; i < p.n; ++i) p.d[i] = p.scale * p.d[i];
  return true;
}

// Factor of modulus 1 that makes the largest component of a vector real and positive; its position goes to *index.
template <class T>
T phase(long n, const T* v, long* index) {
  if constexpr (kernel::ComplexRecord<T>) {
    using Real = RealOf<T>;
    Real largest = 0;
    *index = 0;
    for (long i = 0; i < n; ++i) {
      const Real size = v[i].re * v[i].re + v[i].im * v[i].im;
      if (size > largest) {
        largest = size;
        *index = i;
      }
    }
    const T top = v[*index];
    const Real modulus = std::hypot(top.re, top.im);
    if (!(modulus > 0)) return {1, 0};
    return {top.re / modulus, -top.im / modulus};
  } else {
    *index = fast::iamax(n, v, 1) - 1;
    return v[*index] < 0 ? T(-1) : T(1);
  }
}

// Fixes the sign or phase of every column.
template <class T>
void turn_vectors(long n, long count, T* v, long ldv) {
  for (long j = 0; j < count; ++j) {
    T* column = v + j * ldv;
    long top = 0;
    const T factor = phase(n, column, &top);
    if (!(factor == from_real<T>(1))) fast::scal(n, factor, column, 1);
    if constexpr (kernel::ComplexRecord<T>) column[top].im = 0 * column[top].re;
  }
}

// Columns order[0], order[1], ... of v as the columns of a row-major matrix, in tiles that stay in the cache.
template <class T>
void store_vectors(long n, long count, const T* v, long ldv, const long* order, T* out, long ldo) {
  constexpr long tile = 16;
  for (long j = 0; j < count; j += tile) {
    const long columns = std::min(tile, count - j);
    const T* source[tile];
    for (long k = 0; k < columns; ++k) source[k] = v + order[j + k] * ldv;
    for (long i = 0; i < n; ++i) {
      for (long k = 0; k < columns; ++k) out[i * ldo + j + k] = source[k][i];
    }
  }
}

// All values by decreasing magnitude, and all vectors into the row-major array evec. False without memory.
template <class Half, class T>
bool l_e5csf(Problem<T>& p, RealOf<T>* eval, T* evec, long ldevec) {
  using Real = RealOf<T>;
  T* v = scratch<Half, T>(p.n * p.n);
  long* order = scratch<Half, long>(p.n);
  Real* key = scratch<Half, Real>(p.n);
  if (!v || !order || !key || !unsorted_vectors<Half>(p, v, p.n)) return false;
  order_by_magnitude<Half>(p.n, p.d, key, order);
  for (long i = 0; i < p.n; ++i) eval[i] = p.d[order[i]];
  turn_vectors(p.n, p.n, v, p.n);
  store_vectors(p.n, p.n, v, p.n, order, evec, ldevec);
  return true;
}

// What the range path asks of its arguments, whoever calls it.
template <class Half, class Real>
void check_range(long n, long lda, long mxeval, Real elow, Real ehigh, long ldevec) {
  if (n < 1) {
    raise<Half>(5, MATH_MATRIX_ORDER_TOO_SMALL, {.i = {n}});
  } else if (lda < n) {
    raise<Half>(5, MATH_LDA_VALUE_TOO_SMALL, {.i = {lda, n}});
  } else if (mxeval > n) {
    raise<Half>(5, MATH_NUMBER_MAX_EIGENVALUES, {.i = {mxeval, n}});
  } else if (!(elow < ehigh)) {
    raise<Half>(5, MATH_NEED_ELOW_LESS_THAN_EHIGH, {.r = {static_cast<double>(elow), static_cast<double>(ehigh)}});
  } else if (ldevec < n) {
    raise<Half>(5, MATH_LDEVEC_VALUE_TOO_SMALL, {.i = {ldevec, n}});
  }
}

// Values and vectors of a range as they are found: in blocks, vectors unturned in the columns of v.
template <class Half, class T>
bool range_vectors(Problem<T>& p, RealOf<T> elow, RealOf<T> ehigh, long mxeval, RealOf<T>* value, T** v, long* found,
                   IterationFaults& faults) {
  using Real = RealOf<T>;
  SplitBlock* block = scratch<Half, SplitBlock>(p.n);
  Real* e2 = scratch<Half, Real>(p.n);
  long block_count = 0;
  if (!block || !e2) return false;
  *found = l_e4bsf<Half>(p.n, p.d, p.e, elow, ehigh, mxeval, value, block, &block_count, e2);
  if (*found < 0) *found = 0;
  *v = scratch<Half, T>(p.n * *found);
  Real* z = kernel::ComplexRecord<T> ? scratch<Half, Real>(p.n * *found) : reinterpret_cast<Real*>(*v);
  if (!*v || !z || !l_e6esf<Half>(p.n, p.d, p.e, *found, value, block, block_count, z, p.n, faults)) return false;
  if constexpr (kernel::ComplexRecord<T>) {
    for (long k = 0; k < p.n * *found; ++k) (*v)[k] = from_real<T>(z[k]);
  }
  return *found == 0 || apply_reflections<Half>(p.n, p.a, p.lda, p.tau, *found, *v, p.n, false);
}

// The values in [elow, ehigh] by decreasing magnitude, and their vectors as an n by *neval row-major array that the caller of the
// library will own. False without memory.
template <class Half, class T>
bool l_e3fsf(Problem<T>& p, RealOf<T> elow, RealOf<T> ehigh, long mxeval, RealOf<T>* eval, long* neval, T** evec) {
  using Real = RealOf<T>;
  *neval = 0;
  if (!l_e6csf<Half>(p)) return false;
  if (!p.finite) report_slow<Half>(0);
  if (p.finite && p.scale == 0) {  // bisection finds these values and unit vectors as it finds others
    std::fill_n(p.d, p.n, Real(0));
    std::fill_n(p.e, p.n, Real(0));
    std::fill_n(p.tau, p.n, T{});
    p.scale = 1;
  }
  Real* value = scratch<Half, Real>(2 * p.n);
  long* order = scratch<Half, long>(2 * p.n);
  T* v = nullptr;
  long found = 0;
  IterationFaults faults = {-1, false};
  if (!value || !order) return false;
  if (p.finite && !range_vectors<Half>(p, elow / p.scale, ehigh / p.scale, mxeval, value, &v, &found, faults)) return false;
  *evec = result<Half, T>(p.n * found);
  if (*evec == nullptr) return false;
  order_by_magnitude<Half>(found, value, value + p.n, order);
  for (long i = 0; i < found; ++i) {
    eval[i] = p.scale * value[order[i]];
    if (order[i] == faults.slow) faults.slow = p.n + i;
  }
  turn_vectors(p.n, found, v, p.n);
  store_vectors(p.n, found, v, p.n, order, *evec, found);
  *neval = found;
  if (faults.slow >= 0) raise<Half>(3, MATH_SLOW_CONVERGENCE_2, {.i = {faults.slow - p.n}});
  if (faults.not_orthogonal) raise<Half>(3, MATH_LOST_ORTHOGONALITY_2);
  return true;
}

}  // namespace zent::eigen
