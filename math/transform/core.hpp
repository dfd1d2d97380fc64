// Complex and real transforms of any length, without frames, options or messages.
#pragma once

namespace zent::transform {

// out := the transform of the n complex numbers in; the arrays may be the same. False when there is no memory; `out` is then as
// it was, or as far as a transform in place had come.
template <class Real>
bool transform(long n, const Real* in, Real* out, bool backward);

// The same down `count` neighbouring columns: element k of column c is the pair at in + 2 (c + stride k).
template <class Real>
bool transform_columns(long n, long count, const Real* in, long in_stride, Real* out, long out_stride, bool backward);

// The real transform, its spectrum in the packed form; the arrays may be the same.
template <class Real>
bool real_transform(long n, const Real* in, Real* out, bool backward);

}  // namespace zent::transform
