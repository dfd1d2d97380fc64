// The fast primitives beside the plain ones, at every level that this processor has, with sizes around every block boundary.
#include "runtime/kernels/fast.hpp"

#include <cstring>

#include "forms.hpp"

namespace {

namespace fast = zent::fast;
namespace kernel = zent::kernel;
using kernel::conj;
using kernel::from_real;

template <class T>
struct Fast : testing::Test {
  void TearDown() override {
    if (!fast::use_level(fast::Level::avx512) && !fast::use_level(fast::Level::avx2)) fast::use_level(fast::Level::baseline);
  }
};
TYPED_TEST_SUITE(Fast, Elements);

template <class Body>
void at_every_level(Body body) {
  for (fast::Level level : {fast::Level::baseline, fast::Level::avx2, fast::Level::avx512}) {
    if (!fast::use_level(level)) continue;
    ASSERT_EQ(fast::level(), level);
    SCOPED_TRACE("level " + std::to_string(static_cast<int>(level)));
    body();
    if (testing::Test::HasFailure()) return;
  }
}

const long sizes[] = {0, 1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 64, 65, 100, 129};

template <class T>
T nan_value() {
  return make<T>(nan_of<T>, nan_of<T>);
}

// The elements differ by no more than bound; a not-a-number, which marks memory that nobody may touch, stays one.
template <class T>
testing::AssertionResult close(const std::vector<T>& got, const std::vector<T>& want, long double bound) {
  for (std::size_t i = 0; i < got.size(); ++i) {
    const auto error = std::abs(wide(got[i]) - wide(want[i]));
    const bool both_nan = std::isnan(kernel::real(got[i])) && std::isnan(kernel::real(want[i]));
    if (!both_nan && !(error <= bound)) {
      return testing::AssertionFailure() << "element " << i << " of " << got.size() << ": " << wide(got[i]) << " for "
                                         << wide(want[i]) << ", bound " << bound;
    }
  }
  return testing::AssertionSuccess();
}

// m by n in columns of ld, not-a-numbers below them.
template <class T>
std::vector<T> padded(long m, long n, long ld) {
  std::vector<T> a = random_array<T>(ld * n);
  for (long j = 0; j < n; ++j) {
    for (long i = m; i < ld; ++i) a[static_cast<std::size_t>(i + j * ld)] = nan_value<T>();
  }
  return a;
}

// A triangular matrix, not-a-numbers in the other triangle (and on the diagonal, where a unit one is taken for granted).
template <class T>
std::vector<T> triangular(bool upper, bool unit, long n, long ld) {
  std::vector<T> a = padded<T>(n, n, ld);
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i < n; ++i) {
      T& x = a[static_cast<std::size_t>(i + j * ld)];
      if (i == j) {
        x = unit ? nan_value<T>() : x + from_real<T>(3);
      } else if ((i < j) != upper) {
        x = nan_value<T>();
      } else {
        x = RealOf<T>(2) / static_cast<RealOf<T>>(n + 1) * x;
      }
    }
  }
  return a;
}

template <class T>
std::vector<T> scalars() {
  return {T{}, from_real<T>(1), make<T>(-0.7L, 0.4L)};
}

template <class T>
long double rounding(long terms) {
  return static_cast<long double>(4 * terms + 16) * epsilon<T>;
}

