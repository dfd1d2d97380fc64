// The factorization. The panel's bookkeeping follows the plain step: same pivots, same norms, same reflections to rounding.
#include "math/linalg/qr.hpp"

#include <cmath>
#include <cstring>
#include <utility>

#include "math/linalg/qr_reflectors.hpp"
#include "runtime/error.hpp"
#include "runtime/scratch.hpp"
#include "zent/least_squares.h"

namespace zent::linalg {

namespace {

constexpr long panel_width = 32;
constexpr long least_blocked = 48;  // smaller problems stay in the cache anyway

template <class Real>
struct Factoring {
  long m, n;
  Real* qr;
  long ld;
  Real* qraux;     // norms of what is left of the free columns, then heads
  Real* recorded;  // the norms when they were last computed; negative: to be computed anew
  long* pvt;
  Real* row;                  // n - 1 elements of work memory
  long first = 0, last = -1;  // the free columns

  Real* column(long j) const {
    return qr + j * ld;
  }
  bool is_free(long j) const {
    return first <= j && j <= last;
  }
  void exchange(long i, long j) const {
    fast::swap(m, column(i), 1, column(j), 1);
    std::swap(pvt[i], pvt[j]);
  }

  // Initial columns to the front, final ones to the back.
  void arrange() {
    for (long j = 0; j < n; ++j) {
      const bool initial = pvt[j] > 0;
      pvt[j] = pvt[j] < 0 ? -(j + 1) : j + 1;
      if (!initial) continue;
      if (j != first) exchange(first, j);
      ++first;
    }
    last = n - 1;
    for (long j = n - 1; j >= 0; --j) {
      if (pvt[j] > 0) continue;
      pvt[j] = -pvt[j];
      if (j != last) exchange(j, last);
      --last;
    }
  }

  void start_norms(Real* column_norms) const {
    for (long j = 0; j < n; ++j) {
      column_norms[j] = fast::nrm2(m, column(j), 1);
      qraux[j] = is_free(j) ? column_norms[j] : 0;  // what is to the right of the last step keeps this
      recorded[j] = qraux[j];
    }
  }

  // The free column of largest norm comes to position k; the first of equals. Returns where it was.
  long choose(long k) const {
    long best = k;
    if (k < first || k >= last) return k;
    for (long j = k + 1; j <= last; ++j) {
      if (qraux[j] > qraux[best]) best = j;
    }
    if (best != k) {
      exchange(k, best);
      qraux[best] = qraux[k];
      recorded[best] = recorded[k];
    }
    return best;
  }

  // Makes column k from row k on the vector of its reflection. Returns minus the diagonal of R, or 0: no reflection.
  Real reflect(long k) const {
    Real* const x = column(k) + k;
    Real length = fast::nrm2(m - k, x, 1);
    if (length < safe_inverse<Real>()) return 0;
    if (*x < 0) length = -length;
    fast::scal(m - k, 1 / length, x, 1);
    *x += 1;
    return length;
  }

  // What row k takes from the norm of column j. Marks the norm when too little of it is left to be trusted.
  void downdate(long k, long j) const {
    if (!is_free(j) || qraux[j] == 0) return;
    const Real ratio = std::abs(column(j)[k]) / qraux[j];
    const Real left = std::max(1 - ratio * ratio, Real(0));
    const Real share = qraux[j] / recorded[j];
    if (1 + Real(0.05) * left * (share * share) == 1) {
      recorded[j] = -1;
    } else {
      qraux[j] *= std::sqrt(left);
    }
  }

  // Computes the marked norms from row k on; the columns are up to date there.
  void renew_norms(long k) const {
    for (long j = std::max(k, first); j <= last; ++j) {
      if (recorded[j] < 0) qraux[j] = recorded[j] = fast::nrm2(m - k, column(j) + k, 1);
    }
  }

  void step(long k) const {
    choose(k);
    qraux[k] = 0;
    if (k == m - 1) return;
    const Real length = reflect(k);
    if (length == 0) return;
    const Real* const v = column(k) + k;
    const long right = n - k - 1;
    if (right > 0) {
      fast::gemv('T', m - k, right, -1 / *v, column(k + 1) + k, ld, v, 1, 0, row, 1);
      fast::ger(m - k, right, 1, v, 1, row, 1, column(k + 1) + k, ld);
      for (long j = k + 1; j < n; ++j) downdate(k, j);
      renew_norms(k + 1);
    }
    qraux[k] = *v;
    column(k)[k] = -length;
  }

