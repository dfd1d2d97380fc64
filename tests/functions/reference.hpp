// Rows of tests/data/functions/*.tsv (tools/reference_values.py) and the functions that they belong to, for both precisions.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/quiet.hpp"

namespace functions_test {

struct Point {
  std::vector<double> x;
  long double value;
  double condition;
};

inline std::vector<Point> points(const std::string& name) {
  std::ifstream file(std::string(ZENT_SOURCE_DIR) + "/tests/data/functions/" + name + ".tsv");
  std::vector<Point> result;
  std::string line;
  while (std::getline(file, line)) {
    if (line[0] == '#') continue;
    std::istringstream fields(line);
    std::string function, field;
    int n;
    Point point;
    fields >> function >> n;
    for (int k = 0; k < n; ++k) {
      fields >> field;
      point.x.push_back(std::stod(field));
    }
    fields >> field;
    point.value = std::stold(field);
    fields >> point.condition;
    result.push_back(point);
  }
  return result;
}

template <class Real>
Real call(Real (*f)(Real), const std::vector<double>& x) {
  return f(static_cast<Real>(x[0]));
}
template <class Real>
Real call(Real (*f)(Real, Real), const std::vector<double>& x) {
  return f(static_cast<Real>(x[0]), static_cast<Real>(x[1]));
}
template <class Real>
Real call(Real (*f)(Real, Real, Real), const std::vector<double>& x) {
  return f(static_cast<Real>(x[0]), static_cast<Real>(x[1]), static_cast<Real>(x[2]));
}

// All points that the precision represents: at most `bound` epsilon times the condition number.
template <class Real, class... Reals>
void expect_accurate(const std::string& name, Real (*f)(Reals...), double bound = 8) {
  be_quiet();
  const auto rows = points(name);
  ASSERT_GT(rows.size(), 20u) << name;
  long used = 0;
  for (const Point& point : rows) {
    bool represented = true;
    std::string where = name;
    for (double x : point.x) {
      represented = represented && static_cast<double>(static_cast<Real>(x)) == x;
      where += " " + std::to_string(x);
    }
    const long double size = std::abs(point.value);
    if (!represented || (sizeof(Real) == 4 && (size < 1e-35L || size > 3e38L))) continue;
    const long double error = std::abs(static_cast<long double>(call(f, point.x)) - point.value) / size;
    EXPECT_LE(error, bound * std::fmax(1, point.condition) * std::numeric_limits<Real>::epsilon()) << where;
    ++used;
  }
  EXPECT_GT(used, 8) << name;
}

// The value that a failing function returns: all ones but the sign.
inline bool is_failure(double x) {
  return std::isnan(x) && !std::signbit(x) && std::bit_cast<unsigned long>(x) == 0x7FFFFFFFFFFFFFFF;
}
inline bool is_failure(float x) {
  return std::bit_cast<unsigned>(x) == 0x7FFFFFFF;
}

}  // namespace functions_test