template <class T>
void check_gemm(char op_a, char op_b, long m, long n, long k, T alpha, T beta) {
  const long rows_a = op_a == 'N' ? m : k, columns_a = op_a == 'N' ? k : m;
  const long rows_b = op_b == 'N' ? k : n, columns_b = op_b == 'N' ? n : k;
  const long lda = rows_a + 3, ldb = rows_b + 1, ldc = m + 2;
  std::vector<T> a = padded<T>(rows_a, columns_a, lda), b = padded<T>(rows_b, columns_b, ldb), c = padded<T>(m, n, ldc);
  if (alpha == T{}) {
    std::fill(a.begin(), a.end(), nan_value<T>());
    std::fill(b.begin(), b.end(), nan_value<T>());
  }
  if (beta == T{} && !c.empty()) c[0] = nan_value<T>();
  std::vector<T> want = c;
  kernel::gemm(op_a, op_b, m, n, k, alpha, a.data(), lda, b.data(), ldb, beta, want.data(), ldc);
  fast::gemm(op_a, op_b, m, n, k, alpha, a.data(), lda, b.data(), ldb, beta, c.data(), ldc);
  EXPECT_TRUE(close(c, want, rounding<T>(k)))
      << op_a << op_b << " " << m << " " << n << " " << k << " alpha " << wide(alpha) << " beta " << wide(beta);
  if (beta == T{} && m > 0 && n > 0) {
    EXPECT_FALSE(std::isnan(kernel::real(c[0])));
  }
}

TYPED_TEST(Fast, GeneralProduct) {
  using T = TypeParam;
  at_every_level([] {
    const T some = make<T>(0.6L, -0.3L), one = from_real<T>(1);
    for (char op_a : {'N', 'T', 'C'}) {
      for (char op_b : {'N', 'T', 'C'}) {
        for (long m : {1L, 3L, 8L, 17L, 31L}) {
          for (long n : {1L, 2L, 7L, 12L}) check_gemm<T>(op_a, op_b, m, n, 5, some, one);
        }
        check_gemm<T>(op_a, op_b, 65, 70, 66, some, some);
        check_gemm<T>(op_a, op_b, 100, 33, 300, one, T{});
      }
    }
    for (long m : sizes) {
      check_gemm<T>('N', 'N', m, 9, 4, some, T{});
      check_gemm<T>('N', 'N', 9, m, 7, one, some);
      check_gemm<T>('T', 'N', 6, 9, m, one, one);
      check_gemm<T>('N', 'T', m, m, 65, some, one);
    }
    for (T alpha : scalars<T>()) {
      for (T beta : scalars<T>()) check_gemm<T>('N', 'N', 10, 11, 12, alpha, beta);
    }
    check_gemm<T>('N', 'N', 5, 5, 0, one, some);
    check_gemm<T>('N', 'N', 401, 9, 513, some, one);
  });
}

// Panels wider and higher than the buffers of the packed product.
TYPED_TEST(Fast, ProductLargerThanItsBuffers) {
  using T = TypeParam;
  at_every_level([] {
    const T one = from_real<T>(1);
    check_gemm<T>('N', 'N', 1100, 40, 20, one, one);
    check_gemm<T>('T', 'T', 400, 4500 / static_cast<long>(sizeof(T) / sizeof(float)), 3, one, T{});
  });
}

TYPED_TEST(Fast, MatrixTimesVector) {
  using T = TypeParam;
  at_every_level([] {
    for (char op : {'N', 'T', 'C'}) {
      for (long m : sizes) {
        for (long n : {1L, 2L, 5L, 8L, 67L}) {
          for (long inc : {1L, -1L, 3L, -2L}) {
            const T alpha = make<T>(0.6L, -0.3L), beta = inc == 3 ? T{} : make<T>(0.5L, 0.2L);
            const long lda = m + 2;
            const std::vector<T> a = padded<T>(m, n, lda);
            Walk<T> x(op == 'N' ? n : m, inc), y(op == 'N' ? m : n, -inc);
            if (beta == T{} && y.n > 0) y[0] = nan_value<T>();
            Walk<T> want = y;
            kernel::gemv(op, m, n, alpha, a.data(), lda, x.data(), inc, beta, want.data(), -inc);
            fast::gemv(op, m, n, alpha, a.data(), lda, x.data(), inc, beta, y.data(), -inc);
            EXPECT_TRUE(close(y.memory, want.memory, rounding<T>(m + n))) << op << " " << m << " " << n << " " << inc;
          }
        }
      }
    }
  });
}

