// FAURE_INIT: the start of a low-discrepancy sequence.
#include "binding/faure_state.hpp"
#include "binding/routines.hpp"

namespace zent::binding {

namespace {

enum { n_dimensions = 2, base, skip, state, unused_from, position_count = 12 };

constexpr Position positions[position_count] = {
    precision_position,
    status_position,
    {"NDIM", Kind::required, Type::integer, "dimension of the points"},
    {"BASE", Kind::optional, Type::integer, "a prime, at least NDIM; default: the next prime", ZENTS_BASE, Pass::value},
    {"SKIP", Kind::optional, Type::integer, "points to skip at the start, at least 1", ZENTS_SKIP, Pass::value},
    {"STATE", Kind::output, Type::any,
     "an undefined variable: receives the sequence as a byte array, to be handed back unchanged"},
};
static_assert(unused_from + 6 == position_count);

void hand_over(const zents_faure& f, ORV_VARIABLE* variable) {
  const long d = f.n_dimensions, n = f.n_digits;
  const long size = static_cast<long>(sizeof(FaureHead) + sizeof(long) * faure_words(d, n));
  ORV_VARIABLE* temporary = nullptr;
  auto* bytes = static_cast<unsigned char*>(ORV_MakeTempVector(ORV_TYP_BYTE, size, 0, &temporary));
  if (bytes == nullptr) return;
  const FaureHead head = {faure_mark, size, 0, f.skip, d, n, f.base, f.scale};
  std::memcpy(bytes, &head, sizeof head);
  const zents_faure copy = faure_view(bytes);
  std::memcpy(copy.digits, f.digits, sizeof(long) * n * d);
  std::memcpy(copy.counter, f.counter, sizeof(long) * n);
  std::memcpy(copy.binomial, f.binomial, sizeof(long) * n * n);
  std::memcpy(copy.powers, f.powers, sizeof(long) * 2 * n * d);
  std::memcpy(copy.increments, f.increments, sizeof(long) * n * n * d);
  reinterpret_cast<FaureHead*>(bytes)->check = faure_check(bytes, size);
  ORV_VarCopy(temporary, variable);
}

}  // namespace

const Routine routine_314 = {314, "FAURE_INIT", true, position_count, positions};

long mathstat_314(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("FAURE_INIT");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_314, argc, argv, arguments)) return 0;
  // Options carry 32-bit integers: a greater one must not come out as another number.
  for (int k : {base, skip}) {
    if (!arguments.present[k] || arguments.integer(k) == static_cast<int>(arguments.integer(k))) continue;
    refuse(k == base ? "FAURE_INIT: argument BASE does not fit in 32 bits" : "FAURE_INIT: argument SKIP does not fit in 32 bits");
    return 0;
  }
  Words words;
  words.add(arguments.integer(n_dimensions));
  arguments.add_options(words);
  words.end();
  auto* sequence = words.call<zents_faure*>(reinterpret_cast<void*>(zents_faure_sequence_init));
  long code;
  if (cmast_opi_clear_errors(0, &code, arguments.status, 1) == 0 && sequence != nullptr) hand_over(*sequence, argv[state]);
  zents_faure_sequence_free(sequence);
  return 0;
}

}  // namespace zent::binding
