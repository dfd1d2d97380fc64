// What the tests of the solvers of many variables share.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string>

#include "tests/optimize/problems.hpp"

namespace problems {

template <class T>
T sum_of_squares(const Problem<T>& p, const T* x) {
  std::vector<T> f(p.m);
  p.residuals(p.m, p.n, x, f.data());
  T sum = 0;
  for (T v : f) sum += v * v;
  return sum;
}

// The measure of the first stop test for the sum of squares, its derivatives from wide differences.
inline double steepness(const Problem<long double>& p, const std::vector<double>& at) {
  std::vector<long double> x(at.begin(), at.end());
  const long double f = sum_of_squares(p, x.data());
  long double largest = 0;
  for (long j = 0; j < p.n; ++j) {
    const long double old = x[j], size = std::max(std::abs(old), 1.0L), h = 1e-6L * size;
    x[j] = old + h;
    const long double ahead = sum_of_squares(p, x.data());
    x[j] = old - h;
    largest = std::max(largest, std::abs(ahead - sum_of_squares(p, x.data())) / (2 * h) * size);
    x[j] = old;
  }
  return static_cast<double>(largest / std::max(std::abs(f), 1.0L));
}

// solve(p, the same in long double, factor, start) returns whether a minimum was found; `expected` counts them from the standard
// starts and from 10 and 100 times as far.
template <class T, class Solve>
void solves_from_near_and_far(std::initializer_list<int> expected, const Solve& solve) {
  const auto all = problems::all<T>();
  const auto wide = problems::all<long double>();
  double factor = 1;
  for (int least : expected) {
    int solved = 0;
    for (std::size_t k = 0; k < all.size(); ++k) {
      SCOPED_TRACE(std::string(all[k].name) + " from " + std::to_string(factor));
      solved += solve(all[k], wide[k], factor, start_of(all[k], factor));
    }
    EXPECT_GE(solved, least) << factor;
    factor *= 10;
  }
}
template <class T>
bool is_minimum(const Problem<T>& p, double sum, double relative, double absolute) {
  return std::any_of(p.minima.begin(), p.minima.end(), [=](double m) { return std::abs(sum - m) <= relative * m + absolute; });
}

// Each real option steers a search of two variables, by value and by address alike. run(x, options...) returns the calls made.
template <class T>
struct RealOption {
  int by_value, by_address;
  T value;
};
template <class T, class Run>
void each_option_steers(std::initializer_list<RealOption<T>> options, const Run& run) {
  T x[2], y[2];
  const long plain = run(x);
  for (const auto& o : options) {
    const long by_value = run(x, o.by_value, static_cast<double>(o.value)), by_address = run(y, o.by_address, &o.value);
    EXPECT_NE(by_value, plain) << o.by_value;
    EXPECT_EQ(by_value, by_address) << o.by_value;
    EXPECT_TRUE(x[0] == y[0] && x[1] == y[1]) << o.by_value;
  }
}

}  // namespace problems
