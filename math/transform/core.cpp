// How a transform of any length is put together from the passes.
#include "math/transform/core.hpp"

#include "math/transform/plan.hpp"
#include "math/transform/prepared.hpp"
#include "math/transform/roots.hpp"
#include "runtime/scratch.hpp"

namespace zent::transform {

namespace {

// A prime length as a convolution with a chirp, at the nearest convenient length: X[k] = c*[k] sum of (x[j] c*[j]) c[k-j].
template <class Real>
bool convolve(long p, const Real* in, Real* out, bool backward) {
  Chirp<Real> chirp;
  if (!prepared_chirp(p, chirp)) return false;
  const Engine<Real>& run = engine<Real>();
  const long length = chirp.length;
  Real* work = chirp.work;
  // The chirp is even, so the backward transform is the forward one with all its factors conjugated.
  run.multiply(p, chirp.chirp, in, work, !backward);
  for (long k = 2 * p; k < 2 * length; ++k) work[k] = 0;
  if (!transform<Real>(length, work, work, false)) return false;
  run.multiply(length, chirp.filter, work, work, backward);
  if (!transform<Real>(length, work, work, true)) return false;
  run.multiply(p, chirp.chirp, work, out, !backward);
  return true;
}

// The last factor of n is a large prime: short transforms down the columns, convolutions along the rows.
template <class Real>
bool transform_with_large_prime(const Prepared<Real>& prepared, const Real* in, Real* out, bool backward) {
  const long n1 = prepared.plan.n1, n2 = prepared.plan.large_prime;
  Real* const between = prepared.between;
  if (!transform_columns(n1, n2, in, n2, between, n2, backward)) return false;
  void* const mark = scratch_mark<Math>();
  for (long k = 0; k < n1; ++k) {
    Real* const row = between + 2 * n2 * k;
    if (k > 0) engine<Real>().multiply(n2, prepared.twiddles.columns + 2 * n2 * k, row, row, !backward);
    if (!convolve(n2, row, row, backward)) return false;
    scratch_release<Math>(mark);
    for (long i = 0; i < n2; ++i) {
      out[2 * (k + n1 * i)] = row[2 * i];
      out[2 * (k + n1 * i) + 1] = row[2 * i + 1];
    }
  }
  return true;
}

}  // namespace

template <class Real>
bool transform(long n, const Real* in, Real* out, bool backward) {
  if (n == 1) {
    out[0] = in[0];
    out[1] = in[1];
    return true;
  }
  const Prepared<Real>* prepared = prepared_line<Real>(n);
  if (prepared == nullptr) return false;
  const Plan& plan = prepared->plan;
  if (plan.large_prime == n) return convolve(n, in, out, backward);
  if (plan.large_prime > 0) return transform_with_large_prime(*prepared, in, out, backward);
  engine<Real>().line(plan, prepared->twiddles, in, out, backward, prepared->between, prepared->buffer);
  return true;
}

template <class Real>
bool transform_columns(long n, long count, const Real* in, long in_stride, Real* out, long out_stride, bool backward) {
  const Factors factors = complex_factors(n);
  if (factors.count > 0 && factors.factor[factors.count - 1] <= largest_radix) {
    const Prepared<Real>* prepared = prepared_columns<Real>(n);
    if (prepared == nullptr) return false;
    engine<Real>().batch(prepared->plan, prepared->twiddles, count, in, in_stride, out, out_stride, backward, prepared->buffer);
    return true;
  }
  Real* column = scratch<Math, Real>(2 * n);
  if (column == nullptr) return false;
  void* const mark = scratch_mark<Math>();
  for (long c = 0; c < count; ++c) {
    for (long k = 0; k < n; ++k) {
      column[2 * k] = in[2 * (c + in_stride * k)];
      column[2 * k + 1] = in[2 * (c + in_stride * k) + 1];
    }
    if (!transform(n, column, column, backward)) return false;
    scratch_release<Math>(mark);
    for (long k = 0; k < n; ++k) {
      out[2 * (c + out_stride * k)] = column[2 * k];
      out[2 * (c + out_stride * k) + 1] = column[2 * k + 1];
    }
  }
  return true;
}

namespace {

// An odd length goes through the complex transform of the same length.
template <class Real>
bool odd_real_transform(long n, const Real* in, Real* out, bool backward) {
  Real* z = n > Roots::longest ? nullptr : scratch_zero<Math, Real>(2 * n);
  if (z == nullptr) return false;
  if (!backward) {
    for (long k = 0; k < n; ++k) z[2 * k] = in[k];
    if (!transform<Real>(n, z, z, false)) return false;
    out[0] = z[0];
    for (long k = 1; k < n; ++k) out[k] = z[k + 1];
    return true;
  }
  z[0] = in[0];
  for (long k = 1; k <= (n - 1) / 2; ++k) {
    z[2 * k] = z[2 * (n - k)] = in[2 * k - 1];
    z[2 * k + 1] = in[2 * k];
    z[2 * (n - k) + 1] = -in[2 * k];
  }
  if (!transform<Real>(n, z, z, true)) return false;
  for (long k = 0; k < n; ++k) out[k] = z[2 * k];
  return true;
}

}  // namespace

// An even length is a complex transform of half the length on neighbouring pairs.
template <class Real>
bool real_transform(long n, const Real* in, Real* out, bool backward) {
  if (n == 1) {
    out[0] = in[0];
    return true;
  }
  if (n % 2 != 0) return odd_real_transform(n, in, out, backward);
  const long m = n / 2;
  PreparedRoots<Real> prepared;
  if (!prepared_roots(n, prepared)) return false;
  const Engine<Real>& run = engine<Real>();
  if (backward) {
    Real* const z = in == out ? prepared.work : out;
    run.unpack(m, prepared.roots, in, z);
    return transform<Real>(m, z, out, true);
  }
  if (!transform<Real>(m, in, out, false)) return false;
  run.pack(m, prepared.roots, out);
  return true;
}

#define ZENT_FORM(Real)                                                                    \
  template bool transform<Real>(long, const Real*, Real*, bool);                           \
  template bool transform_columns<Real>(long, long, const Real*, long, Real*, long, bool); \
  template bool real_transform<Real>(long, const Real*, Real*, bool);
ZENT_FORM(float)
ZENT_FORM(double)
#undef ZENT_FORM

}  // namespace zent::transform
