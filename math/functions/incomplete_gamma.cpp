// The incomplete gamma function of the mathematics half.
#include "math/functions/incomplete_gamma.hpp"

#include "zent/functions.h"

extern "C" float zent_f_gamma_incomplete(float a, float x) {
  return zent::functions::gamma_incomplete<zent::Math>(a, x);
}
extern "C" double zent_d_gamma_incomplete(double a, double x) {
  return zent::functions::gamma_incomplete<zent::Math>(a, x);
}
