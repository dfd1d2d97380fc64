// The normal distribution in one and two dimensions.
//
// Methods: erfc and its inverse; two dimensions through Owen's function T (Owen 1956), by Gauss-Legendre quadrature.
#pragma once

#include "math/functions/erf.hpp"
#include "stat/distributions/entry.hpp"

namespace zent::distributions {

template <class Real>
inline constexpr Real root_half = static_cast<Real>(0.7071067811865476);
template <class Real>
inline constexpr Real pi = static_cast<Real>(3.14159265358979323846);

// x sqrt(1/2) less its rounded value z: the rounding error of the product, by exact products of halves, and that of the constant.
template <class Real>
[[gnu::always_inline]] inline Real root_half_rest(Real x, Real z) {
  constexpr bool is_single = sizeof(Real) == sizeof(float);
  constexpr Real root = root_half<Real>, root_rest = static_cast<Real>(0.70710678118654752440L - root);
  constexpr Real splitter = is_single ? 4097 : 134217729;
  constexpr Real root_high = root * splitter - (root * splitter - root), root_low = root - root_high;
  const Real split = x * splitter, high = split - (split - x), low = x - high;
  return ((high * root_high - z) + high * root_low + low * root_high) + low * root_low + x * root_rest;
}

// Total: an underflow of erfc is a plain 0 here. In the lower tail the rounding of the argument would cost as many epsilon as its
// square.
template <class Real>
[[gnu::always_inline]] inline Real normal_area(Real x) {
  const Real z = -x * root_half<Real>;
  Real area = 0;
  if (!functions::plain_erfc(z, area)) return 0;
  if (z > 1) area -= area * (2 * z) * root_half_rest(-x, z);
  return static_cast<Real>(0.5) * area;
}
template <class Real>
inline bool plain_normal_cdf(Real x, Real& value) {
  value = x != x ? x : normal_area(x);
  return true;
}
template <class Real>
Real l_normal_cdf(Real x) {
  return x != x ? x : normal_area(x);
}

template <class Real>
inline bool plain_normal_inverse_cdf(Real p, Real& value) {
  if (!functions::plain_erfc_inverse(2 * p, value)) return false;
  value = 0 - value * static_cast<Real>(1.41421356237309504880);  // 0, not -0, at a half
  return true;
}
template <class Real>
Real l_normal_inverse_cdf(Real p) {
  Real value = 0;
  if (plain_normal_inverse_cdf(p, value)) return value;
  if (!is_open_probability(p)) return refuse(5, STAT_NEED_ZERO_LT_P_LT_ONE, p);
  return -static_cast<Real>(1.41421356237309504880) * functions::erfc_inverse<Half>(2 * p);
}

// The same without a warning for p near 1, for starting points.
template <class Real>
inline Real quiet_normal_inverse(Real p) {
  Real value = 0;
  if (plain_normal_inverse_cdf(p, value)) return value;
  functions::erfc_inverse_tail(2 * (1 - p), value);
  return value * static_cast<Real>(1.41421356237309504880);
}

// Nodes and weights of the Gauss-Legendre rule of 20 points on (-1, 1), the positive half.
inline constexpr double gauss_node[10] = {0.993128599185094925, 0.963971927277913791, 0.912234428251325906, 0.839116971822218823,
                                          0.746331906460150793, 0.636053680726515025, 0.510867001950827098, 0.373706088715419561,
                                          0.227785851141645078, 0.0765265211334973338};
inline constexpr double gauss_weight[10] = {
    0.0176140071391521183, 0.0406014298003869413, 0.0626720483341090636, 0.0832767415767047487, 0.101930119817240435,
    0.118194531961518417,  0.131688638449176627,  0.142096109318382051,  0.149172986472603747,  0.152753387130725851};

// Owen's T for 0 <= a <= 1, h >= 0: the integral of exp(-h^2 (1 + t^2)/2)/(1 + t^2) from 0 to a, over 2 pi. What lies beyond
// 9 standard deviations does not count; long ranges are halved, since one rule follows about 5 of them.
template <class Real>
Real owen_t_small(Real h, Real a) {
  const Real reach = h * a > 9 ? 9 / h : a;
  const int panels = h * reach > 4 ? 2 : 1;
  const Real half = reach / static_cast<Real>(2 * panels), exponent = -h * h / 2;
  Real sum = 0;
  for (int panel = 0; panel < panels; ++panel) {
    const Real middle = half * static_cast<Real>(2 * panel + 1);
    for (int i = 0; i < 10; ++i) {
      const Real offset = half * static_cast<Real>(gauss_node[i]);
      const Real below = (middle - offset) * (middle - offset), above = (middle + offset) * (middle + offset);
      sum += static_cast<Real>(gauss_weight[i]) *
             (std::exp(exponent * below) / (1 + below) + std::exp(exponent * above) / (1 + above));
    }
  }
  return sum * half * functions::exp_minus_square(h * root_half<Real>) / (2 * pi<Real>);
}

// T(h, a) for all arguments: even in h, odd in a, and T(h, a) + T(ah, 1/a) is known for a > 0.
template <class Real>
Real l_b1nnt(Real h, Real a) {
  const Real quarter = static_cast<Real>(0.25), half = static_cast<Real>(0.5);
  const Real y = std::abs(h), b = std::abs(a);
  Real value;
  if (y == 0) {
    value = std::atan(b) / (2 * pi<Real>);
  } else if (b <= 1) {
    value = owen_t_small(y, b);
  } else {
    const Real upper = normal_area(-y), other = normal_area(-b * y);
    if (b * y > Machine<Real>::largest) {
      value = half * upper;
    } else if (y < static_cast<Real>(0.5)) {  // both areas below a half: from the middle they cancel less
      value = quarter - (half - upper) * (half - other) - owen_t_small(b * y, 1 / b);
    } else {
      value = half * (upper + other) - upper * other - owen_t_small(b * y, 1 / b);
    }
  }
  return a < 0 ? -value : value;
}

// log of normal_area, also where that underflows: by its asymptotic series.
inline double log_normal_area(double x) {
  const double area = normal_area(x);
  if (area >= Machine<double>::smallest) return std::log(area);
  const double r = 1 / (x * x);
  return -x * x / 2 - std::log(-x) - 0.9189385332046728 + std::log1p(-r * (1 - r * (3 - r * (15 - r * 105))));
}

// The place of the greatest value of a function with one hump, by golden section.
template <class Function>
double find_peak(Function f, double low, double high, double precision) {
  for (int i = 0; i < 100 && high - low > precision; ++i) {
    const double u = low + 0.381966 * (high - low), v = high - 0.381966 * (high - low);
    if (f(u) < f(v)) {
      low = u;
    } else {
      high = v;
    }
  }
  return (low + high) / 2;
}

// The lower tail as the integral of the density of X times the probability of Y <= y given X, over X <= x: all terms are
// positive. Panels as wide as the hump is at its narrowest; negative when there would be too many.
inline double bivariate_tail(double x, double y, double rho) {
  if (x < -39) return 0;
  const double root = std::sqrt((1 - rho) * (1 + rho));
  const auto f = [=](double u) { return -u * u / 2 + log_normal_area((y - rho * u) / root); };
  const double peak = find_peak(f, x - 60, x, root / 4);
  const double top = f(peak), slope = (top - f(peak - root / 4)) / (root / 4);
  double width = 2 * root;
  if (slope * width > 20) width = 20 / slope;
  double sum = 0;
  for (int side = 0; side < 2; ++side) {  // away from the peak to the right, up to x, and to the left
    double at = peak;
    for (int panel = 0; side == 0 || at < x; ++panel) {
      if (panel == 2000) return -1;
      const double half = (side == 1 && at + width > x ? x - at : width) / 2, middle = side == 0 ? at - half : at + half;
      double part = 0;
      for (int i = 0; i < 10; ++i) {
        part += gauss_weight[i] *
                (std::exp(f(middle - half * gauss_node[i]) - top) + std::exp(f(middle + half * gauss_node[i]) - top));
      }
      sum += part * half;
      if (part * half < 1e-18 * sum) break;
      at += side == 0 ? -2 * half : 2 * half;
    }
  }
  return sum * std::exp(top) / std::sqrt(2 * pi<double>);
}

// |rho| < 1, x and y up to 40.
template <class Real>
Real l_bnrdf(Real x, Real y, Real rho) {
  const Real half = static_cast<Real>(0.5), quarter = static_cast<Real>(0.25);
  if (x == 0 && y == 0) return quarter + std::asin(rho) / (2 * pi<Real>);
  const Real root = std::sqrt((1 - rho) * (1 + rho));
  const Real tx = x == 0 ? std::copysign(quarter, y) : l_b1nnt(x, (y / x - rho) / root);
  const Real ty = y == 0 ? std::copysign(quarter, x) : l_b1nnt(y, (x / y - rho) / root);
  const bool opposite = (x < 0) != (y < 0) && !(x == 0 && y > 0) && !(y == 0 && x > 0);
  Real value = half * (normal_area(x) + normal_area(y)) - tx - ty - (opposite ? half : 0);
  if (value < static_cast<Real>(0.01)) {  // the parts above cancel
    const double tail = x < y ? bivariate_tail(shown(x), shown(y), shown(rho)) : bivariate_tail(shown(y), shown(x), shown(rho));
    if (tail >= 0) value = static_cast<Real>(tail);
  }
  return value < 0 ? 0 : value > 1 ? 1 : value;
}

template <class Real>
inline bool plain_bivariate_normal_cdf(Real x, Real y, Real rho, Real& value) {
  if (x != x || y != y || rho != rho) {
    value = x != x ? x : y != y ? y : rho;
    return true;
  }
  if (!(std::abs(rho) <= 1)) return false;
  const Real far = 40;  // as good as infinite
  if (x < -far || y < -far) {
    value = 0;
  } else if (x > far || y > far) {
    value = normal_area(x > far ? y : x);
  } else if (rho == 1) {
    value = normal_area(x < y ? x : y);
  } else if (rho == -1) {
    const Real less = x < y ? x : y, more = x < y ? y : x;  // the smaller areas keep the digits of the difference
    value = x > -y ? normal_area(less) - normal_area(-more) : 0;
  } else {
    value = l_bnrdf(x, y, rho);
  }
  return true;
}
template <class Real>
Real l_bivariate_normal_cdf(Real x, Real y, Real rho) {
  Real value = 0;
  return plain_bivariate_normal_cdf(x, y, rho, value) ? value : refuse(5, STAT_NEED_ABS_RHO_LE_1, rho);
}

}  // namespace zent::distributions
