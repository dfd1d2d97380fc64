// Sequences of Bessel functions of complex argument.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

template <class Real>
struct Form;
template <>
struct Form<double> {
  using Record = zent_d_complex;
  static constexpr Record* (*adr[])(const double*, const Record*, long, ...) = {zent_z_bessel_Ix_adr, zent_z_bessel_Jx_adr,
                                                                                zent_z_bessel_Kx_adr, zent_z_bessel_Yx_adr};
  static constexpr Record* (*plain[])(double, Record, long, ...) = {zent_z_bessel_Ix, zent_z_bessel_Jx, zent_z_bessel_Kx,
                                                                    zent_z_bessel_Yx};
};
template <>
struct Form<float> {
  using Record = zent_f_complex;
  static constexpr Record* (*adr[])(const float*, const Record*, long, ...) = {zent_c_bessel_Ix_adr, zent_c_bessel_Jx_adr,
                                                                               zent_c_bessel_Kx_adr, zent_c_bessel_Yx_adr};
  static constexpr Record* (*plain[])(float, Record, long, ...) = {zent_c_bessel_Ix, zent_c_bessel_Jx, zent_c_bessel_Kx,
                                                                   zent_c_bessel_Yx};
};
enum Kind { I, J, K, Y };

template <class Real>
class Sequences : public ::testing::Test {
 protected:
  using Record = typename Form<Real>::Record;
  using C = std::complex<Real>;
  void SetUp() override {
    be_quiet();
  }
  // Values through the form by address, into storage of the caller; empty after an error.
  static std::vector<C> run(int kind, double order, C z, long n) {
    const Real nu = static_cast<Real>(order);
    const Record record = {z.real(), z.imag()};
    std::vector<Record> out(n);
    if (Form<Real>::adr[kind](&nu, &record, n, ZENT_RETURN_USER, out.data(), 0) == nullptr) return {};
    std::vector<C> values;
    for (const Record& r : out) values.push_back({r.re, r.im});
    return values;
  }
};
using Forms = ::testing::Types<double, float>;
TYPED_TEST_SUITE(Sequences, Forms);

TYPED_TEST(Sequences, Reference) {
  using Real = TypeParam;
  using C = std::complex<Real>;
  std::ifstream file(ZENT_SOURCE_DIR "/tests/data/functions/bessel_sequences.tsv");
  long compared = 0;
  for (std::string line; std::getline(file, line);) {
    if (line[0] == '#') continue;
    std::istringstream in(line);
    std::string kind, field[11];
    in >> kind;
    for (std::string& f : field) in >> f;
    const double nu = std::strtod(field[0].c_str(), nullptr);
    const C z(static_cast<Real>(std::strtod(field[1].c_str(), nullptr)),
              static_cast<Real>(std::strtod(field[2].c_str(), nullptr)));
    const std::vector<C> values = TestFixture::run(static_cast<int>(std::string("IJKY").find(kind)), nu, z, 4);
    ASSERT_EQ(values.size(), 4U) << line;
    for (std::size_t k = 0; k < 4; ++k) {
      const std::complex<long double> expected(std::strtold(field[3 + 2 * k].c_str(), nullptr),
                                               std::strtold(field[4 + 2 * k].c_str(), nullptr));
      const std::complex<long double> found(values[k]);
      // Near zeros the error goes with the amplitude, about sqrt(2 / (pi |z|)) or 1 over it.
      const long double amplitude = std::abs(z) > nu + k ? 0.3L / std::sqrt(static_cast<long double>(std::abs(z))) : 0;
      const long double order = 1 + nu + static_cast<long double>(k);
      EXPECT_LE(std::abs(found - expected),
                (8 + order) * std::numeric_limits<Real>::epsilon() * std::max(std::abs(expected), amplitude))
          << line;
      ++compared;
    }
    if (z.imag() == 0 && z.real() > 0) {
      EXPECT_EQ(values[0].imag(), 0);
    }
  }
  EXPECT_EQ(compared, 256);
}

