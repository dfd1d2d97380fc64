// HYPERGEOCDF: the hypergeometric distribution function, element by element.
#include "binding/elements.hpp"
#include "stat/distributions/arrays.hpp"

namespace zent::binding {

namespace {

enum { k = 2, n, m, l, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"K", Kind::required, Type::integer, "number of defective items found, an array whose count is the number of elements"},
    {"N", Kind::required, Type::integer, "size of the sample, as many"},
    {"M", Kind::required, Type::integer, "defective items in the lot, as many"},
    {"L", Kind::required, Type::integer, "size of the lot, as many"},
    {"RESULT", Kind::output, Type::real, "array of as many elements"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

}  // namespace

const Routine routine_149 = {149, "HYPERGEOCDF", true, position_count, positions};

long mathstat_149(int argc, ORV_VARIABLE** argv, char*) {
  return each_element(routine_149, argc, argv, false, Count::of_array, k, {n, m, l, result},
                      "HYPERGEOCDF: N, M, L and RESULT must have as many elements as K",
                      [](const Arguments& a, long count, auto real) {
                        distributions::hyper_cdf(count, a.array<long>(k), a.array<long>(n), a.array<long>(m), a.array<long>(l),
                                                 a.array<decltype(real)>(result));
                      });
}

}  // namespace zent::binding
