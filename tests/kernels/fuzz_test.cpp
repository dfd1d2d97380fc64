// Random calls of the fast primitives beside the plain ones, the same ones in every run: all types, every level of this
// processor, sizes around the register and cache blocks, odd leading dimensions and addresses, increments of both signs and 0,
// and now and then an infinity or a not-a-number in an operand. Memory that a call has no business with holds not-a-numbers.
#include <sys/mman.h>

#include <cstring>
#include <tuple>

#include "levels.hpp"

namespace {

using kernel::from_real;

template <class T>
class Fuzz : public testing::Test {
 protected:
  using Real = RealOf<T>;
  using Array = std::vector<T>;

  void TearDown() override {
    use_best_level();
  }

  long below(long n) {
    return static_cast<long>(engine_() % static_cast<unsigned long>(n));
  }
  bool one_in(long n) {
    return below(n) == 0;
  }
  long size() {
    static constexpr long edges[] = {4, 8, 16, 24, 32, 48, 64, 96, 128};
    if (one_in(25)) return -below(2);
    return one_in(2) ? 1 + below(40) : edges[below(9)] - 1 + below(3);
  }
  // Small enough for a product of three of them.
  long side() {
    const long n = size();
    return n > 70 && !one_in(6) ? n / 4 : n;
  }
  long increment() {
    static constexpr long all[] = {1, 1, 1, -1, 2, -2, 3};
    return all[below(7)];
  }
  T value() {
    const long double re = static_cast<long double>(engine_()) * 0x1p-31L - 1,
                      im = static_cast<long double>(engine_()) * 0x1p-31L;
    return make<T>(re, im - 1);
  }
  T scalar() {
    return one_in(3) ? T{} : one_in(2) ? from_real<T>(1) : value();
  }
  char letter(const char* letters) {
    return letters[below(static_cast<long>(std::strlen(letters)))];
  }
  const T nan_ = make<T>(nan_of<T>, nan_of<T>);

  // m by n in columns of ld, at an address that fits no vector.
  struct Matrix {
    long m, n, ld, offset;
    Array memory;
    T* data() {
      return memory.data() + offset;
    }
    T& at(long i, long j) {
      return data()[i + j * ld];
    }
  };
  Matrix matrix(long m, long n) {
    m = std::max(m, 0L), n = std::max(n, 0L);
    Matrix a{m, n, m + below(4), below(8), {}};
    a.memory.assign(static_cast<std::size_t>(a.offset + a.ld * n + 20), nan_);
    for (long j = 0; j < n; ++j) {
      for (long i = 0; i < m; ++i) a.at(i, j) = value();
    }
    if (m > 0 && n > 0 && one_in(6)) spoil(a.at(below(m), below(n)));
    return a;
  }
  // A triangle whose solves stay in range.
  Matrix triangle(bool upper, bool unit, long n) {
    Matrix a = matrix(n, n);
    for (long j = 0; j < n; ++j) {
      for (long i = 0; i < n; ++i) {
        if (i == j) {
          a.at(i, j) = unit ? nan_ : a.at(i, j) + from_real<T>(3);
        } else {
          a.at(i, j) = (i < j) == upper ? Real(2) / static_cast<Real>(n + 1) * a.at(i, j) : nan_;
        }
      }
    }
    return a;
  }
  struct Vector {
    long n, inc, offset;
    Array memory;
    T* data() {
      return memory.data() + offset;
    }
    T& operator[](long i) {
      return data()[inc < 0 ? (i - n + 1) * inc : i * inc];
    }
  };
  Vector vector(long n, long inc) {
    Vector x{std::max(n, 0L), inc, below(8), {}};
    x.memory.assign(static_cast<std::size_t>(x.offset + x.n * std::abs(inc) + 20), nan_);
    for (long i = 0; i < x.n; ++i) x[i] = value();
    if (x.n > 0 && one_in(6)) spoil(x[below(x.n)]);
    return x;
  }
  void spoil(T& x) {
    x = one_in(2) ? nan_ : from_real<T>(std::numeric_limits<Real>::infinity());
  }
  T beta_for(Array& result, T beta) {  // under 0 nothing of it may be read
    if (beta == T{}) std::fill(result.begin(), result.end(), nan_);
    return beta;
  }

