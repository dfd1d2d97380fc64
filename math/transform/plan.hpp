// What the passes of a transform need to know, and the ways to run them.
#pragma once

#include "math/transform/factors.hpp"

namespace zent::transform {

// The engines by instruction set.
enum class Level { base, avx2, avx512 };

// One factor of the length n at its place: l1 is the product of the factors before it, ido that of the factors behind it. Row j
// (1 to radix - 1) of its twiddles is exp(2 pi i j l1 i / n) for i = 0 to ido - 1.
struct Stage {
  long radix, l1, ido;
  long rows;   // where its rows begin among those of the plan
  long roots;  // where its roots exp(2 pi i j / radix) begin, j from 1, if the radix is above 5
};

// How a length is done: its stages, and the split n = n1 n2, with n1 the product of the first `first_count` factors, that fits
// vectors of `width` lanes best.
struct Plan {
  long n;
  int count, width, first_count;
  long n1;
  long work;  // reals in the buffer of a line
  Stage stage[most_factors];
};

// The twiddles of a plan. `rows`: those of the stages behind the split, pairs. `columns`: for every group of `width` columns, the
// twiddles of the stages before the split in the order of their use: stage by stage, for i and within it for j, `width` real
// parts and `width` imaginary ones.
template <class Real>
struct Twiddles {
  const Real* rows;
  const Real* columns;
  const Real* roots;
};

// A factor above this goes through a convolution instead of a pass of its own.
inline constexpr long largest_radix = 61;

// One dimension of complex data: element k is the pair of reals at data + 2 * stride * k. Backward transforms exchange the parts
// on the way in and out.
//
// The engine of one instruction set. `planes` is 2 n reals; `buffer` is aligned for any vector.
template <class Real>
struct Engine {
  // Chooses the split of a plan whose stages are set, and the size of its buffer.
  void (*split)(Plan&);
  // The whole transform, contiguous in and out, which may be the same array. All factors are at most largest_radix.
  void (*line)(const Plan&, const Twiddles<Real>&, const Real* in, Real* out, bool backward, Real* planes, Real* buffer);
  // The stages before the split on all columns of the n1 by n2 array `in`; twiddled results into the planes, n1 by n2 each.
  void (*columns)(const Plan&, const Twiddles<Real>&, const Real* in, bool backward, Real* planes, Real* buffer);
  // Transforms `count` neighbouring columns at once: column c of `in` starts at in + 2 c, its elements lie in_stride pairs apart.
  void (*batch)(const Plan&, const Twiddles<Real>&, long count, const Real* in, long in_stride, Real* out, long out_stride,
                bool backward, Real* buffer);
  // The two ends of the real transform of length 2 m: packed spectrum from the half-length transform z, and back.
  void (*pack)(long m, const Real* roots, const Real* z, Real* packed);
  void (*unpack)(long m, const Real* roots, const Real* packed, Real* z);
  // out := conj(a) b, or a b with `conjugate` false, n pairs.
  void (*multiply)(long n, const Real* a, const Real* b, Real* out, bool conjugate);
};

// Reals in the buffer of `columns` and `batch` for columns of this length.
inline constexpr int most_lanes = 16;
inline constexpr long column_work(long length) {
  return 4 * most_lanes * length;
}

// The fastest engine that the processor can run, unless a test asks for a lower one.
template <class Real>
const Engine<Real>& engine();
Level top_level();
void limit_level(Level level);

}  // namespace zent::transform