TYPED_TEST(Fast, SymmetricMatrixTimesVectorAndRankUpdates) {
  using T = TypeParam;
  at_every_level([] {
    for (char uplo : {'U', 'L'}) {
      for (long n : sizes) {
        for (long inc : {1L, -1L, 2L}) {
          const std::string what = std::string(1, uplo) + " " + std::to_string(n) + " " + std::to_string(inc);
          const long lda = n + 1;
          const T alpha = make<T>(0.6L, -0.3L), beta = inc == 2 ? T{} : make<T>(0.5L, 0.2L);
          const std::vector<T> a = triangular<T>(uplo == 'U', false, n, lda);
          Walk<T> x(n, inc), y(n, 1), want = y;
          kernel::symv(uplo, n, alpha, a.data(), lda, x.data(), inc, beta, want.data(), 1);
          fast::symv(uplo, n, alpha, a.data(), lda, x.data(), inc, beta, y.data(), 1);
          EXPECT_TRUE(close(y.memory, want.memory, rounding<T>(n))) << "symv " << what;

          std::vector<T> b = a, b_want = a;
          kernel::syr(uplo, n, kernel::real(alpha), x.data(), inc, b_want.data(), lda);
          fast::syr(uplo, n, kernel::real(alpha), x.data(), inc, b.data(), lda);
          EXPECT_TRUE(close(b, b_want, rounding<T>(1))) << "syr " << what;
          b = b_want = a;
          kernel::syr2(uplo, n, alpha, x.data(), inc, y.data(), 1, b_want.data(), lda);
          fast::syr2(uplo, n, alpha, x.data(), inc, y.data(), 1, b.data(), lda);
          EXPECT_TRUE(close(b, b_want, rounding<T>(n))) << "syr2 " << what;

          for (long m : {1L, 6L, 70L}) {
            const Walk<T> column(m, -inc);
            const std::vector<T> c = padded<T>(n, m, lda);
            std::vector<T> got = c, c_want = c;
            kernel::geru(n, m, alpha, x.data(), inc, column.memory.data(), -inc, c_want.data(), lda);
            fast::geru(n, m, alpha, x.data(), inc, column.memory.data(), -inc, got.data(), lda);
            EXPECT_TRUE(close(got, c_want, rounding<T>(1))) << "geru " << what << " " << m;
            got = c_want = c;
            kernel::gerc(n, m, alpha, x.data(), inc, column.memory.data(), -inc, c_want.data(), lda);
            fast::gerc(n, m, alpha, x.data(), inc, column.memory.data(), -inc, got.data(), lda);
            EXPECT_TRUE(close(got, c_want, rounding<T>(1))) << "gerc " << what << " " << m;
          }
        }
      }
    }
  });
}

TYPED_TEST(Fast, TriangularSolvesAndProducts) {
  using T = TypeParam;
  at_every_level([] {
    for (char uplo : {'U', 'L'}) {
      for (char op : {'N', 'T', 'C'}) {
        for (char diag : {'N', 'U'}) {
          for (long n : {0L, 1L, 3L, 15L, 16L, 17L, 31L, 32L, 33L, 65L, 100L}) {
            const std::string what = std::string({uplo, op, diag}) + " " + std::to_string(n);
            const std::vector<T> a = triangular<T>(uplo == 'U', diag == 'U', n, n + 2);
            const long double bound = 32 * rounding<T>(n);
            for (long inc : {1L, -2L}) {
              Walk<T> x(n, inc), want = x;
              kernel::trsv(uplo, op, diag, n, a.data(), n + 2, want.data(), inc);
              fast::trsv(uplo, op, diag, n, a.data(), n + 2, x.data(), inc);
              EXPECT_TRUE(close(x.memory, want.memory, bound)) << "trsv " << what << " " << inc;
            }
            for (long m : {1L, 5L, 18L, 67L}) {
              const T alpha = m == 5 ? from_real<T>(1) : make<T>(0.6L, -0.3L);
              std::vector<T> b = padded<T>(n, m, n + 1), want = b;
              kernel::trsm('L', uplo, op, diag, n, m, alpha, a.data(), n + 2, want.data(), n + 1);
              fast::trsm('L', uplo, op, diag, n, m, alpha, a.data(), n + 2, b.data(), n + 1);
              EXPECT_TRUE(close(b, want, bound)) << "left " << what << " " << m;
              b = want = padded<T>(m, n, m + 1);
              kernel::trsm('R', uplo, op, diag, m, n, alpha, a.data(), n + 2, want.data(), m + 1);
              fast::trsm('R', uplo, op, diag, m, n, alpha, a.data(), n + 2, b.data(), m + 1);
              EXPECT_TRUE(close(b, want, bound)) << "right " << what << " " << m;
              b = want = padded<T>(n, m, n + 1);
              kernel::trmm(uplo, op, diag, n, m, a.data(), n + 2, want.data(), n + 1);
              fast::trmm(uplo, op, diag, n, m, a.data(), n + 2, b.data(), n + 1);
              EXPECT_TRUE(close(b, want, bound)) << "trmm " << what << " " << m;
            }
          }
        }
      }
    }
    std::vector<T> b = padded<T>(40, 9, 40), zeros(b.size());
    fast::trsm('L', 'U', 'N', 'N', 40, 9, T{}, static_cast<const T*>(nullptr), 40, b.data(), 40);
    EXPECT_TRUE(close(b, zeros, 0));
  });
}

