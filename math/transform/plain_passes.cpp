// One pass by its definition, for every radix: what the passes of the engines are tested against.
#include "math/transform/roots.hpp"
#include "zent.h"

namespace zent::transform {

namespace {

template <class Real>
void plain_pass(long ip, long ido, long l1, const Real* cc, Real* ch, const Real* wa, int sign) {
  for (long k = 0; k < l1; ++k) {
    for (long j = 0; j < ip; ++j) {
      for (long i = 0; i < ido; ++i) {
        Real re = 0, im = 0;
        for (long m = 0; m < ip; ++m) {
          const Root root = root_of_unity(j * m % ip, ip);
          const Real c = static_cast<Real>(root.re), s = static_cast<Real>(sign < 0 ? -root.im : root.im);
          const Real* x = cc + 2 * (i + ido * (m + ip * k));
          re += c * x[0] - s * x[1];
          im += c * x[1] + s * x[0];
        }
        Real c = 1, s = 0;
        if (j > 0 && i > 0) {
          c = wa[2 * ((j - 1) * ido + i)];
          s = wa[2 * ((j - 1) * ido + i) + 1];
        }
        if (sign < 0) s = -s;
        Real* y = ch + 2 * (i + ido * (k + l1 * j));
        y[0] = c * re - s * im;
        y[1] = c * im + s * re;
      }
    }
  }
}

}  // namespace

}  // namespace zent::transform

#define ZENT_FORM(PREFIX, Real)                                                                                       \
  extern "C" void zent_##PREFIX##f5tcf(long ido, long l1, Real* cc, Real* ch, Real* wa, int sign) {                   \
    zent::transform::plain_pass(3, ido, l1, cc, ch, wa, sign);                                                        \
  }                                                                                                                   \
  extern "C" void zent_##PREFIX##f6tcf(long ido, long l1, Real* cc, Real* ch, Real* wa, int sign) {                   \
    zent::transform::plain_pass(4, ido, l1, cc, ch, wa, sign);                                                        \
  }                                                                                                                   \
  extern "C" void zent_##PREFIX##f7tcf(long ido, long l1, Real* cc, Real* ch, Real* wa, int sign) {                   \
    zent::transform::plain_pass(5, ido, l1, cc, ch, wa, sign);                                                        \
  }                                                                                                                   \
  extern "C" void zent_##PREFIX##f8tcf(long ido, long ip, long l1, Real* cc, Real* ch, Real* wa, int sign, int* na) { \
    zent::transform::plain_pass(ip, ido, l1, cc, ch, wa, sign);                                                       \
    *na = 1;                                                                                                          \
  }
ZENT_FORM(, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
