// The C entries of the nonnegative definite kernels, stamped once in each half.
#pragma once

#include "math/linalg/cholesky_nonneg.hpp"
#include "zent/linear.h"

#define ZENT_NONNEG_FORM(Half, H, p, Real)                                                                                   \
  extern "C" void H##_##p##chfac(long n, const Real* a, long lda, Real tol, long* irank, Real* r, long ldr) {                \
    zent::linalg::chfac<Half, Real>(n, a, lda, tol, irank, r, ldr);                                                          \
  }                                                                                                                          \
  extern "C" void H##_##p##girts(long n, const Real* r, long ldr, long nb, const Real* b, long ldb, long ipath, long* irank, \
                                 Real* x, long ldx, Real* rinv, long ldrinv) {                                               \
    zent::linalg::girts<Half, Real>(n, r, ldr, nb, b, ldb, ipath, irank, x, ldx, rinv, ldrinv);                              \
  }
#define ZENT_NONNEG_ENTRIES(Half, H) \
  ZENT_NONNEG_FORM(Half, H, , float) \
  ZENT_NONNEG_FORM(Half, H, d, double)
