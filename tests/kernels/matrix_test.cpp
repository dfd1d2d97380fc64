#include <algorithm>
#include <cstring>

#include "forms.hpp"

namespace {

// A stored matrix: not-a-number wherever a routine has no business to read, so that one wrong read spoils the result.
template <class T>
struct Stored {
  long lda;
  std::vector<T> a;
  Stored(long rows, long columns)
      : lda(rows + 2), a(static_cast<std::size_t>(lda * columns + 1), make<T>(nan_of<T>, nan_of<T>)) {}
  T& at(long row, long column) {
    return a[static_cast<std::size_t>(row + column * lda)];
  }
  Matrix view() const {
    return [this](long i, long j) { return wide(a[static_cast<std::size_t>(i + j * lda)]); };
  }
};

template <class T>
Stored<T> random_full(long m, long n) {
  Stored<T> s(m, n);
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i < m; ++i) s.at(i, j) = random_value<T>();
  }
  return s;
}

// Rows ku + i - j of column j hold the band; `dense` gets the same matrix with its zeros.
template <class T>
Stored<T> random_band(long m, long n, long kl, long ku, Stored<T>* dense) {
  Stored<T> band(kl + ku + 1, n);
  *dense = Stored<T>(m, n);
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i < m; ++i) {
      const bool inside = i - j <= kl && j - i <= ku;
      dense->at(i, j) = inside ? random_value<T>() : T{};
      if (inside) band.at(ku + i - j, j) = dense->at(i, j);
    }
  }
  return band;
}

// One triangle of a Hermitian matrix, whose diagonal may hold any imaginary part, and the whole of it in `whole`.
template <class T>
Stored<T> random_hermitian(bool upper, long n, long k, Stored<T>* whole) {
  Stored<T> s(n, n);
  *whole = Stored<T>(n, n);
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i <= j; ++i) {
      const T value = i == j ? make<T>(random_value<double>(), 0) : j - i <= k ? random_value<T>() : T{};
      whole->at(i, j) = value;
      whole->at(j, i) = zent::kernel::conj(value);
      if (upper) s.at(i, j) = value;
      if (!upper) s.at(j, i) = zent::kernel::conj(value);
      if (i == j) s.at(j, j) = make<T>(zent::kernel::real(value), nan_of<T>);
    }
  }
  return s;
}

template <class T>
std::vector<Wide> combine(Wide alpha, const std::vector<Wide>& x, Wide beta, std::vector<Wide> y) {
  for (std::size_t i = 0; i < y.size(); ++i) y[i] = alpha * x[i] + (beta == Wide(0) ? Wide(0) : beta * y[i]);
  return y;
}

const char* const operations[] = {"N", "n", "T", "t", "Conj", "c"};
const char* const triangles[] = {"U", "u", "L", "lower"};
const char* const diagonals[] = {"N", "n", "U", "u"};
bool plain(const char* op) {
  return *op == 'N' || *op == 'n';
}

template <class T>
struct Matrices : testing::Test {};
TYPED_TEST_SUITE(Matrices, Elements);

TYPED_TEST(Matrices, ProductsWithAVector) {
  using T = TypeParam;
  const long shapes[][2] = {{1, 1}, {2, 5}, {7, 3}, {6, 6}};
  for (const Blas<T>& f : halves<T>) {
    for (const auto& [m, n] : shapes) {
      for (const char* op : operations) {
        for (long inc : {1L, -2L}) {
          for (bool clear : {false, true}) {
            const T alpha = random_value<T>(), beta = clear ? T{} : random_value<T>();
            Walk<T> x(plain(op) ? n : m, inc), y(plain(op) ? m : n, -inc);
            if (clear) y[0] = make<T>(nan_of<T>, nan_of<T>);
            const Walk<T> y0 = y;
            const Stored<T> a = random_full<T>(m, n);
            const auto exact = [&](const Stored<T>& s) {
              return combine<T>(wide(alpha), times(y.n, x.n, apply_op(*op, s.view()), x.values()), wide(beta),
                                Walk<T>(y0).values());
            };
            const long double bound = static_cast<long double>(8 + 4 * (m + n)) * epsilon<T>;
            f.gemv(op, m, n, alpha, a.a.data(), a.lda, x.data(), inc, beta, y.data(), -inc);
            y.check(exact(a), y0, bound, std::string("gemv ") + op);
            if (f.gbmv == nullptr) continue;
            for (long kl : {0L, 1L, 4L}) {
              for (long ku : {0L, 2L, 6L}) {
                Stored<T> dense(1, 1);
                const Stored<T> band = random_band<T>(m, n, kl, ku, &dense);
                y = y0;
                f.gbmv(op, m, n, kl, ku, alpha, band.a.data(), band.lda, x.data(), inc, beta, y.data(), -inc);
                y.check(exact(dense), y0, bound, std::string("gbmv ") + op);
              }
            }
          }
        }
      }
    }
  }
}