  static bool finite(T x) {
    return std::isfinite(wide(x).real()) && std::isfinite(wide(x).imag());
  }
  static testing::AssertionResult same(const Array& got, const Array& want, long terms) {
    const long double bound = static_cast<long double>(8 * terms + 64) * epsilon<T>;
    for (std::size_t i = 0; i < got.size(); ++i) {
      const bool fits =
          finite(want[i]) ? std::abs(wide(got[i]) - wide(want[i])) <= bound * (1 + std::abs(wide(want[i]))) : !finite(got[i]);
      if (!fits) return testing::AssertionFailure() << "place " << i << ": " << wide(got[i]) << " for " << wide(want[i]);
    }
    return testing::AssertionSuccess();
  }
  static void expect_same(const Array& got, const Array& want, long terms, const std::string& what) {
    EXPECT_TRUE(same(got, want, terms)) << what;
  }
  // Runs the call on both families and compares all results.
  template <class Call, class... Results>
  void both(const std::string& what, long terms, Call call, Results&... results) {
    std::tuple<Results...> plain(results...);
    std::apply([&](auto&... r) { call(std::false_type{}, r...); }, plain);
    call(std::true_type{}, results...);
    std::apply([&](auto&... r) { (expect_same(results.memory, r.memory, terms, what), ...); }, plain);
  }