  // Columns k0 .. of one panel; those to the right receive only row k of each step k. f has n - k0 rows. Returns the end of the
  // panel: `width` columns, or fewer when a norm is in doubt.
  long panel(long k0, long width, Real* f, long ldf, Real* aux) const {
    for (long k = k0; k < k0 + width; ++k) {
      const long done = k - k0, best = choose(k), right = n - k - 1;
      if (best != k) fast::swap(done, f + (k - k0), ldf, f + (best - k0), ldf);
      Real* const x = column(k) + k;
      for (long l = 0; l < done; ++l) aux[l] = f[(k - k0) + l * ldf];
      fast::gemv('N', m - k, done, -1, column(k0) + k, ld, aux, 1, 1, x, 1);
      qraux[k] = 0;
      const Real length = reflect(k);
      Real* const fk = f + done * ldf + (done + 1);
      bool doubtful = false;
      if (length == 0) {
        std::fill(fk, fk + right, Real(0));
      } else if (right > 0) {
        fast::gemv('T', m - k, right, 1 / *x, column(k + 1) + k, ld, x, 1, 0, fk, 1);
        fast::gemv('T', m - k, done, -1 / *x, column(k0) + k, ld, x, 1, 0, aux, 1);
        fast::gemv('N', right, done, 1, f + (done + 1), ldf, aux, 1, 1, fk, 1);
      }
      if (right > 0) {
        for (long l = 0; l <= done; ++l) aux[l] = column(k0 + l)[k];
        if (length == 0) aux[done] = 0;
        fast::gemv('N', right, done + 1, 1, f + (done + 1), ldf, aux, 1, 0, row, 1);
        for (long j = k + 1; j < n; ++j) {
          column(j)[k] -= row[j - k - 1];
          if (length == 0) continue;
          downdate(k, j);
          doubtful = doubtful || (is_free(j) && recorded[j] < 0);
        }
      }
      if (length != 0) {
        qraux[k] = *x;
        *x = -length;
      }
      if (doubtful) return k + 1;
    }
    return k0 + width;
  }

