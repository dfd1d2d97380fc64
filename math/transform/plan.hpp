// What the passes of a transform need to know, and the ways to run them.
#pragma once

#include "math/transform/factors.hpp"

namespace zent::transform {

// The engines by instruction set.
enum class Level { base, avx2, avx512 };

// One pass of a length n, or of the n1 or n2 that it belongs to: l1 is the product of the radices before it, ido that of the
// radices behind it. The twiddle of part j (1 to radix - 1) at place i (0 to ido - 1) is exp(2 pi i j l1 i / n).
struct Stage {
  long radix, l1, ido;
  long rows;   // where its twiddles begin among those of the rows, for every i the parts beside each other
  long roots;  // where its roots exp(2 pi i j / radix) begin, j from 1, if the radix has no pass of its own
};

// How a length is done: n = n1 n2, the stages of n1 (`first_count` of them) before those of n2, on vectors of `width` lanes.
// Width 1: no split, numbers one by one, radices to 5 alone. large_prime: the last factor, if it is above largest_radix; n1 is
// then the rest, without stages.
struct Plan {
  long n;
  int count, width, first_count;
  long n1, large_prime;
  Stage stage[most_factors];
};

// The twiddles of a plan. `rows`: those of the stages behind the split, pairs. `columns`: for every group of `width` columns, the
// twiddles of the stages before the split in the order of their use: stage by stage, for i and within it for j, `width` real
// parts and `width` imaginary ones; with a large prime exp(2 pi i r c / n) for row r and column c, pairs.
template <class Real>
struct Twiddles {
  const Real* rows;
  const Real* columns;
  const Real* roots;
};

// The longest radix with a pass of its own. Those above 8 take a quarter of an hour to compile with all accesses checked.
#ifdef __SANITIZE_ADDRESS__
inline constexpr long longest_pass = 8;
#else
inline constexpr long longest_pass = 16;
#endif

// Primes above 5 go by the definition (7 where vectors are wide has a pass of its own), which wants their roots.
inline constexpr bool by_definition(long radix) {
  return radix > 16 || radix == 7 || radix == 11 || radix == 13;
}

// A factor above this goes through a convolution instead of a pass of its own.
inline constexpr long largest_radix = 61;

// Choose the stages: of a line on vectors of up to `widest` lanes, and of columns that stand beside each other.
void plan_line(long n, int widest, Plan& plan);
void plan_columns(long n, Plan& plan);

// Reals that a line needs for the groups of rows between its two halves (with a large prime for all of it), and in its buffer.
long reals_between(const Plan& plan);
long reals_in_buffer(const Plan& plan);

// One dimension of complex data: element k is the pair of reals at data + 2 * stride * k. Backward transforms exchange the parts
// on the way in and out.
//
// The engine of one instruction set. Its work memory is aligned for any vector.
template <class Real>
struct Engine {
  int widest;  // lanes
  // The whole transform, contiguous in and out, which may be the same array. There is no large prime.
  void (*line)(const Plan&, const Twiddles<Real>&, const Real* in, Real* out, bool backward, Real* between, Real* buffer);
  // Transforms `count` neighbouring columns at once: column c of `in` starts at in + 2 c, its elements lie in_stride pairs apart.
  void (*batch)(const Plan&, const Twiddles<Real>&, long count, const Real* in, long in_stride, Real* out, long out_stride,
                bool backward, Real* buffer);
  // The two ends of the real transform of length 2 m: the packed spectrum in the place of the half-length transform z, and back.
  void (*pack)(long m, const Real* roots, Real* z);
  void (*unpack)(long m, const Real* roots, const Real* packed, Real* z);
  // out := conj(a) b, or a b with `conjugate` false, n pairs.
  void (*multiply)(long n, const Real* a, const Real* b, Real* out, bool conjugate);
};

// Reals in the buffer of `batch` for columns of this length: three groups.
inline constexpr int most_lanes = 16;
inline constexpr long column_work(long length) {
  return 6 * most_lanes * length;
}

// The fastest engine that the processor can run, unless a test asks for a lower one.
template <class Real>
const Engine<Real>& engine();
Level top_level();
void limit_level(Level level);

}  // namespace zent::transform
