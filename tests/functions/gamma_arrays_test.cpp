// Fast forms beside the plain ones: element loops beside single calls, series beside iterations and recurrences.
#include <bit>
#include <cstring>
#include <random>

#include "math/functions/arrays.hpp"
#include "math/functions/elliptic.hpp"
#include "math/functions/erf.hpp"
#include "math/functions/incomplete_beta.hpp"
#include "math/functions/incomplete_gamma.hpp"
#include "reference.hpp"

namespace {

using namespace functions_test;

template <class Real>
std::vector<Real> arguments(unsigned seed, double low, double high) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> uniform(low, high);
  std::vector<Real> x(300);
  for (Real& value : x) value = static_cast<Real>(uniform(generator));
  // What goes the long way: poles, limits, both infinities, not-a-number.
  const double odd[] = {0.0, -0.0, -1, 1, 2, 200, -200, 1e300, HUGE_VAL, -HUGE_VAL, std::nan("")};
  for (int k = 0; k < 11; ++k) x[10 * k + 7] = static_cast<Real>(odd[k]);
  return x;
}

template <class Real>
bool same_bits(Real a, Real b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

template <class Real, class... Reals>
void loop_is_calls(Real (*f)(Reals...), double low, double high) {
  be_quiet();
  const auto x = arguments<Real>(1, low, high), y = arguments<Real>(2, 0.1, 20), z = arguments<Real>(3, 0.1, 20);
  std::vector<Real> out(x.size());
  constexpr int count = sizeof...(Reals);
  zent::functions::apply(reinterpret_cast<void*>(f), count, static_cast<long>(x.size()), x.data(), y.data(), z.data(),
                         out.data());
  for (std::size_t i = 0; i < x.size(); ++i) {
    const std::vector<double> point = {static_cast<double>(x[i]), static_cast<double>(y[i]), static_cast<double>(z[i])};
    EXPECT_TRUE(same_bits(out[i], call(f, point))) << x[i] << " " << y[i] << " " << z[i];
  }
  std::vector<Real> in_place = x;  // the result may take the place of an argument
  zent::functions::apply(reinterpret_cast<void*>(f), count, static_cast<long>(x.size()), in_place.data(), y.data(), z.data(),
                         in_place.data());
  for (std::size_t i = 0; i < x.size(); ++i) EXPECT_TRUE(same_bits(out[i], in_place[i]));
}

#define LOOP(name, low, high)                \
  TEST(Loop, name) {                         \
    loop_is_calls(zent_d_##name, low, high); \
    loop_is_calls(zent_f_##name, low, high); \
  }
LOOP(erf, -5, 5)
LOOP(erfc, -5, 30)
LOOP(erf_inverse, -1.1, 1.1)
LOOP(erfc_inverse, -0.1, 2.1)
LOOP(gamma, -30, 40)
LOOP(log_gamma, -30, 40)
LOOP(beta, 0, 200)
LOOP(log_beta, 0, 200)
LOOP(gamma_incomplete, 0, 40)
LOOP(beta_incomplete, 0, 1)
LOOP(elliptic_integral_K, -0.2, 1.2)
LOOP(elliptic_integral_E, -0.2, 1.2)
LOOP(elliptic_integral_RF, -1, 9)
LOOP(elliptic_integral_RC, -1, 9)
LOOP(elliptic_integral_RD, -1, 9)

TEST(Loop, AnyOtherFunctionAndTheErrorOfTheLastElement) {
  be_quiet();
  const double x[] = {0.5, 0, 2};
  double out[3];
  zent::functions::apply(reinterpret_cast<void*>(zents_d_gamma), 1, 3, x, nullptr, nullptr, out);
  EXPECT_EQ(out[2], 1);
  EXPECT_EQ(zents_error_code(), 0);
  zent::functions::apply(reinterpret_cast<void*>(zent_d_gamma), 1, 2, x, nullptr, nullptr, out);
  EXPECT_EQ(zent_error_code(), MATH_ARG_ZERO);
  zent::functions::apply(reinterpret_cast<void*>(zent_d_gamma), 1, 3, x, nullptr, nullptr, out);
  EXPECT_EQ(zent_error_code(), 0);
  EXPECT_TRUE(is_failure(out[1]));
  zent::functions::apply(reinterpret_cast<void*>(zent_d_gamma), 1, 0, x, nullptr, nullptr, nullptr);
}

template <class Real>
void series_is_iteration(Real smallest) {
  using namespace zent::functions;
  for (Real p = smallest; p < Real(0.25); p *= Real(1.7)) {
    Real iterated;
    ASSERT_TRUE(erfc_inverse_tail(p, iterated)) << p;
    EXPECT_NEAR(erfc_inverse_by_series(p) / iterated, 1, 8 * std::numeric_limits<Real>::epsilon()) << p;
  }
}
TEST(Twins, ErfcInverse) {
  series_is_iteration<double>(0x1p-1074);
  series_is_iteration<float>(0x1p-149F);
}

TEST(Twins, PowerFormOfASeries) {
  using namespace zent::functions;
  for (int i = -100; i <= 100; ++i) {
    const double t = i / 100.0;
    EXPECT_NEAR(zent::series::evaluate_in_pairs<lv_gamcs>(t), zent::series::chebyshev<lv_gamcs>(t), 4e-16) << t;
    EXPECT_NEAR(zent::series::evaluate<lv_erfccs>(t), zent::series::chebyshev<lv_erfccs>(t), 4e-16) << t;
    EXPECT_NEAR(zent::series::evaluate_in_pairs<lv_erfi2cs>(t), zent::series::chebyshev<lv_erfi2cs>(t), 4e-16) << t;
    EXPECT_NEAR(zent::series::evaluate<lv_alnrcs>(static_cast<float>(t)), zent::series::chebyshev<lv_alnrcs>(t), 2e-7) << t;
  }
}

// The short duplications, series and elementary forms beside the long duplications.
template <class Real>
void elliptic_twins() {
  using namespace zent::functions;
  constexpr Real epsilon = std::numeric_limits<Real>::epsilon();
  std::mt19937 generator(5);
  std::uniform_real_distribution<double> exponent(-9, 9), unit(0, 1);
  double spread = 1;
  const auto draw = [&] { return static_cast<Real>(std::exp2(exponent(generator) * spread)); };
  for (int i = 0; i < 3000; ++i) {
    spread = i % 3 == 0 ? 0.002 : i % 3 == 1 ? 0.02 : 1;  // near to each other they show each term of the closing expansions
    const Real x = i % 10 == 0 ? Real(i % 20 == 0 ? 0 : -0.0) : draw(), y = draw(), z = draw(), rho = draw();
    EXPECT_NEAR(rf(x, y, z) / plain_rf(x, y, z), 1, 8 * epsilon) << x << " " << y << " " << z;
    EXPECT_NEAR(rd(x, y, z) / plain_rd(x, y, z), 1, 8 * epsilon) << x << " " << y << " " << z;
    EXPECT_NEAR(rj(x, y, z, rho) / plain_rj(x, y, z, rho), 1, 10 * epsilon) << x << " " << y << " " << z << " " << rho;
    EXPECT_NEAR(rc(x, y) / duplicated_rc(x, y), 1, 8 * epsilon) << x << " " << y;
    const Real m = static_cast<Real>(i % 2 == 0 ? unit(generator) : 1 - std::exp2(exponent(generator) - 10)), one = 1;
    if (m < 0 || m >= 1) continue;
    const Real k = plain_rf<Real>(0, one - m, one), d = m * plain_rd<Real>(0, one - m, one) / 3;
    EXPECT_NEAR(complete_k(m) / k, 1, 8 * epsilon) << m;
    EXPECT_NEAR(complete_e(m), k - d, 4 * epsilon * (k + d)) << m;
  }
}
TEST(Twins, EllipticIntegrals) {
  elliptic_twins<double>();
  elliptic_twins<float>();
}

TEST(Twins, SumsAndFractionsOfTheIncompleteGammaFunction) {
  using namespace zent::functions;
  for (double a : {0.5, 3.0, 17.5, 60.0, 120.0}) {
    for (double x : {1.5, a / 2, a}) {
      if (x > a || x <= 1) continue;
      const auto h = l_r9lgit(a, x);
      EXPECT_EQ(h.number, 0);
      EXPECT_NEAR(lower_sum(a, x) * h.value, 1, 1e-13) << a << " " << x;
    }
    const double x = a + 4;
    const double upper = power_times_exponential(a, x) * l_r9lgic(a, x).value;
    const double lower = power_times_exponential(a, x) / a * lower_sum(a, x);
    EXPECT_NEAR((lower + upper) / zent_d_gamma(a), 1, 1e-13) << a;
  }
}

TEST(Twins, SumsAndFractionsOfTheIncompleteBetaFunction) {
  using namespace zent::functions;
  for (double a : {0.5, 1.0, 7.25, 40.0, 199.5}) {
    for (double b : {0.5, 2.0, 11.0, 60.75, 180.0}) {
      for (double x = 0.02; x < 1; x += 0.02) {
        double log_beta = 0, sums = 0, fraction = 0;
        ASSERT_TRUE(plain_log_beta(a, b, log_beta));
        ASSERT_TRUE(beta_by_sums(x, a, b, log_beta, sums));
        if (!beta_tail(x, a, b, log_beta, fraction)) continue;
        EXPECT_NEAR(sums, fraction, 7e-14) << x << " " << a << " " << b;
      }
    }
  }
}

}  // namespace
