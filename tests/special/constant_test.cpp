#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>

#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

// The last public call: what its error was, with nothing printed and nothing stopped.
class Constant : public ::testing::Test {
 protected:
  void SetUp() override {
    be_quiet();
  }
  // Compared by bits, and without a call in between that would clear the error code.
  static bool is_library_nan(double x) {
    const std::uint64_t bits = 0x7FFFFFFFFFFFFFFF;
    return std::memcmp(&x, &bits, sizeof x) == 0;
  }
};

struct Case {
  const char* name;
  const char* unit;
  double value;
};

TEST_F(Constant, ValuesAndConversions) {
  const Case cases[] = {
      {"PI", nullptr, 3.141592653589793},
      {"p i_", nullptr, 3.141592653589793},
      {"AMU", "SI", 1.6605402e-27},
      {"AMU", "si", 1.6605402e-27},
      {"AMU", "KG", 1.6605402e-27},
      {"AMU", "gram", 1.6605402e-24},
      {"speed light", "km/s", 299792.458},
      {"SpeedLight", "KM/HR", 299792.458 * 3600},
      {"C", "mile/hour", 299792458.0 / 1609.344 * 3600},
      {"ATM", "N/M^2", 101325.0},
      {"ATM", "N/CENTIMETER^2", 10.1325},
      {"ATM", "bar", 1.01325},
      {"ELECTRONVOLT", "KG*M^2/S^2", 1.60217733e-19},
      {"ELECTRONVOLT", "erg", 1.60217733e-12},
      {"STANDARDGRAVITY", "M/S/S", 9.80665},
      {"STANDARDGRAVITY", "MM/S^2", 9806.65},
      {"STANDARDGRAVITY", "FEET/MIN^2", 9.80665 / 0.3048 * 3600},
      {"AU", "DKM", 1.496e10},  // deca
      {"AU", " M", 1.496e5},    // the blank stands for mega
      {"AU", "MILE", 1.496e11 / 1609.344},
      {"AU", "M^2^-1^-1/M", 1.496e11},  // powers multiply
      {"RYDBERG", "M^-1", 10973731.534},
      {"WATERTRIPLE", "DEGF", 491.688},  // scaled, not shifted
      {"WATERTRIPLE", "CELSIUS", 273.16},
  };
  for (const Case& c : cases) {
    const double d = zent_d_constant(c.name, c.unit);
    EXPECT_EQ(zent_error_code(), 0) << c.name << " in " << (c.unit ? c.unit : "-");
    EXPECT_NEAR(d, c.value, 4e-15 * std::fabs(c.value)) << c.name << " in " << (c.unit ? c.unit : "-");
    const float f = zent_f_constant(c.name, c.unit);
    EXPECT_NEAR(f, c.value, 1e-6 * std::fabs(c.value)) << c.name << " in " << (c.unit ? c.unit : "-");
  }
}

TEST_F(Constant, MassAndForceAreExchangedWithAWarning) {
  EXPECT_NEAR(zent_d_constant("ELECTRONMASS", "N"), 9.1093897e-31 * 9.80665, 1e-44);
  EXPECT_EQ(zent_n1rty(1), 3);
  EXPECT_EQ(zent_error_code(), MATH_MASS_TO_FORCE);
  // A pressure in mass units for area: the other direction.
  EXPECT_NEAR(zent_d_constant("ATM", "KG/M^2"), 101325.0 / 9.80665, 1e-10);
  EXPECT_EQ(zent_error_code(), MATH_MASS_TO_FORCE);
}

struct Refusal {
  const char* name;
  const char* unit;
  long number;
};

TEST_F(Constant, RefusesWithNotANumber) {
  const Refusal cases[] = {
      {"NOSUCH", nullptr, MATH_BAD_CONST_NAME},
      {"", "M", MATH_BAD_CONST_NAME},
      {nullptr, "M", MATH_BAD_CONST_NAME},
      {"BOLTZMANNBOLTZMANNBOLTZMANNBOLTZMANNBOLTZMANN", nullptr, MATH_BAD_CONST_NAME},
      {"STANDARDGRAVITY", "LB", MATH_INCOMPATIBLE_UNITS},
      {"PI", "M", MATH_INCOMPATIBLE_UNITS},
      {"SPEEDLIGHT", "M/SEC", MATH_INCOMPATIBLE_UNITS},  // SEC has no dimension
      {"AU", "AU", MATH_ILLEGAL_UNIT},                   // read as atto and U
      {"AU", "FURLONG", MATH_ILLEGAL_UNIT},
      {"AU", "", MATH_ILLEGAL_UNIT},
      {"AU", "M//S", MATH_ILLEGAL_UNIT},
      {"AU", "M/", MATH_ILLEGAL_UNIT},
      {"AU", "^2", MATH_ILLEGAL_UNIT},
      {"AU", "M^", MATH_ILLEGAL_UNIT},
      {"AU", "M^99999999999999999999", MATH_ILLEGAL_UNIT},
      {"AU", "M^100000^100000^100000^100000", MATH_ILLEGAL_UNIT},
      {"AU", "M*M*M*M*M*M*M*M*M*M*M", MATH_ILLEGAL_UNIT},  // eleven names
  };
  for (const Refusal& c : cases) {
    EXPECT_TRUE(is_library_nan(zent_d_constant(c.name, c.unit))) << c.name << " in " << c.unit;
    EXPECT_EQ(zent_error_code(), c.number) << c.name << " in " << c.unit;
    EXPECT_EQ(zent_n1rty(1), 5);
  }
  EXPECT_NEAR(zent_d_constant("AU", "M*M/M*M/M*M/M*M/M*1"), 1.496e11, 1);  // ten are allowed
  const std::string endless(100000, 'M');
  EXPECT_TRUE(is_library_nan(zent_d_constant("AU", endless.c_str())));
}

}  // namespace
