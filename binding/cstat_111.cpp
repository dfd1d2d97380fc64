// BINOMIALCDF: the binomial distribution function, element by element.
#include "binding/routines.hpp"
#include "stat/distributions/arrays.hpp"

namespace zent::binding {

namespace {

enum { k = 2, n, p, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"K", Kind::required, Type::integer, "number of successes, an array whose count is the number of elements"},
    {"N", Kind::required, Type::integer, "number of trials, as many"},
    {"P", Kind::required, Type::real, "probability of success, as many"},
    {"RESULT", Kind::output, Type::real, "array of as many elements"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

template <class Real>
void run(const Arguments& a) {
  distributions::binomial_cdf(a.count[k], a.array<long>(k), a.array<long>(n), a.array<Real>(p), a.array<Real>(result));
}

}  // namespace

const Routine routine_111 = {111, "BINOMIALCDF", true, position_count, positions};

long mathstat_111(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("BINOMIALCDF");
  if (failed != 0) return failed;
  Arguments a;
  if (!read_arguments(routine_111, argc, argv, a)) return 0;
  for (int position : {n, p, result}) {
    if (a.data[position] != nullptr && a.count[position] >= a.count[k]) continue;
    refuse("BINOMIALCDF: N, P and RESULT must have as many elements as K");
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
