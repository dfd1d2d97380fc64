// The inner loops of the uniform generators, at the speed of the processor.
#pragma once

namespace zent {

inline constexpr long congruential_modulus = 2147483647;  // 2^31 - 1

// states[k] := the state k + 1 steps of the multiplier behind `state`, for n steps. Several lanes run side by side, each stepped
// with a power of the multiplier, so the stream is that of single steps.
void congruential_states(unsigned state, unsigned multiplier, long n, int* states);
// The plain version, one step at a time: the fast one's test.
void congruential_states_plain(unsigned state, unsigned multiplier, long n, int* states);

// r[k] := states[k] scaled; the single form is formed in double and rounded.
void scale_states(const int* states, long n, double scale, double* r);
void scale_states(const int* states, long n, double scale, float* r);

// n words from p of a feedback shift register whose second tap is at q, where neither range wraps and the two do not overlap:
// r[k] := (p[k] | 1) scaled, p[k] := p[k] xor q[k].
void shift_register_block(long* p, const long* q, long n, double scale, double* r);
void shift_register_block(long* p, const long* q, long n, float scale, float* r);

}  // namespace zent
