// The inverse of R^T R from its triangular factor.
#pragma once

#include <algorithm>

#include "runtime/kernels/fast.hpp"

namespace zent::optimize {

// covb := s2 (R^T R)^-1, column-major; covb may be r. A row of R with a zero on the diagonal is passed over: what stands there
// counts as 0, and so do its row and column of covb.
template <class Real>
void rcovb(long n, const Real* r, long ldr, Real s2, Real* covb, long ldcovb) {
  for (long j = 0; j < n; ++j) std::copy(r + j * ldr, r + j * ldr + j + 1, covb + j * ldcovb);
  // The inverse of R column by column in place.
  for (long j = 0; j < n; ++j) {
    Real* const column = covb + j * ldcovb;
    const Real pivot = column[j];
    if (pivot == 0) {
      std::fill(column, column + j + 1, Real(0));
      continue;
    }
    for (long i = 0; i < j; ++i) {  // column := R^-1 column with the part of the inverse that is there
      if (covb[i + i * ldcovb] == 0) {
        column[i] = 0;
        continue;
      }
      Real sum = 0;
      for (long k = i; k < j; ++k) sum += covb[i + k * ldcovb] * column[k];
      column[i] = -sum / pivot;
    }
    column[j] = 1 / pivot;
  }
  // R^-1 R^-T, upper part first, then mirrored.
  for (long i = 0; i < n; ++i) {
    for (long j = i; j < n; ++j) {
      Real sum = 0;
      for (long k = j; k < n; ++k) sum += covb[i + k * ldcovb] * covb[j + k * ldcovb];
      covb[i + j * ldcovb] = s2 * sum;
    }
  }
  for (long j = 0; j < n; ++j) {
    for (long i = 0; i < j; ++i) covb[j + i * ldcovb] = covb[i + j * ldcovb];
  }
}

}  // namespace zent::optimize

#define ZENT_RCOVB_ENTRIES(H)                                                                               \
  extern "C" void H##_rcovb(long ncoef, const float* r, long ldr, float s2, float* covb, long ldcovb) {     \
    zent::optimize::rcovb(ncoef, r, ldr, s2, covb, ldcovb);                                                 \
  }                                                                                                         \
  extern "C" void H##_drcovb(long ncoef, const double* r, long ldr, double s2, double* covb, long ldcovb) { \
    zent::optimize::rcovb(ncoef, r, ldr, s2, covb, ldcovb);                                                 \
  }