// The products may be out of the range of the form, or of the digits of the sum.
using Long = std::complex<long double>;
template <class C>
std::vector<Long> wide(const std::vector<C>& values) {
  return {values.begin(), values.end()};
}

// The Wronskian ties all four kinds together, over sizes, angles and orders that no table holds.
TYPED_TEST(Sequences, Wronskians) {
  using Real = TypeParam;
  using C = std::complex<Real>;
  const Real epsilon = std::numeric_limits<Real>::epsilon(), pi = std::acos(Real(-1));
  const Real tiny = sizeof(Real) == 8 ? Real(1e-170) : Real(1e-25);  // its square is 0
  for (Real size : {tiny, Real(1e-8), Real(0.5), Real(1.999), Real(2.001), Real(9.9), Real(10.1), Real(19.9), Real(20.1),
                    Real(60), Real(1e5)}) {
    for (Real angle : {0.0, 0.3, 0.5, 0.8, 1.0, -0.2, -0.5, -1.0}) {
      const C z = std::polar(size, angle * pi);
      for (Real nu : {-0.49, 0.0, 0.5, 2.3, 11.0}) {
        const std::vector<Long> j = wide(TestFixture::run(J, nu, z, 2)), y = wide(TestFixture::run(Y, nu, z, 2));
        if (j.size() == 2 && y.size() == 2) {  // else out of range: exp(|Im z|)
          const Long w = j[1] * y[0] - j[0] * y[1], expected = 2.0L / (std::acos(-1.0L) * Long(z));
          const long double terms = std::abs(j[1] * y[0]) + std::abs(j[0] * y[1]) + std::abs(expected);
          EXPECT_LE(std::abs(w - expected), (40 + 4 * nu) * epsilon * terms) << nu << " " << z;
        }
        const std::vector<Long> i = wide(TestFixture::run(I, nu, z, 2)), k = wide(TestFixture::run(K, nu, z, 2));
        if (nu <= 0 && size < 60) {
          ASSERT_EQ(i.size() + j.size() + k.size() + y.size(), 8U) << nu << " " << z;
        }
        if (i.size() == 2 && k.size() == 2) {
          const Long w = i[0] * k[1] + i[1] * k[0], expected = Long(1) / Long(z);
          const long double terms = std::abs(i[0] * k[1]) + std::abs(i[1] * k[0]) + std::abs(expected);
          EXPECT_LE(std::abs(w - expected), (40 + 4 * nu) * epsilon * terms) << nu << " " << z;
        }
      }
    }
  }
}

TYPED_TEST(Sequences, ExtremesAndCuts) {
  using Real = TypeParam;
  using C = std::complex<Real>;
  const Real epsilon = std::numeric_limits<Real>::epsilon();
  // J0 and Y0 of a great argument by their leading terms (the next is 1/(8x)).
  const Real x = sizeof(Real) == 8 ? Real(1e15) : Real(8e6);
  const double root = 1 / std::sqrt(std::acos(-1.0) * x), c = std::cos(static_cast<double>(x)),
               s = std::sin(static_cast<double>(x));
  EXPECT_NEAR(TestFixture::run(J, 0, x, 1).at(0).real(), root * (c + s), (8 * epsilon + 0.2 / x) * root);
  EXPECT_NEAR(TestFixture::run(Y, 0, x, 1).at(0).real(), root * (s - c), (8 * epsilon + 0.2 / x) * root);
  // K1 of a small argument is 1/z; I1 is z/2.
  const Real small = sizeof(Real) == 8 ? Real(1e-300) : Real(1e-36);
  EXPECT_NEAR(TestFixture::run(K, 1, small, 1).at(0).real() * small, 1, 8 * epsilon);
  EXPECT_NEAR(TestFixture::run(I, 1, small, 1).at(0).real() / small, Real(0.5), 8 * epsilon);
  // The sign of a zero imaginary part tells the side of the cut.
  const std::vector<C> above = TestFixture::run(K, 0.25, C(-2, 0.0), 2), below = TestFixture::run(K, 0.25, C(-2, -0.0), 2);
  ASSERT_EQ(above.size(), 2U);
  EXPECT_EQ(above[1], std::conj(below[1]));
  EXPECT_LT(above[0].imag(), -1);
  // Whole orders of I and J are real on the whole axis.
  EXPECT_EQ(TestFixture::run(J, 3, C(-2, 0), 1).at(0), -TestFixture::run(J, 3, C(2, 0), 1).at(0));
  EXPECT_EQ(TestFixture::run(I, 2, C(0, 0), 1).at(0), C(0));
  EXPECT_EQ(TestFixture::run(J, 0, C(0, 0), 2).at(0), C(1));
}

