// POISSONCDF: the Poisson distribution function, element by element.
#include "binding/elements.hpp"
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

}  // namespace

const Routine routine_172 = {172, "POISSONCDF", true, position_count, positions};

long mathstat_172(int argc, ORV_VARIABLE** argv, char*) {
  return each_element(routine_172, argc, argv, false, Count::value, count, {k, theta, result},
                      "POISSONCDF: K, THETA and RESULT must have at least COUNT elements",
                      [](const Arguments& a, long elements, auto real) {
                        using Real = decltype(real);
                        distributions::poisson_cdf(elements, a.array<long>(k), a.array<Real>(theta), a.array<Real>(result));
                      });
}

}  // namespace zent::binding
