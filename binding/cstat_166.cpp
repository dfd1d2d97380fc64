// NORM: the norm of a vector, or of the difference of two. It reads the error state of the statistics half, where the library
// function leaves nothing, so it never raises: a call that failed stores not-a-number.
#include "binding/band_positions.hpp"

namespace zent::binding {

namespace {

enum { length = 2, vector, second, one_norm, inf_norm, index, result, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"N", Kind::required, Type::integer, "length of the vector"},
    {"X", Kind::required, Type::real, "the vector"},
    {"Y", Kind::optional, Type::real, "a second vector: the norm is that of X - Y", ZENT_SECOND_VECTOR, Pass::address},
    {"ONE_NORM", Kind::optional, Type::any, "present: sum of magnitudes", ZENT_ONE_NORM, Pass::flag},
    {"INF_NORM", Kind::optional, Type::any, "present: largest magnitude; default: Euclidean norm"},
    {"INDEX", Kind::optional, Type::integer, "with INF_NORM: receives the index of the largest magnitude, from 0"},
    {"RESULT", Kind::output, Type::real, "the norm"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

}  // namespace

const Routine routine_166 = {166, "NORM", true, position_count, positions};

long mathstat_166(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("NORM");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_166, argc, argv, arguments)) return 0;
  const long n = arguments.integer(length);
  if (!holds(arguments, vector, n) || !holds(arguments, second, n)) return 0;
  Words words;
  words.add(n).add(arguments.data[vector]);
  arguments.add_options(words);
  if (arguments.present[inf_norm]) words.option(ZENT_INF_NORM).add(arguments.data[index]);
  words.end();
  store_norm(arguments, words, zent_f_vector_norm, zent_d_vector_norm, result, 0);
  return 0;
}

}  // namespace zent::binding
