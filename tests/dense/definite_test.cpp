// lin_sol_posdef and lin_sol_nonnegdef, and the kernels behind them.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/dense/forms.hpp"

namespace {

template <class T>
class Definite : public ::testing::Test {
 protected:
  void SetUp() override {
    be_quiet();
  }
};
using Elements = ::testing::Types<float, double, zent_f_complex, zent_d_complex>;
TYPED_TEST_SUITE(Definite, Elements);

template <class T>
void spoil_upper(Matrix<T>& a) {
  for (long i = 0; i < a.n; ++i) {
    for (long j = i + 1; j < a.n; ++j) a(i, j) = narrow<T>(Long(NAN));
  }
}

TYPED_TEST(Definite, SolvesFactorsInverts) {
  using T = TypeParam;
  for (long n : {1, 2, 16, 17, 23, 24, 25, 31, 32, 33, 63, 64, 65, 100, 129}) {
    for (bool grade : {false, true}) {
      const Matrix<T> full = make_definite<T>(n, 0, grade);
      Matrix<T> a = make_definite<T>(n, n + n % 3, grade), factor(n, n + 2), inverse(n, n + 1);
      spoil_upper(a);  // only the lower triangle may be read
      const Matrix<T> kept = a;
      std::vector<T> b = random_vector<T>(n, 9), x(b);
      RealOf<T> condition = 0;
      const double limit = 20 * epsilon<T> * static_cast<double>(n);
      EXPECT_EQ(Form<T>::definite(n, a.get(), b.data(), ZENT_A_COL_DIM, (int)a.dim, ZENT_RETURN_USER, x.data(), ZENT_FACTOR_USER,
                                  factor.get(), ZENT_FAC_COL_DIM, (int)n + 2, ZENT_INVERSE_USER, inverse.get(), ZENT_INV_COL_DIM,
                                  (int)n + 1, ZENT_CONDITION, &condition, 0),
                x.data());
      EXPECT_TRUE(error_number() == 0 || (grade && error_number() == MATH_ILL_CONDITIONED));
      EXPECT_EQ(std::memcmp(a.get(), kept.data.data(), sizeof(T) * a.data.size()), 0);
      EXPECT_LT(backward_error(full, x.data(), b), limit) << n << grade;
      EXPECT_LT(inverse_error(full, inverse), limit) << n << grade;
      EXPECT_EQ(factor.at(n - 1, n), Long(77));
      EXPECT_EQ(inverse.at(n - 1, n), Long(77));
      EXPECT_GE(condition, 1);
      long double error = 0;
      for (long i = 0; i < n; ++i) {
        for (long j = 0; j <= i; ++j) {
          Long sum = full.at(i, j);
          for (long k = 0; k <= j; ++k) sum -= factor.at(i, k) * std::conj(factor.at(j, k));
          error = std::max(error, std::abs(sum) / std::sqrt(std::abs(full.at(i, i) * full.at(j, j))));
          EXPECT_EQ(factor.at(j, i), std::conj(factor.at(i, j))) << "mirrored";
          EXPECT_EQ(inverse.at(j, i), std::conj(inverse.at(i, j))) << "mirrored";
        }
      }
      EXPECT_LT(error, 4 * epsilon<T> * static_cast<double>(n + 1)) << n << grade;

      // The library's storage, one part at a time, and the factor used again.
      T *library = nullptr, *alone = nullptr;
      Form<T>::definite(n, a.get(), nullptr, ZENT_A_COL_DIM, (int)a.dim, ZENT_FACTOR_ONLY, ZENT_FACTOR, &library,
                        ZENT_FAC_COL_DIM, (int)n + 1, 0);
      Form<T>::definite(n, a.get(), nullptr, ZENT_A_COL_DIM, (int)a.dim, ZENT_INVERSE_ONLY, ZENT_INVERSE, &alone,
                        ZENT_INV_COL_DIM, (int)n + 1, 0);
      ASSERT_TRUE(library != nullptr && alone != nullptr);
      for (long i = 0; i < n; ++i) {
        EXPECT_EQ(std::memcmp(library + i * (n + 1), factor.get() + i * (n + 2), sizeof(T) * n), 0);
        EXPECT_EQ(std::memcmp(alone + i * (n + 1), inverse.get() + i * (n + 1), sizeof(T) * n), 0);
        EXPECT_EQ(wide(library[i * (n + 1) + n]), Long(0));
        EXPECT_EQ(wide(alone[i * (n + 1) + n]), Long(0));
      }
      T* y = Form<T>::definite(n, nullptr, b.data(), ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, library, ZENT_FAC_COL_DIM, (int)n + 1, 0);
      ASSERT_NE(y, nullptr);
      EXPECT_EQ(std::memcmp(y, x.data(), sizeof(T) * n), 0);
      T* in_place = Form<T>::definite(n, a.get(), b.data(), ZENT_A_COL_DIM, (int)a.dim, ZENT_FACTOR_USER, a.get(), 0);
      ASSERT_NE(in_place, nullptr);
      EXPECT_EQ(std::memcmp(in_place, x.data(), sizeof(T) * n), 0);
      EXPECT_EQ(std::memcmp(a.get(), library, sizeof(T) * n), 0);
      for (T* p : {library, alone, y, in_place}) zent_free_allocated_memory(p);
    }
  }
}

// The order of the first leading submatrix that is not positive definite; the exact identity below makes every step exact.
TYPED_TEST(Definite, TellsWhereItStops) {
  using T = TypeParam;
  for (long n : {1, 24, 25, 70}) {
    for (long at : {0L, n / 2, n - 1}) {
      Matrix<T> a(n, 0, 0);
      for (long i = 0; i < n; ++i) a(i, i) = narrow<T>(Long(i < at ? 4 : i == at ? 0 : -1));
      Matrix<T> kept = a;
      std::vector<T> b = random_vector<T>(n, 2);
      long first = 0;
      EXPECT_EQ(Form<T>::definite(n, a.get(), b.data(), 0), nullptr);
      EXPECT_EQ(error_number(), MATH_NONPOSITIVE_MATRIX);
      EXPECT_EQ(error_type(), 4);
      if constexpr (std::is_same_v<T, double>) {
        // The order is in the message.
        zent_e1psh("probe");
        zent_dlftds(n, a.get(), n, kept.get(), n);
        EXPECT_EQ(zent_n1rcd(1), MATH_NONPOSITIVE_MATRIX);
        zent_e1pop("probe");
        for (first = 0; first < n && kept(first, first) == 2; ++first) {
        }
        EXPECT_EQ(first, at);
      }
    }
  }
}

TEST(Hermitian, DiagonalMustBeReal) {
  be_quiet();
  Matrix<zent_d_complex> a = make_definite<zent_d_complex>(5);
  std::vector<zent_d_complex> b = random_vector<zent_d_complex>(5, 1);
  a(3, 3).im = 1e-300;
  EXPECT_EQ(zent_z_lin_sol_posdef(5, a.get(), b.data(), 0), nullptr);
  EXPECT_EQ(error_number(), MATH_HERMITIAN_DIAG_REAL);
  EXPECT_EQ(error_type(), 4);
}

// B'B with B m by n of small integers: exact, of rank m, and column j depends on the ones before it from j = m on.
template <class Real>
Matrix<Real> gram(long m, long n, Matrix<Real>& b) {
  Matrix<Real> a(n, 0, 0);
  b = Matrix<Real>(std::max(m, n), 0, 0);
  std::mt19937 engine(static_cast<unsigned>(m + 31 * n));
  for (long k = 0; k < m; ++k) {
    for (long j = k; j < n; ++j) b(k, j) = static_cast<Real>(j == k ? 2 : static_cast<long>(engine() % 3) - 1);
  }
  for (long i = 0; i < n; ++i) {
    for (long j = 0; j < n; ++j) {
      for (long k = 0; k < m; ++k) a(i, j) += b(k, i) * b(k, j);
    }
  }
  return a;
}

template <class Real>
class Nonnegative : public ::testing::Test {
 protected:
  void SetUp() override {
    be_quiet();
  }
  static constexpr bool is_double = std::is_same_v<Real, double>;
  template <class... Arguments>
  static Real* solve(long n, Real* a, Real* b, Arguments... arguments) {
    if constexpr (is_double) {
      return zent_d_lin_sol_nonnegdef(n, a, b, arguments...);
    } else {
      return zent_f_lin_sol_nonnegdef(n, a, b, arguments...);
    }
  }
};
using Reals = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Nonnegative, Reals);

