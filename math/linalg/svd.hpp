// What a singular value decomposition on column-major arrays is asked for.
#pragma once

#include "runtime/error.hpp"
#include "zent/least_squares.h"

namespace zent::linalg {

// The digits of a job: tens 0 no left vectors, 1 all m, 2 the first min(m, n); units 1 right vectors, 0 none.
constexpr long svd_job(bool left, bool right) {
  return (left ? 20 : 0) + (right ? 1 : 0);
}

// False after an error, type 5: 3089 m or n below 1, 3090 m > lda, 1042 ldu < 1, 1043 ldv < 1, 1044 a digit of the job.
template <class Half>
bool acceptable_svd(long m, long n, long lda, long ldu, long ldv, long job) {
  const long left = job / 10, right = job % 10;
  const bool known = left >= 0 && left <= 2 && right >= 0 && right <= 1;
  if (m < 1 || n < 1) raise<Half>(5, MATH_NEED_NRA_AND_NCA_GT_ZERO, {.i = {m, n}});
  if (m > lda) raise<Half>(5, MATH_NEED_SMALLER_NRA_VALUE, {.i = {m, lda}});
  if (ldu < 1) raise<Half>(5, MATH_NEED_LDU_GT_ZERO, {.i = {ldu}});
  if (ldv < 1) raise<Half>(5, MATH_NEED_LDV_GT_ZERO, {.i = {ldv}});
  if (!known) raise<Half>(5, MATH_CONTROL_FLAG_ERROR, {.i = {left, right}});
  return m >= 1 && n >= 1 && m <= lda && ldu >= 1 && ldv >= 1 && known;
}

}  // namespace zent::linalg
