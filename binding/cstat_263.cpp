// TCDF: the non-central t distribution function and its inverse, element by element.
#include "binding/routines.hpp"
#include "stat/distributions/arrays.hpp"

namespace zent::binding {

namespace {

enum { t = 2, df, delta, flag, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"T", Kind::required, Type::real, "argument, or probability for the inverse; its count is the number of elements"},
    {"DF", Kind::required, Type::integer, "degrees of freedom, as many"},
    {"DELTA", Kind::required, Type::real, "noncentrality, as many"},
    {"FLAG", Kind::optional, Type::integer, "not 0: the inverse function"},
    {"RESULT", Kind::output, Type::real, "array of as many elements"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

template <class Real>
void run(const Arguments& a) {
  const Real* const arguments = a.array<Real>(t);
  if (a.present[flag] && a.integer(flag) != 0) {
    distributions::non_central_t_inv_cdf(a.count[t], arguments, a.array<long>(df), a.array<Real>(delta), a.array<Real>(result));
  } else {
    distributions::non_central_t_cdf(a.count[t], arguments, a.array<long>(df), a.array<Real>(delta), a.array<Real>(result));
  }
}

}  // namespace

const Routine routine_263 = {263, "TCDF", true, position_count, positions};

long mathstat_263(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("TCDF");
  if (failed != 0) return failed;
  Arguments a;
  if (!read_arguments(routine_263, argc, argv, a)) return 0;
  for (int position : {df, delta, result}) {
    if (a.data[position] != nullptr && a.count[position] >= a.count[t]) continue;
    refuse("TCDF: DF, DELTA and RESULT must have as many elements as T");
    return 0;
  }
  if (a.is_double()) {
    run<double>(a);
  } else {
    run<float>(a);
  }
  long code;
  cmast_opi_clear_errors(0, &code, a.status, 1);
  return 0;
}

}  // namespace zent::binding