TYPED_TEST(Nonnegative, SolvesWhatIsConsistent) {
  using Real = TypeParam;
  for (long n : {1, 5, 31, 32, 33, 65, 100}) {
    for (long m : {n, n - 1, n - n / 3}) {
      if (m < 1) continue;
      Matrix<Real> root(1), a = gram<Real>(m, n, root), factor(n, n + 2), inverse(n, n + 3);
      const Matrix<Real> full = a, kept = [&] {
        for (long i = 0; i < n; ++i) {
          for (long j = i + 1; j < n; ++j) a(i, j) = static_cast<Real>(NAN);
        }
        return a;
      }();
      std::vector<Real> b(n), x(n);
      for (long i = 0; i < n; ++i) {
        for (long j = 0; j < n; ++j) b[i] += static_cast<Real>(full.at(i, j).real()) * static_cast<Real>(j % 4 - 1);
      }
      EXPECT_EQ(this->solve(n, a.get(), b.data(), ZENT_FACTOR_USER, factor.get(), ZENT_FAC_COL_DIM, (int)n + 2, ZENT_INVERSE_USER,
                            inverse.get(), ZENT_INV_COL_DIM, (int)n + 3, ZENT_RETURN_USER, x.data(), 0),
                x.data());
      EXPECT_EQ(error_number(), 0) << n << " " << m;
      EXPECT_EQ(std::memcmp(a.get(), kept.data.data(), sizeof(Real) * a.data.size()), 0);
      const double limit = 100 * epsilon<Real> * static_cast<double>(n);
      EXPECT_LT(backward_error(full, x.data(), b), limit) << n << " " << m;
      for (long j = m; j < n; ++j) {
        EXPECT_EQ(factor.at(j, j), Long(0)) << "column " << j << " depends on the others";
        EXPECT_EQ(x[j], 0);
      }
      long double error = 0, norm = full.norm();
      for (long i = 0; i < n; ++i) {
        for (long j = 0; j < n; ++j) {
          EXPECT_EQ(factor.at(i, j), factor.at(j, i));
          EXPECT_EQ(inverse.at(i, j), inverse.at(j, i));
        }
      }
      std::vector<std::vector<Long>> product(n, std::vector<Long>(n));  // A G, then A G A = A
      for (long i = 0; i < n; ++i) {
        for (long j = 0; j < n; ++j) {
          for (long k = 0; k < n; ++k) product[i][j] += full.at(i, k) * inverse.at(k, j);
        }
      }
      for (long i = 0; i < n; ++i) {
        for (long j = 0; j < n; ++j) {
          Long sum = -full.at(i, j);
          for (long k = 0; k < n; ++k) sum += product[i][k] * full.at(k, j);
          error = std::max(error, std::abs(sum));
        }
      }
      EXPECT_LT(static_cast<double>(error / (norm * norm * inverse.norm())), limit) << n << " " << m;

      // The mirrored factor serves a later call, which leaves it alone; the library's storage holds the same.
      const Matrix<Real> held = factor;
      Real* y = this->solve(n, static_cast<Real*>(nullptr), b.data(), ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, factor.get(),
                            ZENT_FAC_COL_DIM, (int)n + 2, 0);
      ASSERT_NE(y, nullptr);
      EXPECT_EQ(std::memcmp(y, x.data(), sizeof(Real) * n), 0);
      EXPECT_EQ(std::memcmp(factor.get(), held.data.data(), sizeof(Real) * held.data.size()), 0);
      Real *library = nullptr, *generalized = nullptr;
      this->solve(n, a.get(), static_cast<Real*>(nullptr), ZENT_FACTOR_ONLY, ZENT_FACTOR, &library, 0);
      this->solve(n, a.get(), static_cast<Real*>(nullptr), ZENT_INVERSE_ONLY, ZENT_INVERSE, &generalized, ZENT_INV_COL_DIM,
                  (int)n + 1, 0);
      ASSERT_TRUE(library != nullptr && generalized != nullptr);
      for (long i = 0; i < n; ++i) {
        EXPECT_EQ(std::memcmp(library + i * n, factor.get() + i * (n + 2), sizeof(Real) * n), 0);
        EXPECT_EQ(std::memcmp(generalized + i * (n + 1), inverse.get() + i * (n + 3), sizeof(Real) * n), 0);
        EXPECT_EQ(generalized[i * (n + 1) + n], 0);
      }
      for (Real* p : {y, library, generalized}) zent_free_allocated_memory(p);
    }
  }
}

