// TCDF: the non-central t distribution function and its inverse, element by element.
#include "binding/elements.hpp"
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

}  // namespace

const Routine routine_263 = {263, "TCDF", true, position_count, positions};

long mathstat_263(int argc, ORV_VARIABLE** argv, char*) {
  return each_element(routine_263, argc, argv, false, Count::of_array, t, {df, delta, result},
                      "TCDF: DF, DELTA and RESULT must have as many elements as T",
                      [](const Arguments& a, long count, auto real) {
                        using Real = decltype(real);
                        void (*function)(long, const Real*, const long*, const Real*, Real*) = distributions::non_central_t_cdf;
                        if (a.present[flag] && a.integer(flag) != 0) function = distributions::non_central_t_inv_cdf;
                        function(count, a.array<Real>(t), a.array<long>(df), a.array<Real>(delta), a.array<Real>(result));
                      });
}

}  // namespace zent::binding
