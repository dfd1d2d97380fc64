// Positive definite band systems: every form, size and option.
#include <cstring>

#include "math/linalg/band.hpp"
#include "tests/band/forms.hpp"

namespace band_test {
namespace {

template <class T>
class PosdefBand : public ::testing::Test {
 protected:
  void SetUp() override {
    be_quiet();
  }
};
TYPED_TEST_SUITE(PosdefBand, Forms);

// Diagonally dominant, with its mirror image written out as well; upper() is what the solver is given.
template <class T>
struct Definite : Band<T> {
  explicit Definite(long n, long k) : Band<T>(n, k, k) {
    for (long i = 0; i < n; ++i) {
      this->at(i, i) = element<T>(2.0 * static_cast<double>(k) + 1);
      for (long j = i + 1; j <= std::min(n - 1, i + k); ++j) this->at(j, i) = element<T>(conjugate(value(this->at(i, j))));
    }
  }
  std::vector<T> upper() const {
    return std::vector<T>(this->a.begin(), this->a.begin() + (this->nuca + 1) * this->n);
  }
};

TYPED_TEST(PosdefBand, SolvesToRoundingInEveryShape) {
  using T = TypeParam;
  using Real = typename Form<T>::Real;
  const long shapes[][2] = {{1, 0}, {2, 1}, {6, 0}, {7, 6}, {33, 3}, {64, 47}, {65, 48}, {129, 64}, {300, 100}, {901, 50}};
  for (const auto& [n, k] : shapes) {
    Definite<T> m(n, k);
    std::vector<T> a = m.upper(), b = random_vector<T>(n), factor((k + 1) * n), again(n);
    for (long r = 0; r < k; ++r)
      std::fill_n(a.begin() + r * n, k - r, element<T>(static_cast<double>(NAN)));  // corners are not read
    const std::vector<T> kept = a;
    T* library_factor = nullptr;
    Real first = 0, second = 0;
    T* x = Form<T>::posdef(n, a.data(), k, b.data(), ZENT_FACTOR, &library_factor, ZENT_CONDITION, &first, 0);
    const Release one(x), two(library_factor);
    ASSERT_NE(x, nullptr);
    EXPECT_LT(backward_error(m, b, x, false), 4.0 * k + 10) << n << " " << k;
    EXPECT_TRUE(same(kept, a.data()));
    // Row-major factor R with A = R^H R.
    for (long i : {0L, n / 2, n - 1}) {
      for (long j = i; j <= std::min(n - 1, i + k); ++j) {
        typename Form<T>::Value sum = 0;
        for (long l = std::max(0L, j - k); l <= i; ++l) {
          sum += conjugate(value(library_factor[(k + l - i) * n + i])) * value(library_factor[(k + l - j) * n + j]);
        }
        EXPECT_LT(std::abs(sum - value(m.at(i, j))), (20.0 * k + 20) * std::numeric_limits<Real>::epsilon());
      }
    }
    EXPECT_EQ(
        Form<T>::posdef(n, a.data(), k, nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, factor.data(), ZENT_CONDITION, &second, 0),
        nullptr);
    EXPECT_EQ(zent_error_code(), 0);
    EXPECT_EQ(first, second);
    const std::vector<T> factor_kept = factor;
    again = b;
    ASSERT_EQ(Form<T>::posdef(n, nullptr, k, again.data(), ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, factor.data(), ZENT_RETURN_USER,
                              again.data(), 0),
              again.data());
    EXPECT_LT(backward_error(m, b, again.data(), false), 4.0 * k + 10) << "factor only, then solve only: " << n << " " << k;
    EXPECT_TRUE(same(factor_kept, factor.data()));
    // In place.
    ASSERT_EQ(Form<T>::posdef(n, a.data(), k, b.data(), ZENT_FACTOR_USER, a.data(), ZENT_RETURN_USER, again.data(), 0),
              again.data());
    EXPECT_TRUE(same(again, x));
    std::fill(factor.begin() + k * n, factor.end(), T{});
    EXPECT_EQ(Form<T>::posdef(n, nullptr, k, b.data(), ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, factor.data(), 0), nullptr);
    EXPECT_EQ(zent_error_code(), MATH_FACTORED_MATRIX_SINGULAR);
    EXPECT_EQ(zent_error_type(), 4);
  }
}

TYPED_TEST(PosdefBand, RefusesWhatIsNotDefinite) {
  using T = TypeParam;
  for (const auto& [n, k, row] :
       {std::array<long, 3>{1, 0, 0}, {40, 5, 17}, {200, 60, 0}, {200, 60, 31}, {200, 60, 32}, {200, 60, 199}}) {
    for (double bad : {-1.0, 0.0, static_cast<double>(NAN)}) {
      Definite<T> m(n, k);
      m.at(row, row) = element<T>(bad);
      std::vector<T> a = m.upper(), b = random_vector<T>(n);
      const std::vector<T> kept = a;
      typename Form<T>::Real cond = -7;
      EXPECT_EQ(Form<T>::posdef(n, a.data(), k, b.data(), ZENT_CONDITION, &cond, 0), nullptr);
      EXPECT_EQ(zent_error_code(), MATH_NONPOSITIVE_MATRIX);
      EXPECT_EQ(zent_error_type(), 4);
      EXPECT_EQ(cond, -7);
      EXPECT_TRUE(same(kept, a.data()));
      EXPECT_EQ(zent::error_state<zent::Math>.i[1], row + 1) << n;
      if (!is_complex<T> || bad != -1.0) continue;
      m.at(row, row) = element<T>(std::complex<double>(5, 0.25));
      a = m.upper();
      EXPECT_EQ(Form<T>::posdef(n, a.data(), k, b.data(), 0), nullptr);
      EXPECT_EQ(zent_error_code(), MATH_HERMITIAN_DIAG_REAL);
      EXPECT_EQ(zent::error_state<zent::Math>.i[1], row);
      EXPECT_EQ(zent::error_state<zent::Math>.r[1], 0.25);
    }
  }
}

TEST(PosdefBandErrors, InTheirOrder) {
  be_quiet();
  double a[8] = {0, -1, -1, -1, 4, 4, 4, 4}, b[4] = {1, 1, 1, 1}, cond = 0, factor[8], x[4] = {17}, *null = nullptr;
  const auto solve = [&](long n, double* matrix, long ncoda, double* right, auto... options) {
    EXPECT_EQ(zent_d_lin_sol_posdef_band(n, matrix, ncoda, right, options..., ZENT_RETURN_USER, x, 0), nullptr);
    EXPECT_EQ(zent_error_type(), 5);
    EXPECT_EQ(x[0], 17);
    return zent_error_code();
  };
  EXPECT_EQ(solve(4, a, 1, b, ZENT_TRANSPOSE), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(solve(4, a, 1, b, ZENT_BLOCKING_FACTOR, 3), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(solve(4, null, 1, b), MATH_UNEXPECTED_NULL_POINTER);
  EXPECT_EQ(solve(4, a, 1, null), MATH_UNEXPECTED_NULL_POINTER);
  EXPECT_EQ(solve(4, a, 1, b, ZENT_FACTOR_USER, null), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(solve(4, a, 1, b, ZENT_CONDITION, null), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(solve(0, a, 9, b, ZENT_SOLVE_ONLY, ZENT_CONDITION, &cond), MATH_CONDITION_ONLY_SPECIFIER);
  EXPECT_EQ(solve(0, a, 9, b, ZENT_FACTOR_ONLY), MATH_FACTOR_ONLY_SPECIFIER);
  EXPECT_EQ(solve(0, a, 9, b, ZENT_SOLVE_ONLY), MATH_SPECIFY_SOLVE_ONLY);
  EXPECT_EQ(solve(0, a, 9, b), MATH_NEGATIVE_ORDER);
  EXPECT_EQ(solve(4, a, 4, b), MATH_UPPER_CODIAGONALS);
  EXPECT_EQ(solve(4, a, -1, b), MATH_UPPER_CODIAGONALS);
  EXPECT_EQ(zent_d_lin_sol_posdef_band(4L, null, 1L, null, ZENT_FACTOR_ONLY, ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, factor, 0), null);
  EXPECT_EQ(zent_error_code(), 0);
  // Ill-conditioned: a warning and a solution.
  double diagonal[] = {1e-20, 1, 1, 1};
  EXPECT_EQ(zent_d_lin_sol_posdef_band(4L, diagonal, 0L, b, ZENT_CONDITION, &cond, ZENT_RETURN_USER, x, 0), x);
  EXPECT_EQ(zent_error_code(), MATH_ILL_CONDITIONED);
  EXPECT_NEAR(cond, 1e20, 1e6);
  EXPECT_NEAR(x[0], 1e20, 1e6);
}

// The five passes on the explicit inverse. Signs that are all 1, some, or none of them 1 (off the real line) lead to different
// ways through a pass.
template <class T>
void expect_highams_estimate(unsigned seed) {
  using Value = typename Form<T>::Value;
  const long n = 3 + seed % 11, k = 1 + seed % 2;
  Definite<T> m(n, k);
  for (long i = 0; i < n; ++i) {
    for (long j = i + 1; seed % 4 == 0 && j <= std::min(n - 1, i + k); ++j) m.at(i, j) = m.at(j, i) = element<T>(-0.9);
  }
  std::vector<T> a = m.upper(), e(n), x(n);
  std::vector<Value> inverse(n * n), start(n, 1.0 / static_cast<double>(n));
  double cond = 0, norm = 0, estimate = 0;
  for (long j = 0; j < n; ++j) {
    std::fill(e.begin(), e.end(), T{});
    e[j] = element<T>(1.0);
    ASSERT_NE(Form<T>::posdef(n, a.data(), k, e.data(), ZENT_RETURN_USER, x.data(), ZENT_CONDITION, &cond, 0), nullptr);
    double sum = 0;
    for (long i = 0; i < n; ++i) inverse[i * n + j] = value(x[i]);
    for (long i = std::max(0L, j - k); i <= std::min(n - 1, j + k); ++i) sum += std::abs(value(m.at(i, j)));
    norm = std::max(norm, sum);
  }
  for (int pass = 0; pass < 5; ++pass) {
    std::vector<Value> y(n), z(n);
    estimate = 0;
    for (long i = 0; i < n; ++i) {
      for (long j = 0; j < n; ++j) y[i] += inverse[i * n + j] * start[j];
      estimate += std::abs(y[i]);
    }
    for (long i = 0; i < n; ++i) {
      Value sign = 1;
      if constexpr (is_complex<T>) {
        if (std::abs(y[i]) > 0) sign = y[i] / std::abs(y[i]);
      } else if (y[i] < 0) {
        sign = -1;
      }
      for (long j = 0; j < n; ++j) z[j] += inverse[j * n + i] * sign;
    }
    const auto size = [](Value v) { return std::abs(std::real(v)) + std::abs(std::imag(v)); };
    long best = 0;
    for (long j = 1; j < n; ++j) best = size(z[j]) > size(z[best]) ? j : best;
    std::fill(start.begin(), start.end(), Value{});
    start[best] = 1;
  }
  EXPECT_NEAR(cond / (norm * estimate), 1, 1e-9) << seed;
}
TEST(PosdefBandCondition, IsHighamsEstimateOfTheFifthPass) {
  be_quiet();
  engine.seed(31);
  for (unsigned seed = 0; seed < 60; ++seed) {
    expect_highams_estimate<double>(seed);
    expect_highams_estimate<zent_d_complex>(seed);
  }
}

// Powers of 4 go through all of the arithmetic, also where the norm or the inverse comes near the largest number.
TYPED_TEST(PosdefBand, EstimateHoldsAtTheEndsOfTheRange) {
  using T = TypeParam;
  using Real = typename Form<T>::Real;
  engine.seed(77);
  const long n = 5, k = 3;
  for (int trial = 0; trial < 3000; ++trial) {
    std::vector<T> a((k + 1) * n), x = random_vector<T>(n), scaled(a.size());
    double norm = 0;
    for (long r = 0; r <= k; ++r) {
      for (long j = k - r; j < n; ++j) a[r * n + j] = element<T>(r == k ? 1.9 : std::abs(value(random_element<T>())));
    }
    const auto condition = [&](int exponent) {
      Real cond = -1;
      for (std::size_t i = 0; i < a.size(); ++i) scaled[i] = element<T>(std::ldexp(1.0, exponent) * value(a[i]));
      EXPECT_NE(Form<T>::posdef(n, scaled.data(), k, x.data(), ZENT_CONDITION, &cond, ZENT_RETURN_USER, x.data(), 0), nullptr);
      x = random_vector<T>(n);
      return static_cast<double>(cond);
    };
    Real plain = -1;
    if (Form<T>::posdef(n, a.data(), k, x.data(), ZENT_CONDITION, &plain, ZENT_RETURN_USER, x.data(), 0) == nullptr) continue;
    for (long j = 0; j < n; ++j) {
      double sum = 0;
      for (long i = 0; i < n; ++i)
        sum += std::abs(i - j) > k ? 0 : std::abs(value(a[(k - std::abs(i - j)) * n + std::max(i, j)]));
      norm = std::max(norm, sum);
    }
    const int top = std::numeric_limits<Real>::max_exponent - 1;
    EXPECT_NEAR(condition((top - std::ilogb(norm)) / 2 * 2) / static_cast<double>(plain), 1, 1e-3);
    if (plain < 30) continue;
    EXPECT_NEAR(condition((std::ilogb(static_cast<double>(plain) / norm) - top) / 2 * 2) / static_cast<double>(plain), 1, 1e-3);
  }
}

// The inverse is within the range of the numbers, the sum of its elements beyond.
TEST(PosdefBandCondition, MayOverflow) {
  be_quiet();
  double a[] = {2.3e-308, 2.3e-308, 2.3e-308, 2.3e-308, 1, 2.3e-308, 2.3e-308, 2.3e-308}, b[8] = {}, x[8], cond = 0;
  EXPECT_EQ(zent_d_lin_sol_posdef_band(8L, a, 0L, b, ZENT_CONDITION, &cond, ZENT_RETURN_USER, x, 0), x);
  EXPECT_EQ(zent_error_code(), MATH_ILL_CONDITIONED);
  EXPECT_NEAR(cond * 2.3e-308, 1, 1e-9);
}

// Storage of many large pages, and transpositions of whole tiles in it.
TEST(PosdefBandCondition, OfALongBand) {
  be_quiet();
  engine.seed(5);
  const long n = 70001, k = 20;
  Definite<double> m(n, k);
  std::vector<double> a = m.upper(), b = random_vector<double>(n), x(n);
  double cond = 0, general = 0, *factor = nullptr;
  EXPECT_EQ(zent_d_lin_sol_gen_band(n, m.a.data(), k, k, b.data(), ZENT_CONDITION, &general, ZENT_RETURN_USER, x.data(), 0),
            x.data());
  EXPECT_LT(backward_error(m, b, x.data(), false), 100);
  EXPECT_EQ(zent_d_lin_sol_posdef_band(n, a.data(), k, b.data(), ZENT_CONDITION, &cond, ZENT_FACTOR, &factor, ZENT_RETURN_USER,
                                       x.data(), 0),
            x.data());
  const Release one(factor);
  EXPECT_LT(backward_error(m, b, x.data(), false), 100);
  EXPECT_NEAR(cond / general, 1, 1e-9);
  EXPECT_EQ(zent_d_lin_sol_posdef_band(n, nullptr, k, b.data(), ZENT_FACTOR_USER, factor, ZENT_SOLVE_ONLY, ZENT_RETURN_USER,
                                       x.data(), 0),
            x.data());
  EXPECT_LT(backward_error(m, b, x.data(), false), 100);
}

// The checks of the factorization of a general band, which the public solver makes unreachable.
TEST(BandFactor, ChecksItsSizes) {
  be_quiet();
  double a[15] = {}, fac[20];
  long pivots[5];
  const struct {
    long n, lda, nlca, nuca, ldfac, code;
  } bad[] = {{0, 3, 1, 1, 4, MATH_NEGATIVE_ORDER},
             {5, 3, 5, 1, 4, MATH_BAD_NLCA_VALUE_SPECIFIED},
             {5, 3, 1, -1, 4, MATH_BAD_NUCA_VALUE_SPECIFIED},
             {5, 2, 1, 1, 4, MATH_TOO_MANY_ROWS_IN_MATRIX_A},
             {5, 3, 1, 1, 3, MATH_TOO_MANY_ROWS_IN_FAC}};
  for (const auto& c : bad) {
    zent_e1psh("test");
    zent::band::l_l2trb(c.n, a, 1, c.lda, c.nlca, c.nuca, fac, c.ldfac, pivots, 1);
    EXPECT_EQ(zent_n1rcd(0), c.code);
    EXPECT_EQ(zent_n1rty(0), 5);
    zent_e1pop("test");
  }
}

}  // namespace
}  // namespace band_test