  void blocked(Real* work) const {
    const long steps = std::min(m - 1, n);
    Real* const aux = work;
    Real* const f = work + panel_width;
    long k = 0;
    while (k < steps) {
      const long width = std::min(panel_width, steps - k), ldf = n - k;
      const long end = panel(k, width, f, ldf, aux), right = n - end;
      if (right > 0) {
        fast::gemm('N', 'T', m - end, right, end - k, -1, column(k) + end, ld, f + (end - k), ldf, 1, column(end) + end, ld);
        renew_norms(end);
      }
      k = end;
    }
    if (m <= n) step(m - 1);
  }
};

// Copies column by column; safe for arrays that overlap when only their leading dimensions differ.
template <class Real>
void copy_columns(long m, long n, const Real* a, long lda, Real* qr, long ldqr) {
  if (a == qr && lda == ldqr) return;
  for (long k = 0; k < n; ++k) {
    const long j = ldqr > lda ? n - 1 - k : k;
    std::memmove(qr + j * ldqr, a + j * lda, sizeof(Real) * static_cast<unsigned long>(m));
  }
}

template <class Half, class Real>
bool prepare(long m, long n, const Real* a, long lda, bool pivot, long* pvt, Real* qr, long ldqr, Real* qraux, Real* column_norms,
             Real* wk, Factoring<Real>& factoring) {
  if (m < 1 || n < 1) raise<Half>(5, MATH_NEED_NRA_AND_NCA_GT_ZERO, {.i = {m, n}});
  if (m > lda) raise<Half>(5, MATH_NEED_SMALLER_NRA_VALUE, {.i = {m, lda}});
  if (m > ldqr) raise<Half>(5, MATH_NRQR_GREATER_THAN_LDQR, {.i = {m, ldqr}});
  if (m < 1 || n < 1 || m > lda || m > ldqr) return false;
  copy_columns(m, n, a, lda, qr, ldqr);
  factoring = {.m = m, .n = n, .qr = qr, .ld = ldqr, .qraux = qraux, .recorded = wk + (n - 1), .pvt = pvt, .row = wk};
  if (pivot) {
    factoring.arrange();
  } else if (pvt != nullptr) {
    for (long j = 0; j < n; ++j) pvt[j] = j + 1;
  }
  factoring.start_norms(column_norms);
  return true;
}

// y := H y for one reflection; its stored first element is that of R, so the head stands in for it.
template <class Real>
void apply_one(long length, const Real* v, Real head, Real* y) {
  const Real t = -(head * y[0] + fast::dot(length - 1, v + 1, 1, y + 1, 1)) / head;
  y[0] += t * head;
  fast::axpy(length - 1, t, v + 1, 1, y + 1, 1);
}

template <class Real>
void apply_q(bool transposed, long m, long count, const Real* qr, long ldqr, const Real* qraux, Real* y) {
  for (long step = 0; step < count; ++step) {
    const long k = transposed ? step : count - 1 - step;
    if (qraux[k] != 0) apply_one(m - k, qr + k + k * ldqr, qraux[k], y + k);
  }
}

template <class Real>
void copy_vector(long n, const Real* from, Real* to) {
  if (from != to && n > 0) std::memmove(to, from, sizeof(Real) * static_cast<unsigned long>(n));
}

}  // namespace

template <class Half, class Real>
void l2rrr_plain(long m, long n, const Real* a, long lda, bool pivot, long* pvt, Real* qr, long ldqr, Real* qraux,
                 Real* column_norms, Real* wk) {
  Factoring<Real> factoring;
  if (!prepare<Half>(m, n, a, lda, pivot, pvt, qr, ldqr, qraux, column_norms, wk, factoring)) return;
  for (long k = 0; k < std::min(m, n); ++k) factoring.step(k);
}

template <class Half, class Real>
void l2rrr(long m, long n, const Real* a, long lda, bool pivot, long* pvt, Real* qr, long ldqr, Real* qraux, Real* column_norms,
           Real* wk) {
  Factoring<Real> factoring;
  if (!prepare<Half>(m, n, a, lda, pivot, pvt, qr, ldqr, qraux, column_norms, wk, factoring)) return;
  void* const mark = scratch_mark<Half>();
  Real* const work = std::min(m, n) < least_blocked ? nullptr : scratch<Half, Real>(panel_width * (n + 1));
  if (work != nullptr) {
    factoring.blocked(work);
  } else {
    for (long k = 0; k < std::min(m, n); ++k) factoring.step(k);
  }
  scratch_release<Half>(mark);
}

template <class Half, class Real>
void lqrsl(long m, long kbasis, const Real* qr, long ldqr, const Real* qraux, const Real* y, Real* qy, Real* qty, Real* b,
           Real* res, Real* xb, long job) {
  if (m < 1) raise<Half>(5, MATH_NRA_MUST_BE_POSITIVE, {.i = {m}});
  if (m > ldqr) raise<Half>(5, MATH_NRQR_GREATER_THAN_LDQR, {.i = {m, ldqr}});
  if (kbasis < 0) raise<Half>(5, MATH_KBASIS_IS_NEGATIVE, {.i = {kbasis}});
  if (m < 1 || m > ldqr || kbasis < 0) return;
  const bool want_qy = job / 10000 != 0, want_qty = job % 10000 != 0;
  const bool want_b = job / 100 % 10 != 0, want_res = job / 10 % 10 != 0, want_xb = job % 10 != 0;
  const long count = std::min(kbasis, m - 1), rank = std::min(kbasis, m);
  if (want_qy) {
    copy_vector(m, y, qy);
    apply_q(false, m, count, qr, ldqr, qraux, qy);
  }
  if (!want_qty) return;
  void* const mark = scratch_mark<Half>();
  if (qty == nullptr) qty = scratch<Half, Real>(m);
  if (qty == nullptr) {
    raise<Half>(5, MATH_OUT_OF_MEMORY);
    return;
  }
  copy_vector(m, y, qty);
  apply_q(true, m, count, qr, ldqr, qraux, qty);
  if (want_b) copy_vector(rank, qty, b);
  if (want_xb) {
    copy_vector(rank, qty, xb);
    std::fill(xb + rank, xb + m, Real(0));
  }
  if (want_res) {  // after the others: it may share storage with qty
    copy_vector(m, qty, res);
    std::fill(res, res + rank, Real(0));
  }
  if (want_b) {
    long zero = rank - 1;
    while (zero >= 0 && qr[zero + zero * ldqr] != 0) --zero;
    if (zero >= 0) {
      raise<Half>(4, MATH_SINGULAR_TRI_MATRIX, {.i = {zero}});
    } else {
      fast::trsv('U', 'N', 'N', rank, qr, ldqr, b, 1);
    }
  }
  if (want_res) apply_q(false, m, count, qr, ldqr, qraux, res);
  if (want_xb) apply_q(false, m, count, qr, ldqr, qraux, xb);
  scratch_release<Half>(mark);
}

template <class Half, class Real>
void l2qrr(long m, long n, const Real* a, long lda, const Real* b, Real tol, Real* x, Real* res, long* kbasis, Real* qr,
           Real* qraux, long* pvt, Real* wk) {
  if (m < 1 || n < 1) raise<Half>(5, MATH_NEED_NRA_AND_NCA_GT_ZERO, {.i = {m, n}});
  if (m > lda) raise<Half>(5, MATH_NEED_SMALLER_NRA_VALUE, {.i = {m, lda}});
  if (m < 1 || n < 1 || m > lda) return;
  l2rrr<Half>(m, n, a, lda, true, pvt, qr, m, qraux, wk + (2 * n - 1), wk);
  const Real threshold = std::abs(qr[0]) * tol;
  long k = 0;
  while (k < std::min(m, n) && std::abs(qr[k + k * m]) > threshold) ++k;
  *kbasis = k;
  if (k > 0) lqrsl<Half, Real>(m, k, qr, m, qraux, b, nullptr, res, x, res, nullptr, 110);
  std::fill(x + k, x + n, Real(0));
  l_permu<Half>(n, x, pvt, 2, x);
}

template <class Half, class Real>
bool l_l2err(long m, long n, const Real* qr, long ldqr, const Real* qraux, Real* q, long ldq) {
  if (m > ldq) {
    raise<Half>(5, MATH_NRQR_GT_LDQR, {.i = {m, ldq}});
    return true;
  }
  void* const mark = scratch_mark<Half>();
  Real* const work = scratch<Half, Real>(reflector_words<Real>(m, m));
  if (work != nullptr) {
    accumulate_reflectors(m, std::min(m - 1, n), 0, qr, ldqr, qraux, safe_inverse<Real>(), q, ldq, m, work);
  }
  scratch_release<Half>(mark);
  return work != nullptr;
}

template <class Half, class Real>
void l_permu(long n, const Real* x, long* pvt, long ipath, Real* xpermu) {
  if (n < 1) raise<Half>(5, MATH_X_AND_XPERMU_LENGTH_LE_0, {.i = {n}});
  if (ipath != 1 && ipath != 2) raise<Half>(5, MATH_IPATH_RANGE_3, {.i = {ipath}});
  if (n < 1 || (ipath != 1 && ipath != 2)) return;
  for (long i = 0; i < n; ++i) {
    if (pvt[i] >= 1 && pvt[i] <= n) continue;
    raise<Half>(5, MATH_IPERMU_RANGE, {.i = {i + 1, n, pvt[i]}});
    return;
  }
  copy_vector(n, x, xpermu);
  for (long start = 0; start < n; ++start) {
    if (pvt[start] < 0) continue;
    if (ipath == 1) {
      const Real held = xpermu[start];
      long to = start;
      for (;;) {
        const long from = pvt[to] - 1;
        pvt[to] = -pvt[to];
        if (from == start || pvt[from] < 0) break;
        xpermu[to] = xpermu[from];
        to = from;
      }
      xpermu[to] = held;
    } else {
      Real held = xpermu[start];
      for (long at = start; pvt[at] > 0;) {
        const long to = pvt[at] - 1;
        pvt[at] = -pvt[at];
        std::swap(held, xpermu[to]);
        at = to;
      }
    }
  }
  for (long i = 0; i < n; ++i) pvt[i] = -pvt[i];
}

#define ZENT_QR(Half, Real)                                                                                                   \
  template void l2rrr<Half, Real>(long, long, const Real*, long, bool, long*, Real*, long, Real*, Real*, Real*);              \
  template void l2rrr_plain<Half, Real>(long, long, const Real*, long, bool, long*, Real*, long, Real*, Real*, Real*);        \
  template void lqrsl<Half, Real>(long, long, const Real*, long, const Real*, const Real*, Real*, Real*, Real*, Real*, Real*, \
                                  long);                                                                                      \
  template void l2qrr<Half, Real>(long, long, const Real*, long, const Real*, Real, Real*, Real*, long*, Real*, Real*, long*, \
                                  Real*);                                                                                     \
  template bool l_l2err<Half, Real>(long, long, const Real*, long, const Real*, Real*, long);                                 \
  template void l_permu<Half, Real>(long, const Real*, long*, long, Real*);
ZENT_QR(Math, float)
ZENT_QR(Math, double)
#undef ZENT_QR

}  // namespace zent::linalg