// A 0 in the right side stays one under A itself, though the diagonal is 0 there; infinities stay in their columns.
TYPED_TEST(Fast, ZerosAndInfinitiesKeepTheirPlaces) {
  using T = TypeParam;
  at_every_level([] {
    const long n = 20, m = 6;
    std::vector<T> a = triangular<T>(true, false, n, n);
    a[static_cast<std::size_t>(5 * n + 5)] = T{};
    std::vector<T> b(static_cast<std::size_t>(n * m));
    for (long j = 0; j < m; ++j) b[static_cast<std::size_t>(3 + j * n)] = from_real<T>(1);
    std::vector<T> want = b;
    kernel::trsm('L', 'U', 'N', 'N', n, m, from_real<T>(1), a.data(), n, want.data(), n);
    fast::trsm('L', 'U', 'N', 'N', n, m, from_real<T>(1), a.data(), n, b.data(), n);
    EXPECT_FALSE(std::isnan(kernel::real(want[0])));
    EXPECT_TRUE(close(b, want, 100 * rounding<T>(n)));
    b = random_array<T>(n * m);
    b[static_cast<std::size_t>(n + 4)] = from_real<T>(std::numeric_limits<RealOf<T>>::infinity());
    fast::trmm('L', 'N', 'N', n, m, triangular<T>(false, false, n, n).data(), n, b.data(), n);
    for (long i = 0; i < n * m; ++i) {
      EXPECT_EQ(std::isfinite(kernel::real(b[static_cast<std::size_t>(i)])), i < n + 4 || i >= 2 * n) << i;
    }
  });
}

TYPED_TEST(Fast, ProductsOfOneTriangle) {
  using T = TypeParam;
  at_every_level([] {
    for (char uplo : {'U', 'L'}) {
      for (long n : sizes) {
        for (long k : {0L, 1L, 40L}) {
          for (RealOf<T> beta : {RealOf<T>(0), RealOf<T>(1), RealOf<T>(-0.5)}) {
            const std::string what = std::string(1, uplo) + " " + std::to_string(n) + " " + std::to_string(k);
            const long ldc = n + 1;
            std::vector<T> c = triangular<T>(uplo == 'U', false, n, ldc);
            if (beta == 0 && n > 0) c[0] = nan_value<T>();
            for (char op : {'N', 'C'}) {
              const long rows = op == 'N' ? n : k;
              const std::vector<T> a = padded<T>(rows, op == 'N' ? k : n, rows + 3);
              std::vector<T> got = c, want = c;
              kernel::syrk(uplo, op, n, k, RealOf<T>(-0.7), a.data(), rows + 3, beta, want.data(), ldc);
              fast::syrk(uplo, op, n, k, RealOf<T>(-0.7), a.data(), rows + 3, beta, got.data(), ldc);
              EXPECT_TRUE(close(got, want, rounding<T>(k))) << "syrk " << op << what;
            }
            const T alpha = make<T>(0.6L, -0.3L);
            const std::vector<T> a = padded<T>(n, k, n + 3), b = padded<T>(n, k, n + 2);
            std::vector<T> got = c, want = c;
            kernel::syr2k(uplo, n, k, alpha, a.data(), n + 3, b.data(), n + 2, beta, want.data(), ldc);
            fast::syr2k(uplo, n, k, alpha, a.data(), n + 3, b.data(), n + 2, beta, got.data(), ldc);
            EXPECT_TRUE(close(got, want, rounding<T>(2 * k))) << "syr2k " << what;
          }
        }
      }
    }
  });
}