TYPED_TEST(Matrices, HermitianProductsWithAVector) {
  using T = TypeParam;
  for (const Blas<T>& f : halves<T>) {
    for (long n : {1L, 2L, 7L}) {
      for (const char* uplo : triangles) {
        const bool upper = *uplo == 'U' || *uplo == 'u';
        for (long k : {0L, 2L, n}) {
          for (bool clear : {false, true}) {
            const T alpha = random_value<T>(), beta = clear ? T{} : random_value<T>();
            Walk<T> x(n, -1), y(n, 2);
            if (clear) y[0] = make<T>(nan_of<T>, nan_of<T>);
            const Walk<T> y0 = y;
            Stored<T> whole(1, 1);
            Stored<T> a = random_hermitian<T>(upper, n, k, &whole);
            const std::vector<Wide> exact =
                combine<T>(wide(alpha), times(n, n, whole.view(), x.values()), wide(beta), y.values());
            const long double bound = static_cast<long double>(8 + 8 * n) * epsilon<T>;
            f.symv(uplo, n, alpha, a.a.data(), a.lda, x.data(), -1, beta, y.data(), 2);
            y.check(exact, y0, bound, std::string("symv ") + uplo);
            if (f.sbmv == nullptr) continue;
            Stored<T> band(k + 1, n);
            for (long j = 0; j < n; ++j) {
              for (long i = upper ? std::max(0L, j - k) : j; i <= (upper ? j : std::min(n - 1, j + k)); ++i) {
                band.at(upper ? k + i - j : i - j, j) = a.at(i, j);
              }
            }
            y = y0;
            f.sbmv(uplo, n, k, alpha, band.a.data(), band.lda, x.data(), -1, beta, y.data(), 2);
            y.check(exact, y0, bound, std::string("sbmv ") + uplo);
          }
        }
      }
    }
  }
}

// Rank-one and rank-two updates: the stated elements change by the stated products, all others keep every bit.
TYPED_TEST(Matrices, Updates) {
  using T = TypeParam;
  enum Kind { geru, gerc, syr, syr2 };
  for (const Blas<T>& f : halves<T>) {
    for (Kind kind : {geru, gerc, syr, syr2}) {
      for (const char* uplo : triangles) {
        for (long inc : {1L, -3L}) {
          const bool upper = *uplo == 'U' || *uplo == 'u', general = kind <= gerc;
          const long m = general ? 4 : 6, n = 6;
          Walk<T> x(m, inc), y(n, -inc);
          const std::vector<Wide> u = x.values(), v = y.values();
          Stored<T> a = random_full<T>(m, n);
          Stored<T> before = a;
          const T alpha = kind == syr ? make<T>(random_value<double>(), 0) : random_value<T>();
          if (kind == geru) f.geru(m, n, alpha, x.data(), inc, y.data(), -inc, a.a.data(), a.lda);
          if (kind == gerc) f.gerc(m, n, alpha, x.data(), inc, y.data(), -inc, a.a.data(), a.lda);
          if (kind == syr) f.syr(uplo, n, zent::kernel::real(alpha), x.data(), inc, a.a.data(), a.lda);
          if (kind == syr2) f.syr2(uplo, n, alpha, x.data(), inc, y.data(), -inc, a.a.data(), a.lda);
          for (long j = 0; j < n; ++j) {
            for (long i = 0; i < m; ++i) {
              const auto p = static_cast<std::size_t>(i), q = static_cast<std::size_t>(j);
              const Wide w = wide(alpha);
              Wide change = 0;
              if (kind == geru) change = w * u[p] * v[q];
              if (kind == gerc) change = w * u[p] * std::conj(v[q]);
              if (kind == syr) change = w * u[p] * std::conj(u[q]);
              if (kind == syr2) change = w * u[p] * std::conj(v[q]) + std::conj(w) * v[p] * std::conj(u[q]);
              Wide expected = wide(before.at(i, j)) + change;
              if (!general && i == j) expected = expected.real();
              if (general || i == j || (i < j) == upper) {
                EXPECT_LE(std::abs(wide(a.at(i, j)) - expected), 16 * epsilon<T>) << kind << uplo << i << j;
                before.at(i, j) = a.at(i, j);
              }
            }
          }
          EXPECT_EQ(std::memcmp(a.a.data(), before.a.data(), a.a.size() * sizeof(T)), 0) << kind << uplo;
        }
      }
    }
  }
}

