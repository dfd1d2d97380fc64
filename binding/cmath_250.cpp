// BINOMIALCOEF: binomial coefficients, element by element.
#include "binding/elements.hpp"
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

}  // namespace

const Routine routine_250 = {250, "BINOMIALCOEF", true, position_count, positions};

// The error state read is that of the other half: bad elements come back as not-a-number.
long mathstat_250(int argc, ORV_VARIABLE** argv, char*) {
  return each_element(routine_250, argc, argv, true, Count::of_array, n_position, {m_position, result},
                      "BINOMIALCOEF: M and RESULT must have as many elements as N",
                      [](const Arguments& a, long count, auto real) {
                        using Real = decltype(real);
                        const auto function = form_of<Real>(zents_d_binomial_coefficient, zents_f_binomial_coefficient);
                        for (long i = 0; i < count; ++i) {
                          a.array<Real>(result)[i] = function(a.array<long>(n_position)[i], a.array<long>(m_position)[i]);
                        }
                      });
}

}  // namespace zent::binding
