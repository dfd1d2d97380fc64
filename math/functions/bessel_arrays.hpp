// Loops over arrays of complex arguments for the sequences of Bessel functions.
#pragma once

#include "zent/base.h"

namespace zent::functions {

using SequenceInSingle = zent_f_complex* (*)(const float*, const zent_f_complex*, long, ...);
using SequenceInDouble = zent_d_complex* (*)(const double*, const zent_d_complex*, long, ...);

// out[k n ... k n + n - 1] = function(&order, &z[k], n) for count elements; `function` is one of the ..._adr forms. Results,
// messages and the error state left behind are those of one call for each element, which here needs no trap: the storage is known
// to be there. What a failing call leaves alone holds not-a-numbers. With n = 1 the result may be z.
void apply(SequenceInDouble function, double order, const zent_d_complex* z, long count, long n, zent_d_complex* out);
void apply(SequenceInSingle function, float order, const zent_f_complex* z, long count, long n, zent_f_complex* out);

}  // namespace zent::functions
