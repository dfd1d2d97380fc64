// Norms and products of dense, band and coordinate matrices, all against the dense definition in long double.
#include <cstring>

#include "tests/band/forms.hpp"

namespace band_test {
namespace {

using Dense = std::vector<std::vector<long double>>;

struct Norms {
  double frobenius, one, infinity;
};
Norms norms_of(const Dense& a) {
  long double squares = 0, one = 0, infinity = 0;
  std::vector<long double> columns(a[0].size());
  for (const auto& row : a) {
    long double sum = 0;
    for (std::size_t j = 0; j < row.size(); ++j) {
      squares += row[j] * row[j];
      sum += std::fabs(row[j]);
      columns[j] += std::fabs(row[j]);
    }
    infinity = std::max(infinity, sum);
  }
  for (long double sum : columns) one = std::max(one, sum);
  return {static_cast<double>(std::sqrt(squares)), static_cast<double>(one), static_cast<double>(infinity)};
}
void expect_norms(const Norms& expected, auto norm) {
  EXPECT_NEAR(norm(0) / expected.frobenius, 1, 1e-14);
  EXPECT_NEAR(norm(ZENT_ONE_NORM) / expected.one, 1, 1e-14);
  EXPECT_NEAR(norm(ZENT_INF_NORM) / expected.infinity, 1, 1e-14);
}

TEST(Norms, AgreeWithTheDefinitionInEveryStorage) {
  be_quiet();
  for (const auto& [n, nlca, nuca] : {std::array<long, 3>{1, 0, 0}, {7, 2, 3}, {300, 1, 5}, {300, 299, 0}, {258, 4, 257}}) {
    Band<double> m(n, nlca, nuca);
    Dense dense(n, std::vector<long double>(n));
    std::vector<double> rows(n * (n + 3), 1e9);  // column dimension n + 3
    std::vector<Zent_d_sparse_elem> elements, half;
    for (long i = 0; i < n; ++i) {
      for (long j = 0; j < n; ++j) {
        const bool inside = i - j <= nlca && j - i <= nuca;
        rows[i * (n + 3) + j] = inside ? m.at(i, j) : 0;
        dense[i][j] = rows[i * (n + 3) + j];
        if (inside) elements.push_back({i, j, m.at(i, j)});
      }
    }
    for (long r = 0; r < nuca; ++r) m.a[r * n] = 1e9;  // a corner
    expect_norms(norms_of(dense), [&](int kind) {
      return zent_d_matrix_norm(n, n, rows.data(), ZENT_A_COL_DIM, static_cast<int>(n + 3), kind, 0);
    });
    expect_norms(norms_of(dense), [&](int kind) { return zent_d_matrix_norm_band(n, m.a.data(), nlca, nuca, kind, 0); });
    expect_norms(norms_of(dense), [&](int kind) {
      return zent_d_matrix_norm_coordinate(n, n, static_cast<long>(elements.size()), elements.data(), kind, 0);
    });
    for (long i = 0; i < n; ++i) {
      for (long j = 0; j < n; ++j) dense[i][j] = i - j > nuca ? 0 : i > j ? dense[j][i] : dense[i][j];
    }
    for (const auto& e : elements) {
      if (e.row <= e.col) half.push_back(e);
    }
    expect_norms(norms_of(dense),
                 [&](int kind) { return zent_d_matrix_norm_band(n, m.a.data(), -5L, nuca, ZENT_SYMMETRIC, kind, 0); });
    expect_norms(norms_of(dense), [&](int kind) {
      return zent_d_matrix_norm_coordinate(n, n, static_cast<long>(half.size()), half.data(), ZENT_SYMMETRIC, kind, 0);
    });
  }
}

TEST(Norms, OfVectors) {
  be_quiet();
  double x[] = {3, -4, 4, 0}, y[] = {3, -4, 4, -2}, huge[] = {3e300, 4e300}, tiny[] = {3e-320, 4e-320};
  long index = -1;
  EXPECT_EQ(zent_d_vector_norm(3L, x, ZENT_ONE_NORM, 0), 11);
  EXPECT_EQ(zent_d_vector_norm(3L, x, ZENT_INF_NORM, &index, 0), 4);
  EXPECT_EQ(index, 1);
  EXPECT_EQ(zent_d_vector_norm(4L, x, ZENT_SECOND_VECTOR, y, ZENT_INF_NORM, &index, 0), 2);
  EXPECT_EQ(index, 3);
  EXPECT_EQ(zent_d_vector_norm(4L, x, ZENT_SECOND_VECTOR, y, 0), 2);
  EXPECT_DOUBLE_EQ(zent_d_vector_norm(2L, huge, 0), 5e300);
  EXPECT_NEAR(zent_d_vector_norm(2L, tiny, 0), 5e-320, 1e-323);
  float single[] = {3e30F, 4e30F};
  EXPECT_FLOAT_EQ(zent_f_vector_norm(2L, single, 0), 5e30F);
  EXPECT_FLOAT_EQ(zent_f_matrix_norm(2L, 1L, single, 0), 5e30F);
  x[1] = NAN;
  EXPECT_TRUE(std::isnan(zent_d_vector_norm(4L, x, ZENT_INF_NORM, &index, 0)));
  EXPECT_EQ(index, 1);
  EXPECT_TRUE(std::isnan(zent_d_matrix_norm(2L, 2L, x, ZENT_ONE_NORM, 0)));
}

TEST(Norms, Errors) {
  be_quiet();
  double a[9] = {}, *null = nullptr;
  Zent_d_sparse_elem e[3] = {{0, 0, 1}, {5, 0, 1}, {0, -1, 1}};
  const auto code = [](double norm) {
    EXPECT_TRUE(std::isnan(norm));
    EXPECT_EQ(zent_error_type(), 5);
    return zent_error_code();
  };
  EXPECT_EQ(code(zent_d_vector_norm(0L, a, 0)), MATH_INEQUALITY_VIOLATION_3);
  EXPECT_EQ(code(zent_d_vector_norm(3L, null, 0)), MATH_UNEXPECTED_NULL_POINTER);
  EXPECT_EQ(code(zent_d_vector_norm(3L, a, ZENT_SECOND_VECTOR, null, 0)), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(code(zent_d_vector_norm(3L, a, ZENT_SYMMETRIC, 0)), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(code(zent_d_matrix_norm(0L, 3L, a, 0)), MATH_M_GT_ZERO);
  EXPECT_EQ(code(zent_d_matrix_norm(3L, 0L, a, 0)), MATH_N_GT_ZERO);
  EXPECT_EQ(code(zent_d_matrix_norm(3L, 3L, a, ZENT_A_COL_DIM, 2, 0)), MATH_COL_DIM_LESS_ORDER);
  EXPECT_EQ(code(zent_d_matrix_norm_band(0L, a, 0L, 0L, 0)), MATH_N_GT_ZERO);
  EXPECT_EQ(code(zent_d_matrix_norm_band(3L, a, 3L, 0L, 0)), MATH_NEED_ZERO_LE_NLCA_LT_N);
  EXPECT_EQ(code(zent_d_matrix_norm_band(3L, a, 0L, 3L, 0)), MATH_NEED_ZERO_LE_NUCA_LT_N);
  EXPECT_EQ(code(zent_d_matrix_norm_coordinate(1L, 2L, 3L, e, 0)), MATH_NZ_GE_ZERO_LT_MN);
  EXPECT_EQ(code(zent_d_matrix_norm_coordinate(1L, 1L, 2L, e, ZENT_SYMMETRIC, 0)), MATH_NZ_GE_ZERO_LT_NN);
  EXPECT_EQ(code(zent_d_matrix_norm_coordinate(1L, 2L, 1L, e, ZENT_SYMMETRIC, 0)), MATH_INEQUALITY_VIOLATION_2);
  EXPECT_EQ(code(zent_d_matrix_norm_coordinate(3L, 3L, 3L, e, 0)), MATH_INEQUALITY_VIOLATION_2);
  EXPECT_EQ(zent_d_matrix_norm_coordinate(3L, 3L, 0L, nullptr, ZENT_ONE_NORM, 0), 0);
}

// ---- Products ------------------------------------------------------------------------------------------------------------

template <class T>
struct Products;
#define ZENT_TEST_FORM(P, T, E)                                \
  template <>                                                  \
  struct Products<T> {                                         \
    using Element = E;                                         \
    template <class... Arguments>                              \
    static T* dense(Arguments... arguments) {                  \
      return zent_##P##_mat_mul_rect(arguments...);            \
    }                                                          \
    template <class... Arguments>                              \
    static T* band(Arguments... arguments) {                   \
      return zent_##P##_mat_mul_rect_band(arguments...);       \
    }                                                          \
    template <class... Arguments>                              \
    static void* coordinate(Arguments... arguments) {          \
      return zent_##P##_mat_mul_rect_coordinate(arguments...); \
    }                                                          \
  };
ZENT_TEST_FORM(f, float, Zent_f_sparse_elem)
ZENT_TEST_FORM(d, double, Zent_d_sparse_elem)
ZENT_TEST_FORM(c, zent_f_complex, Zent_c_sparse_elem)
ZENT_TEST_FORM(z, zent_d_complex, Zent_z_sparse_elem)
#undef ZENT_TEST_FORM

// A band matrix, rows by columns, in all three storages.
template <class T>
struct Sample {
  int rows, columns, lower, upper;
  std::vector<T> dense, band;
  std::vector<typename Products<T>::Element> elements;

  Sample(int m, int n, int nlca, int nuca)
      : rows(m), columns(n), lower(nlca), upper(nuca), dense(m * n), band((nlca + nuca + 1) * n, element<T>(1e9)) {
    for (int i = 0; i < m; ++i) {
      for (int j = std::max(0, i - nlca); j <= std::min(n - 1, i + nuca); ++j) {
        const T x = random_element<T>();
        dense[i * n + j] = band[(nuca + i - j) * n + j] = x;
        typename Products<T>::Element e{i, j, {}};
        std::memcpy(&e.val, &x, sizeof x);
        elements.insert(elements.begin(), e);
      }
    }
  }
  auto at(int kind, long i, long j) const {  // of the operation: 0 plain, 1 transposed, 2 conjugated
    const auto x = value(kind == 0 ? dense[i * columns + j] : dense[j * columns + i]);
    return kind == 2 ? conjugate(x) : x;
  }
};

template <class T>
class Product : public ::testing::Test {};
TYPED_TEST_SUITE(Product, Forms);

TYPED_TEST(Product, AllOperationsInAllStorages) {
  be_quiet();
  using T = TypeParam;
  using P = Products<T>;
  using V = typename Form<T>::Value;
  const char* const names[][3] = {{"A", " trans( a )", "CTRANS(A)"}, {"B", "trans(B)", "ctrans(b)"}};
  const double tolerance = 100 * std::numeric_limits<typename Form<T>::Real>::epsilon();
  for (int left = 0; left < 3; ++left) {
    const Sample<T> a(left ? 37 : 29, left ? 29 : 37, left ? 6 : 3, left ? 3 : 6);
    std::vector<T> x = random_vector<T>(37);
    const std::string text = std::string(names[0][left]) + " * X ";
    T* y[3] = {
        P::dense(text.c_str(), ZENT_A_MATRIX, a.rows, a.columns, a.dense.data(), ZENT_X_VECTOR, 37, x.data(), 0),
        P::band(text.c_str(), ZENT_A_MATRIX, a.rows, a.columns, a.lower, a.upper, a.band.data(), ZENT_X_VECTOR, 37, x.data(), 0),
        static_cast<T*>(P::coordinate(text.c_str(), ZENT_A_MATRIX, a.rows, a.columns, static_cast<int>(a.elements.size()),
                                      a.elements.data(), ZENT_X_VECTOR, 37, x.data(), 0))};
    for (T* product : y) {
      const Release release(product);
      ASSERT_NE(product, nullptr) << text;
      for (long i = 0; i < 29; ++i) {
        V sum = 0;
        for (long j = 0; j < 37; ++j) sum += a.at(left, i, j) * value(x[j]);
        EXPECT_LT(std::abs(sum - value(product[i])), tolerance) << text << " " << i;
      }
    }
    for (int right = 0; right < 3; ++right) {
      const Sample<T> b(right ? 23 : 37, right ? 37 : 23, 2, 4);
      const std::string both = std::string(names[0][left]) + "*" + names[1][right];
      long lower = -1, upper = -1, count = -1;
      T* dense = P::dense(both.c_str(), ZENT_A_MATRIX, a.rows, a.columns, a.dense.data(), ZENT_B_MATRIX, b.rows, b.columns,
                          b.dense.data(), ZENT_RETURN_COL_DIM, 25, 0);
      T* band = P::band(both.c_str(), ZENT_A_MATRIX, a.rows, a.columns, a.lower, a.upper, a.band.data(), ZENT_B_MATRIX, b.rows,
                        b.columns, b.lower, b.upper, b.band.data(), ZENT_RETURN_CODIAGONALS, &lower, &upper, 0);
      auto* sparse = static_cast<typename P::Element*>(P::coordinate(
          both.c_str(), ZENT_A_MATRIX, a.rows, a.columns, static_cast<int>(a.elements.size()), a.elements.data(), ZENT_B_MATRIX,
          b.rows, b.columns, static_cast<int>(b.elements.size()), b.elements.data(), ZENT_RETURN_COUNT, &count, 0));
      const Release one(dense), two(band), three(sparse);
      ASSERT_TRUE(dense != nullptr && band != nullptr && sparse != nullptr) << both;
      EXPECT_EQ(lower, 3 + (right ? 4 : 2));
      EXPECT_EQ(upper, 6 + (right ? 2 : 4));
      std::vector<V> gathered(29 * 23);
      for (long k = 0; k < count; ++k) {
        T v;
        std::memcpy(&v, &sparse[k].val, sizeof v);
        gathered[sparse[k].row * 23 + sparse[k].col] += value(v);
        if (k > 0) {
          EXPECT_LE(sparse[k - 1].row, sparse[k].row);
        }
      }
      for (long i = 0; i < 29; ++i) {
        for (long j = 0; j < 23; ++j) {
          V sum = 0;
          for (long k = 0; k < 37; ++k) sum += a.at(left, i, k) * b.at(right, k, j);
          EXPECT_LT(std::abs(sum - value(dense[i * 25 + j])), tolerance) << both;
          EXPECT_LT(std::abs(sum - gathered[i * 23 + j]), tolerance) << both;
          if (i - j <= lower && j - i <= upper) {
            EXPECT_LT(std::abs(sum - value(band[(upper + i - j) * 23 + j])), tolerance) << both;
          }
        }
        EXPECT_EQ(value(dense[i * 25 + 24]), V{0});
      }
    }
  }
}

TEST(ProductErrors, AllOfThem) {
  be_quiet();
  double a[12] = {1, 2, 3, 4}, x[4] = {1, 1, 1, 1}, y[4] = {7, 7, 7, 7}, *null = nullptr;
  Zent_d_sparse_elem e[2] = {{0, 1, 2.0}, {1, 1, 5.0}};
  const auto code = [&](const void* product) {
    EXPECT_EQ(product, nullptr);
    EXPECT_EQ(zent_error_type(), 5);
    EXPECT_EQ(y[0], 7);
    return zent_error_code();
  };
  const auto dense = [&](const char* text, auto... options) {
    return code(zent_d_mat_mul_rect(text, options..., ZENT_RETURN_USER, y, 0));
  };
  for (const char* text : {"", "A", "A*", "A+x", "x*A", "A*trans(x)", "trans(A*x", "A*x*x", "A*C", "trans A*x", "A*xx"}) {
    EXPECT_EQ(dense(text, ZENT_A_MATRIX, 2, 2, a, ZENT_X_VECTOR, 2, x), MATH_INVALID_MULT_STRING) << text;
  }
  EXPECT_EQ(code(zent_d_mat_mul_rect(nullptr, 0)), MATH_UNEXPECTED_NULL_POINTER);
  EXPECT_EQ(dense("A*x", ZENT_A_MATRIX, 2, 2, a), MATH_MAT_MUL_UNDEFINED);
  EXPECT_EQ(dense("A*B", ZENT_A_MATRIX, 2, 2, a, ZENT_X_VECTOR, 2, x), MATH_MAT_MUL_UNDEFINED);
  EXPECT_EQ(dense("A*x", ZENT_A_MATRIX, 2, 2, null, ZENT_X_VECTOR, 2, x), MATH_OPTIONAL_ARG_NULL_1);
  EXPECT_EQ(dense("A*x", ZENT_A_MATRIX, 0, 2, a, ZENT_X_VECTOR, 2, x), MATH_M_GT_ZERO);
  EXPECT_EQ(dense("A*x", ZENT_A_MATRIX, 2, 0, a, ZENT_X_VECTOR, 2, x), MATH_N_GT_ZERO);
  EXPECT_EQ(dense("A*x", ZENT_A_MATRIX, 2, 2, a, ZENT_X_VECTOR, 3, x), MATH_MATMUL_DIM_MISMATCH_2);
  EXPECT_EQ(dense("A*x", ZENT_A_MATRIX, 2, 2, a, ZENT_X_VECTOR, 2, x, ZENT_A_COL_DIM, 1), MATH_COL_DIM_LESS_ORDER);
  EXPECT_EQ(dense("A*B", ZENT_A_MATRIX, 2, 2, a, ZENT_B_MATRIX, 2, 2, a, ZENT_B_COL_DIM, 1), MATH_COL_DIM_LESS_ORDER);
  EXPECT_EQ(dense("A*A", ZENT_A_MATRIX, 2, 2, a, ZENT_RETURN_COL_DIM, 1), MATH_BAD_RESULT_COL_DIM);
  EXPECT_EQ(dense("A*x", 12345), MATH_UNKNOWN_OPTION);
  EXPECT_EQ(code(zent_d_mat_mul_rect_band("A*x", ZENT_A_MATRIX, 2, 3, 2, 0, a, ZENT_X_VECTOR, 3, x, 0)),
            MATH_NEED_ZERO_LE_NLCA_LT_N);
  EXPECT_EQ(code(zent_d_mat_mul_rect_band("A*x", ZENT_A_MATRIX, 2, 3, 1, 3, a, ZENT_X_VECTOR, 3, x, 0)),
            MATH_NEED_ZERO_LE_NUCA_LT_N);
  const auto sparse = [&](const char* text, int rows, int columns, int nz, auto... options) {
    return code(zent_d_mat_mul_rect_coordinate(text, ZENT_A_MATRIX, rows, columns, nz, e, ZENT_X_VECTOR, 2, x, options..., 0));
  };
  EXPECT_EQ(sparse("A*x", 2, 2, 5), MATH_NZ_GE_ZERO_LT_MN);
  EXPECT_EQ(sparse("A*x", 1, 2, 2), MATH_INEQUALITY_VIOLATION_2);
  EXPECT_EQ(sparse("trans(A)*x", 2, 1, 2), MATH_INEQUALITY_VIOLATION_2);
  EXPECT_EQ(sparse("trans(A)*x", 2, 2, 2, ZENT_SYMMETRIC), MATH_SYMMETRIC_TRANS);
  EXPECT_EQ(zent_d_mat_mul_rect_coordinate("A*x", ZENT_A_MATRIX, 2, 2, 2, e, ZENT_X_VECTOR, 2, x, ZENT_SYMMETRIC,
                                           ZENT_RETURN_USER, y, 0),
            y);
  EXPECT_EQ(y[0], 2);
  EXPECT_EQ(y[1], 7);
}

}  // namespace
}  // namespace band_test