// Bisection walks into the numbers next to a zero, where a ratio of neighbouring orders has no value.
TYPED_TEST(Sequences, Zeros) {
  using Real = TypeParam;
  const struct {
    double order;
    Real low, high, zero;
  } cases[] = {{0, 2, 3, Real(2.404825557695772769)},
               {3, 6, 7, Real(6.380161895923983506)},
               {0.5, 3, 4, Real(3.141592653589793238)},
               {2, 11, 12, Real(11.61984117214905943)},
               {1, 38, 41, Real(38.47476623477161511)}};
  for (const auto& c : cases) {
    Real low = c.low, high = c.high;
    const Real start = TestFixture::run(J, c.order, low, 1).at(0).real();
    for (int k = 0; k < 70; ++k) {
      const Real middle = (low + high) / 2;
      const auto values = TestFixture::run(J, c.order, middle, 1);
      ASSERT_EQ(values.size(), 1U) << c.order << " " << middle;
      (std::signbit(values[0].real()) == std::signbit(start) ? low : high) = middle;
    }
    EXPECT_NEAR(low, c.zero, 8 * std::numeric_limits<Real>::epsilon() * c.zero);
  }
}

// Positive arguments run in real arithmetic. With an imaginary part that does not count the same goes through the complex plane.
TYPED_TEST(Sequences, RealArgumentsBesideTheComplexPlane) {
  using Real = TypeParam;
  using C = std::complex<Real>;
  using Record = typename Form<Real>::Record;
  const Real epsilon = std::numeric_limits<Real>::epsilon(), tiny = std::numeric_limits<Real>::min();
  const long n = 6;
  std::vector<Real> points = {Real(1e-9), Real(0.01), Real(0.6), Real(5.5), Real(14), Real(40), Real(87)};
  for (double edge : {1.5, 2.5, sizeof(Real) == 8 ? 19.9698 : 9.9184}) {  // where one method ends and another begins
    for (int k = -1; k <= 1; ++k) points.push_back(static_cast<Real>(edge * (1 + k * 1e-4)));
  }
  std::vector<Record> loop(n);
  for (Real x : points) {
    for (double nu : {-0.49, 0.0, 0.25, 0.5, 2.0, 3.5, 9.3, 17.0, 36.75}) {
      for (int kind : {I, J, K, Y}) {
        const auto real = TestFixture::run(kind, nu, C(x, 0), n), plane = TestFixture::run(kind, nu, C(x, tiny), n);
        ASSERT_EQ(real.size(), plane.size()) << nu << " " << x << " " << kind;
        for (std::size_t k = 0; k < real.size(); ++k) {
          const double order = nu + static_cast<double>(k);
          const Real amplitude = x > order ? Real(0.8) / std::sqrt(x) : 0;
          const Real size = std::max(std::abs(plane[k].real()), kind == J || kind == Y ? amplitude : 0);
          EXPECT_EQ(real[k].imag(), 0);
          EXPECT_LE(std::abs(real[k].real() - plane[k].real()), (12 + order) * epsilon * size) << nu << " " << x << " " << kind;
        }
      }
    }
  }
}