  void general_product() {
    general_product(side(), side(), side());
  }
  // Beyond the size from which blocks are packed, and beyond some of the blocks.
  void large_product() {
    general_product(80 + below(200), 40 + below(60), 260 + below(300));
  }
  void general_product(long m, long n, long k) {
    const char op_a = letter("NTC"), op_b = letter("NTC");
    const T alpha = scalar(), beta = scalar();
    Matrix a = op_a == 'N' ? matrix(m, k) : matrix(k, m), b = op_b == 'N' ? matrix(k, n) : matrix(n, k), c = matrix(m, n);
    beta_for(c.memory, beta);
    both(
        text({op_a, op_b}, {m, n, k}), k,
        [&](auto quick, Matrix& r) {
          if (quick) {
            fast::gemm(op_a, op_b, m, n, k, alpha, a.data(), a.ld, b.data(), b.ld, beta, r.data(), r.ld);
          } else {
            kernel::gemm(op_a, op_b, m, n, k, alpha, a.data(), a.ld, b.data(), b.ld, beta, r.data(), r.ld);
          }
        },
        c);
  }
#define ZENT_BOTH(quick, call) \
  if (quick) {                 \
    fast::call;                \
  } else {                     \
    kernel::call;              \
  }
  void matrix_vector() {
    const long m = size(), n = size();
    const char op = letter("NTC"), uplo = letter("UL");
    const T alpha = scalar(), beta = scalar();
    const Real size_of_alpha = kernel::real(alpha);
    Matrix a = matrix(m, n), s = triangle(uplo == 'U', false, n), s2 = s;
    Vector x = vector(op == 'N' ? n : m, one_in(8) ? 0 : increment()), y = vector(op == 'N' ? m : n, increment());
    Vector u = vector(m, increment()), v = vector(n, one_in(8) ? 0 : increment()), w = vector(n, increment());
    for (long j = 0; j < n && !one_in(3); ++j) s.at(j, j) = from_real<T>(kernel::real(s.at(j, j)));
    beta_for(y.memory, beta);
    const std::string what = text({op, uplo}, {m, n, x.inc, y.inc, v.inc, w.inc});
    both(
        "gemv " + what, m + n,
        [&](auto quick, Vector& r) {
          ZENT_BOTH(quick, gemv(op, m, n, alpha, a.data(), a.ld, x.data(), x.inc, beta, r.data(), r.inc))
        },
        y);
    both(
        "symv " + what, 2 * n,
        [&](auto quick, Vector& r) {
          ZENT_BOTH(quick, symv(uplo, n, alpha, s.data(), s.ld, v.data(), v.inc, beta, r.data(), r.inc))
        },
        w);
    both(
        "ger " + what, 2,
        [&](auto quick, Matrix& r, Matrix& r2, Matrix& r3) {
          ZENT_BOTH(quick, geru(m, n, alpha, u.data(), u.inc, v.data(), v.inc, r.data(), r.ld))
          ZENT_BOTH(quick, gerc(m, n, alpha, u.data(), u.inc, v.data(), v.inc, r.data(), r.ld))
          ZENT_BOTH(quick, syr(uplo, n, size_of_alpha, v.data(), v.inc, r2.data(), r2.ld))
          ZENT_BOTH(quick, syr2(uplo, n, alpha, v.data(), v.inc, w.data(), w.inc, r3.data(), r3.ld))
        },
        a, s, s2);
  }
  void triangular() {
    const long n = side(), m = side();
    const char uplo = letter("UL"), op = letter("NTC"), diag = letter("NU"), sides = letter("LR");
    const T alpha = scalar();
    Matrix a = triangle(uplo == 'U', diag == 'U', n), b = sides == 'L' ? matrix(n, m) : matrix(m, n), c = matrix(n, m);
    Vector x = vector(n, increment());
    const long rows = sides == 'L' ? n : m, columns = sides == 'L' ? m : n;
    const std::string what = text({uplo, op, diag, sides}, {n, m, x.inc});
    both(
        what, 8 * n,
        [&](auto quick, Vector& r, Matrix& r2, Matrix& r3) {
          ZENT_BOTH(quick, trsv(uplo, op, diag, n, a.data(), a.ld, r.data(), r.inc))
          ZENT_BOTH(quick, trsm(sides, uplo, op, diag, rows, columns, alpha, a.data(), a.ld, r2.data(), r2.ld))
          ZENT_BOTH(quick, trmm(uplo, op, diag, n, m, a.data(), a.ld, r3.data(), r3.ld))
        },
        x, b, c);
  }
  void one_triangle() {
    const long n = side(), k = side();
    const char uplo = letter("UL"), op = letter("NC");
    const T alpha = value();
    const Real real_alpha = kernel::real(alpha), beta = kernel::real(scalar());
    Matrix a = op == 'N' ? matrix(n, k) : matrix(k, n), b = matrix(n, k), b2 = matrix(n, k);
    Matrix c = triangle(uplo == 'U', false, n), c2 = c;
    if (beta == 0) beta_for(c.memory, T{}), beta_for(c2.memory, T{});
    both(
        text({uplo, op}, {n, k}), 2 * k,
        [&](auto quick, Matrix& r, Matrix& r2) {
          ZENT_BOTH(quick, syrk(uplo, op, n, k, real_alpha, a.data(), a.ld, beta, r.data(), r.ld))
          ZENT_BOTH(quick, syr2k(uplo, n, k, alpha, b.data(), b.ld, b2.data(), b2.ld, beta, r2.data(), r2.ld))
        },
        c, c2);
  }
  void vectors() {
    const long n = size(), inc = increment(), inc_y = one_in(2) ? inc : increment();
    Vector x = vector(n, one_in(9) ? 0 : inc), y = vector(n, inc_y), z = vector(n, inc);
    for (long i = 0; i < n && one_in(2); ++i) x[below(n)] = x[0];  // ties
    const T alpha = scalar();
    const Real c = Real(0.6), s = Real(-0.8);
    const std::string what = text({}, {n, x.inc, inc_y});
    EXPECT_EQ(fast::iamax(n, x.data(), x.inc), kernel::iamax(n, x.data(), x.inc)) << what;
    const auto compare = [&](T got, T want, const char* name) { EXPECT_TRUE(same({got}, {want}, 2 * n)) << name << what; };
    compare(fast::dotu(n, x.data(), x.inc, y.data(), inc_y), kernel::dotu(n, x.data(), x.inc, y.data(), inc_y), "dotu");
    compare(fast::dotc(n, x.data(), x.inc, y.data(), inc_y), kernel::dotc(n, x.data(), x.inc, y.data(), inc_y), "dotc");
    compare(from_real<T>(fast::nrm2(n, x.data(), x.inc)), from_real<T>(kernel::nrm2(n, x.data(), x.inc)), "nrm2");
    compare(from_real<T>(fast::asum(n, x.data(), x.inc)), from_real<T>(kernel::asum(n, x.data(), x.inc)), "asum");
    both(
        what, 8,
        [&](auto quick, Vector& r, Vector& r2) {
          ZENT_BOTH(quick, axpy(n, alpha, x.data(), x.inc, r.data(), r.inc))
          ZENT_BOTH(quick, rot(n, r.data(), r.inc, r2.data(), r2.inc, c, s))
          ZENT_BOTH(quick, swap(n, r.data(), r.inc, r2.data(), r2.inc))
          ZENT_BOTH(quick, scal(n, alpha, r.data(), r.inc))
          ZENT_BOTH(quick, scal(n, c, r2.data(), r2.inc))
          ZENT_BOTH(quick, copy(n, x.data(), x.inc, r2.data(), r2.inc))
        },
        y, z);
  }
  void columns() {
    const long m = size(), n = size(), sweeps = below(10);
    const bool backward = one_in(2);
    std::vector<Real> c(static_cast<std::size_t>(sweeps * std::max(n, 1L))), s(c.size());
    for (std::size_t i = 0; i < c.size(); ++i) {
      const double angle = static_cast<double>(engine_());
      c[i] = static_cast<Real>(std::cos(angle)), s[i] = static_cast<Real>(std::sin(angle));
    }
    Matrix v = matrix(m, n);
    both(
        text({}, {m, n, sweeps}), sweeps * 4 + n,
        [&](auto quick, Matrix& r) { ZENT_BOTH(quick, rot_columns(backward, sweeps, m, n, c.data(), s.data(), r.data(), r.ld)) },
        v);
    v.memory.resize(static_cast<std::size_t>(v.offset + std::max({v.m * v.n, v.m * v.m, 0L}) + 20), nan_);
    Matrix to = v, turned = v;
    both(
        text({}, {m, n}), 0,
        [&](auto quick, Matrix& r, Matrix& r2) {
          ZENT_BOTH(quick, transpose(m, n, v.data(), r.data()))
          ZENT_BOTH(quick, transpose_square(m, r2.data()))
        },
        to, turned);
  }
#undef ZENT_BOTH