TYPED_TEST(Nonnegative, WarnsAndGoesOn) {
  using Real = TypeParam;
  Real zero[9] = {}, nothing[3] = {}, one[3] = {1, 0, 0};
  Real* x = this->solve(3, zero, nothing, 0);
  ASSERT_NE(x, nullptr);
  EXPECT_EQ(error_type(), 0);
  EXPECT_EQ(x[0], 0);
  zent_free_allocated_memory(x);
  x = this->solve(3, zero, one, 0);
  ASSERT_NE(x, nullptr);
  EXPECT_EQ(error_number(), MATH_INCONSISTENT_EQUATIONS_2);
  EXPECT_EQ(error_type(), 3);
  zent_free_allocated_memory(x);
  Real indefinite[] = {1, 2, 2, 1}, b[] = {1, 1}, r[4];
  this->solve(2, indefinite, b, ZENT_FACTOR_USER, r, ZENT_FACTOR_ONLY, 0);
  EXPECT_EQ(error_number(), MATH_NOT_NONNEG_DEFINITE);
  EXPECT_EQ(error_type(), 3);
  Real definite[] = {4, 2, 2, 5};
  for (Real tolerance : {Real{0}, Real{1}, Real{-1e-3F}, Real{1.5}, static_cast<Real>(NAN)}) {
    x = this->solve(2, definite, b, ZENT_TOLERANCE_ADR, &tolerance, 0);
    const bool allowed = tolerance >= 0 && tolerance <= 1;
    EXPECT_EQ(x != nullptr, allowed);
    EXPECT_EQ(error_number() == MATH_TOL_OUT_OF_RANGE, !allowed);
    zent_free_allocated_memory(x);
  }
  x = this->solve(2, definite, b, ZENT_TOLERANCE, 0.9, 0);  // 5 - 1 = 4 of 5 counts as zero
  ASSERT_NE(x, nullptr);
  EXPECT_EQ(x[1], 0);
  EXPECT_EQ(error_number(), MATH_INCONSISTENT_EQUATIONS_2);
  zent_free_allocated_memory(x);
}

