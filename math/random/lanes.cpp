#include "math/random/lanes.hpp"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace zent {
namespace {

using Word = unsigned long;

// x mod 2^31 - 1 for x below 2^62: the high part counts once more, since 2^31 is 1.
unsigned reduce(Word x) {
  const Word sum = (x & congruential_modulus) + (x >> 31);
  return static_cast<unsigned>(sum >= congruential_modulus ? sum - congruential_modulus : sum);
}

#if defined(__x86_64__)

constexpr int lanes = 16;

// Four vectors of four states, each step multiplies all by the sixteenth power.
__attribute__((target("avx2"))) void states_avx2(const int* first, unsigned power, long blocks, int* states) {
  const __m256i mask = _mm256_set1_epi64x(congruential_modulus), factor = _mm256_set1_epi64x(power);
  const __m256i even = _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6);
  __m256i s[4];
  for (int v = 0; v < 4; ++v) s[v] = _mm256_cvtepi32_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i*>(first + 4 * v)));
  for (long block = 0; block < blocks; ++block, states += lanes) {
    for (int v = 0; v < 4; ++v) {
      const __m256i product = _mm256_mul_epu32(s[v], factor);
      const __m256i sum = _mm256_add_epi64(_mm256_and_si256(product, mask), _mm256_srli_epi64(product, 31));
      // Below the modulus the difference wraps to a great number, so the smaller of the two is the remainder.
      s[v] = _mm256_min_epu32(sum, _mm256_and_si256(_mm256_sub_epi64(sum, mask), _mm256_set1_epi64x(0xFFFFFFFF)));
      const __m256i packed = _mm256_permutevar8x32_epi32(s[v], even);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(states + 4 * v), _mm256_castsi256_si128(packed));
    }
  }
}

__attribute__((target("avx2"))) void scale_avx2(const int* states, long n, double scale, double* r) {
  const __m256d factor = _mm256_set1_pd(scale);
  long k = 0;
  for (; k + 4 <= n; k += 4) {
    const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(states + k));
    _mm256_storeu_pd(r + k, _mm256_mul_pd(_mm256_cvtepi32_pd(s), factor));
  }
  for (; k < n; ++k) r[k] = states[k] * scale;
}

__attribute__((target("avx2"))) void scale_avx2(const int* states, long n, double scale, float* r) {
  const __m256d factor = _mm256_set1_pd(scale);
  long k = 0;
  for (; k + 4 <= n; k += 4) {
    const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(states + k));
    _mm_storeu_ps(r + k, _mm256_cvtpd_ps(_mm256_mul_pd(_mm256_cvtepi32_pd(s), factor)));
  }
  for (; k < n; ++k) r[k] = static_cast<float>(states[k] * scale);
}

// Words have 31 bits: their low halves are the whole words.
__attribute__((target("avx2"))) __m128i step_words_avx2(long* p, const long* q) {
  const __m256i w = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
  const __m256i tap = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(q));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_xor_si256(w, tap));
  const __m256i odd = _mm256_or_si256(w, _mm256_set1_epi64x(1));
  return _mm256_castsi256_si128(_mm256_permutevar8x32_epi32(odd, _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6)));
}

__attribute__((target("avx2"))) long register_avx2(long* p, const long* q, long n, double scale, double* r) {
  const __m256d factor = _mm256_set1_pd(scale);
  long k = 0;
  for (; k + 4 <= n; k += 4) _mm256_storeu_pd(r + k, _mm256_mul_pd(_mm256_cvtepi32_pd(step_words_avx2(p + k, q + k)), factor));
  return k;
}

__attribute__((target("avx2"))) long register_avx2(long* p, const long* q, long n, float scale, float* r) {
  const __m128 factor = _mm_set1_ps(scale);
  long k = 0;
  for (; k + 4 <= n; k += 4) _mm_storeu_ps(r + k, _mm_mul_ps(_mm_cvtepi32_ps(step_words_avx2(p + k, q + k)), factor));
  return k;
}

bool wide_vectors() {
  static const bool have = __builtin_cpu_supports("avx2");
  return have;
}

#endif

template <class Real>
void scale_plain(const int* states, long n, double scale, Real* r) {
  for (long k = 0; k < n; ++k) r[k] = static_cast<Real>(states[k] * scale);
}

template <class Real>
void register_plain(long* p, const long* q, long n, Real scale, Real* r) {
  for (long k = 0; k < n; ++k) {
    const long word = p[k];
    p[k] = word ^ q[k];
    r[k] = static_cast<Real>(word | 1) * scale;
  }
}

template <class Real>
void scale_any(const int* states, long n, double scale, Real* r) {
#if defined(__x86_64__)
  if (wide_vectors()) return scale_avx2(states, n, scale, r);
#endif
  scale_plain(states, n, scale, r);
}

// The vector form reads 32 bits of a word, so longer words (a table of the caller's may hold them) take the plain form.
template <class Real>
void register_any(long* p, const long* q, long n, Real scale, Real* r) {
  long done = 0;
#if defined(__x86_64__)
  Word all = 0;
  for (long k = 0; k < n; ++k) all |= static_cast<Word>(p[k]);
  if (wide_vectors() && all <= congruential_modulus) done = register_avx2(p, q, n, scale, r);
#endif
  register_plain(p + done, q + done, n - done, scale, r + done);
}

}  // namespace

void congruential_states_plain(unsigned state, unsigned multiplier, long n, int* states) {
  for (long k = 0; k < n; ++k) {
    state = reduce(static_cast<Word>(state) * multiplier);
    states[k] = static_cast<int>(state);
  }
}

void congruential_states(unsigned state, unsigned multiplier, long n, int* states) {
#if defined(__x86_64__)
  if (n >= 2 * lanes && wide_vectors()) {
    unsigned power = multiplier;
    for (int square = 1; square < lanes; square *= 2) power = reduce(static_cast<Word>(power) * power);
    congruential_states_plain(state, multiplier, lanes, states);
    const long blocks = n / lanes - 1;
    states_avx2(states, power, blocks, states + lanes);
    const long done = (blocks + 1) * lanes;
    return congruential_states_plain(static_cast<unsigned>(states[done - 1]), multiplier, n - done, states + done);
  }
#endif
  congruential_states_plain(state, multiplier, n, states);
}

void scale_states(const int* states, long n, double scale, double* r) {
  scale_any(states, n, scale, r);
}
void scale_states(const int* states, long n, double scale, float* r) {
  scale_any(states, n, scale, r);
}
void shift_register_block(long* p, const long* q, long n, double scale, double* r) {
  register_any(p, q, n, scale, r);
}
void shift_register_block(long* p, const long* q, long n, float scale, float* r) {
  register_any(p, q, n, scale, r);
}

}  // namespace zent
