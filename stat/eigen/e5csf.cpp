// The symmetric eigensolver of the statistics half, as its families call it.
#include "math/eigen/sym_paths.hpp"
#include "runtime/envelope.hpp"
#include "zent/eigen.h"

namespace zent::eigen {

namespace {

template <class Real>
void l_sorted_system(long n, const Real* a, long lda, Real* eval, Real* evec, long ldevec) {
  if (n < 1) return;
  Problem<Real> problem;
  Real* work = scratch<Stat, Real>(square(n));
  Real* v = scratch<Stat, Real>(square(n));
  Real* key = scratch<Stat, Real>(n);
  long* order = scratch<Stat, long>(n);
  bool enough = work && v && key && order && make_problem<Stat>(n, work, n, problem);
  for (long j = 0; enough && j < n; ++j) {
    for (long i = 0; i <= j; ++i) work[j + i * n] = a[i + j * lda];
  }
  enough = enough && unsorted_vectors<Stat>(problem, v, n);
  if (!enough) {
    raise<Stat>(5, STAT_OUT_OF_MEMORY);
    return;
  }
  for (long i = 0; i < n; ++i) {
    key[i] = -problem.d[i];
    order[i] = i;
  }
  kernel::sort_with_index<Stat, Real>(n, key, key, order);
  turn_vectors(n, n, v, n);
  for (long j = 0; j < n; ++j) {
    eval[j] = problem.d[order[j]];
    kernel::copy(n, v + order[j] * n, 1, evec + j * ldevec, 1);
  }
}

}  // namespace

}  // namespace zent::eigen

#define ZENT_FORM(D, Real)                                                                                                    \
  extern "C" void zents_##D##e5csf(long n, const Real* a, long lda, Real* eval, Real* evec, long ldevec) {                    \
    zent::public_call<zent::Stat>("zents_" #D "e5csf", [=] { zent::eigen::l_sorted_system(n, a, lda, eval, evec, ldevec); }); \
  }
ZENT_FORM(, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
