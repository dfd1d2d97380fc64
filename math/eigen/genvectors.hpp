// Schur form of an upper Hessenberg matrix with its transformation, and the eigenvectors of a quasi-triangular matrix.
#pragma once

#include <cmath>
#include <type_traits>

#include "math/eigen/gensweep.hpp"
#include "runtime/error.hpp"
#include "runtime/kernels/fast.hpp"
#include "runtime/machine.hpp"

namespace zent::eigen {

// What the steps of the iteration still have to do outside their active blocks: to the columns right of a block, the rows above
// it, and to the transformation z. Several steps are done there at once, while a strip is in the cache.
template <class Real>
struct Batch {
  static constexpr long most = 12;
  long n;
  Real* h;
  long ld;
  Real* z;
  long ldz;
  Step<Real>* steps;  // most times n
  Real* buffer;       // n times buffer_width
  long runs, used;
  Run<Real> run[most];

  static long step_room(long n) {
    return most * n;
  }
  // Storage for the steps of the next run.
  Step<Real>* next() {
    if (runs == most) flush();
    return steps + used;
  }
  void add(long start, long count, long top, long end) {
    run[runs++] = {start, count, top, end, steps + used};
    used += count;
  }
  // The ends of blocks only fall: run i and those after it reach the columns behind its end.
  void flush() {
    for (long i = 0; i < runs; ++i) {
      const long bound = i == 0 ? n : run[i - 1].end + 1;
      const long first = run[i].end + 1;
      if (first < bound) runs_rows(runs - i, run + i, run[i].end + 1, bound - first, h + first * ld, ld, buffer);
    }
    constexpr long strip = 64;
    for (long r = 0; r < n; r += strip) {
      const long rows = r + strip < n ? strip : n - r;
      for (long i = 0; i < runs; ++i) {
        const long above = run[i].top - r < rows ? run[i].top - r : rows;
        chain_columns(run[i].count, true, run[i].steps, above, h + r + run[i].start * ld, ld);
      }
      for (long i = 0; i < runs; ++i) chain_columns(run[i].count, true, run[i].steps, rows, z + r + run[i].start * ldz, ldz);
    }
    runs = used = 0;
  }
};

// Reflects rows and columns k, k + 1 so that a 2 by 2 block with real roots becomes triangular.
template <class Real>
void split_block(Real* h, long ld, long k, Real distance, Batch<Real>& batch) {
  Step<Real>* step = batch.next();
  Real* const block = h + k + k * ld;
  Real image;
  make_step(distance, block[1], Real(0), *step, image);
  near_rows<false>(*step, 2, block, ld);
  near_columns<false>(*step, 2, block, block + ld, static_cast<Real*>(nullptr));
  block[1] = 0;
  batch.add(k, 1, k, k + 1);
}

// Real Schur form of h within [low, high], z := z times the transformation. Budget: 50 steps for each eigenvalue.
template <class Half, class Real>
bool l_schur(long low, long high, Real norm, Real* wr, Real* wi, Batch<Real>& batch) {
  const long n = batch.n, ld = batch.ld;
  Real* const h = batch.h;
  constexpr Real eps = Machine<Real>::epsilon, small = Machine<Real>::smallest;
  for (long i = 0; i < n; ++i) {
    wr[i] = h[i + i * ld];
    wi[i] = 0;
  }
  Real t = 0;  // what the exceptional shifts have taken off the diagonal of the active part
  long budget = 50, its = 0;
  for (long end = high; end >= low;) {
    long top = end;
    for (; top > low; --top) {
      const Real sum = std::abs(h[top - 1 + (top - 1) * ld]) + std::abs(h[top + top * ld]);
      const Real limit = eps * (budget > 0 ? sum : norm);
      if (std::abs(h[top + (top - 1) * ld]) <= std::fmax(limit, small)) break;
    }
    if (top > low) h[top + (top - 1) * ld] = 0;
    Real x = h[end + end * ld];
    if (top == end) {
      h[end + end * ld] = x + t;
      wr[end] = x + t;
      wi[end] = 0;
      --end;
      its = 0;
      budget = 50;
      continue;
    }
    Real y = h[end - 1 + (end - 1) * ld], cross = h[end + (end - 1) * ld] * h[end - 1 + end * ld];
    if (top == end - 1) {
      const Real p = (y - x) / 2, square = p * p + cross, root = std::sqrt(std::abs(square));
      h[end + end * ld] = x + t;
      h[end - 1 + (end - 1) * ld] = y + t;
      if (square >= 0) {
        const Real distance = p < 0 ? p - root : p + root;
        wr[end - 1] = wr[end] = x + t + distance;
        if (distance != 0) wr[end] = x + t - cross / distance;
        wi[end - 1] = wi[end] = 0;
        split_block(h, ld, end - 1, distance, batch);
      } else {
        wr[end - 1] = wr[end] = x + t + p;
        wi[end - 1] = root;
        wi[end] = -root;
      }
      end -= 2;
      its = 0;
      budget = 50;
      continue;
    }
    if (budget == 0) {
      raise<Half>(4, MATH_SLOW_CONVERGENCE_GEN, {.i = {50}});
      return false;
    }
    --budget;
    ++its;
    if (its % 10 == 0) {
      t += x;
      for (long i = low; i <= end; ++i) h[i + i * ld] -= x;
      const Real s = std::abs(h[end + (end - 1) * ld]) + std::abs(h[end - 1 + (end - 2) * ld]);
      x = y = Real(0.75) * s;
      cross = Real(-0.4375) * s * s;
    }
    const Shift<Real> shift{x, y, cross, false, 0, 0};
    Real p, q, r;
    long start = end - 2;
    for (;; --start) {
      first_vector(h, ld, start, shift, p, q, r);
      if (start == top || may_start(h, ld, start, p, q, r)) break;
    }
    sweep<Real>({h, ld, top, end, false, batch.next()}, start, p, q, r);
    batch.add(start, end - start, top, end);
  }
  batch.flush();
  return true;
}

template <class Real>
using ComplexOf = std::conditional_t<sizeof(Real) == 4, zent_f_complex, zent_d_complex>;

// One column of a back-substitution: a real vector, or real and imaginary parts of a complex one in two columns. Its elements
// from 0 to `last` can be other than zero.
template <class Real>
struct Column {
  Real* re;
  Real* im;  // null for a real vector
  long last;

