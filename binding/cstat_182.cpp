// RANDOMOPT: generator, seed and substreams of the statistics half.
#include "binding/routines.hpp"
#include "zents.h"

namespace zent::binding {

namespace {

enum { set_option = 2, set_seed, get_seed, get_option, substream_seed, position_count };

constexpr Position positions[] = {
    precision_position,
    status_position,
    {"SET_OPTION", Kind::optional, Type::integer, "generator 1 to 7 to use from now on"},
    {"SET_SEED", Kind::optional, Type::integer, "seed, 1 to 2147483646; 0 takes the time of day"},
    {"GET_SEED", Kind::optional, Type::integer, "receives the seed from which the stream resumes, or that of the substream"},
    {"GET_OPTION", Kind::optional, Type::integer, "receives the generator in use before SET_OPTION"},
    {"SUBSTREAM_SEED", Kind::optional, Type::integer, "seed whose stream is to be left 100,000 steps behind"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

bool went_well() {
  return zents_n1rty(1) <= 3;
}

// Always in this order, whatever the order on the call; the first failure ends it.
void work(const Arguments& a) {
  if (a.present[substream_seed]) {
    const long seed = zents_random_substream_seed_get(a.integer(substream_seed));
    if (!went_well()) return;
    if (a.present[get_seed]) *a.array<long>(get_seed) = seed;
  }
  if (a.present[get_option]) *a.array<long>(get_option) = zents_random_option_get();
  if (!went_well()) return;
  if (a.present[get_seed] && !a.present[substream_seed]) *a.array<long>(get_seed) = zents_random_seed_get();
  if (!went_well()) return;
  if (a.present[set_seed]) zents_random_seed_set(a.integer(set_seed));
  if (!went_well()) return;
  if (a.present[set_option]) zents_random_option(a.integer(set_option));
}

}  // namespace

const Routine routine_182 = {182, "RANDOMOPT", true, position_count, positions};

long mathstat_182(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("RANDOMOPT");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_182, argc, argv, arguments)) return 0;
  zents_random_option_get();  // no error of an earlier call stands for this one
  work(arguments);
  long code;
  cmast_opi_clear_errors(0, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