// Orders that end or start beyond x, where J changes from forward recurrence to ratios; and one by one as in a sequence.
TYPED_TEST(Sequences, JOfOrdersAroundTheArgument) {
  using Real = TypeParam;
  using C = std::complex<Real>;
  const Real epsilon = std::numeric_limits<Real>::epsilon();
  for (Real x : {Real(3), Real(9.75), Real(24), Real(24.5)}) {
    const auto run = TestFixture::run(J, 0.75, C(x, 0), 28);
    ASSERT_EQ(run.size(), 28U) << x;
    for (int k = 0; k < 28; ++k) {
      const auto one = TestFixture::run(J, 0.75 + k, C(x, 0), 1);
      ASSERT_EQ(one.size(), 1U);
      const Real size = std::max(std::abs(one[0].real()), k + 0.75 < x ? Real(0.8) / std::sqrt(x) : 0);
      EXPECT_LE(std::abs(one[0].real() - run[k].real()), (8 + k) * epsilon * size) << x << " " << k;
    }
  }
}

// Next to a zero rounding may leave nothing: that is a value and no underflow.
TYPED_TEST(Sequences, NumbersBesideZeros) {
  using Real = TypeParam;
  const struct {
    int kind;
    double order, zero;
  } cases[] = {{J, 0, 2.404825557695772769},  {J, 0, 5.520078110286310650},  {J, 0, 30.63460646843197512},
               {J, 1, 13.32369193631422303},  {Y, 0, 0.8935769662791675216}, {Y, 0, 3.957678419314857869},
               {Y, 1, 2.197141326031017035},  {Y, 0, 25.92295765318092271},  {J, 0.5, 9.424777960769379716},
               {Y, 0.5, 4.712388980384689858}};
  for (const auto& c : cases) {
    Real x = static_cast<Real>(c.zero);
    for (int k = 0; k < 20; ++k) x = std::nextafter(x, Real(0));
    for (int k = 0; k < 40; ++k, x = std::nextafter(x, Real(100))) {
      const auto values = TestFixture::run(c.kind, c.order, x, 1);
      ASSERT_EQ(values.size(), 1U) << c.kind << " " << x;
      EXPECT_LE(std::abs(values[0].real()), 40 * std::numeric_limits<Real>::epsilon() * x);
    }
  }
}

// Down to the smallest denormal number, where neighbouring orders of K part by more than the range of a number.
TYPED_TEST(Sequences, TinyArguments) {
  using Real = TypeParam;
  using C = std::complex<Real>;
  const long double pi = 3.14159265358979323846L, euler = 0.57721566490153286061L;
  const Real denormal = std::numeric_limits<Real>::denorm_min(), smallest = std::numeric_limits<Real>::min();
  for (Real x : {denormal, 3 * denormal, 100 * denormal, smallest / 3, smallest, std::sqrt(smallest), Real(1e-20)}) {
    const long double size = x, log_half = std::log(size) - std::log(2.0L);
    const auto expect = [&](int kind, double order, C z, std::complex<long double> expected) {
      const auto values = TestFixture::run(kind, order, z, 1);
      ASSERT_EQ(values.size(), 1U) << kind << " " << order << " " << z;
      // a complex power is the exponential of a logarithm that is rounded
      const double rounding = z.imag() == 0 ? 8 : 8 + std::abs(order * static_cast<double>(log_half));
      EXPECT_LE(static_cast<double>(std::abs(std::complex<long double>(values[0]) - expected) / std::abs(expected)),
                rounding * std::numeric_limits<Real>::epsilon())
          << kind << " " << order << " " << z;
    };
    expect(K, 0, x, -log_half - euler);
    expect(Y, 0, x, 2 / pi * (log_half + euler));
    expect(K, 0.5, x, std::sqrt(pi / (2 * size)));
    expect(Y, 0.5, x, -std::sqrt(2 / (pi * size)));
    expect(J, 0.5, x, std::sqrt(2 * size / pi));
    expect(I, 0, x, 1);
    expect(K, 0.25, x, std::tgamma(0.25L) / 2 * std::exp(-log_half / 4) + std::tgamma(-0.25L) / 2 * std::exp(log_half / 4));
    expect(K, 0, C(0, x), {-log_half - euler, -pi / 2});
    expect(I, 0.5, C(0, x), std::polar(std::sqrt(2 * size / pi), pi / 4));
    expect(K, 0.5, C(0, x), std::polar(std::sqrt(pi / (2 * size)), -pi / 4));
    expect(J, 0, C(x, x), 1);
  }
}