  ComplexOf<Real> get(long i) const {
    return {re[i], im != nullptr ? im[i] : 0};
  }
  void set(long i, ComplexOf<Real> value) const {
    re[i] = value.re;
    if (im != nullptr) im[i] = value.im;
  }
  void scale(Real factor) const {
    fast::scal(last + 1, factor, re, 1);
    if (im != nullptr) fast::scal(last + 1, factor, im, 1);
  }
  // x[0 .. i) -= x[i] times the column t.
  void subtract(long i, const Real* t, long count) const {
    fast::axpy(count, -re[i], t, 1, re, 1);
    if (im != nullptr) fast::axpy(count, -im[i], t, 1, im, 1);
  }
  // Makes room for a quotient of something as large as `size` by `divisor`.
  void make_room(Real size, Real divisor) const {
    if (!(divisor < 1)) return;
    for (; size > Machine<Real>::largest / 16 * divisor; size *= Real(0.01)) scale(Real(0.01));
  }
  // Keeps the vector in range after an element has become large.
  void control(Real size) const {
    if (size > 1 && Machine<Real>::epsilon * size * size > 1) scale(1 / size);
  }
};

// Quasi-triangular matrix with its values; a 2 by 2 block belongs to a pair of complex ones.
template <class Real>
struct QuasiTriangle {
  const Real* h;
  long ld;
  const Real *wr, *wi;
  Real norm;
};

// Rows k and k + 1 of (T - (p + iq)) x = f by Cramer's rule with the known roots of the block.
template <class Real>
void solve_pair(const QuasiTriangle<Real>& t, long k, Real p, Real q, const Column<Real>& x) {
  using C = ComplexOf<Real>;
  const Real* upper = t.h + k + k * t.ld;
  const Real a = upper[0] - p, c = upper[1], b = upper[t.ld], d = upper[t.ld + 1] - p;
  const Real mean = t.wr[k] - p;
  C determinant{mean * mean + t.wi[k] * t.wi[k] - q * q, -2 * mean * q};
  const Real sum = std::abs(a) + std::abs(b) + std::abs(c) + std::abs(d) + std::abs(q);
  if (determinant == C{}) determinant.re = Machine<Real>::epsilon * t.norm * sum;
  x.make_room((kernel::abs1(x.get(k)) + kernel::abs1(x.get(k + 1))) * sum, kernel::abs1(determinant));
  const C f = x.get(k), g = x.get(k + 1);
  const C u = (f * C{d, -q} - b * g) / determinant;
  x.set(k, u);
  x.set(k + 1, std::abs(b) > std::abs(d) + std::abs(q) ? (Real(1) / b) * (f - C{a, -q} * u) : (g - c * u) / C{d, -q});
  x.control(std::fmax(kernel::abs1(u), kernel::abs1(x.get(k + 1))));
}

// Solves (T - (p + iq)) x = f in rows first - 1 down to 0, where x holds f.
template <class Real>
void back_substitute(const QuasiTriangle<Real>& t, long first, Real p, Real q, const Column<Real>& x) {
  using C = ComplexOf<Real>;
  for (long i = first - 1; i >= 0; --i) {
    const Real* column = t.h + i * t.ld;
    if (t.wi[i] != 0) {
      --i;
      solve_pair(t, i, p, q, x);
      x.subtract(i + 1, column, i);
      x.subtract(i, column - t.ld, i);
      continue;
    }
    C divisor{column[i] - p, -q};
    if (divisor == C{}) divisor.re = Machine<Real>::epsilon * t.norm;
    x.make_room(kernel::abs1(x.get(i)), kernel::abs1(divisor));
    if (x.im == nullptr) {
      x.re[i] /= divisor.re;
    } else {
      x.set(i, x.get(i) / divisor);
    }
    x.control(kernel::abs1(x.get(i)));
    x.subtract(i, column, i);
  }
}

// Eigenvectors of the quasi-triangle: columns of y, n by n and zero on entry. A complex pair has its real and imaginary parts in
// the two columns.
template <class Real>
void triangle_vectors(long n, const QuasiTriangle<Real>& t, Real* y) {
  for (long end = n - 1; end >= 0; --end) {
    const Real* column = t.h + end * t.ld;
    if (t.wi[end] == 0) {
      const Column<Real> x{y + end * n, nullptr, end};
      x.re[end] = 1;
      x.subtract(end, column, end);
      back_substitute(t, end, t.wr[end], Real(0), x);
      continue;
    }
    const long k = end - 1;
    const Real p = t.wr[k], q = t.wi[k], b = column[k], c = column[end - t.ld];
    const Column<Real> x{y + k * n, y + end * n, end};
    if (std::abs(c) > std::abs(b)) {
      x.set(k, {-(column[end] - p) / c, q / c});
      x.set(end, {1, 0});
    } else {
      x.set(k, {1, 0});
      x.set(end, {-((column - t.ld)[k] - p) / b, q / b});
    }
    x.subtract(end, column, k);
    x.subtract(k, column - t.ld, k);
    back_substitute(t, k, p, q, x);
    --end;
  }
}

// Values of the Hessenberg matrix h and vectors of what z transformed it from: z := eigenvectors, pairs as real and imaginary
// columns. h and y (n by n) are destroyed; steps and buffer are work memory as Batch wants it.
template <class Half, class Real>
bool l_e5crh(long n, long low, long high, Real* h, long ld, Real* wr, Real* wi, Real* z, long ldz, Real* y, Step<Real>* steps,
             Real* buffer) {
  Real norm = 0;
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i < n && i <= j + 1; ++i) norm += std::abs(h[i + j * ld]);
  }
  Batch<Real> batch;
  batch.n = n;
  batch.h = h;
  batch.ld = ld;
  batch.z = z;
  batch.ldz = ldz;
  batch.steps = steps;
  batch.buffer = buffer;
  batch.runs = batch.used = 0;
  if (!l_schur<Half>(low, high, norm, wr, wi, batch)) return false;
  if (norm == 0) return true;  // z is the identity
  for (long i = 0; i < n * n; ++i) y[i] = 0;
  triangle_vectors(n, QuasiTriangle<Real>{h, ld, wr, wi, norm}, y);
  // z y, in blocks of columns: rows of y below a block's last column are zero.
  constexpr long width = 64;
  for (long j = 0; j < n; j += width) {
    const long count = j + width < n ? width : n - j;
    const long depth = j + count + 1 < n ? j + count + 1 : n;
    fast::gemm('N', 'N', n, count, depth, 1, z, ldz, y + j * n, n, 0, h + j * n, n);
  }
  for (long i = 0; i < n * n; ++i) z[i] = h[i];
  return true;
}

}  // namespace zent::eigen
