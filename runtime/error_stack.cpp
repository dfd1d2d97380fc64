#include "runtime/error_stack.hpp"

#include <cstring>

namespace zent {

namespace {

template <class Half>
constexpr ErrorState initial_state(ErrorState& state) {
  ErrorState initial{};
  initial.message = state.first_message;
  initial.message_capacity = message_bytes;
  initial.frame[0] = {0, 1, 0, "USER"};
  initial.top = state.frame;
  initial.print = error_print<Half>;
  for (long type = 3; type < type_count; ++type) initial.print_flag[type] = true;
  initial.stop_flag[4] = initial.stop_flag[5] = initial.stop_flag[8] = true;
  initial.traceback_flag[8] = true;
  for (long type = 5; type < type_count; ++type) initial.immediate_flag[type] = true;
  initial.catalogue.file = Half::catalogue_file;
  initial.catalogue.index = -1;
  initial.catalogue.number = -1;
  return initial;
}

bool same_name(const char* a, const char* b) {
  return a == b || (a != nullptr && b != nullptr && std::strcmp(a, b) == 0);
}

}  // namespace

template <class Half>
constinit ErrorState ErrorStorage<Half>::state = initial_state<Half>(ErrorStorage<Half>::state);

template <class Half>
constinit ChecksumProcedure ErrorStorage<Half>::checksum = nullptr;

template <class Half>
void push_overflow() {
  raise<Half>(8, MATH_NESTED_TOO_DEEP);
  error_stop<Half>();
}

template <class Half>
void drop_frames(Frame* frame) {
  ErrorState& state = error_state<Half>;
  while (state.top > frame) climb(state);
  state.type_word[0] = state.top->type;
  state.number_word[0] = state.top->number;
}

template <class Half>
void pop_settle(const char* name) {
  ErrorState& state = error_state<Half>;
  if (state.signal_jump != 0) {
    state.signal_jump = 0;
    Frame* frame = state.top;
    while (frame > state.frame && !same_name(frame->name, name)) --frame;
    drop_frames<Half>(frame);
  }
  if (state.top > state.frame && same_name(state.top->name, name)) return;
  raise<Half>(8, MATH_ERROR_STACK_MISMATCH, {.l = {name, state.top->name}});
  error_stop<Half>();
}

template <class Half>
void announce(const char* routine, long type, long number, bool print) {
  ErrorState& state = error_state<Half>;
  if (checksum_hook<Half> != nullptr) checksum_hook<Half>(type, number, state.message);
  if (print) state.print(type, number, routine, state.message);
}

template <class Half>
void deliver() {
  ErrorState& state = error_state<Half>;
  const long type = state.top->type;
  if (state.message[0] != '\0') {
    announce<Half>(state.top->name, type, state.top->number, state.print_flag[type]);
    if (state.print_flag[type] && state.traceback_flag[type]) traceback<Half>();
    state.message[0] = '\0';
  }
  if (state.stop_flag[type]) error_stop<Half>();
}

namespace {

// The main path of a raise: the frame has its type and number.
template <class Half>
long raise_standing(const char* text) {
  ErrorState& state = error_state<Half>;
  const long type = state.top->type, number = state.top->number;
  if (text == nullptr || std::strcmp(text, " ") == 0) {
    state.message[0] = '\0';
  } else {
    parse_message<Half>(text);
  }
  if (state.immediate_flag[type]) {
    announce<Half>(state.top->name, type, number, state.print_flag[type]);
    if (state.traceback_flag[type]) traceback<Half>();
    state.message[0] = '\0';
  }
  if (type == 8) error_stop<Half>();
  state.type_word[0] = type;
  state.number_word[0] = number;
  return number;
}

template <class Half>
long clear_error() {
  ErrorState& state = error_state<Half>;
  state.top->type = 0;
  state.top->number = 0;
  state.message[0] = '\0';
  state.type_word[0] = 0;
  state.number_word[0] = 0;
  return 0;
}

template <class Half>
[[noreturn]] void bad_type(long type, const char* text) {
  ErrorState& state = error_state<Half>;
  push<Half>(Half::is_math ? "zent_e1mes" : "zents_e1mes");
  state.top->type = 8;  // the exit status
  state.top->number = MATH_BAD_ERROR_TYPE;
  format_bad_type<Half>(type, text == nullptr ? "" : text);
  announce<Half>(state.top->name, 8, MATH_BAD_ERROR_TYPE, true);
  if (state.traceback_flag[8]) traceback<Half>();
  error_stop<Half>();
}

}  // namespace

template <class Half>
long raise_text(long type, long number, const char* text) {
  ErrorState& state = error_state<Half>;
  if (type < -1 || type >= type_count) bad_type<Half>(type, text);
  if (type == -1 && number == -1) {
    type = state.top->type;
    number = state.top->number;
  } else if (type == -1) {
    if (number > 0) state.top->number = state.number_word[0] = number;
    return number;
  }
  if (type == 0 && number == 0) return clear_error<Half>();
  state.top->type = static_cast<unsigned char>(type);
  state.top->number = number;
  return raise_standing<Half>(text);
}

template <class Half>
long raise(long type, long number) {
  return raise_text<Half>(type, number, find_message<Half>(number));
}

template <class Half>
long raise(long type, long number, const Values& values) {
  ErrorState& state = error_state<Half>;
  long k = 0;
  for (long value : values.i) store_integer<Half>(++k, value);
  k = 0;
  for (double value : values.r) store_real<Half>(++k, value);
  k = 0;
  for (zent_d_complex value : values.c) store_complex<Half>(++k, value);
  k = 0;
  for (const char* value : values.l) {
    if (++k < value_count) state.l[k] = value;
  }
  return raise<Half>(type, number);
}

template <class Half>
void raise_out_of_memory(std::initializer_list<long> sizes, std::initializer_list<const char*> names) {
  const long known = Half::is_math ? 9 : 6;
  const long count = static_cast<long>(sizes.size());
  raise<Half>(5, MATH_OUT_OF_MEMORY + (count < known ? count : known), {.i = sizes, .l = names});
}

template <class Half>
long* word_of(long (&words)[2], long level) {
  if (level == 0 || level == 1) return words + level;
  raise<Half>(8, MATH_ILLEGAL_INTEGER_2, {.i = {0, 1, level}, .l = {"level"}});
  error_stop<Half>();
}

template <class Half>
long error_type_word(long level) {
  return *word_of<Half>(error_state<Half>.type_word, level);
}

template <class Half>
long error_number_word(long level) {
  return *word_of<Half>(error_state<Half>.number_word, level);
}

#define ZENT_INSTANTIATE(Half)                                                                              \
  template ErrorState ErrorStorage<Half>::state;                                                            \
  template ChecksumProcedure ErrorStorage<Half>::checksum;                                                  \
  template void push_overflow<Half>();                                                                      \
  template void pop_settle<Half>(const char*);                                                              \
  template void drop_frames<Half>(Frame*);                                                                  \
  template void deliver<Half>();                                                                            \
  template void announce<Half>(const char*, long, long, bool);                                              \
  template long raise<Half>(long, long);                                                                    \
  template long raise<Half>(long, long, const Values&);                                                     \
  template long raise_text<Half>(long, long, const char*);                                                  \
  template void raise_out_of_memory<Half>(std::initializer_list<long>, std::initializer_list<const char*>); \
  template long error_type_word<Half>(long);                                                                \
  template long error_number_word<Half>(long);
ZENT_INSTANTIATE(Math)
ZENT_INSTANTIATE(Stat)
#undef ZENT_INSTANTIATE

}  // namespace zent
