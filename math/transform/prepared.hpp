// What a transform prepares once for a length and keeps for the next call: twiddles, roots, chirps. What is handed out here stays
// until end_of_call.
#pragma once

#include "math/transform/plan.hpp"

namespace zent::transform {

// How this length is done by the engine in use, with its twiddles and the memory that it works in: what `line` wants, or for
// columns alone the buffer of `batch`.
template <class Real>
struct Prepared {
  Plan plan;
  Twiddles<Real> twiddles;
  Real *between, *buffer;
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

// What earlier calls have asked for is not in use any more, also when a fault has ended one of them in its middle.
template <class Real>
void start_of_call();
// What the call has asked for is not in use any more; what is too large to be kept between calls goes.
template <class Real>
void end_of_call();

// What a sine and a cosine transform of n numbers multiply by, as their tables begin; null without memory.
template <class Real>
const Real* prepared_sine(long n);
template <class Real>
const Real* prepared_cosine(long n);

// Write the twiddles and weights of the documented layouts. Sine: 2 sin(k pi / (n + 1)) for k = 1..n/2 at [k - 1]. Cosine, for
// k = 1..n/2-1: 2 sin(k pi / (n - 1)) at [k] and 2 cos(k pi / (n - 1)) at [n - 1 - k].
template <class Real>
bool complex_twiddles(long n, Real* twiddles);
template <class Real>
bool real_twiddles(long n, Real* twiddles);
template <class Real>
bool sine_weights(long n, Real* w);
template <class Real>
bool cosine_weights(long n, Real* w);

}  // namespace zent::transform
