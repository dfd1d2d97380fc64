// lin_sol_gen: backward errors, the factor as it is documented, ownership, condition estimates.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/dense/forms.hpp"

namespace {

template <class T>
class General : public ::testing::Test {
 protected:
  void SetUp() override {
    be_quiet();
  }
};
using Elements = ::testing::Types<float, double, zent_f_complex, zent_d_complex>;
TYPED_TEST_SUITE(General, Elements);

const long sizes[] = {1, 2, 3, 8, 9, 31, 32, 33, 63, 64, 65, 127, 128, 129, 200};

// Partial pivoting lets elements grow; these matrices stay below this factor over n times the rounding error.
constexpr double growth = 60;

TYPED_TEST(General, SolvesToRounding) {
  using T = TypeParam;
  for (int kind = 0; kind < kinds; ++kind) {
    for (long n : sizes) {
      for (bool transpose : {false, true}) {
        Matrix<T> a = make<T>(static_cast<Kind>(kind), n, n + 3 * (n % 2));
        const Matrix<T> kept = a;
        std::vector<T> b = random_vector<T>(n, 7), user(b);
        T* x = transpose ? Form<T>::general(n, a.get(), b.data(), ZENT_A_COL_DIM, (int)a.dim, ZENT_TRANSPOSE, 0)
                         : Form<T>::general(n, a.get(), b.data(), ZENT_A_COL_DIM, (int)a.dim, 0);
        EXPECT_EQ(std::memcmp(a.get(), kept.data.data(), sizeof(T) * a.data.size()), 0) << "a changed";
        if (x == nullptr) {  // rounding has made a badly conditioned matrix singular
          EXPECT_EQ(error_number(), MATH_SINGULAR_MATRIX);
          EXPECT_TRUE(kind == hilbert || kind == kahan) << kind << " " << n;
          continue;
        }
        const double limit = growth * epsilon<T> * static_cast<double>(n) * (kind == wilkinson ? 30 : 1);
        EXPECT_LT(backward_error(a, x, b, transpose), limit) << "kind " << kind << " n " << n << " transposed " << transpose;
        T* same = Form<T>::general(n, a.get(), b.data(), ZENT_RETURN_USER, user.data(), ZENT_A_COL_DIM, (int)a.dim,
                                   transpose ? ZENT_TRANSPOSE : 0, 0);
        EXPECT_EQ(same, user.data());
        EXPECT_EQ(std::memcmp(x, user.data(), sizeof(T) * user.size()), 0) << "storage matters";
        zent_free_allocated_memory(x);
      }
    }
  }
}

// The elimination as the factor tells it, step by step on A, must end in U; each pivot is the largest of its column in scaled
// size.
template <class T>
void replay(Matrix<T>& a, Matrix<T>& factor, const long* pvt, double& error, double& lost) {
  const long n = a.n;
  std::vector<std::vector<Long>> work(n, std::vector<Long>(n));
  std::vector<long double> scale(n);
  const auto size = [](Long x) { return std::abs(x.real()) + std::abs(x.imag()); };
  for (long i = 0; i < n; ++i) {
    long double most = 0;
    for (long j = 0; j < n; ++j) work[i][j] = a.at(i, j), most = std::max(most, size(a.at(i, j)));
    scale[i] = most == 0 ? 1 : 1 / most;
  }
  error = lost = 0;
  for (long k = 0; k + 1 < n; ++k) {
    const long p = pvt[k] - 1;
    ASSERT_GE(p, k);
    ASSERT_LT(p, n);
    long double most = 0;
    for (long i = k; i < n; ++i) most = std::max(most, scale[i] * size(work[i][k]));
    if (most > 0) lost = std::max(lost, static_cast<double>(1 - scale[p] * size(work[p][k]) / most));
    std::swap(work[k], work[p]);
    std::swap(scale[k], scale[p]);
    for (long i = k + 1; i < n; ++i) {
      for (long j = k; j < n; ++j) work[i][j] += factor.at(i, k) * work[k][j];
      error = std::max(error, static_cast<double>(std::abs(work[i][k])));
    }
  }
  EXPECT_EQ(pvt[n - 1], n);
  for (long i = 0; i < n; ++i) {
    for (long j = i; j < n; ++j) error = std::max(error, static_cast<double>(std::abs(work[i][j] - factor.at(i, j))));
  }
}

TYPED_TEST(General, FactorTellsTheElimination) {
  using T = TypeParam;
  for (long n : {1, 2, 7, 16, 33, 64, 65, 150}) {
    for (Kind kind : {uniform, graded}) {
      Matrix<T> a = make<T>(kind, n);
      Matrix<T> factor(n, n + 4);
      std::vector<long> pvt(n);
      std::vector<T> b = random_vector<T>(n, 3);
      T* x = Form<T>::general(n, a.get(), nullptr, ZENT_FACTOR_USER, pvt.data(), factor.get(), ZENT_FAC_COL_DIM, (int)n + 4,
                              ZENT_FACTOR_ONLY, 0);
      EXPECT_EQ(x, nullptr);
      EXPECT_EQ(error_number(), 0);
      double error = 0, lost = 0;
      replay(a, factor, pvt.data(), error, lost);
      EXPECT_LT(error, 50 * epsilon<T> * static_cast<double>(n)) << n;
      EXPECT_LT(lost, 1000 * epsilon<T> * static_cast<double>(n)) << "not the scaled maximum, n " << n;
      for (long i = 0; i < n; ++i) {
        for (long j = n; j < n + 4; ++j) EXPECT_EQ(factor.at(i, j), Long(77)) << "unused column";
      }
      // The library's storage gets the same, its unused columns 0; a solution does not change the factor.
      T* library = nullptr;
      long* rows = nullptr;
      T* y = Form<T>::general(n, a.get(), b.data(), ZENT_FACTOR, &rows, &library, ZENT_FAC_COL_DIM, (int)n + 1, 0);
      ASSERT_NE(library, nullptr);
      EXPECT_EQ(std::memcmp(rows, pvt.data(), sizeof(long) * n), 0);
      for (long i = 0; i < n; ++i) {
        EXPECT_EQ(std::memcmp(library + i * (n + 1), factor.get() + i * (n + 4), sizeof(T) * n), 0);
        EXPECT_EQ(wide(library[i * (n + 1) + n]), Long(0));
      }
      for (bool transpose : {false, true}) {
        const Matrix<T> kept = factor;
        T* z = Form<T>::general(n, nullptr, b.data(), ZENT_SOLVE_ONLY, ZENT_FACTOR_USER, pvt.data(), factor.get(),
                                ZENT_FAC_COL_DIM, (int)n + 4, transpose ? ZENT_TRANSPOSE : 0, 0);
        ASSERT_NE(z, nullptr);
        EXPECT_LT(backward_error(a, z, b, transpose), growth * epsilon<T> * static_cast<double>(n)) << n << transpose;
        EXPECT_EQ(std::memcmp(factor.get(), kept.data.data(), sizeof(T) * kept.data.size()), 0);
        zent_free_allocated_memory(z);
      }
      // In the place of A, with either column dimension the larger.
      for (long dim : {n, n + 6}) {
        Matrix<T> storage(n, n + 6, 5);
        for (long i = 0; i < n; ++i) {
          for (long j = 0; j < n; ++j) storage.get()[i * dim + j] = a(i, j);
        }
        std::vector<long> own(n);
        T* z = Form<T>::general(n, storage.get(), b.data(), ZENT_A_COL_DIM, (int)dim, ZENT_FAC_COL_DIM, (int)(2 * n + 6 - dim),
                                ZENT_FACTOR_USER, own.data(), storage.get(), 0);
        ASSERT_NE(z, nullptr);
        EXPECT_EQ(std::memcmp(z, y, sizeof(T) * n), 0);
        for (long i = 0; i < n; ++i) {
          EXPECT_EQ(std::memcmp(storage.get() + i * (n + 6), factor.get() + i * (n + 4), sizeof(T) * n), 0) << i << " " << dim;
        }
        zent_free_allocated_memory(z);
      }
      zent_free_allocated_memory(y);
      zent_free_allocated_memory(library);
      zent_free_allocated_memory(rows);
    }
  }
}

TYPED_TEST(General, Inverts) {
  using T = TypeParam;
  for (long n : {1, 2, 17, 33, 100, 127, 128, 129}) {
    Matrix<T> a = make<T>(uniform, n, n + 2);
    const Matrix<T> kept = a;
    Matrix<T> only(n, n + 3), beside(n, n + 5, 0);
    RealOf<T> condition = 0, condition_only = 0;
    EXPECT_EQ(Form<T>::general(n, a.get(), nullptr, ZENT_A_COL_DIM, (int)n + 2, ZENT_INVERSE_ONLY, ZENT_INVERSE_USER, only.get(),
                               ZENT_INV_COL_DIM, (int)n + 3, ZENT_CONDITION, &condition_only, 0),
              nullptr);
    EXPECT_EQ(error_number(), 0);
    T* inverse = nullptr;
    std::vector<T> b = random_vector<T>(n, 5);
    T* x = Form<T>::general(n, a.get(), b.data(), ZENT_A_COL_DIM, (int)n + 2, ZENT_INVERSE, &inverse, ZENT_INV_COL_DIM,
                            (int)n + 5, ZENT_CONDITION, &condition, 0);
    ASSERT_NE(x, nullptr);
    ASSERT_NE(inverse, nullptr);
    std::memcpy(beside.get(), inverse, sizeof(T) * beside.data.size());
    const double limit = growth * epsilon<T> * static_cast<double>(n);
    EXPECT_LT(inverse_error(a, only), limit) << n;
    EXPECT_LT(inverse_error(a, beside), limit) << n;
    EXPECT_LT(inverse_error(beside, a), limit) << n;
    EXPECT_EQ(only.at(n - 1, n), Long(77)) << "the caller's unused columns";
    EXPECT_EQ(beside.at(n - 1, n), Long(0)) << "the library's unused columns";
    EXPECT_EQ(std::memcmp(a.get(), kept.data.data(), sizeof(T) * a.data.size()), 0);
    EXPECT_EQ(condition, condition_only);
    long double norm_a = 0, norm_inverse = 0;  // 1-norms
    for (long j = 0; j < n; ++j) {
      long double sum_a = 0, sum_inverse = 0;
      for (long i = 0; i < n; ++i) sum_a += std::abs(a.at(i, j)), sum_inverse += std::abs(only.at(i, j));
      norm_a = std::max(norm_a, sum_a), norm_inverse = std::max(norm_inverse, sum_inverse);
    }
    const auto truth = static_cast<double>(norm_a * norm_inverse);
    EXPECT_GT(condition, truth / 12) << n;
    EXPECT_LT(condition, truth * (is_complex<T> ? 2.1 : 1.001)) << n;  // complex moduli are taken as |re| + |im|
    zent_free_allocated_memory(x);
    zent_free_allocated_memory(inverse);
  }
}

// The inverse in the place of A, with the same column dimension, a larger and a smaller one.
TYPED_TEST(General, InvertsInPlace) {
  using T = TypeParam;
  const long n = 20;
  const Matrix<T> a = make_definite<T>(n);
  for (long dim : {n, n + 3}) {
    for (long inv_dim : {n, n + 5}) {
      for (auto solver : {Form<T>::general, Form<T>::definite}) {
        std::vector<T> storage(n * (n + 5)), b = random_vector<T>(n, 6);
        for (long i = 0; i < n; ++i) std::memcpy(&storage[i * dim], &a.data[i * n], sizeof(T) * n);
        T* x = dim == n
                   ? solver(n, storage.data(), b.data(), ZENT_INVERSE_USER, storage.data(), ZENT_INV_COL_DIM, (int)inv_dim, 0)
                   : solver(n, storage.data(), nullptr, ZENT_INVERSE_ONLY, ZENT_A_COL_DIM, (int)dim, ZENT_INVERSE_USER,
                            storage.data(), ZENT_INV_COL_DIM, (int)inv_dim, 0);
        EXPECT_EQ(error_number(), 0);
        zent_free_allocated_memory(x);
        Matrix<T> inverse(n);
        for (long i = 0; i < n; ++i) std::memcpy(inverse.get() + i * n, &storage[i * inv_dim], sizeof(T) * n);
        EXPECT_LT(inverse_error(a, inverse), growth * epsilon<T> * static_cast<double>(n)) << dim << " " << inv_dim;
      }
    }
  }
}

// 1-norm condition numbers of Hilbert matrices (Higham, Accuracy and Stability, table 28.1: to 4 digits).
TEST(Condition, OfHilbertMatrices) {
  be_quiet();
  const double published[] = {1, 27, 748, 28375, 943656, 2.907e7, 9.852e8, 3.387e10, 1.100e12, 3.535e13};
  for (long n = 1; n <= 10; ++n) {
    Matrix<double> a = make<double>(hilbert, n), factor(n);
    std::vector<long> pvt(n);
    double general = 0, definite = 0;
    zent_d_lin_sol_gen(n, a.get(), nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, pvt.data(), factor.get(), ZENT_CONDITION,
                       &general, 0);
    zent_d_lin_sol_posdef(n, a.get(), nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, factor.get(), ZENT_CONDITION, &definite, 0);
    for (double estimate : {general, definite}) {
      EXPECT_GT(estimate, published[n - 1] / 4) << n;
      EXPECT_LT(estimate, published[n - 1] * 1.01) << n;
    }
  }
}

TEST(Condition, OfADiagonalMatrix) {
  be_quiet();
  Matrix<double> a(40, 0, 0);
  for (long i = 0; i < 40; ++i) a(i, i) = std::ldexp(1.0, static_cast<int>(-i));
  double condition = 0;
  std::vector<double> b(40, 1);
  zent_free_allocated_memory(zent_d_lin_sol_gen(40, a.get(), b.data(), ZENT_CONDITION, &condition, 0));
  EXPECT_GT(condition, 0x1p37);
  EXPECT_LE(condition, 0x1p39);
  zent_free_allocated_memory(zent_d_lin_sol_posdef(40, a.get(), b.data(), ZENT_CONDITION, &condition, 0));
  EXPECT_GT(condition, 0x1p37);
  EXPECT_LE(condition, 0x1p39 * 1.0000001);
}

TEST(Pivoting, TakesTheFirstOfEqualRows) {
  be_quiet();
  // Scaled sizes of the first column: 1/4, 1/2, 1/2, 1/2.
  double a[] = {1, 4, 2, 0, 1, 2, 1, 0, 2, 1, 4, 1, -1, 0, 2, 1};
  double factor[16];
  long pvt[4];
  zent_d_lin_sol_gen(4, a, nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, pvt, factor, 0);
  EXPECT_EQ(pvt[0], 2);
  EXPECT_EQ(factor[4], -1);  // row 1 = the former row 0: -(1 / 1), kept in its row
  EXPECT_EQ(factor[8], -2);
  EXPECT_EQ(factor[12], 1);
}

TEST(Conditioning, WarnsBehindSolutionsOnly) {
  be_quiet();
  const long n = 14;
  Matrix<double> a = make<double>(hilbert, n), factor(n), inverse(n);
  std::vector<double> b(n, 1);
  std::vector<long> pvt(n);
  double condition = 0;
  double* x = zent_d_lin_sol_gen(n, a.get(), b.data(), 0);
  EXPECT_EQ(error_type(), 3);
  EXPECT_EQ(error_number(), MATH_ILL_CONDITIONED);
  EXPECT_NE(x, nullptr);
  zent_free_allocated_memory(x);
  zent_d_lin_sol_gen(n, a.get(), nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, pvt.data(), factor.get(), 0);
  EXPECT_EQ(error_type(), 0);
  zent_d_lin_sol_gen(n, a.get(), nullptr, ZENT_FACTOR_ONLY, ZENT_FACTOR_USER, pvt.data(), factor.get(), ZENT_CONDITION,
                     &condition, 0);
  EXPECT_EQ(error_number(), MATH_ILL_CONDITIONED);
  EXPECT_GT(condition, 0x1p52);
  zent_d_lin_sol_gen(n, a.get(), nullptr, ZENT_INVERSE_ONLY, ZENT_INVERSE_USER, inverse.get(), 0);
  EXPECT_EQ(error_number(), MATH_ILL_CONDITIONED);
}

// Infinities and not-a-numbers end in an answer or an error, and A stays as it is.
TYPED_TEST(General, NumbersThatAreNone) {
  using T = TypeParam;
  const long double odd[] = {NAN, INFINITY, -INFINITY};
  for (long n : {1, 3, 40, 130}) {
    for (long double value : odd) {
      for (long at : {0L, n * n / 2, n * n - 1}) {
        Matrix<T> a = make_definite<T>(n);
        a.get()[at] = narrow<T>(Long(value));
        const Matrix<T> kept = a;
        std::vector<T> b = random_vector<T>(n, 1);
        T* inverse = nullptr;
        for (bool definite : {false, true}) {
          inverse = nullptr;
          T* x = definite ? Form<T>::definite(n, a.get(), b.data(), ZENT_INVERSE, &inverse, 0)
                          : Form<T>::general(n, a.get(), b.data(), ZENT_INVERSE, &inverse, 0);
          EXPECT_TRUE(x != nullptr || error_type() == 4);
          EXPECT_EQ(std::memcmp(a.get(), kept.data.data(), sizeof(T) * a.data.size()), 0);
          zent_free_allocated_memory(x);
          zent_free_allocated_memory(inverse);
        }
      }
    }
  }
}

}  // namespace
