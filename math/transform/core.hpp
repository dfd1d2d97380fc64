// Complex and real transforms of any length, without frames, options or messages.
#pragma once

namespace zent::transform {

// out := the transform of the n complex numbers in; the arrays may be the same. `twiddles` is the second half of a complex table,
// or null for the library's own. False when there is no memory; `out` is then not usable.
template <class Real>
bool transform(long n, const Real* in, Real* out, bool backward);

// The same down `count` neighbouring columns: element k of column c is the pair at in + 2 (c + stride k).
template <class Real>
bool transform_columns(long n, long count, const Real* in, long in_stride, Real* out, long out_stride, bool backward);

// The real transform in its packed form, from r into r.
template <class Real>
bool real_transform(long n, const Real* in, Real* out, bool backward);

}  // namespace zent::transform
