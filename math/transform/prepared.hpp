// What a transform prepares once for a length and keeps for the next call: twiddles, roots, chirps.
#pragma once

#include "math/transform/plan.hpp"

namespace zent::transform {

// How this length is done by the engine in use, with its twiddles and the memory that it works in: what `line` wants, or for
// columns alone the buffer of `batch`.
template <class Real>
struct Prepared {
  Plan plan;
  Twiddles<Real> twiddles;
  Real *planes, *buffer;
};
template <class Real>
const Prepared<Real>* prepared_line(long n);
template <class Real>
const Prepared<Real>* prepared_columns(long n);

// exp(2 pi i k / n) for k = 0 to n / 4, and work memory for n reals.
template <class Real>
struct PreparedRoots {
  const Real* roots;
  Real* work;
};
template <class Real>
bool prepared_roots(long n, PreparedRoots<Real>& prepared);

// The convolution that stands for a transform of odd length p (Bluestein 1970): chirp exp(pi i j^2 / p), p pairs, the transform
// of its periodic continuation over `length` points, divided by that length, and work memory for `length` pairs.
template <class Real>
struct Chirp {
  long length;
  const Real* chirp;
  const Real* filter;
  Real* work;
};
template <class Real>
bool prepared_chirp(long p, Chirp<Real>& chirp);

// Gives back what is too large to be kept between calls.
template <class Real>
void drop_large();

// Writes the twiddles of the documented layouts.
template <class Real>
bool complex_twiddles(long n, Real* twiddles);
template <class Real>
bool real_twiddles(long n, Real* twiddles);

}  // namespace zent::transform
