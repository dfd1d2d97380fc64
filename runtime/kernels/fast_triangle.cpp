// Triangular solves and products, cut in halves down to blocks that fit the registers and the first cache; what is off the
// diagonal becomes general products.
#include "runtime/kernels/fast.hpp"

namespace zent::fast {
namespace {

using kernel::is_flag;
using kernel::op_of;

// op(A) for a triangular A.
template <class T>
struct Triangle {
  const T* a;
  long lda;
  bool upper;  // op(A) is upper triangular
  Op op;
  bool unit;

  T at(long i, long j) const {
    return op == Op::none ? a[i + j * lda] : kernel::conj_if(op == Op::conjugate, a[j + i * lda]);
  }
  // The stored block of rows from i and columns from j of op(A).
  const T* block(long i, long j) const {
    return op == Op::none ? a + i + j * lda : a + j + i * lda;
  }
  Triangle from(long i) const {
    return {a + i + i * lda, lda, upper, op, unit};
  }
};

template <class T>
Triangle<T> triangle_of(char uplo, char trans, char diag, const T* a, long lda) {
  const Op op = op_of<T>(trans);
  return {a, lda, is_flag(uplo, 'U') == (op == Op::none), op, is_flag(diag, 'U')};
}

// The triangle T of X T = B in the order in which its columns are solved: T(k, j) for k before j.
template <class T>
struct SolveBlock {
  T t[solve_block * solve_block];
  Divisor<RealOf<T>> divisors[solve_block];

