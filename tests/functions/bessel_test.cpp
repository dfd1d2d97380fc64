// Bessel, Airy, Kelvin, Fresnel and elliptic functions against reference values, and the errors at the edges of their ranges.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

template <class Real>
struct Entry {
  Real (*one)(Real) = nullptr;
  Real (*two)(Real, Real) = nullptr;
  Real (*three)(Real, Real, Real) = nullptr;
  Real (*four)(Real, Real, Real, Real) = nullptr;

  Real operator()(const std::vector<double>& x) const {
    const auto a = [&](std::size_t k) { return static_cast<Real>(x[k]); };
    if (one != nullptr) return one(a(0));
    if (two != nullptr) return two(a(0), a(1));
    if (three != nullptr) return three(a(0), a(1), a(2));
    return four(a(0), a(1), a(2), a(3));
  }
};

#define ONE(P, Real, name)                         \
  {                                                \
#name, Entry < Real> {                         \
      zent_##P##_##name, nullptr, nullptr, nullptr \
    }                                              \
  }
#define ALL(P, Real)                                                                                                      \
  {                                                                                                                       \
    ONE(P, Real, bessel_exp_I0), ONE(P, Real, bessel_exp_I1), ONE(P, Real, bessel_exp_K0), ONE(P, Real, bessel_exp_K1),   \
        ONE(P, Real, bessel_I0), ONE(P, Real, bessel_I1), ONE(P, Real, airy_Ai), ONE(P, Real, airy_Ai_derivative),        \
        ONE(P, Real, airy_Bi), ONE(P, Real, airy_Bi_derivative), ONE(P, Real, fresnel_integral_C),                        \
        ONE(P, Real, fresnel_integral_S), ONE(P, Real, elliptic_integral_K), ONE(P, Real, elliptic_integral_E),           \
        ONE(P, Real, kelvin_ber0), ONE(P, Real, kelvin_bei0), ONE(P, Real, kelvin_ker0), ONE(P, Real, kelvin_kei0),       \
        ONE(P, Real, kelvin_ber0_derivative), ONE(P, Real, kelvin_bei0_derivative), ONE(P, Real, kelvin_ker0_derivative), \
        ONE(P, Real, kelvin_kei0_derivative),                                                                             \
        {"elliptic_integral_RF", Entry<Real>{nullptr, nullptr, zent_##P##_elliptic_integral_RF, nullptr}},                \
        {"elliptic_integral_RD", Entry<Real>{nullptr, nullptr, zent_##P##_elliptic_integral_RD, nullptr}},                \
        {"elliptic_integral_RC", Entry<Real>{nullptr, zent_##P##_elliptic_integral_RC, nullptr, nullptr}},                \
        {"elliptic_integral_RJ", Entry<Real>{nullptr, nullptr, nullptr, zent_##P##_elliptic_integral_RJ}},                \
  }
template <class Real>
std::map<std::string, Entry<Real>> entries();
template <>
std::map<std::string, Entry<double>> entries() {
  return ALL(d, double);
}
template <>
std::map<std::string, Entry<float>> entries() {
  return ALL(f, float);
}

struct Row {
  std::string name;
  std::vector<double> x;
  long double value, scale;
};
std::vector<Row> rows() {
  std::vector<Row> result;
  std::ifstream file(ZENT_SOURCE_DIR "/tests/data/functions/bessel.tsv");
  for (std::string line; std::getline(file, line);) {
    if (line[0] == '#') continue;
    std::istringstream in(line);
    Row row;
    std::size_t count = 0;
    std::string field;
    in >> row.name >> count;
    for (; count > 0 && in >> field; --count) row.x.push_back(std::strtod(field.c_str(), nullptr));
    in >> field;
    row.value = std::strtold(field.c_str(), nullptr);
    in >> field;
    row.scale = std::strtold(field.c_str(), nullptr);
    result.push_back(row);
  }
  return result;
}

template <class Real>
class Special : public ::testing::Test {
 protected:
  void SetUp() override {
    be_quiet();
  }
};
using Forms = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Special, Forms);

TYPED_TEST(Special, Reference) {
  using Real = TypeParam;
  const auto functions = entries<Real>();
  const std::vector<Row> table = rows();
  ASSERT_GT(table.size(), 300U);
  long compared = 0;
  for (const Row& row : table) {
    const long double smallest = std::numeric_limits<Real>::min(), largest = std::numeric_limits<Real>::max();
    if (std::abs(row.value) < smallest || std::abs(row.value) > largest) continue;
    const Real value = functions.at(row.name)(row.x);
    EXPECT_LE(std::abs(static_cast<long double>(value) - row.value), 8 * std::numeric_limits<Real>::epsilon() * row.scale)
        << row.name << " of " << row.x[0] << ": " << value << ", not " << row.value;
    ++compared;
  }
  EXPECT_GT(compared, 300);
}

// A value, the type and the number of its message.
struct Case {
  const char* name;
  std::vector<double> x;
  double value;  // not-a-number: that of the machine table
  long type, number;
};
const double nan_value = std::numeric_limits<double>::quiet_NaN(), infinity = std::numeric_limits<double>::infinity();

template <class Real>
void check(const std::vector<Case>& cases) {
  const auto functions = entries<Real>();
  for (const Case& c : cases) {
    const Real value = functions.at(c.name)(c.x);
    SCOPED_TRACE(std::string(c.name) + " of " + std::to_string(c.x[0]));
    EXPECT_EQ(zent_n1rty(1), c.type);
    EXPECT_EQ(c.number == 0 ? 0 : zent_error_code(), c.number);
    if (std::isnan(c.value)) {
      const Real expected = sizeof(Real) == 8 ? static_cast<Real>(zent_d_machine(6)) : static_cast<Real>(zent_f_machine(6));
      EXPECT_TRUE(std::isnan(value) && std::isnan(expected));
    } else {
      EXPECT_LE(std::abs(value - static_cast<Real>(c.value)),
                std::numeric_limits<Real>::epsilon() * std::abs(static_cast<Real>(c.value)));
      EXPECT_EQ(std::signbit(value), std::signbit(c.value));
    }
  }
}

TYPED_TEST(Special, Edges) {
  const double tiny = std::numeric_limits<TypeParam>::min(), least = std::numeric_limits<TypeParam>::denorm_min();
  const double huge = std::numeric_limits<TypeParam>::max();
  const double pi_4 = std::atan(1.0);
  check<TypeParam>({
      {"bessel_exp_I0", {0}, 1, 0, 0},
      {"bessel_exp_I0", {-infinity}, 0, 0, 0},
      {"bessel_exp_I1", {-0.0}, -0.0, 0, 0},
      {"bessel_exp_I1", {least}, 0, 5, 9014},
      {"bessel_exp_I1", {2 * tiny}, 0, 5, 9014},
      {"bessel_exp_I1", {4 * tiny}, 2 * tiny, 0, 0},
      {"bessel_exp_I1", {-infinity}, -0.0, 0, 0},
      {"bessel_exp_K0", {0}, nan_value, 5, 13500},
      {"bessel_exp_K0", {-1}, nan_value, 5, 13500},
      {"bessel_exp_K0", {infinity}, 0, 0, 0},
      {"bessel_exp_K1", {-0.0}, nan_value, 5, 13500},
      {"bessel_exp_K1", {tiny / 2}, nan_value, 5, 9012},
      {"bessel_I0", {least}, 1, 0, 0},
      {"bessel_I0", {infinity}, nan_value, 4, 9026},
      {"bessel_I0", {std::log(huge) * 1.001}, nan_value, 4, 9026},
      {"bessel_I1", {-tiny}, 0, 2, 9017},
      {"bessel_I1", {-infinity}, nan_value, 4, 9026},
      {"airy_Ai", {150}, 0, 2, 9015},
      {"airy_Ai", {infinity}, 0, 2, 9015},
      {"airy_Ai_derivative", {150}, 0, 2, 9015},
      {"airy_Ai", {-infinity}, 0, 0, 0},
      {"airy_Bi", {150}, nan_value, 5, 9009},
      {"airy_Bi_derivative", {infinity}, nan_value, 5, 9009},
      {"airy_Bi_derivative", {-infinity}, nan_value, 0, 0},
      {"fresnel_integral_C", {-0.0}, -0.0, 0, 0},
      {"fresnel_integral_C", {least}, least, 0, 0},
      {"fresnel_integral_S", {infinity}, 0.5, 0, 0},
      {"fresnel_integral_C", {-1e30}, -0.5, 0, 0},
      {"kelvin_ber0", {0}, 1, 0, 0},
      {"kelvin_ber0", {-119.5}, nan_value, 5, 13501},
      {"kelvin_bei0_derivative", {infinity}, nan_value, 5, 13501},
      {"kelvin_ker0", {0}, nan_value, 5, 13500},
      {"kelvin_ker0_derivative", {0}, nan_value, 5, 13500},
      {"kelvin_kei0", {0}, -pi_4, 0, 0},
      {"kelvin_kei0_derivative", {0}, 0, 0, 0},
      {"kelvin_kei0", {-1}, nan_value, 5, 13500},
      {"kelvin_ker0", {infinity}, 0, 0, 0},
      {"elliptic_integral_K", {-tiny}, nan_value, 5, 13502},
      {"elliptic_integral_K", {1}, nan_value, 5, 13502},
      {"elliptic_integral_K", {0}, 2 * pi_4, 0, 0},
      {"elliptic_integral_E", {1}, huge, 5, 13502},
      {"elliptic_integral_E", {infinity}, huge, 5, 13502},
      {"elliptic_integral_RF", {-1, 0, 0}, nan_value, 5, 13511},  // the negative argument first
      {"elliptic_integral_RF", {0, tiny, 1}, nan_value, 5, 13512},
      {"elliptic_integral_RF", {1, 1, huge / 4}, nan_value, 5, 13510},
      {"elliptic_integral_RC", {-1, 0}, nan_value, 5, 13503},
      {"elliptic_integral_RC", {1, 0}, nan_value, 5, 13504},
      {"elliptic_integral_RC", {0, 4 * tiny}, nan_value, 5, 13505},
      {"elliptic_integral_RC", {infinity, 1}, nan_value, 5, 13506},
      {"elliptic_integral_RD", {1, -1, 0}, nan_value, 5, 13507},
      {"elliptic_integral_RD", {0, 0, 0}, nan_value, 5, 13508},
      {"elliptic_integral_RD", {0, tiny, 1}, nan_value, 5, 13509},
      {"elliptic_integral_RD", {huge, 1, 1}, nan_value, 5, 13510},
      {"elliptic_integral_RJ", {1, 1, -1, 0}, nan_value, 5, 13511},
      {"elliptic_integral_RJ", {1, 1, 1, -1}, nan_value, 5, 13513},
      {"elliptic_integral_RJ", {0, tiny, 1, 1}, nan_value, 5, 13514},
      {"elliptic_integral_RJ", {1, 1, 1, huge}, nan_value, 5, 13515},
      {"elliptic_integral_RF", {4, 4, 4}, 0.5, 0, 0},
  });
}

// A not-a-number comes back bit for bit, without a message; so does the symmetry of odd and even functions hold bit for bit.
TYPED_TEST(Special, NotANumberAndSymmetry) {
  using Real = TypeParam;
  using Word = std::conditional_t<sizeof(Real) == 8, std::uint64_t, std::uint32_t>;
  const Word bits = std::bit_cast<Word>(std::numeric_limits<Real>::quiet_NaN()) | 0x1234U;
  const Real nan = std::bit_cast<Real>(bits);
  for (const auto& [name, f] : entries<Real>()) {
    SCOPED_TRACE(name);
    const Real value = f.one != nullptr     ? f.one(nan)
                       : f.two != nullptr   ? f.two(1, nan)
                       : f.three != nullptr ? f.three(1, nan, -1)
                                            : f.four(1, -1, 1, nan);
    EXPECT_EQ(zent_n1rty(1), 0);
    EXPECT_EQ(std::bit_cast<Word>(value), bits);
    const bool odd = name.find("I1") != std::string::npos || name.find("fresnel") == 0 || name == "kelvin_ber0_derivative" ||
                     name == "kelvin_bei0_derivative";
    const bool even = name == "bessel_I0" || name == "bessel_exp_I0" || name == "kelvin_ber0" || name == "kelvin_bei0";
    for (Real x : {Real(0), Real(0.3), Real(4), Real(7), Real(30)}) {
      if (odd) {
        EXPECT_EQ(f.one(-x), -f.one(x));
        EXPECT_NE(std::signbit(f.one(-x)), std::signbit(f.one(x)));
      }
      if (even) {
        EXPECT_EQ(f.one(-x), f.one(x));
      }
    }
  }
}

// No jump where one formula hands over to the next, seen from neighbouring numbers.
TYPED_TEST(Special, Seams) {
  using Real = TypeParam;
  const Real infinite = std::numeric_limits<Real>::infinity();
  for (const auto& [name, f] : entries<Real>()) {
    if (f.one == nullptr || name.find("elliptic") == 0) continue;
    for (Real x : {Real(-4), Real(-2), Real(-1), Real(1), Real(2), Real(3), Real(4), Real(5), Real(8), Real(10)}) {
      if (x < 0 && name.find("airy") != 0) continue;
      const Real below = f.one(std::nextafter(x, -infinite)), above = f.one(std::nextafter(x, infinite)), middle = f.one(x);
      const Real size = std::abs(middle) + std::abs(f.one(Real(0.8) * x)) + std::abs(f.one(Real(1.2) * x));
      EXPECT_NEAR(below + above, 2 * middle, 16 * std::numeric_limits<Real>::epsilon() * size) << name << " at " << x;
    }
  }
}

// At the end of the range exp(x) alone may overflow. The leading terms of the expansion are 1 + (1 - 4n^2)/(8x)...
TYPED_TEST(Special, LargestArguments) {
  using Real = TypeParam;
  const auto functions = entries<Real>();
  const Real x = std::log(std::numeric_limits<Real>::max());
  const long double y = x, leading = std::exp(y) / std::sqrt(2 * std::acos(-1.0L) * y);
  const long double i0 = leading * (1 + 1 / (8 * y) + 9 / (128 * y * y)), i1 = leading * (1 - 3 / (8 * y) - 15 / (128 * y * y));
  EXPECT_NEAR(functions.at("bessel_I0").one(x) / i0, 1, 1e-6);
  EXPECT_NEAR(functions.at("bessel_I1").one(-x) / i1, -1, 1e-6);
}

// The smallest numbers have no half: logarithms of x / 2 must not show it.
TEST(Logarithmic, SmallestNumbers) {
  be_quiet();
  const double tiny = std::numeric_limits<double>::denorm_min();
  const float small = std::numeric_limits<float>::denorm_min();
  EXPECT_NEAR(zent_d_bessel_exp_K0(tiny), 744.556003437039, 1e-9);
  EXPECT_NEAR(zent_d_bessel_exp_K0(3 * tiny), 743.457391148371, 1e-9);
  EXPECT_NEAR(zent_d_kelvin_ker0(tiny), 744.556003437039, 1e-9);
  EXPECT_NEAR(zent_f_kelvin_ker0(3 * small), 102.29624913, 1e-4);
  EXPECT_NEAR(zent_d_kelvin_kei0(tiny), -std::acos(-1.0) / 4, 1e-15);
  EXPECT_NEAR(zent_f_kelvin_kei0(small), -std::acos(-1.0) / 4, 1e-7);
  EXPECT_EQ(zent_d_kelvin_kei0_derivative(tiny), 0);
  EXPECT_EQ(zent_d_kelvin_ker0_derivative(tiny), -std::numeric_limits<double>::infinity());
}

// Wronskians where the reference table has no points: far out, where phases are long.
TEST(Airy, WronskianFarOut) {
  be_quiet();
  for (double x : {-1e5, -123456.789, -3.3e8, -1e12}) {
    const double w = zent_d_airy_Ai(x) * zent_d_airy_Bi_derivative(x) - zent_d_airy_Ai_derivative(x) * zent_d_airy_Bi(x);
    EXPECT_NEAR(w * std::acos(-1.0), 1, 1e-14) << x;
  }
}

}  // namespace
