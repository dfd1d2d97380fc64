// Fourier transforms against their definitions, in every engine that the machine can run.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <vector>

#include "math/transform/plan.hpp"
#include "math/transform/roots.hpp"
#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

using zent::transform::Level;
using Exact = std::complex<long double>;

template <class R>
struct Form;
#define ZENT_FORM(C, R, Real)                                                                             \
  template <>                                                                                             \
  struct Form<Real> {                                                                                     \
    using Complex = zent_##R##_complex;                                                                   \
    static constexpr auto fft_complex = zent_##C##_fft_complex;                                           \
    static constexpr auto real = zent_##R##_fft_real;                                                     \
    static constexpr auto sine = zent_##R##_fft_sine, cosine = zent_##R##_fft_cosine;                     \
    static constexpr auto plane = zent_##C##_fft_2d_complex;                                              \
    static constexpr auto sine_init = zent_##R##_fft_sine_init, cosine_init = zent_##R##_fft_cosine_init; \
  };
ZENT_FORM(z, d, double)
ZENT_FORM(c, f, float)
#undef ZENT_FORM

template <class R>
std::vector<R> noise(long n) {
  std::mt19937 generator(static_cast<unsigned>(n));
  std::uniform_real_distribution<double> uniform(-1, 1);
  std::vector<R> x(static_cast<std::size_t>(n));
  for (R& v : x) v = static_cast<R>(uniform(generator));
  return x;
}

// The definition, with roots from a table in extended precision.
std::vector<Exact> definition(const std::vector<Exact>& p, bool backward) {
  const std::size_t n = p.size();
  std::vector<Exact> root(n), q(n);
  for (std::size_t k = 0; k < n; ++k) {
    const long double angle = 2 * std::acos(-1.0L) * static_cast<long double>(k) / static_cast<long double>(n);
    root[k] = {std::cos(angle), backward ? std::sin(angle) : -std::sin(angle)};
  }
  for (std::size_t m = 0; m < n; ++m) {
    for (std::size_t k = 0, angle = 0; k < n; ++k, angle = (angle + m) % n) q[m] += p[k] * root[angle];
  }
  return q;
}

// Difference in the 2-norm, relative, in units of epsilon times log2 of the length.
template <class R>
double error(const std::vector<Exact>& found, const std::vector<Exact>& expected) {
  long double difference = 0, size = 0;
  for (std::size_t k = 0; k < expected.size(); ++k) {
    difference += std::norm(found[k] - expected[k]);
    size += std::norm(expected[k]);
  }
  const double levels = std::max(1.0, std::log2(static_cast<double>(expected.size())));
  return static_cast<double>(std::sqrt(difference / size)) / (std::numeric_limits<R>::epsilon() * levels);
}

template <class R>
std::vector<Exact> pairs(const R* q, long n) {
  std::vector<Exact> z;
  for (long k = 0; k < n; ++k) z.push_back({q[2 * k], q[2 * k + 1]});
  return z;
}

template <class R>
double complex_error(long n, bool backward) {
  using C = typename Form<R>::Complex;
  std::vector<R> p = noise<R>(2 * n), q(static_cast<std::size_t>(2 * n));
  Form<R>::fft_complex(n, reinterpret_cast<C*>(p.data()), ZENT_RETURN_USER, q.data(), backward ? ZENT_BACKWARD : 0, 0);
  EXPECT_EQ(zent_error_code(), 0);
  return error<R>(pairs(q.data(), n), definition(pairs(p.data(), n), backward));
}

