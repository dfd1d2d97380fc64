// Zeros of polynomials: residuals and the polynomial recovered from its zeros, in all forms; ends of the exponent range, leading
// and trailing zeros, both routes, errors.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <vector>

#include "tests/support/quiet.hpp"

namespace {

using Wide = std::complex<long double>;

template <class T>
struct Form;
#define FORM(P, T, C, R)                                              \
  template <>                                                         \
  struct Form<T> {                                                    \
    using Complex = C;                                                \
    using Real = R;                                                   \
    static C* zeros(long n, const T* c, auto... rest) {               \
      return zent_##P##_zeros_poly(n, const_cast<T*>(c), rest..., 0); \
    }                                                                 \
  };
FORM(f, float, zent_f_complex, float)
FORM(d, double, zent_d_complex, double)
FORM(c, zent_f_complex, zent_f_complex, float)
FORM(z, zent_d_complex, zent_d_complex, double)
#undef FORM

template <class T>
constexpr bool is_complex = !std::is_floating_point_v<T>;
template <class T>
T make(long double re, long double im) {
  using Real = typename Form<T>::Real;
  if constexpr (is_complex<T>) {
    return {static_cast<Real>(re), static_cast<Real>(im)};
  } else {
    return static_cast<Real>(re);
  }
}
template <class T>
Wide widen(T x) {
  if constexpr (is_complex<T>) {
    return {x.re, x.im};
  } else {
    return {x, 0};
  }
}

// |p(z)| over the sum of the moduli of its terms.
template <class T, class C>
double residual(const std::vector<T>& c, C zero) {
  const long n = static_cast<long>(c.size()) - 1;
  Wide z = widen(zero), value = 0;
  const bool outside = std::abs(z) > 1;
  if (outside) z = 1.0L / z;
  const long double size = std::abs(z);
  long double sum = 0;
  for (long i = 0; i <= n; ++i) {
    const Wide a = widen(c[outside ? i : n - i]);
    value = value * z + a;
    sum = sum * size + std::abs(a);
  }
  return static_cast<double>(std::abs(value) / sum);
}

template <class T>
class Polynomials : public testing::Test {
 public:
  Polynomials() {
    be_quiet();
  }
};
using Forms = testing::Types<float, double, zent_f_complex, zent_d_complex>;
TYPED_TEST_SUITE(Polynomials, Forms);

enum Family { random_family, ones, circle, multiple, geometric, wide, lacunary, family_count };

template <class T>
std::vector<T> coefficients(Family family, long n) {
  using Real = typename Form<T>::Real;
  std::mt19937 g(static_cast<unsigned>(n) + 1);
  std::normal_distribution<double> normal;
  std::uniform_real_distribution<double> exponent(-1, 1);
  constexpr double top = sizeof(Real) == 4 ? 18 : 300;
  std::vector<T> c(n + 1);
  std::vector<Wide> product(n + 1);
  product[0] = 1;
  for (long k = 0; k < n; ++k) {  // zeros of the families given by them
    const Wide zero = family == multiple ? Wide(1, is_complex<T> ? 1 : 0)
                                         : std::pow(2.0L, -static_cast<long double>(k) / 4) *
                                               (is_complex<T> ? std::polar(1.0L, static_cast<long double>(k)) : Wide(1));
    for (long i = k + 1; i > 0; --i) product[i] = product[i - 1] - zero * product[i];
    product[0] *= -zero;
  }
  for (long i = 0; i <= n; ++i) {
    switch (family) {
      case random_family:
        c[i] = make<T>(normal(g), normal(g));
        break;
      case ones:
        c[i] = make<T>(1, 0);
        break;
      case circle:
        c[i] = make<T>(i == n ? 1 : i == 0 ? -1 : 0, 0);
        break;
      case wide:
        c[i] = make<T>(std::pow(10.0L, top * exponent(g)), std::pow(10.0L, top * exponent(g)));
        break;
      case lacunary:
        c[i] = make<T>(i % 7 == 0 || i == n ? normal(g) : 0, i % 5 == 0 ? normal(g) : 0);
        break;
      default:
        c[i] = make<T>(product[i].real(), product[i].imag());
    }
  }
  return c;
}

TYPED_TEST(Polynomials, ResidualsAreOfTheSizeOfRounding) {
  using F = Form<TypeParam>;
  using Real = typename F::Real;
  for (long n : {1L, 2L, 3L, 4L, 5L, 8L, 13L, 20L, 33L, 50L, 77L, 100L}) {
    if (is_complex<TypeParam> && n > 50) continue;
    for (int family = 0; family < family_count; ++family) {
      if ((family == multiple || family == geometric) && n > (sizeof(Real) == 4 ? 20 : 77)) continue;  // out of range
      SCOPED_TRACE(testing::Message() << "degree " << n << " family " << family);
      const std::vector<TypeParam> c = coefficients<TypeParam>(static_cast<Family>(family), n), kept = c;
      auto* z = F::zeros(n, c.data());
      ASSERT_NE(z, nullptr);
      EXPECT_EQ(zent_error_code(), 0);
      double worst = 0;
      for (long k = 0; k < n; ++k) {
        const double size = std::hypot(z[k].re, z[k].im);
        if (!(size > std::numeric_limits<Real>::min() && size < std::numeric_limits<Real>::max())) {
          EXPECT_EQ(family, wide) << "a zero that no number stands for";
          continue;
        }
        worst = std::max(worst, residual(c, z[k]));
      }
      EXPECT_LE(worst, (10 + static_cast<double>(n)) * std::numeric_limits<Real>::epsilon());
      zent_free_allocated_memory(z);
    }
  }
}

// A leading coefficient at the end of the range: one zero out of range, which must not keep the others from their last digits, or
// a derivative that is lost far inside the circle of the zeros.
TYPED_TEST(Polynomials, LeastLeadingCoefficient) {
  using F = Form<TypeParam>;
  using Real = typename F::Real;
  for (Family family : {multiple, circle}) {
    for (long n : {28L, 42L}) {
      std::vector<TypeParam> c = coefficients<TypeParam>(family, n);
      c[n] = make<TypeParam>(std::numeric_limits<Real>::denorm_min(), 0);
      std::vector<typename F::Complex> z(n);
      F::zeros(n, c.data(), ZENT_RETURN_USER, z.data());
      EXPECT_EQ(zent_error_code(), 0);
      double worst = 0;
      for (const auto& zero : z) {
        if (std::isfinite(zero.re) && std::isfinite(zero.im)) worst = std::max(worst, residual(c, zero));
      }
      EXPECT_LE(worst, (10 + static_cast<double>(n)) * std::numeric_limits<Real>::epsilon()) << family << " " << n;
    }
  }
}

// Each zero is there as often as it should be: the product of the linear factors is the polynomial.
TYPED_TEST(Polynomials, FactorsMultiplyToThePolynomial) {
  using F = Form<TypeParam>;
  using Real = typename F::Real;
  for (int family = 0; family < family_count; ++family) {
    if (family == wide) continue;
    for (long n : {3L, 7L, 14L, 20L}) {
      const std::vector<TypeParam> c = coefficients<TypeParam>(static_cast<Family>(family), n);
      std::vector<typename F::Complex> z(n);
      for (bool companion : {false, true}) {
        if (companion && family == geometric) continue;  // its coefficients differ too much
        SCOPED_TRACE(testing::Message() << "degree " << n << " family " << family << " companion " << companion);
        companion ? F::zeros(n, c.data(), ZENT_RETURN_USER, z.data(), ZENT_COMPANION)
                  : F::zeros(n, c.data(), ZENT_RETURN_USER, z.data());
        EXPECT_EQ(zent_error_code(), 0);
        std::vector<Wide> product(n + 1), sizes(n + 1);
        product[0] = sizes[0] = widen(c[n]);
        sizes[0] = std::abs(sizes[0]);
        for (long k = 0; k < n; ++k) {
          for (long i = k + 1; i > 0; --i) {
            product[i] = product[i - 1] - widen(z[k]) * product[i];
            sizes[i] = sizes[i - 1] + std::abs(widen(z[k])) * sizes[i];
          }
          product[0] *= -widen(z[k]);
          sizes[0] *= std::abs(widen(z[k]));
        }
        for (long i = 0; i <= n; ++i) {
          const double error = static_cast<double>(std::abs(product[i] - widen(c[i])) / std::abs(sizes[i]));
          const double factor = family == multiple ? 4000 : companion ? 50 : 20;
          EXPECT_LE(error, factor * static_cast<double>(n) * std::numeric_limits<Real>::epsilon()) << i;
        }
      }
    }
  }
}

// Real polynomials: zeros are real or stand in conjugate pairs, the positive imaginary part first.
TEST(RealPolynomials, PairsStandTogether) {
  be_quiet();
  for (long n : {9L, 40L, 99L}) {
    const auto c = coefficients<double>(random_family, n);
    auto* z = Form<double>::zeros(n, c.data());
    for (long k = 0; k < n; ++k) {
      if (z[k].im == 0) continue;
      ASSERT_LT(k + 1, n);
      EXPECT_GT(z[k].im, 0);
      EXPECT_EQ(z[k].re, z[k + 1].re);
      EXPECT_EQ(z[k].im, -z[k + 1].im);
      ++k;
    }
    zent_free_allocated_memory(z);
  }
}

// Zeros known in closed form.
TYPED_TEST(Polynomials, KnownZeros) {
  using F = Form<TypeParam>;
  using Real = typename F::Real;
  const Real eps = std::numeric_limits<Real>::epsilon();
  const auto solve = [](std::vector<std::pair<double, double>> values) {
    std::vector<TypeParam> c;
    for (auto v : values) c.push_back(make<TypeParam>(v.first, v.second));
    const long n = static_cast<long>(c.size()) - 1;
    auto* z = F::zeros(n, c.data());
    std::vector<typename F::Complex> out(z, z + n);
    zent_free_allocated_memory(z);
    return out;
  };
  const auto two = solve({{6, 0}, {-5, 0}, {1, 0}});
  EXPECT_NEAR(two[0].re, 2, 2 * eps);
  EXPECT_NEAR(two[1].re, 3, 3 * eps);
  // The two zeros of a quadratic whose discriminant loses half of its digits: b^2 and 4 a c agree in them.
  const double b = sizeof(Real) == 4 ? 4097 : 134217729;
  const auto close = solve({{b * b - 1 > 0 ? (b - 1) / 2 * ((b + 1) / 2) : 0, 0}, {-b, 0}, {1, 0}});
  EXPECT_NEAR(close[0].re, (b - 1) / 2, b * eps);
  EXPECT_NEAR(close[1].re, (b + 1) / 2, b * eps);
  const auto small = solve({{1, 0}, {-1e10, 0}, {1, 0}});
  EXPECT_NEAR(small[0].re * Real(1e10), 1, 4 * eps);
  EXPECT_NEAR(small[1].re / Real(1e10), 1, 4 * eps);
  const auto cubic = solve({{-6, 0}, {11, 0}, {-6, 0}, {1, 0}});
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(cubic[k].re, k + 1, 20 * eps);
  if constexpr (is_complex<TypeParam>) {
    const auto i = solve({{-2, 0}, {-1, -1}, {1, -1}, {0, 0}, {0, 0}});  // leading zeros and a quadratic
    EXPECT_TRUE(std::isinf(i[0].re) && std::isinf(i[1].re));
    EXPECT_EQ(zent_error_code(), MATH_ZERO_COEFF);
  }
}

TYPED_TEST(Polynomials, ZerosAtInfinityAndAtTheOrigin) {
  using F = Form<TypeParam>;
  using Real = typename F::Real;
  const auto c = [](std::vector<double> v) {
    std::vector<TypeParam> out;
    for (double x : v) out.push_back(make<TypeParam>(x, 0));
    return out;
  };
  const Real inf = std::numeric_limits<Real>::infinity();
  auto a = c({0, 0, -1, 1, 0});
  auto* z = F::zeros(4, a.data());
  EXPECT_EQ(zent_error_code(), MATH_ZERO_COEFF);
  EXPECT_EQ(zent_error_type(), 3);
  EXPECT_EQ(z[0].re, inf);
  EXPECT_EQ(z[0].im, 0);
  EXPECT_EQ(z[1].re, 0);
  EXPECT_EQ(z[2].re, 0);
  EXPECT_NEAR(z[3].re, 1, 1e-6);
  zent_free_allocated_memory(z);
  for (auto v : {c({0, 0, 0}), c({5, 0, 0})}) {
    z = F::zeros(2, v.data());
    EXPECT_EQ(zent_error_code(), MATH_ZERO_COEFF);
    EXPECT_TRUE(z[0].re == inf && z[1].re == inf && z[1].im == 0);
    zent_free_allocated_memory(z);
  }
  // Not a number among the coefficients: nothing is found; storage of the caller stays.
  auto bad = c({1, 2, 3, 4});
  bad[1] = make<TypeParam>(std::numeric_limits<double>::quiet_NaN(), 0);
  z = F::zeros(3, bad.data());
  EXPECT_EQ(zent_error_code(), MATH_FEWER_ZEROS_FOUND);
  EXPECT_TRUE(std::isnan(z[2].re));
  zent_free_allocated_memory(z);
  std::vector<typename F::Complex> own(3, {7, 7});
  F::zeros(3, bad.data(), ZENT_RETURN_USER, own.data());
  EXPECT_EQ(own[2].re, 7);
  // The companion matrix of a leading zero has no finite element.
  z = F::zeros(4, a.data(), ZENT_COMPANION);
  ASSERT_NE(z, nullptr);
  EXPECT_TRUE(std::isnan(z[0].re));
  zent_free_allocated_memory(z);
}

TYPED_TEST(Polynomials, BadArguments) {
  using F = Form<TypeParam>;
  constexpr long limit = is_complex<TypeParam> ? 50 : 100;
  constexpr long refused = is_complex<TypeParam> ? MATH_POLYNOMIAL_DEGREE_50 : MATH_POLYNOMIAL_DEGREE;
  std::vector<TypeParam> c(limit + 2, make<TypeParam>(1, 0));
  const auto code = [](const void* result) {
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(zent_error_type(), 5);
    return zent_error_code();
  };
  EXPECT_EQ(code(F::zeros(0, c.data())), refused);
  EXPECT_EQ(code(F::zeros(-1, c.data(), ZENT_COMPANION)), refused);
  EXPECT_EQ(code(F::zeros(limit + 1, c.data())), refused);
  EXPECT_EQ(code(F::zeros(3, static_cast<TypeParam*>(nullptr))), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(code(F::zeros(3, c.data(), 12345)), MATH_UNKNOWN_OPTION);
}

// Roots of unity, which are as well conditioned as zeros can be.
TYPED_TEST(Polynomials, CompanionOfAnyDegree) {
  using F = Form<TypeParam>;
  constexpr double bound = 100 * static_cast<double>(std::numeric_limits<typename F::Real>::epsilon());
  const std::vector<TypeParam> c(202, make<TypeParam>(1, 0));
  auto* z = F::zeros(201, c.data(), ZENT_COMPANION);
  ASSERT_NE(z, nullptr);
  for (long k = 0; k < 201; ++k) {
    EXPECT_NEAR(std::hypot(z[k].re, z[k].im), 1, bound);
    const double turns = std::atan2(z[k].im, z[k].re) / 6.283185307179586 * 202;
    EXPECT_NEAR(turns, std::round(turns), 32 * bound);
  }
  zent_free_allocated_memory(z);
}

}  // namespace
