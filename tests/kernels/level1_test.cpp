#include "forms.hpp"

namespace {

template <class T>
struct Level1 : testing::Test {};
TYPED_TEST_SUITE(Level1, Elements);

TYPED_TEST(Level1, AgreesWithPlainSumsForEveryIncrement) {
  using T = TypeParam;
  for (const Blas<T>& f : halves<T>) {
    for (long n : {0L, 1L, 2L, 5L, 40L}) {
      for (long incx : {1L, 3L, -1L, -2L}) {
        for (long incy : {1L, 2L, -1L, -3L}) {
          const std::string what = "n " + std::to_string(n) + " increments " + std::to_string(incx) + ", " + std::to_string(incy);
          Walk<T> x(n, incx), y(n, incy);
          const Walk<T> x0 = x, y0 = y;
          const std::vector<Wide> u = x.values(), v = y.values();
          const long double bound = static_cast<long double>(2 * n + 4) * epsilon<T>;
          const T alpha = random_value<T>(), factor = random_value<T>();
          const RealOf<T> c = zent::kernel::real(alpha), s = zent::kernel::real(factor);

          Wide product = 0, hermitian = 0;
          long double sum = 0, squares = 0, largest = -1;
          long best = 0;
          std::vector<Wide> added = v, scaled = u, scaled_real = u, turned_x = u, turned_y = u;
          for (std::size_t i = 0; i < u.size(); ++i) {
            product += u[i] * v[i];
            hermitian += std::conj(u[i]) * v[i];
            const long double size = std::abs(u[i].real()) + std::abs(u[i].imag());
            sum += size;
            squares += std::norm(u[i]);
            if (size > largest) largest = size, best = static_cast<long>(i) + 1;
            added[i] += wide(alpha) * u[i];
            scaled[i] *= wide(alpha);
            scaled_real[i] *= static_cast<long double>(c);
            turned_x[i] = static_cast<long double>(c) * u[i] + static_cast<long double>(s) * v[i];
            turned_y[i] = static_cast<long double>(c) * v[i] - static_cast<long double>(s) * u[i];
          }
          EXPECT_LE(std::abs(wide(f.dotu(n, x.data(), incx, y.data(), incy)) - product), bound * (1 + sum)) << what;
          EXPECT_LE(std::abs(wide(f.dotc(n, x.data(), incx, y.data(), incy)) - hermitian), bound * (1 + sum)) << what;
          if (incx < 0) sum = 0, best = 0, scaled = scaled_real = u;
          EXPECT_LE(std::abs(f.asum(n, x.data(), incx) - sum), bound * sum) << what;
          EXPECT_LE(std::abs(f.nrm2(n, x.data(), incx) - std::sqrt(squares)), bound * std::sqrt(squares)) << what;
          EXPECT_EQ(f.iamax(n, x.data(), incx), best) << what;

          f.axpy(n, alpha, x.data(), incx, y.data(), incy);
          y.check(added, y0, 4 * epsilon<T>, "axpy " + what);
          f.copy(n, x.data(), incx, y.data(), incy);
          y.check(u, y0, 0, "copy " + what);
          y = y0;
          f.swap(n, x.data(), incx, y.data(), incy);
          x.check(v, x0, 0, "swap x " + what);
          y.check(u, y0, 0, "swap y " + what);
          x = x0, y = y0;
          f.rot(n, x.data(), incx, y.data(), incy, c, s);
          x.check(turned_x, x0, 4 * epsilon<T>, "rot x " + what);
          y.check(turned_y, y0, 4 * epsilon<T>, "rot y " + what);
          x = x0;
          f.scal(n, alpha, x.data(), incx);
          x.check(scaled, x0, 4 * epsilon<T>, "scal " + what);
          x = x0;
          f.rscal(n, c, x.data(), incx);
          x.check(scaled_real, x0, 4 * epsilon<T>, "real scal " + what);
        }
      }
    }
  }
}

// 3, 4, 12 times any power of two within range has the norm 13 times it; a square alone would overflow or vanish.
TYPED_TEST(Level1, NormIsSafeOverTheWholeRange) {
  using T = TypeParam;
  using Real = RealOf<T>;
  using Limits = std::numeric_limits<Real>;
  for (const Blas<T>& f : halves<T>) {
    for (int e = Limits::min_exponent - Limits::digits; e <= Limits::max_exponent - 4; ++e) {
      const Real unit = std::ldexp(Real(1), e);
      const T x[] = {make<T>(3 * unit, 0), ComplexRecord<T> ? make<T>(0, 4 * unit) : make<T>(4 * unit, 0), make<T>(12 * unit, 0)};
      const Real norm = f.nrm2(3, x, 1);
      EXPECT_LE(std::abs(norm / unit - 13), 13 * 4 * Limits::epsilon()) << "2^" << e;
    }
    const Real tiny = Limits::min(), huge = Limits::max();
    const T mixed[] = {make<T>(tiny, 0), make<T>(1, 0), make<T>(huge / 2, 0)};
    EXPECT_LE(std::abs(f.nrm2(3, mixed, 1) / (huge / 2) - 1), 4 * Limits::epsilon());
    for (Real other : {Real(0), tiny, Real(1), huge, Limits::infinity()}) {
      const T x[] = {make<T>(other, 0), make<T>(nan_of<T>, 0), make<T>(other, 0)};
      EXPECT_TRUE(std::isnan(f.nrm2(3, x, 1))) << other;
    }
    const T infinite[] = {make<T>(-Limits::infinity(), 0), make<T>(tiny, 0), make<T>(Limits::infinity(), 0)};
    EXPECT_EQ(f.nrm2(3, infinite, 1), Limits::infinity());
  }
}

template <class T>
struct Rotations : testing::Test {};
TYPED_TEST_SUITE(Rotations, Reals);

TYPED_TEST(Rotations, GivensAnnihilatesAndCanBeRebuilt) {
  using Real = TypeParam;
  const Real huge = std::numeric_limits<Real>::max() / 4, tiny = std::numeric_limits<Real>::min();
  const Real values[] = {0, 1, -1, 3, -4, Real(0.3), huge, -huge, tiny, -3 * tiny};
  const Real bound = 8 * std::numeric_limits<Real>::epsilon();
  for (const Blas<Real>& f : halves<Real>) {
    for (Real a : values) {
      for (Real b : values) {
        Real r = a, z = b, c = 9, s = 9;
        f.rotg(&r, &z, &c, &s);
        const long double wa = a, wb = b, size = std::sqrt(wa * wa + wb * wb);
        EXPECT_LE(std::abs(std::abs(static_cast<long double>(r)) - size), bound * size) << a << " " << b;
        EXPECT_LE(std::abs(c * wa + s * wb - r), bound * size) << a << " " << b;
        EXPECT_LE(std::abs(c * wb - s * wa), bound * size) << a << " " << b;
        EXPECT_LE(std::abs(c * c + s * s - 1), bound);
        if (a != 0 || b != 0) {
          EXPECT_EQ(std::signbit(r), std::signbit(std::abs(a) > std::abs(b) ? a : b)) << a << " " << b;
        }
        const Real c_again = std::abs(z) < 1 ? std::sqrt(1 - z * z) : z == 1 ? 0 : 1 / z;
        const Real s_again = std::abs(z) < 1 ? z : z == 1 ? 1 : std::sqrt(1 - 1 / z / z);
        EXPECT_LE(std::abs(c_again - c) + std::abs(s_again - s), 4 * bound) << a << " " << b;
      }
    }
  }
}

// D' = diag(d1', d2') and H satisfy H (x1, y1) = (x1', 0) and d1' x1'^2 = d1 x1^2 + d2 y1^2; with scaling d1' and |d2'| end
// between 2^-24 and 2^24. The determinant gives d2: d1' d2' det(H)^2 = d1 d2.
TYPED_TEST(Rotations, ModifiedRotationKeepsTheWeightedNorm) {
  using Real = TypeParam;
  const Real ds[] = {1, Real(0.3), Real(2e9), Real(3e-10), Real(1e17)}, xs[] = {1, Real(-0.7), 200, Real(1e-3)};
  const long double bound = 64 * epsilon<Real>;
  bool seen[2] = {};
  for (const Blas<Real>& f : halves<Real>) {
    for (Real d1 : ds) {
      for (Real d2_size : ds) {
        for (Real x1 : xs) {
          for (Real y1 : xs) {
            for (Real d2 : {d2_size, -d2_size}) {
              Real e1 = d1, e2 = d2, r = x1, param[5] = {9, 9, 9, 9, 9};
              f.rotmg(&e1, &e2, &r, y1, param);
              const long double q1 = static_cast<long double>(d1) * x1 * x1, q2 = static_cast<long double>(d2) * y1 * y1;
              if (std::abs(q1 + q2) < 1e-3L * (std::abs(q1) + std::abs(q2))) continue;  // cancellation: nothing to check against
              if (q1 + q2 < 0) {
                EXPECT_EQ(param[0], -1);
                for (Real zero : {e1, e2, r, param[1], param[2], param[3], param[4]}) EXPECT_EQ(zero, 0);
                continue;
              }
              Real x = x1, y = y1;
              f.rotm(1, &x, 1, &y, 1, param);
              EXPECT_LE(std::abs(static_cast<long double>(x) - r), bound * std::abs(static_cast<long double>(r)));
              EXPECT_LE(std::abs(e2) * static_cast<long double>(y) * y, bound * bound * (std::abs(q1) + std::abs(q2)));
              EXPECT_LE(std::abs(static_cast<long double>(e1) * r * r - (q1 + q2)), 1e3L * bound * (q1 + q2));
              EXPECT_TRUE(e1 > 0x1p-24 && e1 < 0x1p24 && std::abs(e2) > 0x1p-24 && std::abs(e2) < 0x1p24) << e1 << " " << e2;
              const Real h[4] = {param[0] == 0 ? 1 : param[1], param[0] == 1 ? -1 : param[2], param[0] == 1 ? 1 : param[3],
                                 param[0] == 0 ? 1 : param[4]};
              const long double det = static_cast<long double>(h[0]) * h[3] - static_cast<long double>(h[1]) * h[2];
              EXPECT_LE(std::abs(e1 * det * det * e2 / (static_cast<long double>(d1) * d2) - 1), 1e3L * bound);
              if (param[0] >= 0) seen[static_cast<int>(param[0])] = true;
            }
          }
        }
      }
    }
    Real d1 = 1, d2 = 0, x1 = 2, param[5] = {9, 9, 9, 9, 9};
    f.rotmg(&d1, &d2, &x1, 3, param);
    EXPECT_EQ(param[0], -2);
    EXPECT_EQ(param[1], 9);
    EXPECT_EQ(x1, 2);
    d1 = -1, d2 = 1;
    f.rotmg(&d1, &d2, &x1, 3, param);
    EXPECT_TRUE(param[0] == -1 && param[1] == 0 && param[4] == 0 && d1 == 0 && d2 == 0 && x1 == 0);
    for (Real odd : {std::numeric_limits<Real>::infinity(), nan_of<Real>, std::numeric_limits<Real>::denorm_min()}) {
      d1 = odd, d2 = 1, x1 = 1;
      f.rotmg(&d1, &d2, &x1, 1, param);  // must come back
      d1 = 1, d2 = odd, x1 = 1;
      f.rotmg(&d1, &d2, &x1, 1, param);
    }
  }
  EXPECT_TRUE(seen[0] && seen[1]);
}

TYPED_TEST(Rotations, ModifiedRotationIsAppliedByItsFlag) {
  using Real = TypeParam;
  const Real h11 = 2, h21 = 3, h12 = 5, h22 = 7;
  const Real expected[4][2][2] = {{{1, 0}, {0, 1}}, {{h11, h12}, {h21, h22}}, {{1, h12}, {h21, 1}}, {{h11, 1}, {-1, h22}}};
  for (const Blas<Real>& f : halves<Real>) {
    for (int flag = -2; flag <= 1; ++flag) {
      const Real param[] = {static_cast<Real>(flag), h11, h21, h12, h22};
      for (long inc : {1L, -2L}) {
        Walk<Real> x(3, inc), y(3, -inc);
        const Walk<Real> x0 = x, y0 = y;
        std::vector<Wide> to_x, to_y, u = x.values(), v = y.values();
        for (std::size_t i = 0; i < 3; ++i) {
          const auto& h = expected[flag + 2];
          to_x.push_back(static_cast<long double>(h[0][0]) * u[i] + static_cast<long double>(h[0][1]) * v[i]);
          to_y.push_back(static_cast<long double>(h[1][0]) * u[i] + static_cast<long double>(h[1][1]) * v[i]);
        }
        f.rotm(3, x.data(), inc, y.data(), -inc, param);
        x.check(to_x, x0, 16 * epsilon<Real>, "x");
        y.check(to_y, y0, 16 * epsilon<Real>, "y");
      }
    }
  }
}

}  // namespace