// Packed spectrum against the definition, and the way back against the start.
template <class R>
double real_error(long n) {
  std::vector<R> p = noise<R>(n), q(p), back(p);
  Form<R>::real(n, q.data(), ZENT_RETURN_USER, q.data(), 0);
  std::vector<Exact> exact = definition({p.begin(), p.end()}, false), found(exact);
  found[0] = q[0];
  for (long k = 1; k <= (n - 1) / 2; ++k) {
    found[static_cast<std::size_t>(k)] = {q[static_cast<std::size_t>(2 * k - 1)], q[static_cast<std::size_t>(2 * k)]};
    found[static_cast<std::size_t>(n - k)] = std::conj(found[static_cast<std::size_t>(k)]);
  }
  if (n % 2 == 0) found[static_cast<std::size_t>(n / 2)] = q.back();
  Form<R>::real(n, q.data(), ZENT_RETURN_USER, back.data(), ZENT_BACKWARD, 0);
  // In place or not, either way.
  std::vector<R> apart(p);
  Form<R>::real(n, p.data(), ZENT_RETURN_USER, apart.data(), 0);
  EXPECT_EQ(apart, q) << n;
  Form<R>::real(n, apart.data(), ZENT_RETURN_USER, apart.data(), ZENT_BACKWARD, 0);
  EXPECT_EQ(apart, back) << n;
  std::vector<Exact> returned, start;
  for (long k = 0; k < n; ++k) {
    returned.push_back(back[static_cast<std::size_t>(k)]);
    start.push_back(static_cast<long double>(n) * p[static_cast<std::size_t>(k)]);
  }
  return std::max(error<R>(found, exact), error<R>(returned, start));
}

struct Transforms : testing::TestWithParam<Level> {
  void SetUp() override {
    zent::transform::limit_level(GetParam());
    if (zent::transform::top_level() != GetParam()) GTEST_SKIP() << "not on this processor";
  }
  void TearDown() override {
    zent::transform::limit_level(Level::avx512);
  }
};
INSTANTIATE_TEST_SUITE_P(, Transforms, testing::Values(Level::base, Level::avx2, Level::avx512));

TEST_P(Transforms, AgreeWithTheDefinition) {
  std::vector<long> lengths;
  for (long n = 1; n <= 200; ++n) lengths.push_back(n);
  // Whole vectors and ragged ones, two large primes, a square of one, many small factors.
  for (long n : {256, 360, 512, 1000, 1024, 1155, 2 * 67, 67 * 71, 8 * 131, 3 * 509, 2187}) lengths.push_back(n);
  for (const long n : lengths) {
    for (const bool backward : {false, true}) {
      EXPECT_LT(complex_error<double>(n, backward), 1) << n;
      EXPECT_LT(complex_error<float>(n, backward), 1) << n;
    }
    if (n > 1500) continue;
    EXPECT_LT(real_error<double>(n), 1.5) << n;
    EXPECT_LT(real_error<float>(n), 1.5) << n;
  }
}

// One wave has one line in its spectrum, known without a sum over all elements.
TEST_P(Transforms, LongLengthsFindALine) {
  // Whole vectors and ragged ones on both sides of the split, every radix, primes that go by the definition or by convolution.
  for (const long n : {1728L, 8L * 11 * 13 * 17, 22050L, 44100L, 65536L, 1L << 17, 118098L, 10007L, 10L * 1009, 67L * 71 * 20}) {
    const long line = n / 3 + 1;
    std::vector<zent_d_complex> p(static_cast<std::size_t>(n));
    for (long k = 0; k < n; ++k) {
      const long double angle = 2 * std::acos(-1.0L) * static_cast<long double>(line * k % n) / static_cast<long double>(n);
      p[static_cast<std::size_t>(k)] = {static_cast<double>(std::cos(angle)), static_cast<double>(std::sin(angle))};
    }
    zent_z_fft_complex(n, p.data(), ZENT_RETURN_USER, p.data(), 0);
    double others = 0;
    for (long k = 0; k < n; ++k) {
      const zent_d_complex q = p[static_cast<std::size_t>(k)];
      const double re = q.re - (k == line ? static_cast<double>(n) : 0);
      others += re * re + q.im * q.im;
    }
    EXPECT_LT(std::sqrt(others) / static_cast<double>(n), 5 * 2.3e-16 * std::log2(static_cast<double>(n))) << n;
  }
}

