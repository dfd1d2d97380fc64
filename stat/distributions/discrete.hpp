// The binomial, Poisson and hypergeometric distributions.
//
// Methods: sums of terms, each from the one before. A term that would underflow is carried as a number and a count of blocks,
// each block a factor of nearly the smallest number.
#pragma once

#include <type_traits>

#include "math/functions/binomial.hpp"
#include "stat/distributions/beta.hpp"

namespace zent::distributions {

// What a sum gives: the distribution function or the probability of its last term.
enum class Kind { cdf, pdf };

// Longer sums than this give way to the incomplete functions, which they equal: the rounding of so many products would show.
inline constexpr long longest_sum = 100, longest_hyper_sum = 10000;

template <class Real>
struct Sums {
  Real sum, term;
};

// A positive number below 1 that may underflow: value times block^blocks.
template <class Real>
struct Blocked {
  Real value;
  long blocks;
  void multiply(Real factor, Real block) {
    const Real product = value * factor;
    if (product >= block) {
      value = product;
    } else {
      value = value / block * factor;
      ++blocks;
    }
  }
};

// t^n, in parts that do not underflow: one exponential of n log t would carry the rounding error of a large exponent.
template <class Real>
inline Blocked<Real> blocked_power(Real t, long n, Real block) {
  if (t == 1) return {1, 0};
  const Real longest = std::log(block) / std::log(t);
  const long each = longest < static_cast<Real>(n) ? (longest > 1 ? static_cast<long>(longest) : 1) : n;
  Blocked<Real> power = {1, 0};
  if (each < n) {
    const Real factor = std::pow(t, static_cast<Real>(each));
    for (; n > each; n -= each) power.multiply(factor, block);
  }
  power.multiply(std::pow(t, static_cast<Real>(n)), block);
  return power;
}

// The terms 0 to m of the binomial distribution with n trials of probability s, t = 1 - s, all rising.
template <class Real>
inline Sums<Real> binomial_sums(long m, long n, Real s, Real t) {
  const Real block = 10 * Machine<Real>::smallest;
  const Real trials = static_cast<Real>(n), last = static_cast<Real>(m), above = trials + 1;
  // A bound of the greatest term: it may be hopelessly small, and the blocks too many to count.
  const Real bound =
      trials * std::log(t) + (m == 0 ? 0 : last * (std::log(trials) + std::log(s) - std::log(t) + 1 - std::log(last)));
  if (bound < 2 * std::log(block)) return {0, 0};
  const Blocked<Real> first = blocked_power(t, n, block);
  long c = first.blocks, i = 1;
  Real term = first.value, sum = 0;
  bool folded = false;
  for (; c > 0 && i <= m; ++i) {
    const Real k = static_cast<Real>(i);
    if (!folded) sum += term;
    folded = false;
    term *= (above - k) * s / (k * t);
    if (term >= 1) {
      sum = (sum + term) * block;
      term *= block;
      --c;
      folded = true;
    }
  }
  if (folded) sum -= term;
  for (; i <= m; ++i) {
    const Real k = static_cast<Real>(i);
    sum += term;
    term *= (above - k) * s / (k * t);
  }
  for (; c > 0 && (sum != 0 || term != 0); --c) {
    sum *= block;
    term *= block;
  }
  return {sum + term, term};
}

// The probability of a k of more than twice the mean, k and n - k from 10 on; by a power, since a large exponent would lose
// digits.
template <class Real>
inline Real binomial_far_term(Real k, Real n, Real p) {
  const Real rest = n - k, share = n * p / k, u = (k - n * p) / rest;
  const Real corrections =
      functions::stirling_correction(n) - functions::stirling_correction(k) - functions::stirling_correction(rest);
  return std::pow(share * std::exp(1 - share), k) * std::exp(rest * (std::log1p(u) - u) + corrections) *
         std::sqrt(n / (2 * pi<Real> * k) / rest);
}

// 0 <= k <= n, 0 < p < 1.
template <class Real>
inline Real binomial(long k, long n, Real p, Kind kind) {
  // The term alone is a short product from below, also where the terms fall.
  const bool is_short = kind == Kind::pdf && k <= 16 && k < n - k;
  const bool complement = static_cast<Real>(n) * p < static_cast<Real>(k) && !is_short;
  const long m = complement ? n - k : k;
  const Real q = 1 - p;
  // What the rounding of 1 - p does to the logarithm of its power in the largest term.
  const Real drift = ((1 - q) - p) / q * static_cast<Real>(n - k);
  // Long sums, those whose terms grow by more than the largest number, and n that the precision rounds.
  const bool is_rounded = sizeof(Real) == sizeof(float) && n > 1L << 24;
  if (m > longest_sum || is_rounded || std::abs(drift) > 1 ||
      (complement && static_cast<Real>(n) / 4 > p * (Machine<Real>::largest / 16))) {
    if constexpr (sizeof(Real) == sizeof(float)) return static_cast<Real>(binomial(k, n, static_cast<double>(p), kind));
    const Real a = static_cast<Real>(n - k), b = static_cast<Real>(k) + 1;
    Real log_beta_ab = 0, value = 0;
    if (kind == Kind::cdf) return k == n ? 1 : beta_ratio(q, p, a, b, value) ? value : Machine<Real>::not_a_number;
    if (k >= 10 && n - k >= 10 && static_cast<Real>(n) * p < static_cast<Real>(k) / 2)
      return binomial_far_term(static_cast<Real>(k), static_cast<Real>(n), p);
    functions::plain_log_beta(a + 1, b, log_beta_ab);
    return functions::beta_power(p, q, b, a + 1, log_beta_ab) / p / q / (static_cast<Real>(n) + 1);
  }
  const Sums<Real> sums = complement ? binomial_sums(m, n, q, p) : binomial_sums(m, n, p, q);
  const Real lost = std::expm1(drift);
  const Real sum = sums.sum + sums.sum * lost, term = sums.term + sums.term * lost;
  const Real value = kind == Kind::pdf ? term : complement ? term + (1 - sum) : sum;
  return value < 0 ? 0 : value > 1 ? 1 : value;
}

template <class Real>
inline bool plain_binomial(long k, long n, Real p, Kind kind, Real& value) {
  if (n < 1 || k < 0 || k > n || !(p >= 0 && p <= 1)) {
    value = p;
    return p != p;
  }
  if (p == 0 || p == 1) {
    const bool end = p == 0 ? k == 0 : k == n;
    value = end || (kind == Kind::cdf && p == 0) ? 1 : 0;
  } else {
    value = binomial(k, n, p, kind);
  }
  return true;
}
template <class Real>
Real l_binomial(long k, long n, Real p, Kind kind) {
  Real value = 0;
  if (plain_binomial(k, n, p, kind, value)) return value;
  if (n < 1) raise<Half>(5, STAT_NEED_N_GREATER_THAN_ZERO, {.i = {n}});
  if (p < 0 || p > 1) raise<Half>(5, STAT_BAD_PROBABILITY_VALUE, {.r = {shown(p)}});
  if (n < 1 || p < 0 || p > 1) return Machine<Real>::not_a_number;
  if (k < 0) {
    raise<Half>(1, STAT_LESS_THAN_ZERO, {.i = {k}});
    return 0;
  }
  raise<Half>(1, STAT_GREATER_THAN_N, {.i = {k, n}});
  return kind == Kind::cdf ? 1 : 0;
}
template <class Real>
inline bool plain_binomial_cdf(long k, long n, Real p, Real& value) {
  return plain_binomial(k, n, p, Kind::cdf, value);
}
template <class Real>
inline bool plain_binomial_pdf(long k, long n, Real p, Real& value) {
  return plain_binomial(k, n, p, Kind::pdf, value);
}
template <class Real>
Real l_binomial_cdf(long k, long n, Real p) {
  return l_binomial(k, n, p, Kind::cdf);
}
template <class Real>
Real l_binomial_pdf(long k, long n, Real p) {
  return l_binomial(k, n, p, Kind::pdf);
}

// The logarithm of theta^k exp(-theta)/k!.
template <class Real>
inline Real log_poisson_term(long k, Real theta) {
  if (k == 0) return -theta;
  const Real a = static_cast<Real>(k);
  return log_gamma_factor(a, theta) - std::log(a);
}

// exp(-theta) in parts whose exponents are exact.
template <class Real>
inline Blocked<Real> blocked_exponential(Real theta, Real block) {
  const Real part = sizeof(Real) == sizeof(float) ? 64 : 512;
  const long parts = static_cast<long>(theta / part);
  Blocked<Real> power = {std::exp(-(theta - static_cast<Real>(parts) * part)), 0};
  const Real factor = std::exp(-part);
  for (long i = 0; i < parts; ++i) power.multiply(factor, block);
  return power;
}

// Terms 0 to k from both ends, the smaller first; a term in a higher block is the smaller one. What is still in a block when it
// is taken does not count.
template <class Real>
Real poisson_sum(long k, Real theta, Real log_top) {
  const Real block = 2 * Machine<Real>::smallest, ls = std::log(block);
  const Blocked<Real> first = blocked_exponential(theta, block);
  long c0 = first.blocks, ck = log_top < 0 ? static_cast<long>(log_top / ls) : 0;
  Real low = first.value, high = std::exp(log_top - static_cast<Real>(ck) * ls), sum = 0;
  long i = 0, j = k;
  while (i <= j) {
    if (c0 != ck ? c0 > ck : low <= high) {
      if (c0 == 0) sum += low;
      ++i;
      low *= theta / static_cast<Real>(i);
      if (c0 > 0 && low >= 1) {
        low *= block;
        --c0;
      }
    } else {
      if (ck == 0) sum += high;
      high *= static_cast<Real>(j) / theta;
      --j;
      if (ck > 0 && high >= 1) {
        high *= block;
        --ck;
      }
    }
  }
  return sum;
}

template <class Real>
inline Real poisson(long k, Real theta) {
  if (theta > Machine<Real>::largest) return 0;
  const Real n = static_cast<Real>(k), most = -std::log(Machine<Real>::smallest) - 1;
  // Above the mean, too, the products up to there would show: 1 less the rest is more precise.
  if (theta > 20 && (k > longest_sum || n > theta)) return gamma_rest(theta, n + 1);
  if (theta < most) {  // no block is needed: one run from 0 up, until nothing is added
    Real term = std::exp(-theta), sum = term;
    for (long i = 1; i <= k; ++i) {
      const Real j = static_cast<Real>(i);
      term *= theta / j;
      sum += term;
      if (term < Machine<Real>::epsilon / 8 * sum && j > theta) break;
    }
    return sum < 1 ? sum : 1;
  }
  const Real log_top = log_poisson_term(k, theta);
  if (log_top + std::log(n + 1) < 2 * std::log(Machine<Real>::smallest)) return 0;
  const Real sum = poisson_sum(k, theta, log_top);
  return sum < Machine<Real>::smallest / Machine<Real>::epsilon ? gamma_rest(theta, n + 1) : sum;  // terms left in a block count
}

template <class Real>
inline bool plain_poisson(long k, Real theta, Kind kind, Real& value) {
  if (!(theta > 0) || k < 0) {
    value = theta;
    return theta != theta;
  }
  if (theta <= Machine<Real>::epsilon) {
    value = k > 1 ? 0 : k == 1 ? theta : 1 - theta;
    if (kind == Kind::cdf && k > 0) value = 1;
  } else if (kind == Kind::cdf) {
    value = poisson(k, theta);
  } else {
    const Real n = static_cast<Real>(k);
    value = theta > Machine<Real>::largest ? 0 : k == 0 ? std::exp(-theta) : gamma_factor(n, theta) / n;
  }
  return true;
}
template <class Real>
Real l_poisson(long k, Real theta, Kind kind) {
  Real value = 0;
  if (plain_poisson(k, theta, kind, value)) return value;
  if (theta <= 0) return refuse(5, STAT_THETA_MUST_BE_POSITIVE, theta);
  raise<Half>(1, STAT_LESS_THAN_ZERO, {.i = {k}});
  return 0;
}
template <class Real>
inline bool plain_poisson_cdf(long k, Real theta, Real& value) {
  return plain_poisson(k, theta, Kind::cdf, value);
}
template <class Real>
inline bool plain_poisson_pdf(long k, Real theta, Real& value) {
  return plain_poisson(k, theta, Kind::pdf, value);
}
template <class Real>
Real l_poisson_cdf(long k, Real theta) {
  return l_poisson(k, theta, Kind::cdf);
}
template <class Real>
Real l_poisson_pdf(long k, Real theta) {
  return l_poisson(k, theta, Kind::pdf);
}

// The product of (x - i)/(y - i) for i from 0 to count - 1, all below 1. In wider numbers: factors that hardly differ are rounded
// alike, and the errors would add up. Four factors share a division.
template <class Real>
inline Blocked<Real> falling_ratio(long x, long y, long count) {
  using Wide = std::conditional_t<sizeof(Real) == sizeof(float), double, long double>;
  const Wide block = static_cast<Wide>(10 * Machine<Real>::smallest);
  Blocked<Wide> product = {1, 0};
  long i = 0;
  for (; i + 4 <= count; i += 4) {
    const Wide u = static_cast<Wide>(x - i), v = static_cast<Wide>(y - i);
    product.multiply((u * (u - 1)) * ((u - 2) * (u - 3)) / ((v * (v - 1)) * ((v - 2) * (v - 3))), block);
  }
  for (; i < count; ++i) product.multiply(static_cast<Wide>(x - i) / static_cast<Wide>(y - i), block);
  return {static_cast<Real>(product.value), product.blocks};
}

// From the term at `from` to that at `to`, step by step; rising up to the greatest. `up`: towards larger counts.
template <class Real>
inline Sums<Real> hyper_sums(Blocked<Real> first, long from, long to, Real a, Real b, Real rest) {
  const Real block = 10 * Machine<Real>::smallest;
  Real term = first.value, sum = 0;
  long c = first.blocks;
  const bool up = from <= to;
  for (long j = from;; j += up ? 1 : -1) {
    sum += term;
    if (j == to) break;
    const Real k = static_cast<Real>(j);
    term *= up ? (a - k) * (b - k) / ((k + 1) * (rest + k + 1)) : k * (rest + k) / ((a - k + 1) * (b - k + 1));
    if (c > 0 && term >= 1) {
      sum *= block;
      term *= block;
      --c;
    }
  }
  for (; c > 0 && (sum != 0 || term != 0); --c) {
    sum *= block;
    term *= block;
  }
  return {sum, term};
}

// o log(o/e) - (o - e) for a count o, its mean e and their difference, without cancellation.
template <class Real>
inline Real deviance(Real o, Real e, Real difference) {
  const Real v = difference / (o + e), w = v * v;
  if (w > static_cast<Real>(0.2)) return o * std::log(o / e) - difference;
  Real power = 2 * o * v * w, sum = difference * v, term = power / 3;
  for (int j = 5; std::abs(term) > Machine<Real>::epsilon / 8 * sum; j += 2) {
    sum += term;
    power *= w;
    term = power / static_cast<Real>(j);
  }
  return sum + term;
}

inline bool are_cells_large(long k, long a, long b, long l) {
  return k >= 10 && a - k >= 10 && l - a - b + k >= 10;  // b - k is not less than a - k
}

// The probability of k for counts from 10 on in all four cells of the table with the margins a and b: Stirling's formula, in
// which the large logarithms leave the deviances. The difference from the mean is exact.
template <class Real>
Real hyper_term(long k, long a, long b, long l) {
  __extension__ typedef __int128 Wide;
  const Real rl = static_cast<Real>(l), difference = static_cast<Real>(Wide{k} * l - Wide{a} * b) / rl;
  const Real margin[4] = {static_cast<Real>(a), static_cast<Real>(l - a), static_cast<Real>(b), static_cast<Real>(l - b)};
  const Real cell[4] = {static_cast<Real>(k), static_cast<Real>(b - k), static_cast<Real>(a - k),
                        static_cast<Real>(l - a - b + k)};
  const Real mean[4] = {margin[0] / rl * margin[2], margin[1] / rl * margin[2], margin[0] / rl * margin[3],
                        margin[1] / rl * margin[3]};
  Real exponent = -functions::stirling_correction(rl), square = 1 / (2 * pi<Real> * rl), deviances = 0;
  for (int i = 0; i < 4; ++i) {
    exponent += functions::stirling_correction(margin[i]) - functions::stirling_correction(cell[i]);
    square *= margin[i] / cell[i];
    deviances += deviance(cell[i], mean[i], i == 0 || i == 3 ? difference : -difference);
  }
  return std::exp(exponent - deviances) * std::sqrt(square);
}

// The sum from the term of k on. In wide distributions it takes wider numbers, for thousands of neighbouring ratios are rounded
// alike; where there are millions, these would be too slow.
inline constexpr double wide_hyper_from = 1e5, wide_hyper_to = 1e11;

template <class Wide, class Real>
Real hyper_sum_from(Real first, long k, long least, long a, long b, long l, bool complement) {
  const Wide ra = static_cast<Wide>(a), rb = static_cast<Wide>(b), rest = static_cast<Wide>(l - a - b);
  Wide term = static_cast<Wide>(first), sum = complement ? 0 : term;
  for (long j = k; complement ? j < a : j > least; j += complement ? 1 : -1) {
    const Wide i = static_cast<Wide>(j);
    const Wide ratio =
        complement ? (ra - i) * (rb - i) / ((i + 1) * (rest + i + 1)) : i * (rest + i) / ((ra - i + 1) * (rb - i + 1));
    term *= ratio;
    sum += term;
    // The ratios fall, but next to 1 many terms follow.
    if (term <= static_cast<Wide>(Machine<Real>::epsilon / 8) * (1 - ratio) * sum) break;
  }
  return static_cast<Real>(complement ? 1 - sum : sum);
}

// The probability of k, where a cell is small as a quotient of binomial probabilities, and the sum from there on; for parameters
// that make the products above too long, so that their rounding would show.
template <class Real>
Real hyper_from_term(long k, long least, long a, long b, long l, bool complement, Kind kind) {
  if (b == l) return 1;
  const Real share = static_cast<Real>(b) / static_cast<Real>(l);
  const Real p = share < 1 ? share : 1 - Machine<Real>::epsilon / 2;  // any p will do for the quotient
  const Real term = are_cells_large(k, a, b, l)
                        ? hyper_term<Real>(k, a, b, l)
                        : binomial(k, a, p, Kind::pdf) / binomial(b, l, p, Kind::pdf) * binomial(b - k, l - a, p, Kind::pdf);
  if (kind == Kind::pdf) return term;
  const double variance = shown(static_cast<Real>(a) * share * (1 - share));
  const bool is_wide = variance > wide_hyper_from && variance < wide_hyper_to;
  return is_wide ? hyper_sum_from<long double>(term, k, least, a, b, l, complement)
                 : hyper_sum_from<Real>(term, k, least, a, b, l, complement);
}

// 1 <= n, m <= l, k >= 0.
template <class Real>
inline Real hypergeometric(long k, long n, long m, long l, Kind kind) {
  const long a = n < m ? n : m, b = n < m ? m : n;
  const long least = n - (l - m) > 0 ? n - (l - m) : 0;
  if (k < least) return 0;
  if (k > a || (k == a && kind == Kind::cdf)) return kind == Kind::cdf ? 1 : 0;
  if constexpr (sizeof(Real) == sizeof(float)) {
    if (a > longest_sum || l > 1L << 24) return static_cast<Real>(hypergeometric<double>(k, n, m, l, kind));
  }
  const Real ra = static_cast<Real>(a), rb = static_cast<Real>(b), rl = static_cast<Real>(l);
  const Real rest = static_cast<Real>(l - m - n);
  const bool complement = (static_cast<Real>(m) + 1) * (static_cast<Real>(n) + 1) < (rl + 2) * static_cast<Real>(k);
  if (a > longest_hyper_sum || (a > longest_sum && are_cells_large(k, a, b, l)))
    return hyper_from_term<Real>(k, least, a, b, l, complement, kind);
  if (complement) {
    const Blocked<Real> top = falling_ratio<Real>(b, l, a);
    if (kind == Kind::pdf) return hyper_sums(top, a, k, ra, rb, rest).term;
    const Real value = 1 - hyper_sums(top, a, k + 1, ra, rb, rest).sum;
    return value < 0 ? 0 : value;
  }
  const Blocked<Real> low = least > 0 ? falling_ratio<Real>(a, l, l - b) : falling_ratio<Real>(l - b, l, a);
  const Sums<Real> sums = hyper_sums(low, least, k, ra, rb, rest);
  const Real value = kind == Kind::pdf ? sums.term : sums.sum;
  return value < 1 ? value : 1;
}

template <class Real>
inline bool plain_hyper(long k, long n, long m, long l, Kind kind, Real& value) {
  if (n < 1 || m < 1 || l < n || l < m || k < 0 || k > n) return false;
  value = hypergeometric<Real>(k, n, m, l, kind);
  return true;
}
template <class Real>
Real l_hyper(long k, long n, long m, long l, Kind kind) {
  Real value = 0;
  if (plain_hyper(k, n, m, l, kind, value)) return value;
  if (n < 1 || m < 1) raise<Half>(5, STAT_NEED_ARGUMENT_GT_ZERO, {.i = {n, m}});
  if (l < n || l < m) raise<Half>(4, STAT_LOT_SIZE_TOO_SMALL, {.i = {l, n, m}});
  if (failed<Half>()) return Machine<Real>::not_a_number;
  if (k < 0) {
    raise<Half>(1, STAT_LESS_THAN_ZERO, {.i = {k}});
    return 0;
  }
  raise<Half>(1, STAT_K_GREATER_THAN_N, {.i = {k, n}});
  return kind == Kind::cdf ? 1 : 0;
}
template <class Real>
Real hyper_entry(const char* name, long k, long n, long m, long l, Kind kind) {
  return entry<Real>(
      name, [=](Real& value) { return plain_hyper(k, n, m, l, kind, value); }, [=] { return l_hyper<Real>(k, n, m, l, kind); });
}

}  // namespace zent::distributions
