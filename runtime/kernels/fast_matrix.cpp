// Matrix products over the loops of the level in use: general and of one triangle.
#include "runtime/kernels/fast.hpp"

namespace zent::fast {
namespace {

using kernel::conj;
using kernel::is_flag;
using kernel::op_of;

template <class T>
constexpr Op adjoint = op_of<T>('C');

// Triangles up to this order are computed as full squares, of which one half is thrown away.
constexpr long triangle_block = 32;

// A square on its way into a triangle.
template <class T>
T* square_store() {
  alignas(64) static T store[triangle_block * triangle_block];
  return store;
}

template <class T>
void scale_matrix(long m, long n, T beta, T* c, long ldc) {
  const T one = kernel::from_real<T>(1);
  if (beta == one) return;
  for (long j = 0; j < n; ++j) {
    if (beta == T{}) {
      std::fill_n(c + j * ldc, m, T{});
    } else {
      kernels<T>().scal(m, beta, c + j * ldc);
    }
  }
}

// The triangle of C becomes beta C + gain(i, j).
template <class T, class Gain>
void update_triangle(bool upper, long n, RealOf<T> beta, T* c, long ldc, Gain gain) {
  const kernel::Columns columns = kernel::triangle(upper, n, ldc);
  for (long j = 0; j < n; ++j) {
    for (long i = columns.first(j); i < columns.last(j); ++i) {
      const T old = beta == 0 ? T{} : beta * c[i + j * ldc];
      c[i + j * ldc] = gain(i, j) + old;
    }
    c[j + j * ldc] = kernel::from_real<T>(kernel::real(c[j + j * ldc]));
  }
}

// Where a triangle is cut: in the middle, at a whole number of blocks.
long middle(long n) {
  return (n / 2 + triangle_block - 1) / triangle_block * triangle_block;
}

}  // namespace

template <class T>
void gemm(char transa, char transb, long m, long n, long k, Scalar<T> alpha, const T* a, long lda, const T* b, long ldb,
          Scalar<T> beta, T* c, long ldc) {
  if (m < 1 || n < 1) return;
  if (k < 1 || alpha == T{}) return scale_matrix(m, n, T{beta}, c, ldc);
  kernels<T>().gemm(op_of<T>(transa), op_of<T>(transb), m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

template <class T>
void syrk(char uplo, char trans, long n, long k, RealOf<T> alpha, const T* a, long lda, RealOf<T> beta, T* c, long ldc) {
  const bool upper = is_flag(uplo, 'U'), plain = is_flag(trans, 'N');
  if (n < 1) return;
  if (k < 1 || alpha == 0) return update_triangle(upper, n, beta, c, ldc, [](long, long) { return T{}; });
  const Op left = plain ? Op::none : adjoint<T>, right = plain ? adjoint<T> : Op::none;
  const T factor = kernel::from_real<T>(alpha);
  if (n <= triangle_block) {
    T* square = square_store<T>();
    kernels<T>().gemm(left, right, n, n, k, factor, a, lda, a, lda, T{}, square, n);
    return update_triangle(upper, n, beta, c, ldc, [=](long i, long j) { return square[i + j * n]; });
  }
  const long half = middle(n);
  const T* lower_a = plain ? a + half : a + half * lda;
  syrk(uplo, trans, half, k, alpha, a, lda, beta, c, ldc);
  const T scale = kernel::from_real<T>(beta);
  if (upper) {
    kernels<T>().gemm(left, right, half, n - half, k, factor, a, lda, lower_a, lda, scale, c + half * ldc, ldc);
  } else {
    kernels<T>().gemm(left, right, n - half, half, k, factor, lower_a, lda, a, lda, scale, c + half, ldc);
  }
  syrk(uplo, trans, n - half, k, alpha, lower_a, lda, beta, c + half + half * ldc, ldc);
}

template <class T>
void syr2k(char uplo, long n, long k, Scalar<T> alpha, const T* a, long lda, const T* b, long ldb, RealOf<T> beta, T* c,
           long ldc) {
  const bool upper = is_flag(uplo, 'U');
  if (n < 1) return;
  if (k < 1 || alpha == T{}) return update_triangle(upper, n, beta, c, ldc, [](long, long) { return T{}; });
  if (n <= triangle_block) {
    T* square = square_store<T>();
    kernels<T>().gemm(Op::none, adjoint<T>, n, n, k, alpha, a, lda, b, ldb, T{}, square, n);
    return update_triangle(upper, n, beta, c, ldc, [=](long i, long j) { return square[i + j * n] + conj(square[j + i * n]); });
  }
  const long half = middle(n);
  syr2k(uplo, half, k, alpha, a, lda, b, ldb, beta, c, ldc);
  // The rows and the columns of the square off the diagonal.
  const long row = upper ? 0 : half, column = upper ? half : 0, rows = upper ? half : n - half, columns = n - rows;
  T* square = c + row + column * ldc;
  const T one = kernel::from_real<T>(1), scale = kernel::from_real<T>(beta);
  kernels<T>().gemm(Op::none, adjoint<T>, rows, columns, k, alpha, a + row, lda, b + column, ldb, scale, square, ldc);
  kernels<T>().gemm(Op::none, adjoint<T>, rows, columns, k, conj(T{alpha}), b + row, ldb, a + column, lda, one, square, ldc);
  syr2k(uplo, n - half, k, alpha, a + half, lda, b + half, ldb, beta, c + half + half * ldc, ldc);
}

#define ZENT_INSTANTIATE(T)                                                                            \
  template void gemm<T>(char, char, long, long, long, T, const T*, long, const T*, long, T, T*, long); \
  template void syrk<T>(char, char, long, long, RealOf<T>, const T*, long, RealOf<T>, T*, long);       \
  template void syr2k<T>(char, long, long, T, const T*, long, const T*, long, RealOf<T>, T*, long);
ZENT_INSTANTIATE(float)
ZENT_INSTANTIATE(double)
ZENT_INSTANTIATE(zent_f_complex)
ZENT_INSTANTIATE(zent_d_complex)
#undef ZENT_INSTANTIATE

}  // namespace zent::fast