TYPED_TEST(Fast, Vectors) {
  using T = TypeParam;
  using Real = RealOf<T>;
  at_every_level([] {
    for (long n : sizes) {
      for (long inc : {1L, -1L, 2L}) {
        for (long inc_y : {inc, 1L}) {
          const std::string what = std::to_string(n) + " " + std::to_string(inc) + " " + std::to_string(inc_y);
          Walk<T> x(n, inc), y(n, inc_y), x_want = x, y_want = y;
          const T alpha = make<T>(0.6L, -0.3L);
          const Real c = Real(0.8), s = Real(-0.6);
          const auto reset = [&] { x_want = x, y_want = y; };
          const auto same = [&] {
            return close(x.memory, x_want.memory, rounding<T>(1)) && close(y.memory, y_want.memory, rounding<T>(1));
          };
          EXPECT_LE(std::abs(wide(fast::dotu(n, x.data(), inc, y.data(), inc_y)) -
                             wide(kernel::dotu(n, x.data(), inc, y.data(), inc_y))),
                    rounding<T>(n))
              << what;
          EXPECT_LE(std::abs(wide(fast::dotc(n, x.data(), inc, y.data(), inc_y)) -
                             wide(kernel::dotc(n, x.data(), inc, y.data(), inc_y))),
                    rounding<T>(n))
              << what;
          const Real norm = kernel::nrm2(n, x.data(), inc), sum = kernel::asum(n, x.data(), inc);
          EXPECT_LE(std::abs(fast::nrm2(n, x.data(), inc) - norm), rounding<T>(n) * norm) << what;
          EXPECT_LE(std::abs(fast::asum(n, x.data(), inc) - sum), rounding<T>(n) * sum) << what;
          EXPECT_EQ(fast::iamax(n, x.data(), inc), kernel::iamax(n, x.data(), inc)) << what;
          reset();
          kernel::axpy(n, alpha, x.data(), inc, y_want.data(), inc_y);
          fast::axpy(n, alpha, x.data(), inc, y.data(), inc_y);
          EXPECT_TRUE(same()) << "axpy " << what;
          kernel::rot(n, x_want.data(), inc, y_want.data(), inc_y, c, s);
          fast::rot(n, x.data(), inc, y.data(), inc_y, c, s);
          EXPECT_TRUE(same()) << "rot " << what;
          kernel::swap(n, x_want.data(), inc, y_want.data(), inc_y);
          fast::swap(n, x.data(), inc, y.data(), inc_y);
          EXPECT_TRUE(same()) << "swap " << what;
          kernel::scal(n, alpha, x_want.data(), inc);
          fast::scal(n, alpha, x.data(), inc);
          kernel::scal(n, c, y_want.data(), inc_y);
          fast::scal(n, c, y.data(), inc_y);
          EXPECT_TRUE(same()) << "scal " << what;
          kernel::copy(n, x_want.data(), inc, y_want.data(), inc_y);
          fast::copy(n, x.data(), inc, y.data(), inc_y);
          EXPECT_TRUE(same()) << "copy " << what;
        }
      }
    }
  });
}

