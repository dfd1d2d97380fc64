// BINOMIALCDF: the binomial distribution function, element by element.
#include "binding/binomial_positions.hpp"
#include "stat/distributions/arrays.hpp"

namespace zent::binding {

const Routine routine_111 = {111, "BINOMIALCDF", true, binomial_position_count, binomial_positions};

long mathstat_111(int argc, ORV_VARIABLE** argv, char*) {
  return each_binomial(routine_111, argc, argv, "BINOMIALCDF: N, P and RESULT must have as many elements as K",
                       [](auto... in) { distributions::binomial_cdf(in...); });
}

}  // namespace zent::binding