// Long primes against the definition at some of their places: the errors of the places are alike, so a few dozen tell.
TEST_P(Transforms, LongPrimesAgreeAtSomePlaces) {
  for (const long n : {10007L, 100003L}) {
    const std::vector<double> p = noise<double>(2 * n);
    std::vector<double> q(p);
    auto* const z = reinterpret_cast<zent_d_complex*>(q.data());
    zent_z_fft_complex(n, z, ZENT_RETURN_USER, z, 0);
    std::vector<Exact> root(static_cast<std::size_t>(n)), found, expected;
    for (long k = 0; k < n; ++k) {
      root[static_cast<std::size_t>(k)] =
          std::polar(1.0L, -2 * std::acos(-1.0L) * static_cast<long double>(k) / static_cast<long double>(n));
    }
    const std::vector<Exact> start = pairs(p.data(), n);
    for (long place = 1; place < n; place += n / 31) {
      Exact sum = 0;
      for (long k = 0, angle = 0; k < n; ++k, angle = (angle + place) % n) {
        sum += start[static_cast<std::size_t>(k)] * root[static_cast<std::size_t>(angle)];
      }
      expected.push_back(sum);
      found.push_back({z[place].re, z[place].im});
    }
    EXPECT_LT(error<double>(found, expected) * std::log2(static_cast<double>(expected.size())), std::log2(static_cast<double>(n)))
        << n;
  }
}

// Three large primes one inside the other, at a length whose tables are more than is kept between calls: what the call works with
// stays until its end.
TEST(LargePrimes, ManyLargePrimesAtALongLength) {
  const long n = 2 * 7 * 67 * 71 * 73;
  std::vector<double> p(static_cast<std::size_t>(n));
  p[1] = 1;
  zent_d_fft_real(n, p.data(), ZENT_RETURN_USER, p.data(), 0);
  double worst = std::abs(p[0] - 1);
  for (long m = 1; 2 * m < n; ++m) {
    const double angle = 2 * std::acos(-1.0) * static_cast<double>(m) / static_cast<double>(n);
    worst = std::max({worst, std::abs(p[static_cast<std::size_t>(2 * m - 1)] - std::cos(angle)),
                      std::abs(p[static_cast<std::size_t>(2 * m)] + std::sin(angle))});
  }
  EXPECT_LT(worst, 1e-13);
}

template <class R>
void check_trigonometric(long n) {
  const std::vector<R> p = noise<R>(n);
  const long double pi = std::acos(-1.0L);
  std::vector<Exact> sine, cosine;
  for (long m = 0; m < n; ++m) {
    long double s = 0, c = p[0] + (m % 2 == 0 ? p.back() : -p.back());
    for (long k = 0; k < n; ++k) {
      const long double x = p[static_cast<std::size_t>(k)];
      s += 2 * x * std::sin(static_cast<long double>((k + 1) * (m + 1) % (2 * n + 2)) * pi / static_cast<long double>(n + 1));
      if (k > 0 && k < n - 1) {
        c += 2 * x * std::cos(static_cast<long double>(k * m % (2 * n - 2)) * pi / static_cast<long double>(n - 1));
      }
    }
    sine.push_back(s);
    cosine.push_back(c);
  }
  for (const bool with_table : {false, true}) {
    R* table = Form<R>::sine_init(n);
    std::vector<R> q(p);
    Form<R>::sine(n, q.data(), ZENT_RETURN_USER, q.data(), with_table ? ZENT_PARAMS : 0, table, 0);
    // The running sum of every second result lets the error grow with the length.
    EXPECT_LT(error<R>({q.begin(), q.end()}, sine), 2 + 0.05 * static_cast<double>(n)) << n;
    zent_free_allocated_memory(table);
    table = Form<R>::cosine_init(n);
    q = p;
    Form<R>::cosine(n, q.data(), ZENT_RETURN_USER, q.data(), with_table ? ZENT_PARAMS : 0, table, 0);
    EXPECT_LT(error<R>({q.begin(), q.end()}, cosine), 2 + 0.05 * static_cast<double>(n)) << n;
    zent_free_allocated_memory(table);
  }
}

