// RANDOM: deviates of a distribution from the stream of the statistics half.
#include <cstdio>
#include <cstring>

#include "binding/routines.hpp"
#include "zents.h"

namespace zent::binding {

namespace {

enum { distribution = 2, n_random, result, parameters, position_count = 36 };

constexpr Position positions[position_count] = {
    precision_position,
    status_position,
    {"DISTRIBUTION", Kind::optional, Type::text, "UNIFORM, which is the default"},
    {"N", Kind::required, Type::integer, "number of deviates"},
    {"RESULT", Kind::output, Type::real, "array of at least N values, allocated by the caller"},
};
static_assert(parameters == 5);

bool accept(const Arguments& a) {
  const char* name = a.text(distribution);
  if (name != nullptr && std::strcmp(name, "UNIFORM") != 0) {
    char text[128];
    std::snprintf(text, sizeof text, "RANDOM: the distribution \"%.60s\" is not available", name);
    return refuse(text);
  }
  if (!a.present[result] || a.count[result] < a.integer(n_random)) return refuse("RANDOM: argument RESULT must have N elements");
  return true;
}

}  // namespace

const Routine routine_181 = {181, "RANDOM", true, position_count, positions};

long mathstat_181(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("RANDOM");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_181, argc, argv, arguments) || !accept(arguments)) return 0;
  Words words;
  words.add(arguments.integer(n_random)).option(ZENTS_RETURN_USER, arguments.data[result]).end();
  words.call<void*>(arguments.is_double() ? reinterpret_cast<void*>(zents_d_random_uniform)
                                          : reinterpret_cast<void*>(zents_f_random_uniform));
  long code;
  cmast_opi_clear_errors(0, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
