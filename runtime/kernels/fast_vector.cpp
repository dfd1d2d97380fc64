// Matrix-vector primitives over the loops of the level in use.
#include "runtime/kernels/fast.hpp"

namespace zent::fast {
namespace {

using kernel::conj;
using kernel::is_flag;
using kernel::op_of;
using kernel::Strided;

// Two vectors can be gathered at a time; the buffer is that of the products, which never run meanwhile.
constexpr long gather_bytes = pack_b_bytes / 2;

// The contiguous copy of a strided vector, the vector itself when it is contiguous, or null when it is too long to be copied.
template <class T>
const T* gather(int slot, long n, const T* x, long inc) {
  if (inc == 1 || n < 1) return x;
  if (n > gather_bytes / static_cast<long>(sizeof(T))) return nullptr;
  T* copy = reinterpret_cast<T*>(pack_b + slot * gather_bytes);
  const Strided from(n, x, inc);
  for (long i = 0; i < n; ++i) copy[i] = from[i];
  return copy;
}
template <class T>
T* gather(int slot, long n, T* x, long inc) {
  return const_cast<T*>(gather(slot, n, const_cast<const T*>(x), inc));
}
template <class T>
void scatter(long n, const T* copy, T* x, long inc) {
  if (inc == 1) return;
  const Strided to(n, x, inc);
  for (long i = 0; i < n; ++i) to[i] = copy[i];
}

// Columns whose factors are put together on the stack.
constexpr long column_chunk = 64;

template <class T>
void scale_vector(long n, T beta, T* y, long incy) {
  if (beta == kernel::from_real<T>(1)) return;
  if (beta == T{}) return kernel::scale_or_clear(n, beta, Strided<T>(n, y, incy));
  scal(n, beta, y, std::abs(incy));
}

}  // namespace

template <class T>
void gemv(char trans, long m, long n, Scalar<T> alpha, const T* a, long lda, const T* x, long incx, Scalar<T> beta, T* y,
          long incy) {
  if (m < 1 || n < 1) return;
  const Op op = op_of<T>(trans);
  const bool plain = op == Op::none;
  scale_vector(plain ? m : n, T{beta}, y, incy);
  if (alpha == T{}) return;
  const T one = kernel::from_real<T>(1);
  T work[column_chunk];
  if (plain) {
    T* v = gather(0, m, y, incy);
    if (v == nullptr) return kernel::gemv(trans, m, n, alpha, a, lda, x, incx, one, y, incy);
    const Strided u(n, x, incx);
    for (long j = 0; j < n; j += column_chunk) {
      const long count = std::min(column_chunk, n - j);
      for (long i = 0; i < count; ++i) work[i] = alpha * u[j + i];
      kernels<T>().add_columns(m, count, a + j * lda, lda, work, v);
    }
    scatter(m, v, y, incy);
  } else {
    const T* u = gather(0, m, x, incx);
    if (u == nullptr) return kernel::gemv(trans, m, n, alpha, a, lda, x, incx, one, y, incy);
    const Strided v(n, y, incy);
    for (long j = 0; j < n; j += column_chunk) {
      const long count = std::min(column_chunk, n - j);
      kernels<T>().dot_columns(op == Op::conjugate, m, count, a + j * lda, lda, u, work);
      for (long i = 0; i < count; ++i) v[j + i] += alpha * work[i];
    }
  }
}

template <class T>
void symv(char uplo, long n, Scalar<T> alpha, const T* a, long lda, const T* x, long incx, Scalar<T> beta, T* y, long incy) {
  constexpr long group = 8;
  if (n < 1) return;
  scale_vector(n, T{beta}, y, incy);
  if (alpha == T{}) return;
  if (n + padding > gather_bytes / static_cast<long>(sizeof(T))) {
    return kernel::symv(uplo, n, alpha, a, lda, x, incx, kernel::from_real<T>(1), y, incy);
  }
  T* u = reinterpret_cast<T*>(pack_b);
  T* sum = reinterpret_cast<T*>(pack_b + gather_bytes);
  copy(n, x, incx, u, 1);
  std::fill_n(u + n, padding, T{});
  std::fill_n(sum, n + padding, T{});
  const bool upper = is_flag(uplo, 'U');
  // Columns come in the order in which those that are done have no more rows in common with the diagonal of those to come.
  const long groups = (n + group - 1) / group;
  for (long step = 0; step < groups; ++step) {
    const long j = (upper ? groups - 1 - step : step) * group, count = std::min(group, n - j);
    T factors[group], sums[group];
    for (long i = 0; i < count; ++i) factors[i] = alpha * u[j + i];
    kernels<T>().mirror_columns(upper, n, j, count, a, lda, factors, u, sum, sums);
    for (long i = 0; i < count; ++i) {
      sum[j + i] += alpha * sums[i] + kernel::real(a[(j + i) * (lda + 1)]) * factors[i];
    }
  }
  axpy(n, kernel::from_real<T>(1), sum, 1, y, incy);
}

namespace {

template <class T>
void add_outer_product(bool conjugate, long m, long n, T alpha, const T* x, long incx, const T* y, long incy, T* a, long lda) {
  if (m < 1 || n < 1 || alpha == T{}) return;
  const T* u = gather(0, m, x, incx);
  if (u == nullptr) {
    return conjugate ? kernel::gerc(m, n, alpha, x, incx, y, incy, a, lda) : kernel::geru(m, n, alpha, x, incx, y, incy, a, lda);
  }
  const Strided v(n, y, incy);
  T factors[column_chunk];
  for (long j = 0; j < n; j += column_chunk) {
    const long count = std::min(column_chunk, n - j);
    for (long i = 0; i < count; ++i) factors[i] = alpha * kernel::conj_if(conjugate, v[j + i]);
    kernels<T>().add_outer(m, count, u, factors, a + j * lda, lda);
  }
}

}  // namespace

template <class T>
void geru(long m, long n, Scalar<T> alpha, const T* x, long incx, const T* y, long incy, T* a, long lda) {
  add_outer_product<T>(false, m, n, alpha, x, incx, y, incy, a, lda);
}
template <class T>
void gerc(long m, long n, Scalar<T> alpha, const T* x, long incx, const T* y, long incy, T* a, long lda) {
  add_outer_product<T>(true, m, n, alpha, x, incx, y, incy, a, lda);
}

template <class T>
void syr(char uplo, long n, RealOf<T> alpha, const T* x, long incx, T* a, long lda) {
  if (n < 1 || alpha == 0) return;
  const T* u = gather(0, n, x, incx);
  if (u == nullptr) return kernel::syr(uplo, n, alpha, x, incx, a, lda);
  const bool upper = is_flag(uplo, 'U');
  for (long j = 0; j < n; ++j) {
    const long first = upper ? 0 : j, length = upper ? j + 1 : n - j;
    T* column = a + first + j * lda;
    kernels<T>().axpy(length, alpha * conj(u[j]), u + first, column);
    a[j + j * lda] = kernel::from_real<T>(kernel::real(a[j + j * lda]));
  }
}

template <class T>
void syr2(char uplo, long n, Scalar<T> alpha, const T* x, long incx, const T* y, long incy, T* a, long lda) {
  if (n < 1 || alpha == T{}) return;
  const T* u = gather(0, n, x, incx);
  const T* v = gather(1, n, y, incy);
  if (u == nullptr || v == nullptr) return kernel::syr2(uplo, n, alpha, x, incx, y, incy, a, lda);
  const bool upper = is_flag(uplo, 'U');
  for (long j = 0; j < n; ++j) {
    const long first = upper ? 0 : j, length = upper ? j + 1 : n - j;
    T* column = a + first + j * lda;
    kernels<T>().axpy(length, alpha * conj(v[j]), u + first, column);
    kernels<T>().axpy(length, conj(alpha * u[j]), v + first, column);
    a[j + j * lda] = kernel::from_real<T>(kernel::real(a[j + j * lda]));
  }
}

namespace {

constexpr long solve_group = substitute_order;

// Takes a solved group of unknowns out of the others. An unknown that is 0 takes nothing away, whatever its column holds.
template <class T>
void eliminate(long length, long count, const T* block, long lda, const T* solved, T* rest) {
  T factors[solve_group];
  bool zeros = false;
  for (long i = 0; i < count; ++i) {
    factors[i] = -solved[i];
    zeros |= solved[i] == T{};
  }
  if (!zeros) return kernels<T>().add_columns(length, count, block, lda, factors, rest);
  for (long i = 0; i < count; ++i) {
    if (!(solved[i] == T{})) kernels<T>().axpy(length, factors[i], block + i * lda, rest);
  }
}

// The triangle of a whole group on the diagonal at `a`. Backwards the unknowns come in the order 7, 6, ..., 0.
template <class T>
void solve_diagonal_group(Op op, bool backward, bool unit, const T* a, long lda, T* x) {
  constexpr long last = substitute_order - 1;
  const long from = backward ? last : 0, sign = backward ? -1 : 1;
  const long row = sign * (op == Op::none ? 1 : lda), column = sign * (op == Op::none ? lda : 1);
  Divisor<RealOf<T>> divisors[substitute_order];
  for (long i = 0; i <= last && !unit; ++i) {
    const long at = from + sign * i;
    divisors[i] = divisor(kernel::conj_if(op == Op::conjugate, a[at + at * lda]));
  }
  kernels<T>().substitute(op == Op::conjugate, op == Op::none, a + from * (lda + 1), row, column, unit ? nullptr : divisors,
                          x + from, sign);
}

}  // namespace

template <class T>
void trsv(char uplo, char trans, char diag, long n, const T* a, long lda, T* x, long incx) {
  if (n < 1) return;
  T* v = gather(0, n, x, incx);
  if (v == nullptr) return kernel::trsv(uplo, trans, diag, n, a, lda, x, incx);
  const bool upper = is_flag(uplo, 'U'), unit = is_flag(diag, 'U');
  const Op op = op_of<T>(trans);
  const bool backward = upper == (op == Op::none);
  for (long done = 0; done < n; done += solve_group) {
    const long count = std::min(solve_group, n - done);
    const long j = backward ? n - done - count : done;
    const long first = upper ? 0 : j + count, length = upper ? j : n - first;
    const T* block = a + first + j * lda;
    if (op != Op::none && length > 0) {
      T sums[solve_group];
      kernels<T>().dot_columns(op == Op::conjugate, length, count, block, lda, v + first, sums);
      for (long i = 0; i < count; ++i) v[j + i] -= sums[i];
    }
    if (count == solve_group) {
      solve_diagonal_group(op, backward, unit, a + j + j * lda, lda, v + j);
    } else {
      kernel::trsv(uplo, trans, diag, count, a + j + j * lda, lda, v + j, 1);
    }
    if (op == Op::none && length > 0) eliminate(length, count, block, lda, v + j, v + first);
  }
  scatter(n, v, x, incx);
}

#define ZENT_INSTANTIATE(T)                                                                \
  template void gemv<T>(char, long, long, T, const T*, long, const T*, long, T, T*, long); \
  template void symv<T>(char, long, T, const T*, long, const T*, long, T, T*, long);       \
  template void geru<T>(long, long, T, const T*, long, const T*, long, T*, long);          \
  template void gerc<T>(long, long, T, const T*, long, const T*, long, T*, long);          \
  template void syr<T>(char, long, RealOf<T>, const T*, long, T*, long);                   \
  template void syr2<T>(char, long, T, const T*, long, const T*, long, T*, long);          \
  template void trsv<T>(char, char, char, long, const T*, long, T*, long);
ZENT_INSTANTIATE(float)
ZENT_INSTANTIATE(double)
ZENT_INSTANTIATE(zent_f_complex)
ZENT_INSTANTIATE(zent_d_complex)
#undef ZENT_INSTANTIATE

}  // namespace zent::fast