TEST(Trigonometric, AgreeWithTheDefinition) {
  for (long n = 2; n <= 70; ++n) {
    check_trigonometric<double>(n);
    check_trigonometric<float>(n);
  }
  check_trigonometric<double>(400);
}

// Rows, then columns by the definition; the columns behind stay the caller's; in place with another column dimension, and back.
template <class R>
void check_plane(long rows, long cols) {
  using C = typename Form<R>::Complex;
  const auto as_complex = [](std::vector<R>& x) { return reinterpret_cast<C*>(x.data()); };
  const long p_dim = cols + 3, q_dim = cols + 1, wide = p_dim + 4;
  std::vector<R> p = noise<R>(2 * rows * p_dim), q(static_cast<std::size_t>(2 * rows * q_dim), 99);
  Form<R>::plane(rows, cols, as_complex(p), ZENT_P_COL_DIM, static_cast<int>(p_dim), ZENT_RETURN_COL_DIM, static_cast<int>(q_dim),
                 ZENT_RETURN_USER, q.data(), 0);
  std::vector<std::vector<Exact>> exact;
  for (long r = 0; r < rows; ++r) exact.push_back(definition(pairs(p.data() + 2 * r * p_dim, cols), false));
  for (long c = 0; c < cols; ++c) {
    std::vector<Exact> column, found;
    for (long r = 0; r < rows; ++r) column.push_back(exact[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)]);
    for (long r = 0; r < rows; ++r) found.push_back(pairs(q.data() + 2 * (r * q_dim + c), 1)[0]);
    EXPECT_LT(error<R>(found, definition(column, false)), 10) << rows << "x" << cols;
  }
  EXPECT_EQ(q[static_cast<std::size_t>(2 * q_dim - 1)], 99);
  std::vector<R> same(p);
  same.resize(static_cast<std::size_t>(2 * rows * wide));
  Form<R>::plane(rows, cols, as_complex(same), ZENT_A_COL_DIM, static_cast<int>(p_dim), ZENT_RETURN_COL_DIM,
                 static_cast<int>(wide), ZENT_RETURN_USER, same.data(), 0);
  Form<R>::plane(rows, cols, as_complex(same), ZENT_P_COL_DIM, static_cast<int>(wide), ZENT_RETURN_COL_DIM,
                 static_cast<int>(p_dim), ZENT_RETURN_USER, same.data(), ZENT_BACKWARD, 0);
  for (long k = 0; k < 2 * cols; ++k) {
    const auto at = static_cast<std::size_t>(2 * (rows - 1) * p_dim + k);
    const double scale = static_cast<double>(rows * cols);
    EXPECT_NEAR(same[at], scale * p[at], 100 * scale * std::numeric_limits<R>::epsilon());
  }
}

TEST_P(Transforms, PlanesGoByRowsAndColumns) {
  for (const auto& [rows, cols] :
       std::vector<std::pair<long, long>>{{1, 7}, {7, 1}, {5, 12}, {16, 16}, {67, 9}, {9, 67}, {64, 40}}) {
    check_plane<double>(rows, cols);
    check_plane<float>(rows, cols);
  }
}