// A triangle with a diagonal near 2, its other half and, if it is unit, its diagonal not to be read.
template <class T>
Stored<T> random_triangle(bool upper, bool unit, long n, long k, Stored<T>* dense) {
  Stored<T> s(n, n);
  *dense = Stored<T>(n, n);
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i < n; ++i) {
      const bool inside = i != j && (i < j) == upper;
      T value = inside && std::labs(i - j) <= k ? make<T>(random_value<double>() / 4, random_value<double>() / 4) : T{};
      if (i == j) value = make<T>(unit ? 1 : 2 + random_value<double>() / 4, unit ? 0 : random_value<double>());
      dense->at(i, j) = value;
      if (inside || (i == j && !unit)) s.at(i, j) = value;
    }
  }
  return s;
}

// The solution, put back into the equations, gives the right-hand side.
TYPED_TEST(Matrices, TriangularSolves) {
  using T = TypeParam;
  for (const Blas<T>& f : halves<T>) {
    for (long n : {1L, 2L, 9L}) {
      for (const char* uplo : triangles) {
        for (const char* op : operations) {
          for (const char* diag : diagonals) {
            for (long k : {0L, 2L, n}) {
              for (long inc : {1L, -2L}) {
                const bool upper = *uplo == 'U' || *uplo == 'u', unit = *diag == 'U' || *diag == 'u';
                const std::string what = std::string(uplo) + op + diag + std::to_string(k);
                Stored<T> dense(1, 1);
                Stored<T> a = random_triangle<T>(upper, unit, n, k, &dense);
                Stored<T> band(k + 1, n);
                for (long j = 0; j < n; ++j) {
                  for (long i = std::max(0L, j - k); i <= std::min(n - 1, j + k); ++i) {
                    if (i == j || (i < j) == upper) band.at(upper ? k + i - j : i - j, j) = a.at(i, j);
                  }
                }
                Walk<T> x(n, inc);
                const Walk<T> b = x;
                const std::vector<Wide> right = x.values();
                const auto residual_of = [&](Walk<T> solution) {
                  const std::vector<Wide> left = times(n, n, apply_op(*op, dense.view()), solution.values());
                  long double worst = 0;
                  for (std::size_t i = 0; i < left.size(); ++i) {
                    const long double error = std::abs(left[i] - right[i]);
                    if (std::isnan(error)) return error;
                    worst = std::max(worst, error);
                  }
                  return worst;
                };
                const long double bound = static_cast<long double>(16 * (n + 1)) * epsilon<T>;
                f.trsv(uplo, op, diag, n, a.a.data(), a.lda, x.data(), inc);
                EXPECT_TRUE(residual_of(x) <= bound) << "trsv " << what;
                x.check(x.values(), b, 0, "trsv gaps");
                x = b;
                f.tbsv(uplo, op, diag, n, k, band.a.data(), band.lda, x.data(), inc);
                EXPECT_TRUE(residual_of(x) <= bound) << "tbsv " << what;
                x.check(x.values(), b, 0, "tbsv gaps");
              }
            }
          }
        }
      }
    }
  }
}

TYPED_TEST(Matrices, TriangularSolvesWithManyRightHandSides) {
  using T = TypeParam;
  const long shapes[][2] = {{1, 1}, {5, 3}, {4, 7}};
  for (const Blas<T>& f : halves<T>) {
    if (f.trsm == nullptr) continue;
    for (const auto& [m, n] : shapes) {
      for (const char* side : {"L", "l", "R", "r"}) {
        for (const char* uplo : triangles) {
          for (const char* op : operations) {
            for (const char* diag : diagonals) {
              const bool left = *side == 'L' || *side == 'l', upper = *uplo == 'U' || *uplo == 'u',
                         unit = *diag == 'U' || *diag == 'u';
              const long order = left ? m : n;
              Stored<T> dense(1, 1);
              const Stored<T> a = random_triangle<T>(upper, unit, order, order, &dense);
              Stored<T> x = random_full<T>(m, n);
              const Stored<T> b = x;
              const T alpha = random_value<T>();
              f.trsm(side, uplo, op, diag, m, n, alpha, a.a.data(), a.lda, x.a.data(), x.lda);
              const Matrix t = apply_op(*op, dense.view()), solution = x.view();
              for (long i = 0; i < m; ++i) {
                for (long j = 0; j < n; ++j) {
                  Wide sum = 0;
                  for (long l = 0; l < order; ++l) sum += left ? t(i, l) * solution(l, j) : solution(i, l) * t(l, j);
                  EXPECT_TRUE(std::abs(sum - wide(alpha) * b.view()(i, j)) <= 128 * epsilon<T>) << side << uplo << op << diag;
                }
              }
              f.trsm(side, uplo, op, diag, m, n, T{}, nullptr, 1, x.a.data(), x.lda);
              EXPECT_EQ(x.view()(m - 1, n - 1), Wide(0));
            }
          }
        }
      }
    }
  }
}