  static std::string text(const std::string& letters, std::initializer_list<long> numbers) {
    std::string s = letters;
    for (long n : numbers) s += " " + std::to_string(n);
    return s;
  }
  std::mt19937 engine_{20};
};
TYPED_TEST_SUITE(Fuzz, Elements);

TYPED_TEST(Fuzz, FastAgreesWithPlain) {
  at_every_level([this] {
    for (int round = 0; round < 200 && !testing::Test::HasFailure(); ++round) {
      SCOPED_TRACE("round " + std::to_string(round));
      if (round % 2 == 0) this->general_product();
      if (round % 4 == 0) this->one_triangle();
      if (round % 30 == 0) this->large_product();
      this->matrix_vector();
      this->triangular();
      this->vectors();
      this->columns();
    }
  });
}

// A diagonal matrix over the whole range of the exponent, the ends and subnormal numbers among them: quotients are powers of two.
TYPED_TEST(Fuzz, SolvesWithDiagonalsOfEverySize) {
  using T = TypeParam;
  using Real = RealOf<T>;
  using Limits = std::numeric_limits<Real>;
  const int lowest = Limits::min_exponent - Limits::digits, highest = Limits::max_exponent - 1;
  at_every_level([&] {
    for (char uplo : {'U', 'L'}) {
      for (char op : {'N', 'T', 'C'}) {
        for (int shift = 0; shift < 40; ++shift) {
          const long n = 19;
          std::vector<T> a(n * n), x(n), many(n * 6);
          for (long i = 0; i < n; ++i) {
            const int e = shift % 2 == 0 ? lowest + shift / 2 + static_cast<int>(i) : highest - shift / 2 - static_cast<int>(i);
            const T size = from_real<T>(std::ldexp(Real(1), e));
            a[static_cast<std::size_t>(i * (n + 1))] = make<T>(0, std::ldexp(1.0L, e));
            if (!ComplexRecord<T>) a[static_cast<std::size_t>(i * (n + 1))] = size;
            x[static_cast<std::size_t>(i)] = size;
            for (long j = 0; j < 6; ++j) many[static_cast<std::size_t>(i + j * n)] = size;
          }
          fast::trsv(uplo, op, 'N', n, a.data(), n, x.data(), 1);
          fast::trsm('L', uplo, op, 'N', n, 6, from_real<T>(1), a.data(), n, many.data(), n);
          const Wide want = !ComplexRecord<T> ? Wide(1) : op == 'C' ? Wide(0, 1) : Wide(0, -1);
          for (const T& element : x) ASSERT_EQ(wide(element), want) << uplo << op << shift;
          for (const T& element : many) ASSERT_EQ(wide(element), want) << uplo << op << shift;
        }
      }
    }
  });
}

// Columns further apart than 2^31 elements: of the huge reserved range only the columns themselves become memory.
TYPED_TEST(Fuzz, ColumnsBeyondTheRangeOf32Bits) {
  using T = TypeParam;
  const long ld = (1L << 31) + 5, m = 9, n = 6;
  const std::size_t bytes = static_cast<std::size_t>(ld * n) * sizeof(T);
  void* range = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (range == MAP_FAILED) GTEST_SKIP() << "no room for the addresses";
  T* a = static_cast<T*>(range);
  const std::vector<T> small = random_array<T>(m * n), x = random_array<T>(m);
  const auto expect_equal = [&](const std::vector<T>& got, const std::vector<T>& want) {
    for (std::size_t i = 0; i < want.size(); ++i) EXPECT_LE(std::abs(wide(got[i]) - wide(want[i])), 100 * epsilon<T>) << i;
  };
  at_every_level([&] {
    const T one = from_real<T>(1);
    for (long j = 0; j < n; ++j) std::copy_n(small.data() + j * m, m, a + j * ld);
    std::vector<T> got(m * n), want = got;
    fast::gemm('T', 'N', n, n, m, one, a, ld, a, ld, T{}, got.data(), n);
    kernel::gemm('T', 'N', n, n, m, one, small.data(), m, small.data(), m, T{}, want.data(), n);
    expect_equal(got, want);
    for (char op : {'N', 'T'}) {
      fast::gemv(op, m, n, one, a, ld, x.data(), 1, T{}, got.data(), 1);
      kernel::gemv(op, m, n, one, small.data(), m, x.data(), 1, T{}, want.data(), 1);
      expect_equal(got, want);
    }
    got = want = x;
    fast::symv('U', n, one, a, ld, x.data(), 1, one, got.data(), 1);
    kernel::symv('U', n, one, small.data(), m, x.data(), 1, one, want.data(), 1);
    fast::trsv('U', 'N', 'U', n, a, ld, got.data(), 1);
    kernel::trsv('U', 'N', 'U', n, small.data(), m, want.data(), 1);
    expect_equal(got, want);
    std::vector<T> block = small;
    fast::gemm('N', 'N', m, n, 1, one, x.data(), m, x.data(), 1, one, a, ld);
    kernel::gemm('N', 'N', m, n, 1, one, x.data(), m, x.data(), 1, one, block.data(), m);
    fast::trsm('R', 'U', 'N', 'U', m, n, one, small.data(), m, a, ld);
    kernel::trsm('R', 'U', 'N', 'U', m, n, one, small.data(), m, block.data(), m);
    for (long j = 0; j < n; ++j) {
      for (long i = 0; i < m; ++i) {
        EXPECT_LE(std::abs(wide(a[i + j * ld]) - wide(block[static_cast<std::size_t>(i + j * m)])), 1000 * epsilon<T>);
      }
    }
    EXPECT_EQ(fast::nrm2(2, a, ld), kernel::nrm2(2, a, ld));
    EXPECT_EQ(fast::iamax(n, a, ld), kernel::iamax(n, a, ld));
  });
  munmap(range, bytes);
}

}  // namespace
