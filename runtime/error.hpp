// The error stack: named frames, one error type and number for each, and a message that waits until the outermost call returns.
#pragma once

#include <csetjmp>
#include <initializer_list>

#include "runtime/catalogue.hpp"
#include "runtime/half.hpp"
#include "zent/base.h"

namespace zent {

inline constexpr long frame_count = 200;
inline constexpr long jump_buffer_count = 100;
inline constexpr long type_count = 9;
inline constexpr long message_bytes = 2048;  // the buffer at first; it doubles
inline constexpr long value_count = 10;      // values 1 to 9; entry 0 stays 0 or null

struct Frame {
  unsigned char type;
  unsigned char user;  // stands for a calling program: the frame above it is the library's entry
  long number;
  const char* name;
};

using PrintProcedure = void (*)(long type, long number, const char* routine, const char* text);
using ChecksumProcedure = void (*)(long type, long number, const char* text);

struct JumpSlot {
  alignas(8) jmp_buf buffer;
};

struct ErrorState {
  long jump_depth;
  long signal_jump;  // set by the signal handler; the next pop drops the frames that the jump passed over
  long i[value_count];
  double r[value_count];
  zent_d_complex c[value_count];
  const char* l[value_count];
  JumpSlot jump[jump_buffer_count];
  long type_word[2];  // level 0: the frame on top; level 1: the frame popped last
  long number_word[2];
  char* message;
  long message_capacity;
  char first_message[message_bytes];
  Frame frame[frame_count];
  Frame* top;
  PrintProcedure print;
  bool full_traceback;
  bool print_flag[type_count];
  bool stop_flag[type_count];
  bool traceback_flag[type_count];
  bool immediate_flag[type_count];
  CatalogueView catalogue;
};

// The half's one state, ready for use from the first instruction on.
template <class Half>
struct ErrorStorage {
  static ErrorState state;
  static ChecksumProcedure checksum;
};
extern template ErrorState ErrorStorage<Math>::state;
extern template ErrorState ErrorStorage<Stat>::state;
extern template ChecksumProcedure ErrorStorage<Math>::checksum;
extern template ChecksumProcedure ErrorStorage<Stat>::checksum;
template <class Half>
inline constexpr ErrorState& error_state = ErrorStorage<Half>::state;
template <class Half>
inline constexpr ChecksumProcedure& checksum_hook = ErrorStorage<Half>::checksum;

// The rare parts of push and pop: no frame left; a pop that must drop frames first or names another frame; a message or a stop
// that is due because the frame below stands for a calling program.
template <class Half>
void push_overflow();
template <class Half>
void pop_settle(const char* name);
template <class Half>
void deliver();

template <class Half>
inline void push(const char* name) {
  ErrorState& state = error_state<Half>;
  Frame* top = state.top;
  if (top == state.frame) {  // a new call of the program: what the last one left in frame 0 is over
    state.message[0] = '\0';
    top->type = 0;
    top->number = 0;
  } else if (top == state.frame + (frame_count - 1)) [[unlikely]] {
    push_overflow<Half>();
  }
  *++top = Frame{0, 0, 0, name};
  state.top = top;
  state.type_word[0] = state.type_word[1] = 0;
  state.number_word[0] = state.number_word[1] = 0;
}

// Severity climbs into the frame below, so that an inner Note does not hide an outer Warning. Moves to the frame below.
inline void climb(ErrorState& state) {
  const Frame* top = state.top--;
  Frame* below = state.top;
  if (below->type <= top->type) {
    below->type = top->type;
    below->number = top->number;
  }
}

template <class Half>
inline void pop(const char* name) {
  ErrorState& state = error_state<Half>;
  if (state.signal_jump != 0 || state.top->name != name || state.top == state.frame) [[unlikely]]
    pop_settle<Half>(name);
  const Frame* top = state.top;
  // A call without an error leaves alone what an outer one has waiting.
  if (top->type != 0 && top[-1].user && (state.message[0] != '\0' || state.stop_flag[top->type])) [[unlikely]]
    deliver<Half>();
  climb(state);
  state.type_word[1] = top->type;
  state.number_word[1] = top->number;
  state.type_word[0] = state.top->type;
  state.number_word[0] = state.top->number;
}

// Drops the frames above `frame`, which a jump left behind; their errors climb.
template <class Half>
void drop_frames(Frame* frame);

// Marks the current frame as a calling program while a function of the user runs, and ends that.
template <class Half>
inline void user_frame(bool on) {
  error_state<Half>.top->user = on;
}

// The message of one raise in the making, and the ways a message goes out.
template <class Half>
void parse_message(const char* text);
template <class Half>
void format_bad_type(long type, const char* text);
template <class Half>
void error_print(long type, long number, const char* routine, const char* text);
template <class Half>
void traceback();
template <class Half>
[[noreturn]] void error_stop();

template <class Half>
long raise(long type, long number);
template <class Half>
long raise_text(long type, long number, const char* text);

// The values of one message: i1, i2, ... in order, and likewise r, c and l.
struct Values {
  std::initializer_list<long> i{};
  std::initializer_list<double> r{};
  std::initializer_list<zent_d_complex> c{};
  std::initializer_list<const char*> l{};
};

// raise<Math>(5, MATH_INTEGER_OUT_OF_RANGE, {.i = {1, 8, n}, .l = {"n"}})
template <class Half>
long raise(long type, long number, const Values& values);

// An argument check of this frame has failed already.
template <class Half>
bool failed() {
  return error_state<Half>.type_word[0] != 0;
}

// A fatal or terminal error stands in this frame, or one of type 6 to 8; for a warning the result is usable.
template <class Half>
bool fatal_stands() {
  return error_state<Half>.type_word[0] > 3;
}

// The last inner call failed: 3 is a warning with a usable result.
template <class Half>
bool inner_failed() {
  return error_state<Half>.type_word[1] > 3;
}

// 201 to 209 with the sizes and names of what could not be allocated; the statistics half knows 201 to 206 only.
template <class Half>
void raise_out_of_memory(std::initializer_list<long> sizes, std::initializer_list<const char*> names);

}  // namespace zent
