#include "math/random/shift_register.hpp"

#include <algorithm>
#include <cstdlib>

#include "math/random/lanes.hpp"

namespace zent {
namespace {

constexpr int stages = 521;  // of the bit sequence: the trinomial x^521 + x^32 + 1
constexpr int lag = 32;
constexpr int span = 2 * stages;

using Bits = unsigned char[span];

void extend(Bits& bits) {
  for (int i = stages; i < span; ++i) bits[i] = bits[i - lag] ^ bits[i - stages];
}

// Signs of a congruential sequence modulo 2^32.
void first_phase(unsigned seed, Bits& bits) {
  for (int i = 0; i < stages; ++i) {
    seed *= 69069U;
    bits[i] = static_cast<int>(seed) > 0;
  }
  extend(bits);
}

// A polynomial over the two-element field whose exponent is the distance between two phases: 520 squarings modulo the trinomial,
// every second one with a multiplication by x.
void phase_polynomial(Bits& a) {
  std::fill_n(a, span, static_cast<unsigned char>(0));
  a[1] = 1;
  for (int j = 1; j < stages; ++j) {
    const int place = j % 2 == 0 ? 1 : 0;
    for (int k = stages - 1; k >= 0; --k) {
      const unsigned char bit = a[k];
      a[2 * k + place] = bit;
      a[2 * k + 1 - place] = 0;
    }
    for (int i = stages; i >= 1; --i) {
      const unsigned char carry = a[i + stages - 1];
      a[i - 1] ^= carry;
      a[i + 488] ^= carry;
      a[i + stages - 1] = 0;
    }
  }
}

// The sequence `from`, shifted by the polynomial's exponent.
void next_phase(const Bits& polynomial, const Bits& from, Bits& to) {
  for (int i = 0; i < stages; ++i) {
    unsigned char bit = 0;
    for (int k = 0; k < stages; ++k) bit ^= static_cast<unsigned char>(polynomial[k] & from[k + i]);
    to[i] = bit;
  }
  extend(to);
}

template <class Real>
long draw(ShiftRegister& state, long n, Real scale, Real* r) {
  long last = 0;
  for (long done = 0; done < n;) {
    // As many words as come before either cursor wraps and before one reads what the other has written.
    const long apart = std::labs(state.p - state.q);
    long part = std::min({n - done, shift_register_words + 1 - std::max(state.p, state.q), apart == 0 ? 1 : apart});
    long* p = state.table + state.p - 1;
    last = p[part - 1] | 1;
    shift_register_block(p, state.table + state.q - 1, part, scale, r + done);
    state.p = state.p + part > shift_register_words ? state.p + part - shift_register_words : state.p + part;
    state.q = state.q + part > shift_register_words ? state.q + part - shift_register_words : state.q + part;
    done += part;
  }
  return last;
}

}  // namespace

void build_shift_register(unsigned seed, ShiftRegister& state) {
  Bits b, c, d, a;
  first_phase(seed, b);
  phase_polynomial(a);
  next_phase(a, b, c);
  next_phase(a, c, d);
  unsigned char t[shift_register_words];
  for (int i = 0; i < stages; ++i) {
    t[3 * i] = b[i];
    t[3 * i + 1] = c[i];
    t[3 * i + 2] = d[i];
  }
  long p = 0, q = 1467;
  for (long& word : state.table) {
    word = 0;
    for (int b_round = 1; b_round <= 32; ++b_round) {
      if (t[p] != 0 && b_round < 32) word += 1L << (31 - b_round);  // the 32nd bit has no weight
      t[p] ^= t[q];
      p = p + 1 == shift_register_words ? 0 : p + 1;
      q = q + 1 == shift_register_words ? 0 : q + 1;
    }
  }
  state.p = p + 1;
  state.q = q + 1;
}

long draw_shift_register(ShiftRegister& state, long n, double scale, double* r) {
  return draw(state, n, scale, r);
}
long draw_shift_register(ShiftRegister& state, long n, float scale, float* r) {
  return draw(state, n, scale, r);
}

}  // namespace zent