// The transforms without options do in place what those with options do.
TEST(Bare, AgreesWithThePublicForms) {
  for (const long n : {1L, 2L, 3L, 4L, 24L, 45L, 67L}) {
    const std::vector<double> p = noise<double>(2 * n);
    std::vector<double> a, b;
    const auto both = [&](auto bare, auto table, auto form) {
      a = b = p;
      double* const params = n > 1 ? table(n) : nullptr;
      bare(n, a.data(), params);
      form(b.data());
      zent_free_allocated_memory(params);
      EXPECT_EQ(a, b) << n;
    };
    const auto complex_form = [n](int option) {
      return
          [n, option](double* x) { zent_z_fft_complex(n, reinterpret_cast<zent_d_complex*>(x), ZENT_RETURN_USER, x, option, 0); };
    };
    const auto real_form = [n](auto f, int option) {
      return [n, f, option](double* x) { f(n, x, ZENT_RETURN_USER, x, option, 0); };
    };
    both(zent_df3tcf, zent_z_fft_complex_init, complex_form(0));
    both(zent_df3tcb, zent_z_fft_complex_init, complex_form(ZENT_BACKWARD));
    both(zent_df3trf, zent_d_fft_real_init, real_form(zent_d_fft_real, 0));
    both(zent_df3trb, zent_d_fft_real_init, real_form(zent_d_fft_real, ZENT_BACKWARD));
    if (n == 1) continue;
    both(zent_df2int, zent_d_fft_sine_init, real_form(zent_d_fft_sine, 0));
    both(zent_df2ost, zent_d_fft_cosine_init, real_form(zent_d_fft_cosine, 0));
  }
}

TEST(Tables, HaveTheDocumentedLayout) {
  const long n = 60;
  double* t = zent_z_fft_complex_init(n);
  for (long k = 0; k < 2 * n; ++k) EXPECT_EQ(t[k], 0) << "work";
  const double head[] = {60, 3, 3, 4, 5};
  for (int k = 0; k < 5; ++k) EXPECT_EQ(t[4 * n + k], head[k]);
  // Rows of the first factor: powers of exp(2 pi i / 60), 20 each.
  for (long j = 1; j <= 2; ++j) {
    for (long i = 0; i < 20; ++i) {
      const double angle = 2 * std::acos(-1.0) * static_cast<double>(i * j) / 60;
      EXPECT_NEAR(t[2 * n + 2 * ((j - 1) * 20 + i)], std::cos(angle), 1e-15);
      EXPECT_NEAR(t[2 * n + 2 * ((j - 1) * 20 + i) + 1], std::sin(angle), 1e-15);
    }
  }
  zent_free_allocated_memory(t);
  t = zent_d_fft_real_init(24);
  const double real_head[] = {24, 3, 2, 4, 3};
  for (int k = 0; k < 5; ++k) EXPECT_EQ(t[48 + k], real_head[k]);
  EXPECT_NEAR(t[24], std::cos(std::acos(-1.0) / 12), 1e-16) << "no leading pair";
  zent_free_allocated_memory(t);
  // Above 5 the first place of a row holds a root of the radix.
  t = zent_z_fft_complex_init(14);
  EXPECT_EQ(t[4 * 14 + 2], 2);
  EXPECT_NEAR(t[2 * 14 + 2 * 7], std::cos(2 * std::acos(-1.0) / 7), 1e-15);
  zent_free_allocated_memory(t);
  // A table that has no room for all factors keeps those that fit, within its length.
  for (const long length : {3188646L, 354293L}) {
    t = length == 354293L ? zent_d_fft_sine_init(length) : zent_d_fft_real_init(length);
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t[length == 354293L ? length / 2 + 2 * (length + 1) : 2 * length], length == 354293L ? length + 1 : length);
    zent_free_allocated_memory(t);
  }
}

TEST(Tables, RootsAreRightToTheLastPlace) {
  const long n = 1L << 20;  // the same products serve every length
  double* t = zent_z_fft_complex_init(n);
  double worst = 0;
  for (long i = 1; i < n / 4; i += 37) {
    const long double angle = 2 * std::acos(-1.0L) * static_cast<long double>(i) / static_cast<long double>(n);
    const double re = t[2 * n + 2 * i], im = t[2 * n + 2 * i + 1];
    worst =
        std::max(worst, static_cast<double>(std::abs(re - std::cos(angle))) / (std::nextafter(std::abs(re), 2) - std::abs(re)));
    worst =
        std::max(worst, static_cast<double>(std::abs(im - std::sin(angle))) / (std::nextafter(std::abs(im), 2) - std::abs(im)));
  }
  EXPECT_LE(worst, 1);
  zent_free_allocated_memory(t);
}

