// The positions of the two routines of the binomial distribution.
#pragma once

#include "binding/elements.hpp"

namespace zent::binding {

enum { binomial_k = 2, binomial_n, binomial_p, binomial_result, binomial_position_count };

inline constexpr Position binomial_positions[] = {
    precision_position,
    status_position,
    {"K", Kind::required, Type::integer, "number of successes, an array whose count is the number of elements"},
    {"N", Kind::required, Type::integer, "number of trials, as many"},
    {"P", Kind::required, Type::real, "probability of success, as many"},
    {"RESULT", Kind::output, Type::real, "array of as many elements"},
};
static_assert(sizeof binomial_positions / sizeof binomial_positions[0] == binomial_position_count);

// `function` is called with the number of elements and the four arrays.
template <class Function>
long each_binomial(const Routine& routine, int argc, ORV_VARIABLE** argv, const char* refusal, Function function) {
  return each_element(routine, argc, argv, false, Count::of_array, binomial_k, {binomial_n, binomial_p, binomial_result}, refusal,
                      [=](const Arguments& a, long count, auto real) {
                        using Real = decltype(real);
                        function(count, a.array<long>(binomial_k), a.array<long>(binomial_n), a.array<Real>(binomial_p),
                                 a.array<Real>(binomial_result));
                      });
}

}  // namespace zent::binding
