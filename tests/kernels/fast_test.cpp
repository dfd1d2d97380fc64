// Fixed cases of the fast primitives; fuzz_test.cpp compares them with the plain ones in all others.
#include <cstring>

#include "levels.hpp"

namespace {

using kernel::from_real;

template <class T>
struct Fast : testing::Test {
  void TearDown() override {
    use_best_level();
  }
};
TYPED_TEST_SUITE(Fast, Elements);

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

// Panels wider and higher than the buffers of the packed product.
TYPED_TEST(Fast, ProductLargerThanItsBuffers) {
  using T = TypeParam;
  at_every_level([] {
    const T one = from_real<T>(1);
    check_gemm<T>('N', 'N', 1100, 40, 20, one, one);
    check_gemm<T>('T', 'T', 400, 4500 / static_cast<long>(sizeof(T) / sizeof(float)), 3, one, T{});
  });
}

// The ways into a product: read in place up to a side, packed beyond it, in two slices of the depth, with every kind of tile at
// the lower end of a strip, and the factors that have stores of their own.
TYPED_TEST(Fast, ProductByEveryTile) {
  using T = TypeParam;
  at_every_level([] {
    const T one = from_real<T>(1), some = random_value<T>();
    const T factors[][2] = {{one, T{}}, {some, T{}}, {one, one}, {some, one}, {some, some}};
    long turn = 0;
    const auto check = [&](long m, long n, long k) {
      const T* by = factors[turn++ % 5];
      check_gemm<T>('N', turn % 2 == 0 ? 'N' : 'C', m, n, k, by[0], by[1]);
    };
    for (long side : {60L, 61L, 120L, 121L}) {
      check(side, 9, 40);
      check(11, side, 3);
      check(5, 15, side);
    }
    for (long m = 1; m < 50; m += 3) check(m, 8 + m % 8, 30 + m % 4);
    for (long tail : {0L, 1L, 4L, 7L, 8L, 12L, 16L, 23L, 32L}) check(120 + tail, 21, 700);
  });
}

// Under a factor of 0 the operands may be anything, even null.
TYPED_TEST(Fast, FactorsOfZeroReadNothing) {
  using T = TypeParam;
  const T* nothing = nullptr;
  at_every_level([&] {
    std::vector<T> b = padded<T>(40, 9, 40), zeros(b.size());
    fast::trsm('L', 'U', 'N', 'N', 40, 9, T{}, nothing, 40, b.data(), 40);
    EXPECT_TRUE(close(b, zeros, 0));
    b.assign(b.size(), nan_value<T>());
    fast::gemm('N', 'T', 40, 9, 7, T{}, nothing, 40, nothing, 9, T{}, b.data(), 40);
    EXPECT_TRUE(close(b, zeros, 0));
    b.assign(b.size(), nan_value<T>());
    fast::gemv('N', 40, 9, T{}, nothing, 40, nothing, 1, T{}, b.data(), -2);
    fast::symv('U', 40, T{}, nothing, 40, nothing, 1, T{}, b.data() + 100, 3);
    for (std::size_t i : {0U, 78U, 100U, 217U}) EXPECT_EQ(wide(b[i]), Wide(0)) << i;
    EXPECT_TRUE(std::isnan(kernel::real(b[1])) && std::isnan(kernel::real(b[101])));
    fast::syr2('L', 40, T{}, nothing, 1, nothing, 1, b.data(), 40);
    fast::axpy(40, T{}, nothing, 1, b.data(), 1);
    EXPECT_EQ(wide(b[0]), Wide(0));
  });
}

// The same numbers elsewhere in memory give the same bits: nothing but the speed may depend on how an array is aligned.
TYPED_TEST(Fast, ResultsDoNotDependOnAddresses) {
  using T = TypeParam;
  at_every_level([&] {
    const long n = 150;
    const std::vector<T> a = triangular<T>(true, false, n, n), full = random_array<T>(n * n), x = random_array<T>(n);
    std::vector<std::vector<T>> results;
    for (long offset : {0L, 1L, 3L, 4L, 6L}) {
      std::vector<T> moved(static_cast<std::size_t>(n * n + 8)), triangle = moved, product(static_cast<std::size_t>(n * n));
      std::copy(full.begin(), full.end(), moved.begin() + offset);
      std::copy(a.begin(), a.end(), triangle.begin() + offset);
      const T* m = moved.data() + offset;
      const T* t = triangle.data() + offset;
      std::vector<T> y(static_cast<std::size_t>(9 * n));
      T* to = y.data();
      const T one = from_real<T>(1);
      fast::gemv('N', n, n, one, m, n, x.data(), 1, T{}, to, 1);
      fast::gemv('C', n, n, one, m, n, x.data(), 1, T{}, to + n, 1);
      fast::symv('U', n, one, t, n, x.data(), 1, T{}, to + 2 * n, 1);
      fast::symv('L', n, one, m, n, x.data(), 1, T{}, to + 3 * n, 1);
      std::copy(x.begin(), x.end(), to + 4 * n);
      fast::trsv('U', 'N', 'N', n, t, n, to + 4 * n, 1);
      std::copy(x.begin(), x.end(), to + 5 * n);
      fast::trsv('U', 'T', 'N', n, t, n, to + 5 * n, 1);
      to[6 * n] = fast::dotc(n * n, m, 1, full.data(), 1);
      to[6 * n + 1] = from_real<T>(fast::nrm2(n * n, m, 1));
      to[6 * n + 2] = from_real<T>(fast::asum(n * n, m, 1));
      fast::geru(n, 2, one, m, 1, x.data(), 1, to + 7 * n, n);
      fast::gemm('C', 'N', n, n, n, one, m, n, m, n, T{}, product.data(), n);
      y.insert(y.end(), product.begin(), product.end());
      results.push_back(y);
      EXPECT_EQ(std::memcmp(y.data(), results[0].data(), y.size() * sizeof(T)), 0) << offset;
    }
  });
}

// What the BLAS leaves alone: only nrm2, of the primitives of one vector, knows increments that are not positive.
TYPED_TEST(Fast, IncrementsThatAreNotPositive) {
  using T = TypeParam;
  at_every_level([&] {
    std::vector<T> x = random_array<T>(30), before = x;
    for (long inc : {0L, -1L, -2L}) {
      fast::scal(10, make<T>(2, 1), x.data(), inc);
      fast::scal(10, RealOf<T>(2), x.data(), inc);
      EXPECT_TRUE(close(x, before, 0));
      EXPECT_EQ(fast::iamax(10, x.data(), inc), 0);
      EXPECT_EQ(fast::asum(10, x.data(), inc), 0);
    }
    EXPECT_LE(std::abs(fast::nrm2(10, x.data(), -2) - fast::nrm2(10, x.data(), 2)), 10 * epsilon<T>);
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