TYPED_TEST(Fast, NormOverTheWholeRangeAndFirstLargest) {
  using T = TypeParam;
  using Real = RealOf<T>;
  using Limits = std::numeric_limits<Real>;
  at_every_level([] {
    for (int e = Limits::min_exponent - Limits::digits; e <= Limits::max_exponent - 6; ++e) {
      const std::vector<T> x(49, make<T>(std::ldexp(Real(1), e), 0));  // the norm is 7 units
      EXPECT_LE(std::abs(std::ldexp(fast::nrm2(49, x.data(), 1), -e) - 7), 64 * Limits::epsilon()) << e;
    }
    for (long n : {1L, 9L, 40L, 130L}) {
      for (long place = 0; place < n; ++place) {
        std::vector<T> x(static_cast<std::size_t>(n), make<T>(0.5L, -0.5L));
        const auto at = static_cast<std::size_t>(place);
        x[at] = make<T>(-2, 0), x.back() = make<T>(2, 0);
        EXPECT_EQ(fast::iamax(n, x.data(), 1), place + 1);
        x[at] = nan_value<T>();
        EXPECT_EQ(fast::iamax(n, x.data(), 1), kernel::iamax(n, x.data(), 1)) << place << " of " << n;
        EXPECT_TRUE(std::isnan(fast::nrm2(n, x.data(), 1)));
        x[at] = make<T>(-Limits::infinity(), 0);
        EXPECT_EQ(fast::iamax(n, x.data(), 1), place + 1);
        EXPECT_EQ(fast::nrm2(n, x.data(), 1), Limits::infinity());
      }
      const std::vector<T> zeros(static_cast<std::size_t>(n)), nans(zeros.size(), nan_value<T>());
      EXPECT_EQ(fast::iamax(n, zeros.data(), 1), 1);
      EXPECT_EQ(fast::iamax(n, nans.data(), 1), 1);
      EXPECT_EQ(fast::nrm2(n, zeros.data(), 1), 0);
    }
  });
}

TYPED_TEST(Fast, SequencesOfRotations) {
  using T = TypeParam;
  using Real = RealOf<T>;
  at_every_level([] {
    for (bool backward : {false, true}) {
      for (long m : {1L, 3L, 8L, 17L, 33L, 64L, 71L}) {
        for (long n : {1L, 2L, 3L, 4L, 5L, 6L, 20L}) {
          for (long sweeps : {0L, 1L, 2L, 4L, 5L, 9L}) {
            std::vector<Real> c, s;
            for (long i = 0; i < sweeps * (n - 1); ++i) {
              const Real angle = kernel::real(random_value<T>()) * 3;
              c.push_back(std::cos(angle)), s.push_back(std::sin(angle));
            }
            std::vector<T> v = padded<T>(m, n, m + 2), want = v;
            kernel::rot_columns(backward, sweeps, m, n, c.data(), s.data(), want.data(), m + 2);
            fast::rot_columns(backward, sweeps, m, n, c.data(), s.data(), v.data(), m + 2);
            EXPECT_TRUE(close(v, want, rounding<T>(sweeps * n))) << backward << " " << m << " " << n << " " << sweeps;
          }
        }
      }
    }
  });
}

TYPED_TEST(Fast, TranspositionsMoveEveryBit) {
  using T = TypeParam;
  const auto same = [](const std::vector<T>& a, const std::vector<T>& b) {
    return a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
  };
  at_every_level([&] {
    for (long m : sizes) {
      std::vector<T> a = random_array<T>(m * m), want = a;
      if (m > 2) want[1] = a[1] = nan_value<T>();
      kernel::transpose_square(m, want.data());
      fast::transpose_square(m, a.data());
      EXPECT_TRUE(same(a, want)) << m;
      for (long n : {1L, 4L, 19L}) {
        a = random_array<T>(m * n);
        std::vector<T> b(a.size());
        want = b;
        kernel::transpose(m, n, a.data(), want.data());
        fast::transpose(m, n, a.data(), b.data());
        EXPECT_TRUE(same(b, want)) << m << " " << n;
      }
    }
  });
}

}  // namespace
