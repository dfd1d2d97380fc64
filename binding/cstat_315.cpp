// FAURE_NEXT_PT: the next points of a low-discrepancy sequence.
#include "binding/faure_state.hpp"
#include "binding/routines.hpp"
#include "runtime/envelope.hpp"

namespace zent::binding {

namespace {

enum { state = 2, n_points, result, skip, unused_from, position_count = 14 };

constexpr Position positions[position_count] = {
    precision_position,
    status_position,
    {"STATE", Kind::required, Type::byte, "the sequence as FAURE_INIT gave it; moved on in place"},
    {"NPOINTS", Kind::optional, Type::integer, "how many points; default 1"},
    {"RESULT", Kind::output, Type::any, "an undefined variable: receives NPOINTS by the dimension values in [0, 1)"},
    {"SKIP", Kind::optional, Type::integer, "receives the number of points that were skipped at the start"},
};
static_assert(unused_from + 8 == position_count);

// One trap for all points: a call at a time would set and restore the signal handlers for each of them.
template <class Real>
void draw(const char* name, zents_faure& sequence, Real* (*next)(zents_faure*, ...), void* points, long n) {
  zent::public_call<zent::Stat>(name, [&] {
    Real* point = static_cast<Real*>(points);
    for (long k = 0; k < n && next(&sequence, ZENTS_RETURN_USER, point, 0) != nullptr; ++k) point += sequence.n_dimensions;
  });
}

}  // namespace

const Routine routine_315 = {315, "FAURE_NEXT_PT", true, position_count, positions};

long mathstat_315(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("FAURE_NEXT_PT");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_315, argc, argv, arguments)) return 0;
  auto* bytes = arguments.array<unsigned char>(state);
  const char* refusal = nullptr;
  const long n = arguments.present[n_points] ? arguments.integer(n_points) : 1;
  if (!faure_valid(bytes, arguments.count[state])) {
    refusal = "FAURE_NEXT_PT: argument STATE is not valid, it must be exactly as returned by FAURE_INIT";
  } else if (n < 1) {
    refusal = "FAURE_NEXT_PT: argument NPOINTS must be at least 1";
  }
  if (refusal != nullptr) {
    refuse(refusal);
    return 0;
  }
  zents_faure sequence = faure_view(bytes);
  const long dims[2] = {n, sequence.n_dimensions};
  ORV_VARIABLE* temporary = nullptr;
  void* points = ORV_MakeTempArray(arguments.real_type(), 2, dims, 0, &temporary);
  if (points == nullptr) return 0;
  if (arguments.is_double()) {
    draw("zents_d_faure_next_point", sequence, zents_d_faure_next_point, points, n);
  } else {
    draw("zents_f_faure_next_point", sequence, zents_f_faure_next_point, points, n);
  }
  auto* head = reinterpret_cast<FaureHead*>(bytes);
  head->check = faure_check(bytes, arguments.count[state]);
  if (arguments.present[skip]) *arguments.array<long>(skip) = head->skip;
  long code;
  if (cmast_opi_clear_errors(0, &code, arguments.status, 1) == 0) ORV_VarCopy(temporary, argv[result]);
  return 0;
}

}  // namespace zent::binding