TYPED_TEST(Matrices, MatrixProducts) {
  using T = TypeParam;
  const long shapes[][3] = {{1, 1, 1}, {3, 4, 5}, {6, 2, 9}, {2, 3, 0}};
  for (const Blas<T>& f : halves<T>) {
    for (const auto& [m, n, k] : shapes) {
      for (const char* op_a : operations) {
        for (const char* op_b : operations) {
          for (int beta_kind : {0, 1, 2}) {
            const T alpha = random_value<T>(), beta = beta_kind == 2 ? random_value<T>() : make<T>(beta_kind, 0);
            const Stored<T> a = plain(op_a) ? random_full<T>(m, k) : random_full<T>(k, m);
            const Stored<T> b = plain(op_b) ? random_full<T>(k, n) : random_full<T>(n, k);
            Stored<T> c = random_full<T>(m, n);
            if (beta_kind == 0) c.at(0, 0) = make<T>(nan_of<T>, nan_of<T>);
            Stored<T> before = c;
            f.gemm(op_a, op_b, m, n, k, alpha, a.a.data(), a.lda, b.a.data(), b.lda, beta, c.a.data(), c.lda);
            const Matrix left = apply_op(*op_a, a.view()), right = apply_op(*op_b, b.view());
            for (long i = 0; i < m; ++i) {
              for (long j = 0; j < n; ++j) {
                Wide expected = beta_kind == 0 ? Wide(0) : wide(beta) * wide(before.at(i, j));
                for (long l = 0; l < k; ++l) expected += wide(alpha) * left(i, l) * right(l, j);
                EXPECT_TRUE(std::abs(wide(c.at(i, j)) - expected) <= static_cast<long double>(8 + 8 * k) * epsilon<T>)
                    << op_a << op_b;
                before.at(i, j) = c.at(i, j);
              }
            }
            EXPECT_EQ(std::memcmp(c.a.data(), before.a.data(), c.a.size() * sizeof(T)), 0) << "padding";
          }
        }
      }
    }
  }
}

// With a size below 1 nothing is read or written.
TYPED_TEST(Matrices, EmptySizesDoNothing) {
  using T = TypeParam;
  const T one = make<T>(1, 0);
  for (const Blas<T>& f : halves<T>) {
    for (long n : {0L, -1L}) {
      T y = one;
      f.gemv("N", n, 1, one, nullptr, 1, nullptr, 1, T{}, &y, 1);
      f.gemv("T", 1, n, one, nullptr, 1, nullptr, 1, T{}, &y, 1);
      f.symv("U", n, one, nullptr, 1, nullptr, -1, T{}, &y, 1);
      f.geru(n, 1, one, nullptr, 1, &y, 1, nullptr, 1);
      f.gerc(1, n, one, &y, 1, nullptr, -1, nullptr, 1);
      f.syr("L", n, 1, nullptr, 1, nullptr, 1);
      f.syr2("L", n, one, nullptr, 1, nullptr, 1, nullptr, 1);
      f.trsv("U", "N", "N", n, nullptr, 1, nullptr, -1);
      f.tbsv("U", "N", "N", n, 1, nullptr, 1, nullptr, 1);
      f.gemm("N", "N", n, 1, 1, one, nullptr, 1, nullptr, 1, T{}, &y, 1);
      f.gemm("N", "N", 1, n, 1, one, nullptr, 1, nullptr, 1, T{}, &y, 1);
      EXPECT_EQ(wide(y), Wide(1));
      EXPECT_EQ(f.iamax(n, nullptr, 1), 0);
      EXPECT_EQ(f.nrm2(n, nullptr, -1), 0);
    }
  }
}

}  // namespace