// The support routines of the public interface.
#define ZENT_FORM(d, Real)                                                                                                      \
  extern "C" void zent_##d##l2rrr(long m, long n, Real* a, long lda, long pivot, long* pvt, Real* qr, long ldqr, Real* qraux,   \
                                  Real* column_norms, Real* wk) {                                                               \
    zent::linalg::l2rrr<zent::Math>(m, n, a, lda, pivot != 0, pvt, qr, ldqr, qraux, column_norms, wk);                          \
  }                                                                                                                             \
  extern "C" void zent_##d##lqrsl(long m, long kbasis, Real* qr, long ldqr, Real* qraux, Real* y, Real* qy, Real* qty, Real* b, \
                                  Real* res, Real* xb, long job) {                                                              \
    zent::linalg::lqrsl<zent::Math>(m, kbasis, qr, ldqr, qraux, y, qy, qty, b, res, xb, job);                                   \
  }                                                                                                                             \
  extern "C" void zent_##d##l2qrr(long m, long n, Real* a, long lda, Real* b, Real tol, Real* x, Real* res, long* kbasis,       \
                                  Real* qr, Real* qraux, long* pvt, Real* wk) {                                                 \
    zent::linalg::l2qrr<zent::Math>(m, n, a, lda, b, tol, x, res, kbasis, qr, qraux, pvt, wk);                                  \
  }
ZENT_FORM(, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
