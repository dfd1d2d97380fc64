// Loops over arrays of arguments. For the functions of this library that have a plain form, most elements need no frame and
// several are computed at a time; the results and the messages are those of one call for each element.
#pragma once

namespace zent::functions {

// out[i] = function(x[i]), (x[i], y[i]) or (x[i], y[i], z[i]) for n elements; `function` is a function of that many reals.
void apply(void* function, int arguments, long n, const double* x, const double* y, const double* z, double* out);
void apply(void* function, int arguments, long n, const float* x, const float* y, const float* z, float* out);

}  // namespace zent::functions
