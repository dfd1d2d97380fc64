// The step of nonlinear least squares inside a trust region: (J^T J + alpha D^2) p = -J^T f with |D p| near the radius. Source:
// More (1978); the iteration on alpha as in Dennis and Schnabel (1983), algorithm A6.4.1.
#pragma once

#include <algorithm>
#include <cmath>

#include "math/linalg/qr.hpp"
#include "math/optimize/record.hpp"
#include "math/optimize/rows.hpp"
#include "runtime/kernels/fast.hpp"
#include "runtime/scratch.hpp"

namespace zent::optimize {

// What is added to R for diag is rotated into it row by row. s: n by n, receives the triangle, rows contiguous, on and above the
// diagonal; work: 2n. r: rows contiguous. x minimizes |R x - qtb|^2 + |diag x|^2; an element for which both are 0 becomes 0.
template <class Real>
void l_u11sf(long n, const Real* r, const Real* qtb, const Real* diag, Real* x, Real* s, Real* work) {
  Real* const rhs = work;
  Real* const row = work + n;
  for (long j = 0; j < n; ++j) std::copy(r + j * n + j, r + j * n + n, s + j * n + j);
  std::copy(qtb, qtb + n, rhs);
  for (long j = 0; j < n; ++j) {
    if (diag[j] == 0) continue;
    std::fill(row + j, row + n, Real(0));
    row[j] = diag[j];
    Real behind = 0;  // what the rotations carry below the right-hand side
    for (long k = j; k < n; ++k) {
      if (row[k] == 0) continue;
      Real* const upper = s + k * n;
      Real c, sine;
      if (std::abs(upper[k]) < std::abs(row[k])) {
        const Real cotangent = upper[k] / row[k];
        sine = Real(0.5) / std::sqrt(Real(0.25) + Real(0.25) * cotangent * cotangent);
        c = sine * cotangent;
      } else {
        const Real tangent = row[k] / upper[k];
        c = Real(0.5) / std::sqrt(Real(0.25) + Real(0.25) * tangent * tangent);
        sine = c * tangent;
      }
      const Real old = rhs[k];
      rhs[k] = c * old + sine * behind;
      behind = c * behind - sine * old;
      for (long i = k; i < n; ++i) {
        const Real above = upper[i];
        upper[i] = c * above + sine * row[i];
        row[i] = c * row[i] - sine * above;
      }
    }
  }
  long rank = 0;
  while (rank < n && s[rank * n + rank] != 0) ++rank;
  std::fill(x + rank, x + n, Real(0));
  for (long j = rank - 1; j >= 0; --j) {
    x[j] = (rhs[j] - row_dot(rank - 1 - j, s + j * n + j + 1, x + j + 1)) / s[j * n + j];
  }
}

// J P = Q R and -Q^T f, from which steps of any length follow.
template <class Half, class Real>
struct TrustStep {
  static constexpr long most_tries = 100;

  long m, n;
  Real *qr = nullptr, *qraux = nullptr, *norms = nullptr, *wk = nullptr;  // m by n column-major; n, n, 2n
  Real* qtf = nullptr;                                                    // m
  long* pvt = nullptr;
  Real *r = nullptr, *s = nullptr;                                                 // n by n, rows contiguous
  Real *diag = nullptr, *z = nullptr, *v = nullptr, *w = nullptr, *rhs = nullptr;  // n; v, w: 2n
  const Real* scale = nullptr;                                                     // D
  long rank = 0;                                                                   // diagonal elements above rounding
  Real gradient_length = 0;                                                        // |D^-1 J^T f|
  Real full_decline = 0;                                                           // of that length, see decline()
  Real full_length = 0;                                                            // |D p| of the full step

  void need(Block<Half, Real>& block) const {
    block.need(1, m, n);
    block.need(2, n, n);
    block.need(1, m);
    block.need(10, n);
  }
  bool take(Block<Half, Real>& block) {
    qr = block.take(m, n);
    r = block.take(n, n);
    s = block.take(n, n);
    qtf = block.take(m);
    wk = block.take(2, n);
    v = block.take(2, n);
    for (Real** array : {&qraux, &norms, &diag, &z, &w, &rhs}) *array = block.take(n);
    pvt = scratch<Half, long>(n);
    return pvt != nullptr;
  }

