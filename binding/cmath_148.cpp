// GQUAD: points and weights of Gauss rules.
#include "binding/routines.hpp"
#include "zent.h"

namespace zent::binding {

namespace {

enum { n_position = 2, first, second, hermite, jacobi, laguerre, cosh, fixed, low_fixed, high_fixed, points, weights, unused };
constexpr int position_count = 15;

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"N", Kind::required, Type::integer, "number of points"},
    {"CHEBYSHEV_FIRST", Kind::optional, Type::integer, "given: weight (1 - x^2)^(-1/2)", ZENT_CHEBYSHEV_FIRST, Pass::flag},
    {"CHEBYSHEV_SECOND", Kind::optional, Type::integer, "given: weight (1 - x^2)^(1/2)", ZENT_CHEBYSHEV_SECOND, Pass::flag},
    {"HERMITE", Kind::optional, Type::integer, "given: weight exp(-x^2)", ZENT_HERMITE, Pass::flag},
    {"JACOBI", Kind::optional, Type::real, "alpha and beta of the weight (1 - x)^alpha (1 + x)^beta", ZENT_JACOBI_ADR,
     Pass::address},
    {"GEN_LAGUERRE", Kind::optional, Type::real, "alpha of the weight x^alpha exp(-x)", ZENT_GEN_LAGUERRE_ADR, Pass::address},
    {"COSH", Kind::optional, Type::integer, "given: weight 1/cosh(x)"},
    {"FIXED_POINT", Kind::optional, Type::real, "a point that the rule must have", ZENT_FIXED_POINT_ADR, Pass::address},
    {"FIRST_FIXED", Kind::optional, Type::real, "with SECOND_FIXED: the two points that the rule must have",
     ZENT_TWO_FIXED_POINTS_ADR, Pass::address},
    {"SECOND_FIXED", Kind::optional, Type::real, "the second of them", continues, Pass::address},
    {"POINTS", Kind::output, Type::real, "array of N: the points, ascending"},
    {"WEIGHTS", Kind::output, Type::real, "array of N: their weights"},
    unused_position,
};
static_assert(sizeof positions / sizeof positions[0] == position_count && unused + 1 == position_count);

const char* refusal(const Arguments& a) {
  if (a.present[jacobi] && a.count[jacobi] != 2) return "GQUAD: argument JACOBI must have two elements, alpha and beta";
  if (a.present[low_fixed] != a.present[high_fixed]) return "GQUAD: arguments FIRST_FIXED and SECOND_FIXED go together";
  const long n = a.integer(n_position);
  if (n < 1) return nullptr;
  for (int k : {points, weights}) {
    if (a.data[k] == nullptr || a.count[k] < n) return "GQUAD: arguments POINTS and WEIGHTS must be arrays of N elements";
  }
  return nullptr;
}

}  // namespace

const Routine routine_148 = {148, "GQUAD", true, position_count, positions};

long mathstat_148(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("GQUAD");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_148, argc, argv, arguments)) return 0;
  if (const char* text = refusal(arguments)) {
    refuse(text);
    return 0;
  }
  Words words;
  words.add(arguments.integer(n_position)).add(arguments.data[points]).add(arguments.data[weights]);
  arguments.add_options(words);
  const bool with_cosh = arguments.present[cosh];
  if (with_cosh) words.option(ZENT_COSH);
  words.end();
  void* function =
      arguments.is_double() ? reinterpret_cast<void*>(zent_d_gauss_quad_rule) : reinterpret_cast<void*>(zent_f_gauss_quad_rule);
  // The number behind ZENT_COSH travels in a register of its own, beside the words.
  if (with_cosh) {
    words.call<void>(function, 0.0);
  } else {
    words.call<void>(function);
  }
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
