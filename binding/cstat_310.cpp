// BINOMIALPDF: binomial probabilities, element by element.
#include "binding/binomial_positions.hpp"
#include "stat/distributions/arrays.hpp"

namespace zent::binding {

const Routine routine_310 = {310, "BINOMIALPDF", true, binomial_position_count, binomial_positions};

long mathstat_310(int argc, ORV_VARIABLE** argv, char*) {
  return each_binomial(routine_310, argc, argv, "BINOMIALPDF: N, P and RESULT must have as many elements as K",
                       [](auto... in) { distributions::binomial_pdf(in...); });
}

}  // namespace zent::binding
