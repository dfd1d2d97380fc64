// The generalized feedback shift register: 1563 words of 31 bits with x(n + 1563) = x(n) xor x(n + 1467).
#pragma once

namespace zent {

inline constexpr long shift_register_words = 1563;

struct ShiftRegister {
  long p, q;  // cursors, counted from 1
  long table[shift_register_words];
};

// The register from the low 32 bits of a seed: three phases of one bit sequence, interleaved.
void build_shift_register(unsigned seed, ShiftRegister& state);

// The next n words, each with its lowest bit set, scaled. Returns the last word so set.
long draw_shift_register(ShiftRegister& state, long n, double scale, double* r);
long draw_shift_register(ShiftRegister& state, long n, float scale, float* r);

}  // namespace zent