  // `mirrored`: T is the transpose of op(A).
  SolveBlock(const Triangle<T>& triangle, long n, bool mirrored, bool reversed) {
    const auto place = [=](long i) { return reversed ? n - 1 - i : i; };
    for (long j = 0; j < n; ++j) {
      for (long k = 0; k < j; ++k) {
        t[k + j * n] = mirrored ? triangle.at(place(j), place(k)) : triangle.at(place(k), place(j));
      }
      if (!triangle.unit) divisors[j] = divisor(triangle.at(place(j), place(j)));
    }
  }
};

// Where n columns are cut: in the middle, at a whole number of blocks.
long middle(long n) {
  return (n / 2 + solve_block - 1) / solve_block * solve_block;
}

template <class T>
void subtract_product(Op op_a, Op op_b, long m, long n, long k, const T* a, long lda, const T* b, long ldb, T* c, long ldc) {
  const T one = kernel::from_real<T>(1);
  kernels<T>().gemm(op_a, op_b, m, n, k, -one, a, lda, b, ldb, one, c, ldc);
}

template <class T>
void solve_right(const Triangle<T>& triangle, long m, long n, T* b, long ldb) {
  if (n <= solve_block) {
    const bool reversed = !triangle.upper;
    const SolveBlock<T> block(triangle, n, false, reversed);
    const auto* divisors = triangle.unit ? nullptr : block.divisors;
    return kernels<T>().solve_rows(false, m, n, block.t, divisors, reversed ? b + (n - 1) * ldb : b, reversed ? -ldb : ldb);
  }
  const long half = middle(n);
  T* right = b + half * ldb;
  if (triangle.upper) {
    solve_right(triangle, m, half, b, ldb);
    subtract_product(Op::none, triangle.op, m, n - half, half, b, ldb, triangle.block(0, half), triangle.lda, right, ldb);
    solve_right(triangle.from(half), m, n - half, right, ldb);
  } else {
    solve_right(triangle.from(half), m, n - half, right, ldb);
    subtract_product(Op::none, triangle.op, m, half, n - half, right, ldb, triangle.block(half, 0), triangle.lda, b, ldb);
    solve_right(triangle, m, half, b, ldb);
  }
}

// The lanes of a solve are rows, so the rows of a block from the left are turned into columns and back. pack_a is free: no
// product runs meanwhile.
template <class T>
void solve_left_block(const Triangle<T>& triangle, long m, long n, T* b, long ldb) {
  constexpr long chunk = 64;
  const bool reversed = triangle.upper;
  const SolveBlock<T> block(triangle, m, true, reversed);
  const auto* divisors = triangle.unit ? nullptr : block.divisors;
  T* turned = reinterpret_cast<T*>(pack_a);
  for (long j = 0; j < n; j += chunk) {
    const long count = std::min(chunk, n - j);
    kernels<T>().transpose(false, m, count, b + j * ldb, ldb, turned, chunk);
    kernels<T>().solve_rows(triangle.op == Op::none, count, m, block.t, divisors, reversed ? turned + (m - 1) * chunk : turned,
                            reversed ? -chunk : chunk);
    kernels<T>().transpose(false, count, m, turned, chunk, b + j * ldb, ldb);
  }
}

template <class T>
void solve_left(const Triangle<T>& triangle, long m, long n, T* b, long ldb) {
  if (m <= solve_block) return solve_left_block(triangle, m, n, b, ldb);
  const long half = middle(m);
  T* low = b + half;
  if (triangle.upper) {
    solve_left(triangle.from(half), m - half, n, low, ldb);
    subtract_product(triangle.op, Op::none, half, n, m - half, triangle.block(0, half), triangle.lda, low, ldb, b, ldb);
    solve_left(triangle, half, n, b, ldb);
  } else {
    solve_left(triangle, half, n, b, ldb);
    subtract_product(triangle.op, Op::none, m - half, n, half, triangle.block(half, 0), triangle.lda, b, ldb, low, ldb);
    solve_left(triangle.from(half), m - half, n, low, ldb);
  }
}

}  // namespace

template <class T>
void trsm(char side, char uplo, char transa, char diag, long m, long n, Scalar<T> alpha, const T* a, long lda, T* b, long ldb) {
  if (m < 1 || n < 1) return;
  const T one = kernel::from_real<T>(1);
  for (long j = 0; j < n && !(alpha == one); ++j) {
    if (alpha == T{}) {
      std::fill_n(b + j * ldb, m, T{});
    } else {
      kernels<T>().scal(m, alpha, b + j * ldb);
    }
  }
  if (alpha == T{}) return;
  const bool left = is_flag(side, 'L');
  // Few right sides leave most lanes empty.
  if (left && n < 4) {
    for (long j = 0; j < n; ++j) trsv(uplo, transa, diag, m, a, lda, b + j * ldb, 1);
    return;
  }
  const Triangle<T> triangle = triangle_of(uplo, transa, diag, a, lda);
  left ? solve_left(triangle, m, n, b, ldb) : solve_right(triangle, m, n, b, ldb);
}

namespace {

// The triangle is filled up with zeros and multiplied as a square; where B is not finite those zeros would spread, so it then
// goes the plain way.
template <class T>
void multiply_block(const Triangle<T>& triangle, long m, long n, T* b, long ldb) {
  constexpr long chunk = 64;
  alignas(64) static T square[solve_block * solve_block], work[solve_block * chunk];
  for (long j = 0; j < m; ++j) {
    for (long i = 0; i < m; ++i) {
      const bool inside = triangle.upper ? i < j : i > j;
      const T diagonal = triangle.unit ? kernel::from_real<T>(1) : triangle.at(j, j);
      square[i + j * m] = i == j ? diagonal : inside ? triangle.at(i, j) : T{};
    }
  }
  for (long j = 0; j < n; j += chunk) {
    const long count = std::min(chunk, n - j);
    RealOf<T> size = 0;
    for (long l = 0; l < count; ++l) {
      std::copy_n(b + (j + l) * ldb, m, work + l * m);
      size += kernels<T>().asum(m, work + l * m);
    }
    if (!(size <= std::numeric_limits<RealOf<T>>::max())) {
      const bool stored_upper = triangle.upper == (triangle.op == Op::none);
      const char letter = triangle.op == Op::none ? 'N' : triangle.op == Op::transpose ? 'T' : 'C';
      kernel::trmm(stored_upper ? 'U' : 'L', letter, triangle.unit ? 'U' : 'N', m, count, triangle.a, triangle.lda, b + j * ldb,
                   ldb);
      continue;
    }
    kernels<T>().gemm(Op::none, Op::none, m, count, m, kernel::from_real<T>(1), square, m, work, m, T{}, b + j * ldb, ldb);
  }
}

template <class T>
void multiply_triangle(const Triangle<T>& triangle, long m, long n, T* b, long ldb) {
  if (m <= solve_block) return multiply_block(triangle, m, n, b, ldb);
  const long half = middle(m);
  const T one = kernel::from_real<T>(1);
  T* low = b + half;
  if (triangle.upper) {
    multiply_triangle(triangle, half, n, b, ldb);
    kernels<T>().gemm(triangle.op, Op::none, half, n, m - half, one, triangle.block(0, half), triangle.lda, low, ldb, one, b,
                      ldb);
    multiply_triangle(triangle.from(half), m - half, n, low, ldb);
  } else {
    multiply_triangle(triangle.from(half), m - half, n, low, ldb);
    kernels<T>().gemm(triangle.op, Op::none, m - half, n, half, one, triangle.block(half, 0), triangle.lda, b, ldb, one, low,
                      ldb);
    multiply_triangle(triangle, half, n, b, ldb);
  }
}

}  // namespace

template <class T>
void trmm(char uplo, char trans, char diag, long m, long n, const T* a, long lda, T* b, long ldb) {
  if (m < 1 || n < 1) return;
  multiply_triangle(triangle_of(uplo, trans, diag, a, lda), m, n, b, ldb);
}

#define ZENT_INSTANTIATE(T)                                                               \
  template void trsm<T>(char, char, char, char, long, long, T, const T*, long, T*, long); \
  template void trmm<T>(char, char, char, long, long, const T*, long, T*, long);
ZENT_INSTANTIATE(float)
ZENT_INSTANTIATE(double)
ZENT_INSTANTIATE(zent_f_complex)
ZENT_INSTANTIATE(zent_d_complex)
#undef ZENT_INSTANTIATE

}  // namespace zent::fast
