// INTFCN_QMC: integral of a user function over a box by quasi-Monte Carlo.
#include "binding/box_integral.hpp"

namespace zent::binding {

namespace {

enum { base = box::own, skip, result, err_est, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    box::function_position,
    {"NDIM", Kind::required, Type::integer, "dimension, at least 1"},
    box::lower_position,
    box::upper_position,
    box::err_abs_position,
    box::err_rel_position,
    {"MAX_EVALS", Kind::optional, Type::integer, "most calls of the function beyond the first 1000", ZENT_MAX_EVALS, Pass::value},
    {"BASE", Kind::optional, Type::integer, "base of the sequence: a prime, at least NDIM", ZENT_BASE, Pass::value},
    {"SKIP", Kind::optional, Type::integer, "points to leave out at the start, at least 1", ZENT_SKIP, Pass::value},
    box::result_position,
    box::err_est_position,
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

ORV_IDENT s_idUserRoutine;

}  // namespace

const Routine routine_401 = {401, "INTFCN_QMC", true, position_count, positions};

long mathstat_401(int argc, ORV_VARIABLE** argv, char*) {
  return box::wrapper<s_idUserRoutine>(routine_401, argc, argv, result, zent_f_int_fcn_qmc, zent_d_int_fcn_qmc);
}

}  // namespace zent::binding
