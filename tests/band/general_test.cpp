// General band systems: every form, size and option.
#include <cstring>

#include "tests/band/forms.hpp"

namespace band_test {
namespace {

template <class T>
class GeneralBand : public ::testing::Test {
 protected:
  void SetUp() override {
    be_quiet();
  }
};
TYPED_TEST_SUITE(GeneralBand, Forms);

struct Shape {
  long n, nlca, nuca;
};
// Around the edges of blocks, of windows and of vector registers; bands as wide as the matrix.
const Shape shapes[] = {{1, 0, 0},     {2, 1, 1},     {5, 0, 0},     {9, 2, 0},    {9, 0, 3},     {8, 7, 7},
                        {17, 1, 4},    {33, 5, 2},    {40, 24, 39},  {65, 31, 33}, {130, 40, 30}, {257, 33, 1},
                        {401, 64, 65}, {500, 100, 3}, {700, 3, 100}, {900, 40, 40}};

TYPED_TEST(GeneralBand, SolvesToRoundingInEveryShape) {
  using T = TypeParam;
  for (const auto& [n, nlca, nuca] : shapes) {
    Band<T> m(n, nlca, nuca);
    const std::vector<T> kept = m.a;
    std::vector<T> b = random_vector<T>(n);
    for (int transposed = 0; transposed < 2; ++transposed) {
      for (int block : {0, 1, 8, 32}) {
        std::vector<T> x(n);
        T* result = nullptr;
        const int tail = transposed ? ZENT_TRANSPOSE : 0;
        if (block == 0) {
          result = Form<T>::general(n, m.a.data(), nlca, nuca, b.data(), ZENT_RETURN_USER, x.data(), tail, 0);
        } else {
          result = Form<T>::general(n, m.a.data(), nlca, nuca, b.data(), ZENT_RETURN_USER, x.data(), ZENT_BLOCKING_FACTOR, block,
                                    tail, 0);
        }
        ASSERT_EQ(result, x.data());
        EXPECT_LT(backward_error(m, b, x.data(), transposed != 0), 3.0 * (nlca + nuca + 2))
            << n << " " << nlca << " " << nuca << " block " << block;
        ASSERT_TRUE(same(kept, m.a.data()));
      }
    }
  }
}

// Pivots at the far end of each column, so that every exchange goes the whole way and U fills completely.
TYPED_TEST(GeneralBand, LongExchanges) {
  using T = TypeParam;
  for (const auto& [n, nlca, nuca] : shapes) {
    if (n > 140) continue;  // the solution grows exponentially
    Band<T> m(n, nlca, nuca);
    for (long j = 0; j + nlca < n; ++j) m.at(j + nlca, j) = element<T>(2.0 * std::abs(value(m.at(j, j))) + 1);
    std::vector<T> b = random_vector<T>(n);
    T* x = Form<T>::general(n, m.a.data(), nlca, nuca, b.data(), 0);
    const Release release(x);
    ASSERT_NE(x, nullptr);
    EXPECT_LT(backward_error(m, b, x, false), 10.0 * (nlca + nuca + 2)) << n << " " << nlca << " " << nuca;
  }
}

TYPED_TEST(GeneralBand, LibraryAndUserStorageAgree) {
  using T = TypeParam;
  using Real = typename Form<T>::Real;
  const long n = 150, nlca = 30, nuca = 41, rows = 2 * nlca + nuca + 1;
  Band<T> m(n, nlca, nuca);
  std::vector<T> b = random_vector<T>(n), factor(rows * n), x(n), again(n);
  std::vector<long> pivots(n);
  long* library_pivots = nullptr;
  T* library_factor = nullptr;
  Real first = 0, second = 0;
  T* library = Form<T>::general(n, m.a.data(), nlca, nuca, b.data(), ZENT_FACTOR, &library_pivots, &library_factor,
                                ZENT_CONDITION, &first, 0);
  const Release one(library), two(library_pivots), three(library_factor);
  ASSERT_NE(library, nullptr);
  ASSERT_EQ(Form<T>::general(n, m.a.data(), nlca, nuca, nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, pivots.data(), factor.data(),
                             ZENT_CONDITION, &second, 0),
            nullptr);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_EQ(first, second);
  EXPECT_TRUE(same(factor, library_factor));
  EXPECT_TRUE(same(pivots, library_pivots));
  ASSERT_NE(Form<T>::general(n, nullptr, nlca, nuca, b.data(), ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, pivots.data(), factor.data(),
                             ZENT_RETURN_USER, x.data(), 0),
            nullptr);
  EXPECT_TRUE(same(x, library));
  again = b;  // the solution over the right-hand side, the factor over the matrix
  std::vector<T> shared(rows * n);
  std::copy(m.a.begin(), m.a.end(), shared.begin());
  ASSERT_EQ(Form<T>::general(n, shared.data(), nlca, nuca, again.data(), ZENT_FACTOR_USER, pivots.data(), shared.data(),
                             ZENT_RETURN_USER, again.data(), 0),
            again.data());
  EXPECT_TRUE(same(again, library));
  EXPECT_TRUE(same(shared, factor.data()));
  EXPECT_EQ(pivots[n - 1], n);
  // The product of the factors is the matrix: U in its rows, negated multipliers where their step left them.
  std::vector<typename Form<T>::Value> column(n);
  for (long j : {0L, 31L, 77L, n - 1}) {
    for (long i = 0; i < n; ++i) column[i] = std::abs(j - i) <= n && j >= i - nlca && j <= i + nuca ? value(m.at(i, j)) : 0;
    for (long k = 0; k <= j; ++k) {  // eliminate as the factor tells
      if (k + 1 < n) std::swap(column[k], column[pivots[k] - 1]);
      if (k == j) break;
      for (long i = k + 1; i <= std::min(n - 1, k + nlca); ++i)
        column[i] += value(factor[k * rows + nlca + nuca + i - k]) * column[k];
    }
    for (long i = std::max(0L, j - nlca - nuca); i <= j; ++i) {
      EXPECT_LT(std::abs(column[i] - value(factor[j * rows + nlca + nuca + i - j])), 300 * std::numeric_limits<Real>::epsilon());
    }
  }
}

// The five passes on the explicit inverse.
TEST(BandCondition, IsHighamsEstimateOfTheFifthPass) {
  be_quiet();
  for (unsigned seed = 0; seed < 40; ++seed) {
    const long n = 3 + seed % 9, nlca = seed % 3, nuca = 1 + seed % 2;
    Band<double> m(n, nlca, nuca);
    for (long i = 0; i < n; ++i) m.at(i, i) += 1.5;
    std::vector<double> inverse(n * n), e(n), x(n);
    double cond = 0, norm = 0;
    for (long j = 0; j < n; ++j) {
      std::fill(e.begin(), e.end(), 0);
      e[j] = 1;
      ASSERT_NE(
          zent_d_lin_sol_gen_band(n, m.a.data(), nlca, nuca, e.data(), ZENT_RETURN_USER, x.data(), ZENT_CONDITION, &cond, 0),
          nullptr);
      for (long i = 0; i < n; ++i) inverse[i * n + j] = x[i];
      double sum = 0;  // the limits of the rows: lower codiagonals on both sides
      for (long r = std::max(0L, nlca - j); r <= std::min(nlca + nuca, nlca + n - 1 - j); ++r) sum += std::abs(m.a[r * n + j]);
      norm = std::max(norm, sum);
    }
    std::fill(x.begin(), x.end(), 1.0 / n);
    double estimate = 0;
    for (int pass = 0; pass < 5; ++pass) {
      std::vector<double> y(n), z(n);
      estimate = 0;
      for (long i = 0; i < n; ++i) {
        for (long j = 0; j < n; ++j) y[i] += inverse[i * n + j] * x[j];
        estimate += std::abs(y[i]);
      }
      for (long j = 0; j < n; ++j) {
        for (long i = 0; i < n; ++i) z[j] += inverse[i * n + j] * (y[i] >= 0 ? 1 : -1);
      }
      long best = 0;
      for (long j = 1; j < n; ++j) best = std::abs(z[j]) > std::abs(z[best]) ? j : best;
      std::fill(x.begin(), x.end(), 0);
      x[best] = 1;
    }
    EXPECT_NEAR(cond / (norm * estimate), 1, 1e-9) << seed;
  }
}

// The unit of the matrix, an exact factor, must not change the estimate, nor may an inverse that decays from the diagonal into
// the range of underflow, as it does for the larger n.
TEST(BandCondition, IsTheSameInEveryUnit) {
  be_quiet();
  const long k = 2;
  for (long n : {60, 3000}) {
    Band<double> m(n, k, k);
    std::vector<double> b(n, 1.0), x(n);
    for (long i = 0; i < n; ++i) {
      m.at(i, i) = 40;
      for (long j = i + 1; j <= std::min(n - 1, i + k); ++j) m.at(j, i) = m.at(i, j);
    }
    for (int definite = 0; definite < 2; ++definite) {
      double expected = 0;
      for (int power : {0, -900, 1000}) {
        std::vector<double> a(m.a);
        for (double& element : a) element = std::ldexp(element, power);
        double cond = 0;
        double* const result =
            definite != 0
                ? zent_d_lin_sol_posdef_band(n, a.data(), k, b.data(), ZENT_RETURN_USER, x.data(), ZENT_CONDITION, &cond, 0)
                : zent_d_lin_sol_gen_band(n, a.data(), k, k, b.data(), ZENT_RETURN_USER, x.data(), ZENT_CONDITION, &cond, 0);
        EXPECT_EQ(result, x.data());
        EXPECT_EQ(zent_error_code(), 0);
        EXPECT_GT(cond, 1);  // the diagonal outweighs the rest of its column by 36 at least: the inverse's norm is below 1 / 36
        EXPECT_LT(cond, 44.0 / 36);
        if (power == 0) expected = cond;
        EXPECT_TRUE(cond == expected || n > 100) << power;
      }
    }
  }
}

// In single precision such an inverse leaves the range at modest orders and norms, and with it the signs on which the estimate
// depends.
TEST(BandCondition, IsTheSameInEveryUnitInSinglePrecision) {
  be_quiet();
  engine.seed(8);
  const long n = 80;
  std::vector<float> b(n, 1.0F), x(n);
  for (int matrix = 0; matrix < 40; ++matrix) {
    Band<float> m(n, 1, 1);
    for (long i = 0; i < n; ++i) m.at(i, i) += 4;
    float expected = 0;
    for (int power : {0, 30, 60}) {
      std::vector<float> a(m.a);
      for (float& element : a) element = std::ldexp(element, power);
      float cond = 0;
      ASSERT_NE(zent_f_lin_sol_gen_band(n, a.data(), 1L, 1L, b.data(), ZENT_RETURN_USER, x.data(), ZENT_CONDITION, &cond, 0),
                nullptr);
      if (power == 0) expected = cond;
      EXPECT_EQ(cond, expected) << matrix << " " << power;
    }
  }
}

// With one lower and no upper codiagonal the limits miss the diagonal of column 0 and read the corner of the last one.
TEST(BandCondition, CornersCountInTheNorm) {
  be_quiet();
  double b[] = {1, 1}, cond = 0, x[2];
  double a[] = {8, 1, 0, 0};  // diag(8, 1): column sums within these limits are 0 and 1
  ASSERT_NE(zent_d_lin_sol_gen_band(2L, a, 1L, 0L, b, ZENT_CONDITION, &cond, ZENT_RETURN_USER, x, 0), nullptr);
  EXPECT_EQ(cond, 1.0);
  a[3] = 100;  // outside the matrix: in the sum of column 1, but not in the solution
  ASSERT_NE(zent_d_lin_sol_gen_band(2L, a, 1L, 0L, b, ZENT_CONDITION, &cond, ZENT_RETURN_USER, x, 0), nullptr);
  EXPECT_EQ(cond, 101.0);
  EXPECT_EQ(x[0], 0.125);
  EXPECT_EQ(x[1], 1.0);
  double upper[] = {100, 0, 2, 1};  // diag(2, 1), one upper codiagonal: the corner stands in row 0 of column 0 and is read
  ASSERT_NE(zent_d_lin_sol_gen_band(2L, upper, 0L, 1L, b, ZENT_CONDITION, &cond, ZENT_RETURN_USER, x, 0), nullptr);
  EXPECT_EQ(cond, 102.0);
  EXPECT_EQ(x[0], 0.5);
}

TYPED_TEST(GeneralBand, SingularAndIllConditioned) {
  using T = TypeParam;
  using Real = typename Form<T>::Real;
  for (long n : {1L, 2L, 100L}) {
    const long k = std::min(n - 1, 40L);
    Band<T> m(n, k, k);
    for (long i = std::max(0L, n / 2 - k); i <= std::min(n - 1, n / 2 + k); ++i) m.at(i, n / 2) = T{};
    std::vector<T> b = random_vector<T>(n);
    Real cond = -7;
    EXPECT_EQ(Form<T>::general(n, m.a.data(), k, k, b.data(), ZENT_CONDITION, &cond, 0), nullptr);
    EXPECT_EQ(zent_error_code(), MATH_SINGULAR_MATRIX);
    EXPECT_EQ(zent_error_type(), 4);
    EXPECT_EQ(cond, -7);
  }
  std::vector<T> a(3, element<T>(1.0)), b(3, element<T>(1.0));
  a[2] = element<T>(static_cast<double>(std::numeric_limits<Real>::epsilon()) / 4);
  Real cond = 0;
  T* x = Form<T>::general(3L, a.data(), 0L, 0L, b.data(), ZENT_CONDITION, &cond, 0);
  const Release release(x);
  ASSERT_NE(x, nullptr);
  EXPECT_EQ(zent_error_code(), MATH_ILL_CONDITIONED);
  EXPECT_EQ(zent_error_type(), 3);
  EXPECT_NEAR(cond * std::numeric_limits<Real>::epsilon(), 4, 1e-5);
  T* factor = nullptr;
  long* pivots = nullptr;
  Form<T>::general(3L, a.data(), 0L, 0L, nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR, &pivots, &factor, 0);
  EXPECT_EQ(zent_error_code(), 0);  // no estimate, no warning
  const Release one(factor), two(pivots);
  factor[1] = T{};
  EXPECT_EQ(Form<T>::general(3L, nullptr, 0L, 0L, b.data(), ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, pivots, factor, 0), nullptr);
  EXPECT_EQ(zent_error_code(), MATH_SINGULAR_MATRIX);
  for (double bad : {static_cast<double>(NAN), static_cast<double>(INFINITY)}) {  // an answer or an error
    Band<T> m(90, 30, 30);
    m.at(40, 45) = element<T>(bad);
    std::vector<T> right = random_vector<T>(90);
    const Release ends(Form<T>::general(90L, m.a.data(), 30L, 30L, right.data(), 0));
    EXPECT_TRUE(zent_error_code() == MATH_SINGULAR_MATRIX || zent_error_code() == MATH_ILL_CONDITIONED ||
                ends.pointer != nullptr);
  }
}

TEST(GeneralBandErrors, InTheirOrder) {
  be_quiet();
  double a[64] = {}, b[4] = {}, cond = 0, factor[64], x[4], *null = nullptr;
  long pivots[4], *no_pivots = nullptr;
  for (long i = 0; i < 4; ++i) a[4 + i] = 2, x[i] = 17, b[i] = 1;
  const auto code = [&](double* result) {
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(zent_error_type(), 5);
    for (double xi : x) EXPECT_EQ(xi, 17);
    return zent_error_code();
  };
  const auto solve = [&](long n, double* matrix, long nlca, long nuca, double* right, auto... options) {
    return code(zent_d_lin_sol_gen_band(n, matrix, nlca, nuca, right, options..., ZENT_RETURN_USER, x, 0));
  };
  EXPECT_EQ(solve(4, a, 1, 1, b, 12345), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(solve(4, a, 1, 1, b, ZENT_A_COL_DIM, 4), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(solve(4, null, 1, 1, b), MATH_UNEXPECTED_NULL_POINTER);
  EXPECT_EQ(solve(4, a, 1, 1, null), MATH_UNEXPECTED_NULL_POINTER);
  EXPECT_EQ(solve(4, a, 1, 1, b, ZENT_CONDITION, null), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(solve(4, a, 1, 1, b, ZENT_FACTOR_USER, no_pivots, factor), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(solve(4, a, 1, 1, b, ZENT_FACTOR_USER, pivots, null), MATH_OPTIONAL_ARG_NULL_2);
  EXPECT_EQ(code(zent_d_lin_sol_gen_band(4L, a, 1L, 1L, b, ZENT_RETURN_USER, null, 0)), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(solve(0, a, 9, 9, b, ZENT_SOLVE_ONLY, ZENT_CONDITION, &cond), MATH_CONDITION_ONLY_SPECIFIER);
  EXPECT_EQ(solve(0, a, 9, 9, b, ZENT_FACTOR_ONLY), MATH_FACTOR_ONLY_SPECIFIER);
  EXPECT_EQ(solve(0, a, 9, 9, b, ZENT_SOLVE_ONLY), MATH_SPECIFY_SOLVE_ONLY);
  EXPECT_EQ(solve(0, a, 9, 9, b), MATH_NEGATIVE_ORDER);
  EXPECT_EQ(solve(4, a, 4, 9, b), MATH_LOWER_CODIAGONALS);
  EXPECT_EQ(solve(4, a, -1, 1, b), MATH_LOWER_CODIAGONALS);
  EXPECT_EQ(solve(4, a, 1, 4, b), MATH_UPPER_CODIAGONALS);
  EXPECT_EQ(solve(4, a, 1, -1, b), MATH_UPPER_CODIAGONALS);
  // Both "only" options: nothing is computed.
  EXPECT_EQ(
      zent_d_lin_sol_gen_band(4L, null, 1L, 1L, null, ZENT_FACTOR_ONLY, ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, pivots, factor, 0),
      null);
  EXPECT_EQ(zent_error_code(), 0);
  // A blocking factor out of range is clamped.
  EXPECT_EQ(zent_d_lin_sol_gen_band(4L, a, 1L, 1L, b, ZENT_BLOCKING_FACTOR, 1000, ZENT_RETURN_USER, x, 0), x);
  for (double xi : x) EXPECT_EQ(xi, 0.5);
}

TEST(BandSupport, WiderStorageAndSolution) {
  be_quiet();
  const long n = 5;
  std::vector<zent_d_complex> a(3 * n), b(6 * n, {7, 7});
  for (long k = 0; k < 3 * n; ++k) a[k] = {static_cast<double>(k + 1), -1};
  zent_dccbcb(n, a.data(), 3, 1, 1, b.data(), 6, 2, 2);
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i < n; ++i) {
      if (std::abs(i - j) > 2) continue;
      const zent_d_complex expected = std::abs(i - j) <= 1 ? a[j * 3 + 1 + i - j] : zent_d_complex{0, 0};
      EXPECT_EQ(b[j * 6 + 2 + i - j].re, expected.re);
      EXPECT_EQ(b[j * 6 + 2 + i - j].im, expected.im);
    }
    EXPECT_EQ(b[j * 6 + 5].re, 7);  // beyond the rows of the band
  }
  EXPECT_EQ(b[0].re, 0);  // a corner
  const struct {
    long n, lda, nlca, nuca, ldb, nlcb, nucb, code;
  } bad[] = {{0, 3, 1, 1, 6, 2, 2, MATH_NEGATIVE_ORDER},
             {5, 2, 1, 1, 6, 2, 2, MATH_LEADING_DIM_OF_A_TOO_SMALL},
             {5, 3, 5, 1, 6, 2, 2, MATH_NEED_ZERO_LE_NLCA_LT_N},
             {5, 3, 1, 5, 6, 2, 2, MATH_NEED_ZERO_LE_NUCA_LT_N},
             {5, 3, 1, 1, 4, 2, 2, MATH_LEADING_DIM_OF_B_TOO_SMALL},
             {5, 3, 1, 1, 6, 0, 2, MATH_NEED_NLCA_LE_NLCB_LT_N},
             {5, 3, 1, 1, 6, 2, 5, MATH_NEED_NUCA_LE_NUCB_LT_N}};
  for (const auto& c : bad) {
    zent_e1psh("test");
    zent_dccbcb(c.n, a.data(), c.lda, c.nlca, c.nuca, b.data(), c.ldb, c.nlcb, c.nucb);
    EXPECT_EQ(zent_n1rcd(0), c.code);
    zent_e1pop("test");
  }
  zent_e1psh("test");
  double factor[3] = {2, 4, 5}, x[3] = {1, 1, 1};
  long pivots[3] = {1, 2, 3};
  zent_dlfsrb(3, factor, 1, 0, 0, pivots, x, 3, x);
  EXPECT_EQ(zent_n1rcd(0), MATH_IPATH_RANGE);
  zent_dlfsrb(3, factor, 1, 0, 0, pivots, x, 1, x);
  EXPECT_EQ(x[1], 0.25);
  zent_e1pop("test");
}

// In memory proportional to the band, and in a time proportional to it.
TEST(GeneralBandLarge, OrderOfAMillion) {
  be_quiet();
  const long n = 1000000;
  std::vector<double> a(3 * n), b(n, 1.0), x(n);
  for (long j = 0; j < n; ++j) {
    a[j] = j > 0 ? -1 : 0;
    a[n + j] = 4;
    a[2 * n + j] = j + 1 < n ? -1 : 0;
  }
  double cond = 0;
  ASSERT_EQ(zent_d_lin_sol_gen_band(n, a.data(), 1L, 1L, b.data(), ZENT_RETURN_USER, x.data(), ZENT_CONDITION, &cond, 0),
            x.data());
  EXPECT_NEAR(x[n / 2], 0.5, 1e-15);
  EXPECT_NEAR(x[0], 0.5 - 0.5 * (2 - std::sqrt(3.0)), 1e-15);  // x = 1/2 (1 - r^(i+1)), r + 1/r = 4
  EXPECT_NEAR(cond, 3, 1e-9);                                  // norm 6, inverse norm 1/2
  ASSERT_EQ(zent_d_lin_sol_posdef_band(n, a.data(), 1L, b.data(), ZENT_RETURN_USER, x.data(), ZENT_CONDITION, &cond, 0),
            x.data());
  EXPECT_NEAR(x[n / 2], 0.5, 1e-15);
  EXPECT_NEAR(cond, 3, 1e-9);
}

}  // namespace
}  // namespace band_test