// Near 0 the rounding of f log z, for a fraction f of the order, is all that complex arguments lose.
TYPED_TEST(Sequences, TinyComplexArguments) {
  using Real = TypeParam;
  using Extended = std::complex<long double>;
  const Real smallest = std::numeric_limits<Real>::min(), order = static_cast<Real>(0.3);
  for (int k = 0; k < 300; ++k) {
    const std::complex<Real> z = std::polar(std::ldexp(smallest, k % 30) * (1 + Real(k) / 300), Real(k % 19) / 6);
    const Extended log_half = std::log(Extended(z)) - std::log(2.0L);
    const Extended expected =
        std::tgamma(static_cast<long double>(order)) / 2 * std::exp(-static_cast<long double>(order) * log_half);
    const auto values = TestFixture::run(K, order, z, 1);
    ASSERT_EQ(values.size(), 1U) << z;
    const auto error = static_cast<Real>(std::abs(Extended(values[0]) - expected) / std::abs(expected));
    EXPECT_LE(error,
              (8 + Real(0.7) * order * static_cast<Real>(std::abs(log_half.real()))) * std::numeric_limits<Real>::epsilon())
        << z;
  }
}

// Without storage of the caller the form by value arms no trap; with it a fault is still caught.
TYPED_TEST(Sequences, StorageThatIsNotThere) {
  using Record = typename Form<TypeParam>::Record;
  Record* const nowhere = reinterpret_cast<Record*>(16);
  const Record z = {2, 0};
  EXPECT_EQ(Form<TypeParam>::plain[J](0, z, 1, ZENT_RETURN_USER, nowhere, 0), nullptr);
  EXPECT_EQ(zent_error_code(), 102);
  Record* const values = Form<TypeParam>::plain[J](0, z, 1, 0);
  ASSERT_NE(values, nullptr);
  EXPECT_NEAR(values->re, 0.22389077914123566805, 4 * std::numeric_limits<TypeParam>::epsilon());
  zent_free_allocated_memory(values);
}

TYPED_TEST(Sequences, Errors) {
  using Real = TypeParam;
  using Record = typename Form<Real>::Record;
  const Record z = {1, 1}, zero = {0, 0};
  Record out[400];
  const auto expect = [](long type, long number) {
    EXPECT_EQ(zent_n1rty(1), type);
    EXPECT_EQ(zent_error_code(), number);
  };
  for (int kind : {I, J, K, Y}) {
    SCOPED_TRACE(kind);
    const auto f = Form<Real>::plain[kind];
    EXPECT_EQ(f(0, z, 1, 4711, 0), nullptr);
    expect(5, 11001);
    EXPECT_EQ(f(0, z, 1, -1), nullptr);
    expect(5, 11001);
    EXPECT_EQ(f(-0.5F, z, 1, 0), nullptr);
    expect(5, 14001);
    EXPECT_EQ(f(2e7F, z, 1, 0), nullptr);
    expect(5, 14001);
    const Real infinite = std::numeric_limits<Real>::infinity();
    EXPECT_EQ(f(0, Record{1, infinite}, 1, 0), nullptr);
    expect(5, 14002);
    EXPECT_EQ(f(0, Record{1, 2 / std::numeric_limits<Real>::epsilon()}, 1, 0), nullptr);
    expect(5, 14002);
    // n < 1: an empty result for I and K, an error for J and Y.
    const bool empty = kind == I || kind == K;
    EXPECT_EQ(f(0, z, 0, ZENT_RETURN_USER, out, 0), empty ? out : nullptr);
    EXPECT_EQ(zent_n1rty(1), empty ? 0 : 5);
    EXPECT_EQ(f(0, z, -3, 0), nullptr);
    if (!empty) expect(5, 14000);
    if (kind == K || kind == Y) {
      EXPECT_EQ(f(0, zero, 2, 0), nullptr);
      expect(5, 607);
    }
    // Too far for the exponent range: the first values are there, and the pointer is null.
    out[1] = {7, 7};
    EXPECT_EQ(f(0, Record{Real(0.01), 0}, 400, ZENT_RETURN_USER, out, 0), nullptr);
    expect(4, 14004);
    Record first[2];
    ASSERT_NE(f(0, Record{Real(0.01), 0}, 2, ZENT_RETURN_USER, first, 0), nullptr);
    EXPECT_NEAR(out[1].re, first[1].re, std::abs(first[1].re) * 8 * std::numeric_limits<Real>::epsilon());
    // A not-a-number goes through.
    Record* values = f(0, Record{std::numeric_limits<Real>::quiet_NaN(), 0}, 2, 0);
    ASSERT_NE(values, nullptr);
    EXPECT_TRUE(std::isnan(values[1].re) && zent_n1rty(1) == 0);
    zent_free_allocated_memory(values);
  }
}

