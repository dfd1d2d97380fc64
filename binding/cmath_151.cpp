// INTFCNHYPER: integral of a user function over a box by product Gauss rules.
#include "binding/box_integral.hpp"

namespace zent::binding {

namespace {

enum { result = box::own, err_est, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    box::function_position,
    {"NDIM", Kind::required, Type::integer, "dimension, 1 to 20"},
    box::lower_position,
    box::upper_position,
    box::err_abs_position,
    box::err_rel_position,
    {"MAX_EVALS", Kind::optional, Type::integer, "most calls of the function", ZENT_MAX_EVALS, Pass::value},
    box::result_position,
    box::err_est_position,
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

ORV_IDENT s_idUserRoutine;

}  // namespace

const Routine routine_151 = {151, "INTFCNHYPER", true, position_count, positions};

long mathstat_151(int argc, ORV_VARIABLE** argv, char*) {
  return box::wrapper<s_idUserRoutine>(routine_151, argc, argv, result, zent_f_int_fcn_hyper_rect, zent_d_int_fcn_hyper_rect);
}

}  // namespace zent::binding
