// Sorts, transpositions and what else stands beside the BLAS.
#include <algorithm>
#include <cstring>
#include <numeric>

#include "forms.hpp"
#include "runtime/kernels/level3.hpp"
#include "runtime/kernels/sort.hpp"

namespace {

template <class T>
struct Support : testing::Test {};
TYPED_TEST_SUITE(Support, Reals);

// Few distinct values make ties; every ninth entry is a not-a-number.
template <class Real>
std::vector<Real> values_with_ties(long n, bool with_nan) {
  std::vector<Real> x = random_array<Real>(n);
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = with_nan && i % 9 == 4 ? nan_of<Real> : std::round(x[i] * 20) / 4;
  return x;
}

// The one stable order: positions sorted by value, not-a-numbers behind all, ties by position.
template <class Real>
std::vector<long> stable_order(const std::vector<Real>& x) {
  std::vector<long> order(x.size());
  std::iota(order.begin(), order.end(), 0L);
  std::sort(order.begin(), order.end(), [&](long i, long j) {
    const Real a = x[static_cast<std::size_t>(i)], b = x[static_cast<std::size_t>(j)];
    if (std::isnan(a) != std::isnan(b)) return std::isnan(b);
    return a < b || (!(b < a) && i < j);
  });
  return order;
}

TYPED_TEST(Support, SortsAreStableAndPutNaNLast) {
  using Real = TypeParam;
  for (const Blas<Real>& f : halves<Real>) {
    for (long n : {0L, 1L, 2L, 3L, 24L, 25L, 48L, 49L, 100L, 1000L, 2049L}) {
      for (int kind : {0, 1, 2, 3}) {
        std::vector<Real> x = values_with_ties<Real>(n, kind == 1);
        if (kind == 2) std::sort(x.begin(), x.end());
        if (kind == 3) std::sort(x.begin(), x.end(), std::greater<Real>());
        const std::vector<long> order = stable_order(x);
        std::vector<Real> expected;
        std::vector<long> start(x.size()), moved;
        for (std::size_t i = 0; i < x.size(); ++i) start[i] = 1000 - 7 * static_cast<long>(i);
        for (long i : order) expected.push_back(x[static_cast<std::size_t>(i)]), moved.push_back(1000 - 7 * i);
        const auto same = [&](const std::vector<Real>& got) {
          return got.empty() || std::memcmp(got.data(), expected.data(), got.size() * sizeof(Real)) == 0;
        };
        for (const auto sort : {f.svrgn, f.svrbn}) {
          std::vector<Real> out(x.size()), in_place = x;
          sort(n, x.data(), out.data());
          sort(n, in_place.data(), in_place.data());
          EXPECT_TRUE(same(out) && same(in_place)) << n;
        }
        std::vector<Real> out(x.size());
        std::vector<long> index = start;
        f.svrgp(n, x.data(), out.data(), index.data());
        EXPECT_TRUE(same(out)) << n;
        EXPECT_EQ(index, moved) << n;
        // Without work memory, as when none can be had.
        out = x, index = start;
        zent::kernel::stable_sort<Real>(n, out.data(), index.data(), nullptr, nullptr);
        EXPECT_TRUE(same(out)) << n;
        EXPECT_EQ(index, moved) << n;
      }
    }
  }
}

TYPED_TEST(Support, FirstNotANumber) {
  using Real = TypeParam;
  for (const Blas<Real>& f : halves<Real>) {
    Real x[] = {1, nan_of<Real>, 3, std::numeric_limits<Real>::infinity(), nan_of<Real>, -nan_of<Real>};
    EXPECT_EQ(f.inan(6, x, 1), 2);
    EXPECT_EQ(f.inan(3, x, 2), 3);
    EXPECT_EQ(f.inan(2, x, 2), 0);
    EXPECT_EQ(f.inan(2, x, -3), 0);
    EXPECT_EQ(f.inan(3, x, -2), 1);
    EXPECT_EQ(f.inan(0, x, 1), 0);
  }
}

TYPED_TEST(Support, GramMatrix) {
  using Real = TypeParam;
  for (const Blas<Real>& f : halves<Real>) {
    const long m = 5, n = 3, lda = 7, ldb = 4;
    const std::vector<Real> a = random_array<Real>(lda * n);
    std::vector<Real> b(static_cast<std::size_t>(ldb * n), 9);
    f.mxtxf(m, n, a.data(), lda, b.data(), ldb);
    for (long j = 0; j < n; ++j) {
      for (long i = 0; i < n; ++i) {
        long double sum = 0;
        for (long l = 0; l < m; ++l) {
          sum += static_cast<long double>(a[static_cast<std::size_t>(l + i * lda)]) * a[static_cast<std::size_t>(l + j * lda)];
        }
        EXPECT_LE(std::abs(sum - b[static_cast<std::size_t>(i + j * ldb)]), 16 * epsilon<Real>);
      }
      EXPECT_EQ(b[static_cast<std::size_t>(n + j * ldb)], 9);
    }
  }
  const double one_two[] = {1, 2};
  double c[4];
  zents_dsgemm("N", "T", 2, 2, 1, 1, one_two, 2, one_two, 2, 0, c, 2);
  EXPECT_TRUE(c[0] == 1 && c[1] == 2 && c[2] == 2 && c[3] == 4);
}

TYPED_TEST(Support, UpperTriangleOntoLower) {
  using Real = TypeParam;
  for (const Blas<Real>& f : halves<Real>) {
    Real a[] = {1, 9, 9, 7, 2, 3, 9, 7, 4, 5, 6, 7};
    const Real expected[] = {1, 2, 4, 7, 2, 3, 5, 7, 4, 5, 6, 7};
    f.csfrg(3, a, 4);
    EXPECT_TRUE(std::equal(a, a + 12, expected));
  }
}

template <class T>
struct Transposition : testing::Test {};
TYPED_TEST_SUITE(Transposition, Elements);

TYPED_TEST(Transposition, RowMajorToColumnMajorAndBack) {
  using T = TypeParam;
  const long shapes[][2] = {{1, 1}, {1, 6}, {6, 1}, {5, 5}, {2, 3}, {4, 6}, {7, 11}, {16, 12}, {30, 31}};
  for (const Blas<T>& f : halves<T>) {
    for (const auto& [m, n] : shapes) {
      const std::vector<T> rows = random_array<T>(m * n);
      const auto right = [&, rows_n = n, rows_m = m](const std::vector<T>& columns) {
        for (long i = 0; i < rows_m; ++i) {
          for (long j = 0; j < rows_n; ++j) {
            const T got = columns[static_cast<std::size_t>(i + j * rows_m)],
                    want = rows[static_cast<std::size_t>(i * rows_n + j)];
            if (std::memcmp(&got, &want, sizeof(T)) != 0) return false;
          }
        }
        return true;
      };
      std::vector<T> source = rows, target(rows.size()), in_place = rows, without_memory = rows;
      f.m1ran(m, n, source.data(), target.data());
      f.m1ran(m, n, in_place.data(), in_place.data());
      zent::kernel::transpose_in_place(m, n, without_memory.data());
      EXPECT_TRUE(right(target) && right(in_place) && right(without_memory)) << m << " " << n;
      EXPECT_EQ(std::memcmp(source.data(), rows.data(), rows.size() * sizeof(T)), 0);
      f.m1ran(n, m, in_place.data(), in_place.data());
      EXPECT_EQ(std::memcmp(in_place.data(), rows.data(), rows.size() * sizeof(T)), 0) << m << " " << n;
    }
  }
}

TEST(SupportErrors, BadShapesRaiseAndLeaveTheArraysAlone) {
  double a[] = {1, 2, 3, 4};
  const auto check = [&a](auto psh, auto pop, auto type, auto code, auto m1ran, auto csfrg) {
    const auto number = [&](auto call) {
      psh("TEST");
      call();
      const long raised = type(0) == 5 ? code(0) : -1;
      pop("TEST");
      return raised;
    };
    EXPECT_EQ(number([&] { m1ran(0, 2, a, a); }), 620);
    EXPECT_EQ(number([&] { m1ran(2, 0, a, a); }), 621);
    EXPECT_EQ(number([&] { csfrg(0, a, 2); }), 2025);
    EXPECT_EQ(number([&] { csfrg(1, a, 0); }), 2025);
    EXPECT_EQ(number([&] { csfrg(2, a, 1); }), 2026);
    EXPECT_EQ(number([&] { m1ran(2, 2, a, a), m1ran(2, 2, a, a); }), -1);
  };
  zent_error_options(ZENT_SET_PRINT, 5, 0, ZENT_SET_STOP, 5, 0, 0);
  zents_error_options(ZENTS_SET_PRINT, 5, 0, ZENTS_SET_STOP, 5, 0, 0);
  check(zent_e1psh, zent_e1pop, zent_n1rty, zent_n1rcd, zent_d_m1ran, zent_dcsfrg);
  check(zents_e1psh, zents_e1pop, zents_n1rty, zents_n1rcd, zents_d_m1ran, zents_dcsfrg);
  EXPECT_TRUE(a[0] == 1 && a[1] == 2 && a[2] == 3 && a[3] == 4);
}

}  // namespace
