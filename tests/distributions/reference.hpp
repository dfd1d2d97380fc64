// Rows of tests/data/distributions/*.tsv (tools/reference_distributions.py) and the functions that they belong to.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/quiet.hpp"

namespace distributions_test {

struct Point {
  std::vector<double> x;
  long double value, condition;
};

inline std::vector<Point> points(const std::string& name) {
  std::ifstream file(std::string(ZENT_SOURCE_DIR) + "/tests/data/distributions/" + name + ".tsv");
  std::vector<Point> result;
  std::string line;
  while (std::getline(file, line)) {
    if (line[0] == '#') continue;
    std::istringstream fields(line);
    std::string function;
    std::size_t n;
    Point point;
    fields >> function >> n;
    point.x.resize(n);
    for (double& x : point.x) fields >> x;
    fields >> point.value >> point.condition;
    result.push_back(point);
  }
  return result;
}

template <class Real, class... Arguments, std::size_t... k>
Real call(Real (*f)(Arguments...), const std::vector<double>& x, std::index_sequence<k...>) {
  return f(static_cast<Arguments>(x[k])...);
}

// Every row: an error of at most `bound` epsilon times max(1, condition) relative, and `absolute` epsilon beside it.
template <class Real, class... Arguments>
void expect_accurate(const std::string& name, Real (*f)(Arguments...), double bound, double absolute) {
  be_quiet();
  const auto rows = points(name);
  ASSERT_GE(rows.size(), 20u) << name;
  double worst = 0;
  for (const Point& point : rows) {
    const Real value = call(f, point.x, std::index_sequence_for<Arguments...>());
    const long double error = std::abs(static_cast<long double>(value) - point.value) / point.value;
    const long double over = std::fmax(0.0L, error - absolute * std::numeric_limits<Real>::epsilon() / point.value);
    const long double units = over / (std::fmax(1.0L, point.condition) * std::numeric_limits<Real>::epsilon());
    std::string where = name;
    for (double x : point.x) where += " " + std::to_string(x);
    EXPECT_LE(units, bound) << where << ": " << value << " for " << point.value;
    if (units > worst) worst = static_cast<double>(units);
  }
  if (std::getenv("ZENT_SHOW_ERRORS") != nullptr)
    std::printf("%-28s %s %8.2f\n", name.c_str(), sizeof(Real) == 4 ? "f" : "d", worst);
}

// The value that a failing function returns: all ones but the sign.
inline bool is_failure(double x) {
  return std::bit_cast<unsigned long>(x) == 0x7FFFFFFFFFFFFFFF;
}
inline bool is_failure(float x) {
  return std::bit_cast<unsigned>(x) == 0x7FFFFFFF;
}

}  // namespace distributions_test
