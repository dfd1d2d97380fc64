// BINOMIALCOEF: binomial coefficients, element by element.
#include "binding/routines.hpp"
#include "zent/functions.h"

namespace zent::binding {

namespace {

enum { n_position = 2, m_position, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"N", Kind::required, Type::integer, "size of the set, an array whose count is the number of elements"},
    {"M", Kind::required, Type::integer, "size of the subsets, as many"},
    {"RESULT", Kind::output, Type::real, "array of as many elements"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

template <class Real>
void run(const Arguments& a, Real (*function)(long, long)) {
  for (long i = 0; i < a.count[n_position]; ++i) {
    a.array<Real>(result)[i] = function(a.array<long>(n_position)[i], a.array<long>(m_position)[i]);
  }
}

}  // namespace

const Routine routine_250 = {250, "BINOMIALCOEF", true, position_count, positions};

long mathstat_250(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("BINOMIALCOEF");
  if (failed != 0) return failed;
  Arguments a;
  if (!read_arguments(routine_250, argc, argv, a)) return 0;
  if (a.data[result] == nullptr || a.count[m_position] < a.count[n_position] || a.count[result] < a.count[n_position]) {
    refuse("BINOMIALCOEF: M and RESULT must have as many elements as N");
    return 0;
  }
  if (a.is_double()) {
    run(a, zents_d_binomial_coefficient);
  } else {
    run(a, zents_f_binomial_coefficient);
  }
  long code;
  cmast_opi_clear_errors(1, &code, a.status, 1);  // the error state of the other half: bad elements come back as not-a-number
  return 0;
}

}  // namespace zent::binding