// Next to the axes one part is small, and must be right to the last place all the same.
TEST(Tables, RootsAreRightNextToTheAxes) {
  for (const long n : {100003L, 14348907L, (1L << 24) - 1, 1L << 24}) {
    std::vector<zent::transform::Root> memory(static_cast<std::size_t>(zent::transform::Roots::storage(n)));
    const zent::transform::Roots roots(n, memory.data());
    for (long axis = 1; axis < 4; ++axis) {
      for (long k = axis * n / 4 - 4; k <= axis * n / 4 + 4; ++k) {
        const auto beyond = static_cast<long double>(4 * k - axis * n);
        const long double sine = std::sin(std::acos(-1.0L) / 2 * beyond / static_cast<long double>(n));
        double pair[2];
        roots.get(k, pair);
        const double found = axis == 2 ? pair[1] : pair[0], expected = static_cast<double>(axis == 3 ? sine : -sine);
        EXPECT_LE(std::abs(found - expected), std::nextafter(std::abs(expected), 2) - std::abs(expected)) << k << " of " << n;
      }
    }
  }
}

// The passes that are told by their definition, one factor after the other, against the whole, in both directions.
TEST(PlainPass, ChainsToTheTransform) {
  const long n = 3 * 4 * 5 * 7, factors[] = {3, 4, 5, 7};
  double* table = zent_z_fft_complex_init(n);
  for (const int sign : {-1, 1}) {
    std::vector<double> a = noise<double>(2 * n), b(a), c(a);
    zent_z_fft_complex(n, reinterpret_cast<zent_d_complex*>(c.data()), ZENT_RETURN_USER, c.data(), sign > 0 ? ZENT_BACKWARD : 0,
                       0);
    double* wa = table + 2 * n;
    long l1 = 1;
    for (const long radix : factors) {
      const long ido = n / (l1 * radix);
      int na = 0;
      if (radix == 3) zent_df5tcf(ido, l1, a.data(), b.data(), wa, sign);
      if (radix == 4) zent_df6tcf(ido, l1, a.data(), b.data(), wa, sign);
      if (radix == 5) zent_df7tcf(ido, l1, a.data(), b.data(), wa, sign);
      if (radix == 7) {
        zent_df8tcf(ido, radix, l1, a.data(), b.data(), wa, sign, &na);
        EXPECT_EQ(na, 1);
      }
      a.swap(b);
      wa += 2 * (radix - 1) * ido;
      l1 *= radix;
    }
    EXPECT_LT(error<double>(pairs(c.data(), n), pairs(a.data(), n)), 2);
  }
  zent_free_allocated_memory(table);
}