// The kernels through their own names, in both halves.
TEST(Support, RankRevealingKernels) {
  be_quiet();
  const auto check = [](auto psh, auto pop, auto type, auto code, auto chfac, auto girts, long indefinite, long inconsistent,
                        long tolerance) {
    psh("probe");
    const double a[] = {4, 0, 0, 2, 1, 0, 2, 1, 10};  // upper triangle, column-major: rank 2, then a third column
    double r[9], x[6], rinv[9];
    long rank = 0;
    chfac(3, a, 3, 1e-12, &rank, r, 3);
    EXPECT_EQ(type(1), 0);
    const double expected[] = {2, 0, 0, 1, 0, 0, 1, 0, 3};
    EXPECT_EQ(rank, 2);
    EXPECT_EQ(std::memcmp(r, expected, sizeof r), 0);
    const double b[] = {2, 1, 4, 2, 2, 4};
    girts(3, r, 3, 2, b, 3, 4, &rank, x, 3, rinv, 3);
    EXPECT_EQ(code(1), inconsistent) << "the second right-hand side";
    EXPECT_EQ(rank, 2);
    EXPECT_EQ(x[0], 1);
    EXPECT_EQ(x[1], 0);
    EXPECT_EQ(x[2], 1);
    EXPECT_EQ(rinv[0], 0.5);
    EXPECT_EQ(rinv[3], 0);
    EXPECT_EQ(rinv[4], 0);
    EXPECT_EQ(rinv[8], 1.0 / 3);
    chfac(3, a, 3, 2.0, &rank, r, 3);
    EXPECT_EQ(code(1), tolerance);
    const double bad[] = {1, 0, 2, 1};
    chfac(2, bad, 2, 1e-12, &rank, r, 2);
    EXPECT_EQ(code(1), indefinite);
    EXPECT_EQ(type(1), 3);
    const double full[] = {1, 1, 1, 1};
    girts(2, full, 2, 1, b, 2, 1, &rank, x, 2, rinv, 2);
    EXPECT_EQ(type(1), 5);
    EXPECT_EQ(code(1), 1052);
    girts(2, bad, 2, 1, b, 2, 5, &rank, x, 2, rinv, 2);
    EXPECT_EQ(code(1), 602);
    pop("probe");
  };
  check(zent_e1psh, zent_e1pop, zent_n1rty, zent_n1rcd, zent_dchfac, zent_dgirts, MATH_NOT_NONNEG_DEFINITE,
        MATH_INCONSISTENT_EQUATIONS_2, MATH_TOL_OUT_OF_RANGE);
  check(zents_e1psh, zents_e1pop, zents_n1rty, zents_n1rcd, zents_dchfac, zents_dgirts, 1, 1, STAT_ILLEGAL_TOL);
}

}  // namespace
