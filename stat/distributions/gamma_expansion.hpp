// The incomplete gamma function for large parameters around the mean.
//
// Method: the uniform expansion of Temme (DLMF 8.12.4 and 8.12.7), whose coefficients are power series in eta; the tables come
// from tools/gamma_expansion.py.
#pragma once

#include "stat/distributions/normal.hpp"

namespace zent::distributions {

inline constexpr double gamma_expansion_0[15] = {
    -0.33333333333333331,    0.083333333333333329,   -0.014814814814814815,  0.0011574074074074073,   0.00035273368606701942,
    -0.0001787551440329218,  3.9192631785224377e-05, -2.185448510679992e-06, -1.85406221071516e-06,   8.2967113409530865e-07,
    -1.7665952736826078e-07, 6.7078535434014984e-09, 1.0261809784240309e-08, -4.3820360184533529e-09, 9.1476995822367902e-10};
inline constexpr double gamma_expansion_1[13] = {
    -0.0018518518518518519, -0.003472222222222222,   0.0026455026455026454,  -0.00099022633744855963, 0.00020576131687242798,
    -4.018775720164609e-07, -1.8098550334489977e-05, 7.6491609160811098e-06, -1.6120900894563446e-06, 4.647127802807434e-09,
    1.3786334469157209e-07, -5.7525456035177047e-08, 1.1951628599778148e-08};
inline constexpr double gamma_expansion_2[11] = {0.0041335978835978834,   -0.0026813271604938273, 0.0007716049382716049,
                                                 2.0093878600823047e-06,  -0.0001073665322636516, 5.2923448829120125e-05,
                                                 -1.2760635188618728e-05, 3.4235787340961378e-08, 1.3721957309062934e-06,
                                                 -6.2989921383800548e-07, 1.4280614206064242e-07};
inline constexpr double gamma_expansion_3[9] = {0.00064943415637860077, 0.00022947209362139917,  -0.0004691894943952557,
                                                0.00026772063206283885, -7.5618016718839766e-05, -2.3965051138672968e-07,
                                                1.1082654115347302e-05, -5.6749528269915965e-06, 1.4230900732435883e-06};
inline constexpr double gamma_expansion_4[6] = {-0.00086188829091671173, 0.00078403922172006662, -0.00029907248030319018,
                                                -1.4638452578843418e-06, 6.6414982154651219e-05, -3.9683650471794347e-05};

template <int count, class Real>
inline Real polynomial(const double (&c)[count], Real x) {
  Real sum = static_cast<Real>(c[count - 1]);
  for (int i = count - 2; i >= 0; --i) sum = sum * x + static_cast<Real>(c[i]);
  return sum;
}

// Where the tables serve; farther out the series and the fraction are short.
template <class Real>
inline bool is_near_mean(Real x, Real a) {
  return a >= 200 && std::abs(x - a) <= static_cast<Real>(0.3) * a;
}

// The upper integral over gamma(a).
template <class Real>
inline Real gamma_rest_near_mean(Real x, Real a) {
  const Real d = (x - a) / a, decline = d - std::log1p(d), r = 1 / a;
  const Real eta = std::copysign(std::sqrt(2 * decline), d);
  const Real high = polynomial(gamma_expansion_3, eta) + polynomial(gamma_expansion_4, eta) * r;
  const Real low = polynomial(gamma_expansion_1, eta) + (polynomial(gamma_expansion_2, eta) + high * r) * r;
  const Real correction = polynomial(gamma_expansion_0, eta) + low * r;
  const Real value = normal_area(-eta * std::sqrt(a)) + std::exp(-a * decline) / std::sqrt(2 * pi<Real> * a) * correction;
  return value < 1 ? value : 1;
}

}  // namespace zent::distributions