  void factor(const Real* fjac, long ldfjac) {
    std::fill(pvt, pvt + n, 0L);
    linalg::l2rrr<Math>(m, n, fjac, ldfjac, true, pvt, qr, m, qraux, norms, wk);  // of these sizes nothing is reported
    for (long i = 0; i < n; ++i) {
      --pvt[i];
      for (long j = i; j < n; ++j) r[i * n + j] = qr[i + j * m];
    }
    rank = 0;
    const Real tiny = Machine<Real>::epsilon * std::abs(r[0]);
    while (rank < n && std::abs(r[rank * n + rank]) > tiny) ++rank;
  }

  // A new model: fvec and the gradient belong to the Jacobian factored last.
  void set(const Real* fvec, const Real* g, const Real* d) {
    scale = d;
    std::copy(fvec, fvec + m, qtf);
    linalg::lqrsl<Math>(m, n, qr, m, qraux, qtf, static_cast<Real*>(nullptr), qtf, static_cast<Real*>(nullptr),
                        static_cast<Real*>(nullptr), static_cast<Real*>(nullptr), 1000);
    for (long i = 0; i < n; ++i) rhs[i] = -qtf[i];
    Real sum = 0;
    for (long j = 0; j < n; ++j) sum = std::hypot(sum, g[j] / scale[j]);
    gradient_length = sum;
    full_step();
    std::copy(z, z + n, w);
    full_length = length();
    full_decline = rank == n ? decline(r, full_length) : Real(0);
  }

  // |D p| for p = P z.
  Real length() const {
    Real sum = 0;
    for (long i = 0; i < n; ++i) {
      const Real element = scale[pvt[i]] * z[i];
      sum += element * element;
    }
    if (sum > Machine<Real>::smallest / Machine<Real>::epsilon && sum <= Machine<Real>::largest) return std::sqrt(sum);
    Real size = 0;
    for (long i = 0; i < n; ++i) size = std::hypot(size, scale[pvt[i]] * z[i]);
    return size;
  }
  // The basic solution of the full step.
  void full_step() {
    std::fill(z + rank, z + n, Real(0));
    for (long i = rank - 1; i >= 0; --i) {
      z[i] = (rhs[i] - row_dot(rank - 1 - i, r + i * n + i + 1, z + i + 1)) / r[i * n + i];
    }
  }
  // |S^-T P^T D (D p / |D p|)|^2: what |D p| loses as alpha grows, over |D p|.
  Real decline(const Real* triangle, Real size) {
    for (long i = 0; i < n; ++i) v[i] = scale[pvt[i]] * (scale[pvt[i]] * z[i] / size);
    Real sum = 0;
    for (long i = 0; i < n; ++i) {
      v[i] /= triangle[i * n + i];
      sum += v[i] * v[i];
      row_axpy(n - 1 - i, -v[i], triangle + i * n + i + 1, v + i + 1);
    }
    return sum;
  }
  void shift(Real alpha) {
    const Real root = std::sqrt(alpha);
    for (long i = 0; i < n; ++i) diag[i] = root * scale[pvt[i]];
    l_u11sf(n, r, rhs, diag, z, s, v);
  }
  void hand_over(Real* p) const {
    for (long i = 0; i < n; ++i) p[pvt[i]] = z[i];
  }