TEST(Errors, AreTheDocumentedOnes) {
  be_quiet();
  double p[8] = {1, 2, 3, 4};
  auto* z = reinterpret_cast<zent_d_complex*>(p);
  const auto code = [] { return zent_error_code(); };
  EXPECT_EQ(zent_d_fft_real(0, p, 0), nullptr);
  EXPECT_EQ(code(), MATH_SEQUENCE_LENGTH);
  EXPECT_EQ(zent_d_fft_real(4, nullptr, 0), nullptr);
  EXPECT_EQ(code(), MATH_REQ_ARGUMENT_IS_NULL);
  EXPECT_EQ(zent_d_fft_real(4, p, ZENT_RETURN_USER, nullptr, 0), nullptr);
  EXPECT_EQ(code(), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(zent_z_fft_complex(4, z, ZENT_PARAMS, nullptr, 0), nullptr);
  EXPECT_EQ(code(), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(zent_d_fft_sine(4, p, ZENT_BACKWARD, 0), nullptr);
  EXPECT_EQ(code(), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(zent_d_fft_sine(1, p, 0), nullptr);
  EXPECT_EQ(code(), MATH_SEQUENCE_LENGTH);
  EXPECT_EQ(zent_z_fft_2d_complex(0, 2, z, 0), nullptr);
  EXPECT_EQ(code(), MATH_NEED_NRA_GT_ZERO);
  EXPECT_EQ(zent_z_fft_2d_complex(2, 0, z, 0), nullptr);
  EXPECT_EQ(code(), MATH_NEED_NCA_GT_ZERO);
  EXPECT_EQ(zent_z_fft_2d_complex(2, 2, z, ZENT_RETURN_COL_DIM, 1, 0), nullptr);
  EXPECT_EQ(code(), MATH_COL_DIM_LESS_COL);
  EXPECT_EQ(zent_z_fft_2d_complex(2, 2, z, ZENT_PARAMS_2D, p, nullptr, 0), nullptr);
  EXPECT_EQ(code(), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(zent_z_fft_2d_complex(2, 2, z, ZENT_PARAMS, 0), nullptr);
  EXPECT_EQ(code(), MATH_UNKNOWN_OPTION);
  for (const long n : {0L, -3L}) {
    EXPECT_EQ(zent_d_fft_real_init(n), nullptr);
    EXPECT_EQ(code(), MATH_SEQUENCE_LENGTH);
  }
  EXPECT_EQ(zent_d_fft_cosine_init(1), nullptr);
  EXPECT_EQ(code(), MATH_SEQUENCE_LENGTH);
  EXPECT_EQ(zent_z_fft_complex_init(1), nullptr);
  EXPECT_EQ(code(), 0) << "none is needed";
  EXPECT_EQ(p[0], 1);
}

// Lengths that no memory can hold end at once, also those whose sizes would not fit a long.
TEST(Errors, LengthsBeyondAllMemory) {
  be_quiet();
  double p[8] = {1, 2, 3, 4};
  auto* z = reinterpret_cast<zent_d_complex*>(p);
  const auto fails = [](const void* result) {
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(zent_error_code(), MATH_OUT_OF_MEMORY_1);
  };
  for (const long n : {1L << 60, 1L << 62, (1L << 62) + 2, std::numeric_limits<long>::max()}) {
    fails(zent_d_fft_real(n, p, 0));
    fails(zent_d_fft_real(n, p, ZENT_RETURN_USER, p, 0));
    fails(zent_z_fft_complex(n, z, 0));
    fails(zent_z_fft_complex(n, z, ZENT_RETURN_USER, z, 0));
    fails(zent_d_fft_sine(n, p, ZENT_RETURN_USER, p, 0));
    fails(zent_d_fft_cosine(n, p, ZENT_RETURN_USER, p, 0));
    fails(zent_z_fft_2d_complex(n, 4, z, 0));
    fails(zent_z_fft_2d_complex(n, 4, z, ZENT_RETURN_USER, z, 0));
    fails(zent_z_fft_complex_init(n));
    fails(zent_d_fft_real_init(n));
    fails(zent_d_fft_sine_init(n));
    fails(zent_d_fft_cosine_init(n));
  }
  EXPECT_EQ(p[0], 1);
}

// A call that a fault ends in its middle leaves what it has prepared to the others, however many there are.
TEST(Errors, FaultsTakeNoMemoryAway) {
  be_quiet();
  for (long n = 600; n < 700; ++n) {
    zent_z_fft_complex(n, reinterpret_cast<zent_d_complex*>(4096), 0);
    EXPECT_EQ(zent_error_code(), MATH_MAJOR_VIOLATION) << n;
  }
  EXPECT_LT(complex_error<double>(699, false), 1);
}

TEST(Infinities, EndInAResult) {
  for (const long n : {7L, 64L, 1024L, 101L}) {
    std::vector<double> p(static_cast<std::size_t>(n), 1);
    p[3] = std::numeric_limits<double>::quiet_NaN();
    p[5] = std::numeric_limits<double>::infinity();
    zent_d_fft_real(n, p.data(), ZENT_RETURN_USER, p.data(), 0);
    EXPECT_EQ(zent_error_code(), 0);
    EXPECT_TRUE(std::isnan(p[0]));
  }
}

}  // namespace
