// Vectors of ZENT_VECTOR_BYTES bytes, the few operations on them that all kernels are made of. Included once by each unit of a
// level, inside the level's target options; everything stands in the level's own namespace, so that no function compiled for one
// processor can replace its twin of another when the library is linked.
#pragma once

#if ZENT_VECTOR_BYTES > 16
#include <immintrin.h>
#endif

#define ZENT_INLINE __attribute__((always_inline)) inline
// For lambdas, which do not inherit attributes.
#define ZENT_FLAT __attribute__((always_inline))

namespace zent::fast::ZENT_LEVEL {

typedef float FloatVector __attribute__((vector_size(ZENT_VECTOR_BYTES)));
typedef double DoubleVector __attribute__((vector_size(ZENT_VECTOR_BYTES)));
typedef int IntVector __attribute__((vector_size(ZENT_VECTOR_BYTES)));
typedef long LongVector __attribute__((vector_size(ZENT_VECTOR_BYTES)));

template <class Real>
struct VectorOf;
template <>
struct VectorOf<float> {
  using type = FloatVector;
  using mask = IntVector;
};
template <>
struct VectorOf<double> {
  using type = DoubleVector;
  using mask = LongVector;
};
template <class Real>
using Vector = typename VectorOf<Real>::type;
template <class Real>
using Mask = typename VectorOf<Real>::mask;

template <class Real>
constexpr int lanes = ZENT_VECTOR_BYTES / static_cast<int>(sizeof(Real));
template <class T>
constexpr bool is_complex = kernel::ComplexRecord<T>;
// Reals in one element.
template <class T>
constexpr int parts = is_complex<T> ? 2 : 1;

template <class T>
ZENT_INLINE const RealOf<T>* reals(const T* x) {
  return reinterpret_cast<const RealOf<T>*>(x);
}
template <class T>
ZENT_INLINE RealOf<T>* reals(T* x) {
  return reinterpret_cast<RealOf<T>*>(x);
}

ZENT_INLINE long smaller(long a, long b) {
  return a < b ? a : b;
}

// Compile-time loops: indices are types, so arrays of vectors are taken apart into registers whatever the optimizer's mood.
template <int I>
struct Index {
  static constexpr int value = I;
  ZENT_INLINE constexpr operator int() const {
    return I;
  }
};
template <int... I>
struct Sequence {};
template <int N, int... I>
struct MakeSequence : MakeSequence<N - 1, N - 1, I...> {};
template <int... I>
struct MakeSequence<0, I...> {
  using type = Sequence<I...>;
};
template <class Body, int... I>
ZENT_INLINE void unroll_over(Sequence<I...>, [[maybe_unused]] Body body) {
  (body(Index<I>{}), ...);
}
template <int N, class Body>
ZENT_INLINE void unroll(Body body) {
  unroll_over(typename MakeSequence<N>::type{}, body);
}

template <class Real, int... I>
ZENT_INLINE Vector<Real> broadcast_over(Real x, Sequence<I...>) {
  return Vector<Real>{(static_cast<void>(I), x)...};
}
template <class Real>
ZENT_INLINE Vector<Real> broadcast(Real x) {
  return broadcast_over<Real>(x, typename MakeSequence<lanes<Real>>::type{});
}

// a b + c
#if ZENT_VECTOR_BYTES == 64
ZENT_INLINE DoubleVector fma(DoubleVector a, DoubleVector b, DoubleVector c) {
  return _mm512_fmadd_pd(a, b, c);
}
ZENT_INLINE FloatVector fma(FloatVector a, FloatVector b, FloatVector c) {
  return _mm512_fmadd_ps(a, b, c);
}
#elif ZENT_VECTOR_BYTES == 32
ZENT_INLINE DoubleVector fma(DoubleVector a, DoubleVector b, DoubleVector c) {
  return _mm256_fmadd_pd(a, b, c);
}
ZENT_INLINE FloatVector fma(FloatVector a, FloatVector b, FloatVector c) {
  return _mm256_fmadd_ps(a, b, c);
}
#else
template <class V>
ZENT_INLINE V fma(V a, V b, V c) {
  return a * b + c;
}
#endif

// Access to a full vector, and to the first `count` lanes of one: the other lanes read as 0, and their memory is not touched.
template <class Real>
struct Whole {
  ZENT_INLINE Vector<Real> load(const Real* p) const {
    Vector<Real> v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
  }
  ZENT_INLINE void store(Real* p, Vector<Real> v) const {
    __builtin_memcpy(p, &v, sizeof v);
  }
};

#if ZENT_VECTOR_BYTES == 64
template <class Real>
struct Part;
template <>
struct Part<double> {
  __mmask8 mask;
  ZENT_INLINE explicit Part(long count) : mask(static_cast<__mmask8>((1u << count) - 1u)) {}
  ZENT_INLINE DoubleVector load(const double* p) const {
    return _mm512_maskz_loadu_pd(mask, p);
  }
  ZENT_INLINE void store(double* p, DoubleVector v) const {
    _mm512_mask_storeu_pd(p, mask, v);
  }
};
template <>
struct Part<float> {
  __mmask16 mask;
  ZENT_INLINE explicit Part(long count) : mask(static_cast<__mmask16>((1u << count) - 1u)) {}
  ZENT_INLINE FloatVector load(const float* p) const {
    return _mm512_maskz_loadu_ps(mask, p);
  }
  ZENT_INLINE void store(float* p, FloatVector v) const {
    _mm512_mask_storeu_ps(p, mask, v);
  }
};
#elif ZENT_VECTOR_BYTES == 32
static const int sliding_mask[16] = {-1, -1, -1, -1, -1, -1, -1, -1, 0, 0, 0, 0, 0, 0, 0, 0};
template <class Real>
struct Part {
  __m256i mask;
  ZENT_INLINE explicit Part(long count) {
    __builtin_memcpy(&mask, sliding_mask + 8 - count * static_cast<long>(sizeof(Real) / sizeof(int)), sizeof mask);
  }
  ZENT_INLINE Vector<Real> load(const Real* p) const {
    if constexpr (sizeof(Real) == 8) {
      return _mm256_maskload_pd(p, mask);
    } else {
      return _mm256_maskload_ps(p, mask);
    }
  }
  ZENT_INLINE void store(Real* p, Vector<Real> v) const {
    if constexpr (sizeof(Real) == 8) {
      _mm256_maskstore_pd(p, mask, v);
    } else {
      _mm256_maskstore_ps(p, mask, v);
    }
  }
};
#else
template <class Real>
struct Part {
  long count;
  ZENT_INLINE explicit Part(long n) : count(n) {}
  ZENT_INLINE Vector<Real> load(const Real* p) const {
    Vector<Real> v{};
    unroll<lanes<Real>>([&](auto i) ZENT_FLAT {
      if (i < count) v[i.value] = p[i];
    });
    return v;
  }
  ZENT_INLINE void store(Real* p, Vector<Real> v) const {
    unroll<lanes<Real>>([&](auto i) ZENT_FLAT {
      if (i < count) p[i] = v[i.value];
    });
  }
};
#endif

// v in a register. Without this the compiler loads a value that is used twice twice, as an operand of each use.
template <class V>
ZENT_INLINE V held(V v) {
#if ZENT_VECTOR_BYTES > 16
  __asm__("" : "+v"(v));
#endif
  return v;
}

// The piece a vector access goes through: the last one of a tile may be partial, all others are whole.
template <bool partial, class Real>
ZENT_INLINE auto piece_of(long count) {
  if constexpr (partial) {
    return Part<Real>(count);
  } else {
    return Whole<Real>{};
  }
}

// Lane i of the result is lane Map::at(i) of (a, b), which count on from one to the other.
template <class Real, class Map, int... I>
ZENT_INLINE Vector<Real> shuffle_over(Vector<Real> a, Vector<Real> b, Sequence<I...>) {
#ifdef __clang__
  return __builtin_shufflevector(a, b, Map::at(I)...);
#else
  return __builtin_shuffle(a, b, Mask<Real>{Map::at(I)...});
#endif
}
template <class Real, class Map>
ZENT_INLINE Vector<Real> shuffle(Vector<Real> a, Vector<Real> b) {
  return shuffle_over<Real, Map>(a, b, typename MakeSequence<lanes<Real>>::type{});
}

template <int distance>
struct ExchangeAt {
  static constexpr int at(int i) {
    return i ^ distance;
  }
};
// Exchanges the real and imaginary parts.
template <class Real>
ZENT_INLINE Vector<Real> swap_parts(Vector<Real> v) {
  return shuffle<Real, ExchangeAt<1>>(v, v);
}

template <class Real, int distance = lanes<Real> / 2>
ZENT_INLINE Real sum(Vector<Real> v) {
  v += shuffle<Real, ExchangeAt<distance>>(v, v);
  if constexpr (distance > 1) {
    return sum<Real, distance / 2>(v);
  } else {
    return v[0];
  }
}

// (even, odd, even, odd, ...)
template <class Real, int... I>
ZENT_INLINE Vector<Real> alternate_over(Real even, Real odd, Sequence<I...>) {
  return Vector<Real>{(I % 2 == 0 ? even : odd)...};
}
template <class Real>
ZENT_INLINE Vector<Real> alternate(Real even, Real odd) {
  return alternate_over(even, odd, typename MakeSequence<lanes<Real>>::type{});
}

template <class Real>
ZENT_INLINE Vector<Real> flip_signs(Vector<Real> v, Vector<Real> signs) {
  return (Vector<Real>)((Mask<Real>)v ^ (Mask<Real>)signs);
}
template <class Real>
ZENT_INLINE Vector<Real> magnitude(Vector<Real> v) {
  return (Vector<Real>)((Mask<Real>)v & ~(Mask<Real>)broadcast<Real>(-Real(0)));
}
// i times v, by moving parts and a sign: exact.
template <class Real>
ZENT_INLINE Vector<Real> times_i(Vector<Real> v) {
  return flip_signs<Real>(swap_parts<Real>(v), alternate<Real>(-Real(0), Real(0)));
}

// A scalar as a factor of vectors of elements.
template <class T>
struct Factor {
  using Real = T;
  Vector<Real> re;
  Factor() = default;
  ZENT_INLINE explicit Factor(T alpha) : re(broadcast<Real>(alpha)) {}
  ZENT_INLINE Vector<Real> times(Vector<Real> x) const {
    return re * x;
  }
  // y + factor x
  ZENT_INLINE Vector<Real> add(Vector<Real> x, Vector<Real> y) const {
    return fma(re, x, y);
  }
};
template <kernel::ComplexRecord T>
struct Factor<T> {
  using Real = RealOf<T>;
  Vector<Real> re, im;
  Factor() = default;
  ZENT_INLINE explicit Factor(T alpha) : re(broadcast<Real>(alpha.re)), im(alternate<Real>(-alpha.im, alpha.im)) {}
  ZENT_INLINE Vector<Real> times(Vector<Real> x) const {
    return fma(im, swap_parts<Real>(x), re * x);
  }
  ZENT_INLINE Vector<Real> add(Vector<Real> x, Vector<Real> y) const {
    return fma(im, swap_parts<Real>(x), fma(re, x, y));
  }
};

// A scalar as a factor in a combination.
template <class T>
struct Multiplier {
  Vector<T> re;
  Multiplier() = default;
  ZENT_INLINE explicit Multiplier(T alpha) : re(broadcast<T>(alpha)) {}
};
template <kernel::ComplexRecord T>
struct Multiplier<T> {
  Vector<RealOf<T>> re, im;
  Multiplier() = default;
  ZENT_INLINE explicit Multiplier(T alpha) : re(broadcast<RealOf<T>>(alpha.re)), im(broadcast<RealOf<T>>(alpha.im)) {}
};

// A sum of multiples of vectors of elements. The imaginary parts of complex factors go into a sum of their own, which is turned
// by i once, at the end.
template <class T>
struct Combination {
  using Real = T;
  Vector<Real> straight;
  ZENT_INLINE explicit Combination(Vector<Real> start) : straight(start) {}
  ZENT_INLINE void add(const Multiplier<T>& by, Vector<Real> x) {
    straight = fma(by.re, x, straight);
  }
  ZENT_INLINE Vector<Real> total() const {
    return straight;
  }
};
template <kernel::ComplexRecord T>
struct Combination<T> {
  using Real = RealOf<T>;
  Vector<Real> straight, turned{};
  ZENT_INLINE explicit Combination(Vector<Real> start) : straight(start) {}
  ZENT_INLINE void add(const Multiplier<T>& by, Vector<Real> x) {
    straight = fma(by.re, x, straight);
    turned = fma(by.im, x, turned);
  }
  ZENT_INLINE Vector<Real> total() const {
    return straight + times_i<Real>(turned);
  }
};

// Sums of products of two vectors of elements.
template <class T>
struct Products {
  using Real = T;
  Vector<Real> straight{};
  ZENT_INLINE void add(Vector<Real> x, Vector<Real> y) {
    straight = fma(x, y, straight);
  }
  ZENT_INLINE void join(const Products& other) {
    straight += other.straight;
  }
  ZENT_INLINE T total(bool) const {
    return sum<Real>(straight);
  }
};
template <kernel::ComplexRecord T>
struct Products<T> {
  using Real = RealOf<T>;
  Vector<Real> straight{}, crossed{};
  ZENT_INLINE void add(Vector<Real> x, Vector<Real> y) {
    straight = fma(x, y, straight);
    crossed = fma(x, swap_parts<Real>(y), crossed);
  }
  ZENT_INLINE void join(const Products& other) {
    straight += other.straight;
    crossed += other.crossed;
  }
  ZENT_INLINE T total(bool conjugate) const {
    const Vector<Real> odd_negative = alternate<Real>(Real(0), -Real(0));
    if (conjugate) return {sum<Real>(straight), sum<Real>(flip_signs<Real>(crossed, odd_negative))};
    return {sum<Real>(flip_signs<Real>(straight, odd_negative)), sum<Real>(crossed)};
  }
};

// Calls body(offset, piece, slot) for all vectors of n reals; slots 0 to `width` - 1 take turns, for independent accumulators.
template <class Real, int width, class Body>
ZENT_INLINE void each_vector(long n, Body body) {
  constexpr long step = lanes<Real>;
  long i = 0;
  for (; i + width * step <= n; i += width * step) {
    unroll<width>([&](auto slot) ZENT_FLAT { body(i + slot * step, Whole<Real>{}, slot); });
  }
  for (; i + step <= n; i += step) body(i, Whole<Real>{}, Index<0>{});
  if (i < n) body(i, Part<Real>(n - i), Index<0>{});
}

// Reals before the first vector boundary at or behind p, if that boundary does not cut an element.
template <class T>
ZENT_INLINE long reals_to_boundary(const T* p) {
  constexpr unsigned long bytes = ZENT_VECTOR_BYTES;
  const long head = static_cast<long>(-reinterpret_cast<unsigned long>(p) % bytes / sizeof(RealOf<T>));
  return head % parts<T> == 0 ? head : 0;
}

// each_vector for all reals of n elements, in vectors at the boundaries of memory at `guide` where that can pay: an access across
// two lines counts twice, but a load cannot take over a partial store that is still on its way. Not for sums: their rounding
// would depend on the address.
template <class T, int width, class Body>
ZENT_INLINE void each_aligned_vector(const T* guide, long n, Body body) {
  using Real = RealOf<T>;
  const long all = n * parts<T>;
  const long head = all < 8 * lanes<Real> ? 0 : reals_to_boundary(guide);
  if (head > 0) body(0, Part<Real>(head), Index<0>{});
  each_vector<Real, width>(all - head, [&](long i, auto piece, auto slot) ZENT_FLAT { body(head + i, piece, slot); });
}

template <class Real, int... I>
ZENT_INLINE Mask<Real> lane_numbers_over(Sequence<I...>) {
  return Mask<Real>{I...};
}
template <class Real>
ZENT_INLINE Mask<Real> lane_numbers() {
  return lane_numbers_over<Real>(typename MakeSequence<lanes<Real>>::type{});
}
template <class Real>
ZENT_INLINE Vector<Real> keep(Vector<Real> v, Mask<Real> mask) {
  return (Vector<Real>)((Mask<Real>)v & mask);
}

// The first lane of a mask that is set, or -1.
template <class Real>
ZENT_INLINE int first_lane(Mask<Real> mask) {
#if ZENT_VECTOR_BYTES == 64
  unsigned bits;
  if constexpr (sizeof(Real) == 8) {
    bits = _mm512_movepi64_mask((__m512i)mask);
  } else {
    bits = _mm512_movepi32_mask((__m512i)mask);
  }
  return bits == 0 ? -1 : __builtin_ctz(bits);
#elif ZENT_VECTOR_BYTES == 32
  unsigned bits;
  if constexpr (sizeof(Real) == 8) {
    bits = static_cast<unsigned>(_mm256_movemask_pd((__m256d)mask));
  } else {
    bits = static_cast<unsigned>(_mm256_movemask_ps((__m256)mask));
  }
  return bits == 0 ? -1 : __builtin_ctz(bits);
#else
  for (int i = 0; i < lanes<Real>; ++i) {
    if (mask[i] != 0) return i;
  }
  return -1;
#endif
}

template <class Real, int distance = lanes<Real> / 2>
ZENT_INLINE Real largest_lane(Vector<Real> v) {
  const Vector<Real> other = shuffle<Real, ExchangeAt<distance>>(v, v);
  v = v > other ? v : other;
  if constexpr (distance > 1) {
    return largest_lane<Real, distance / 2>(v);
  } else {
    return v[0];
  }
}

// One step of the butterfly exchanges blocks of `distance` elements across the diagonal.
template <int side, int unit, int distance, bool upper>
struct Exchange {
  static constexpr int at(int i) {
    const int element = i / unit;
    const bool far = (element & distance) != 0;
    if (upper) return far ? i - distance * unit + side * unit : i;
    return far ? i + side * unit : i + distance * unit;
  }
};

// Folds the lanes at and above `distance` onto those below, and stores these.
template <class Real, int distance, int from = lanes<Real> / 2>
ZENT_INLINE void store_folded(Vector<Real> v, Real* sums) {
  v += shuffle<Real, ExchangeAt<from>>(v, v);
  if constexpr (from > distance) {
    store_folded<Real, distance, from / 2>(v, sums);
  } else {
    Part<Real>(distance).store(sums, v);
  }
}

// The lanes of each of `count` vectors summed; v is used up. Pairs are halved together: fewer moves than one by one.
template <class Real, int count, int distance = 1>
ZENT_INLINE void sum_each(Vector<Real>* v, Real* sums) {
  constexpr int side = lanes<Real>;
  if constexpr (count > 1 && distance < side) {
    unroll<count / 2>([&](auto i) ZENT_FLAT {
      const Vector<Real> a = v[2 * i], b = v[2 * i + 1];
      v[i] = shuffle<Real, Exchange<side, 1, distance, true>>(a, b) + shuffle<Real, Exchange<side, 1, distance, false>>(a, b);
    });
    sum_each<Real, count / 2, distance * 2>(v, sums);
  } else {
    unroll<count>([&](auto i) ZENT_FLAT {
      if constexpr (distance == side) {
        Whole<Real>{}.store(sums + i * side, v[i]);
      } else {
        store_folded<Real, distance>(v[i], sums + i * distance);
      }
    });
  }
}

}  // namespace zent::fast::ZENT_LEVEL