// Orders beyond the reach of Hankel's expansion beside a modulus that is far greater: the recurrence must not run through all
// orders up to the modulus. Values in 40 digits.
TYPED_TEST(Sequences, KOfOrderOneHalfKeepsItsDigitsWhereTheMethodsMeet) {
  using C = std::complex<TypeParam>;
  for (int angle = -2; angle <= 2; ++angle) {
    for (int i = 32; i <= 96; ++i) {
      const std::complex<double> z = std::polar(i / 32.0, angle * std::acos(-1.0) / 4);
      const C rounded = {static_cast<TypeParam>(z.real()), static_cast<TypeParam>(z.imag())};
      const std::complex<long double> w = {rounded.real(), rounded.imag()};
      const std::complex<long double> closed = std::sqrt(std::acos(-1.0L) / 2 / w) * std::exp(-w);
      const auto k = this->run(K, 0.5, rounded, 1);
      ASSERT_EQ(k.size(), 1u);
      const std::complex<long double> found = {k[0].real(), k[0].imag()};
      EXPECT_LT(std::abs(found - closed) / std::abs(closed), 12 * std::numeric_limits<TypeParam>::epsilon()) << z;
    }
  }
}

TEST(SequencesInDouble, GreatArguments) {
  be_quiet();
  struct Row {
    double nu, re, im;
    std::complex<double> j, y;
  };
  const Row rows[] = {{449.25,
                       16384,
                       0.25,
                       {0.0041786453997658998687, -0.0011966537901823375793},
                       {0.0048875641723930742762, 0.0010230239226058199626}},
                      {1416.25,
                       1e6,
                       0.25,
                       {0.00070888716192657106352, 0.00010237580926156865347},
                       {-0.00041799995993462994094, 0.00017361957753878699086}},
                      {14144.25,
                       1e8,
                       0.25,
                       {-0.000015873370343054123295, -0.000019777056608848086785},
                       {0.000080749488925108249319, -3.8876846898275068659e-6}},
                      {449.25, 16384, 0, {0.0040514811340861514095, 0}, {0.0047388082157516039083, 0}},
                      {1416.25, 1e6, 0, {0.00068729706142222181195, 0}, {-0.00040526924406297020619, 0}},
                      {14144.25, 1e8, 0, {-0.000015389925074548966217, 0}, {0.000078290152596329750912, 0}}};
  for (const Row& row : rows) {
    zent_d_complex j, y;
    zent_z_bessel_Jx(row.nu, {row.re, row.im}, 1, ZENT_RETURN_USER, &j, 0);
    zent_z_bessel_Yx(row.nu, {row.re, row.im}, 1, ZENT_RETURN_USER, &y, 0);
    const double bound = 16 * 0x1p-52 * std::hypot(std::abs(row.j), std::abs(row.y));
    EXPECT_LE(std::abs(std::complex<double>(j.re, j.im) - row.j), bound) << row.nu;
    EXPECT_LE(std::abs(std::complex<double>(y.re, y.im) - row.y), bound) << row.nu;
  }
}

}  // namespace
