// POISSONCDF: the Poisson distribution function, element by element.
#include "binding/routines.hpp"
#include "stat/distributions/arrays.hpp"

namespace zent::binding {

namespace {

enum { k = 2, theta, count, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"K", Kind::required, Type::integer, "number of events"},
    {"THETA", Kind::required, Type::real, "mean"},
    {"COUNT", Kind::required, Type::integer, "number of elements"},
    {"RESULT", Kind::output, Type::real, "array of COUNT elements"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

template <class Real>
void run(const Arguments& a) {
  distributions::poisson_cdf(a.integer(count), a.array<long>(k), a.array<Real>(theta), a.array<Real>(result));
}

}  // namespace

const Routine routine_172 = {172, "POISSONCDF", true, position_count, positions};

long mathstat_172(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("POISSONCDF");
  if (failed != 0) return failed;
  Arguments a;
  if (!read_arguments(routine_172, argc, argv, a)) return 0;
  for (int position : {k, theta, result}) {
    if (a.data[position] != nullptr && a.count[position] >= a.integer(count)) continue;
    refuse("POISSONCDF: K, THETA and RESULT must have at least COUNT elements");
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