  // True with the step for this radius. alpha: of the step before on entry, of this one on return; 0 stands for the full step,
  // whose length then is the largest radius.
  bool find(Real& delta, Real& alpha, Real* p) {
    if (full_length <= Real(1.5) * delta) {
      std::copy(w, w + n, z);
      alpha = 0;
      delta = std::min(delta, full_length);
      hand_over(p);
      return true;
    }
    Real low = rank == n ? (full_length - delta) / delta / full_decline : Real(0);
    Real high = gradient_length / delta;
    if (!(high > 0)) high = Machine<Real>::smallest / std::min(delta, Real(0.1));
    if (!(low >= 0 && low <= high)) low = 0;
    // From below the iteration does not swing, and the lower bound, which is its step from 0, comes close already.
    if (low > 0 || !(alpha <= high)) alpha = low;
    alpha = std::max(alpha, high / 1000);
    for (long tries = 0; tries < most_tries; ++tries) {
      if (!(alpha >= low && alpha <= high)) alpha = std::max(std::sqrt(low * high), high / 1000);
      shift(alpha);
      const Real size = length(), over = size - delta;
      if (size >= Real(0.75) * delta && size <= Real(1.5) * delta) {
        hand_over(p);
        return true;
      }
      if (over > 0) {
        low = std::max(low, alpha);
      } else {
        // A Jacobian of lower rank: even without a shift the step stays inside.
        if (rank < n && alpha <= Machine<Real>::epsilon * (r[0] / scale[pvt[0]]) * (r[0] / scale[pvt[0]])) {
          hand_over(p);
          return true;
        }
        high = std::min(high, alpha);
      }
      alpha += over / delta / decline(s, size);
    }
    raise<Half>(4, MATH_EXCEEDED_MAX_LOOP_COUNTER, {.i = {most_tries}});
    return false;
  }

  // What the model says that half the sum of squares changes by: g.p + |J p|^2 / 2 for the step found last.
  Real predicted(Real gp) {
    Real sum = 0;
    for (long i = 0; i < n; ++i) {
      const Real element = row_dot(n - i, r + i * n + i, z + i);
      sum += element * element;
    }
    return gp + sum / 2;
  }
};

// The first radius: the length of the step to the minimum of the model along the scaled gradient.
template <class Half, class Real>
Real gradient_step_length(const TrustStep<Half, Real>& step, const Real* g, Real* work) {
  const long n = step.n;
  for (long i = 0; i < n; ++i) {
    const long j = step.pvt[i];
    work[i] = g[j] / step.scale[j] / step.gradient_length / step.scale[j];
  }
  Real curvature = 0;
  for (long i = 0; i < n; ++i) curvature = std::hypot(curvature, row_dot(n - i, step.r + i * n + i, work + i));
  return step.gradient_length / curvature / curvature;
}

// l_u7lsf: factor and step in one, for callers with a loop of their own.
template <class Half, class Real>
void l_u7lsf(long m, long n, const Real* fvec, const Real* fjac, long ldfjac, const Real* xscale, Real* delta, Real* alpha,
             Real* p) {
  TrustStep<Half, Real> step = {.m = m, .n = n};
  Block<Half, Real> block;
  step.need(block);
  block.need(1, n);
  if (!block.obtain() || !step.take(block)) {
    raise<Half>(5, MATH_OUT_OF_MEMORY);
    return;
  }
  Real* const g = block.take(n);
  for (long j = 0; j < n; ++j) g[j] = row_dot(m, fjac + j * ldfjac, fvec);
  step.factor(fjac, ldfjac);
  step.set(fvec, g, xscale);
  step.find(*delta, *alpha, p);
}

// l_u8lsf: R column-major, as the callers of the statistics half hold it.
template <class Half, class Real>
void l_u8lsf(long n, const Real* r, long ldr, const Real* qtb, const Real* diag, Real* x) {
  long square = 0;
  const bool fits = !__builtin_mul_overflow(n, 2 * n + 2, &square);
  Real* const work = fits ? scratch<Half, Real>(square) : nullptr;
  if (work == nullptr) {
    raise<Half>(5, MATH_OUT_OF_MEMORY);
    return;
  }
  for (long i = 0; i < n; ++i) {
    for (long j = i; j < n; ++j) work[i * n + j] = r[i + j * ldr];
  }
  l_u11sf(n, work, qtb, diag, x, work + n * n, work + 2 * n * n);
}

}  // namespace zent::optimize
