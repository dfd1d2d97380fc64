// The default print procedure and the traceback.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "runtime/error.hpp"
#include "runtime/machine.hpp"

namespace zent {

namespace {

constexpr const char* type_text[type_count] = {"INTERNAL", "NOTE    ",          "ALERT   ",        "WARNING ", "FATAL   ",
                                               "TERMINAL", "WARNING_IMMEDIATE", "FATAL_IMMEDIATE", "INTERNAL"};
constexpr const char* prefix = "***         ";
constexpr int prefix_width = 12;  // of a continuation line; the blank behind the prefix is not counted
constexpr int line_limit = 77;

// The public function that the user called, whatever inner frame raised the error: the frame above the nearest calling program.
template <class Half>
const char* called_routine() {
  const ErrorState& state = error_state<Half>;
  const Frame* frame = state.top;
  while (frame > state.frame && !frame[-1].user) --frame;
  return state.top->user ? state.top->name : frame->name;
}

// How much of the text goes into a line with `room` left, and what is skipped behind it. -1: nothing, try a line of its own.
int cut(const char* text, int room, bool fresh, int& skip) {
  int blank = -1;
  int k = 0;
  for (; k <= room && text[k] != '\0'; ++k) {
    if (text[k] == '\n') {
      skip = 1;
      return k;
    }
    if (text[k] == ' ') blank = k;
  }
  skip = 0;
  if (k <= room) return k;
  if (blank >= 0) {
    skip = 1;
    return blank;
  }
  return fresh ? room : -1;
}

void print_text(FILE* stream, const char* text, int width) {
  bool fresh = false;
  if (width > line_limit) width = -1;
  while (true) {
    int skip = 0;
    const int used = width < 0 ? -1 : cut(text, line_limit - width, fresh, skip);
    if (used > 0) std::fprintf(stream, "%.*s", used, text);
    std::fputc('\n', stream);
    if (used >= 0) text += used + skip;
    if (used >= 0 && *text == '\0') return;
    std::fprintf(stream, "%s ", prefix);
    width = prefix_width;
    fresh = true;
  }
}

}  // namespace

template <class Half>
void error_print(long type, long number, const char*, const char* text) {
  if (text == nullptr || text[0] == '\0') return;
  const char* shown = type_text[type >= 0 && type < type_count ? type : 8];
  FILE* stream;
  umach<Half>(3, &stream);
  int width;
  if (type <= 4) {
    width = std::fprintf(stream, "\n*** %s Error %s from %s.  ", shown, find_name<Half>(number), called_routine<Half>());
  } else {
    width = std::fprintf(stream, "\n*** %s Error from %s.  ", shown, called_routine<Half>());
  }
  print_text(stream, text, width > 0 ? width - 1 : 0);
  std::fputc('\n', stream);
}

// One row for each entry of the library, or for each frame if asked for, from the newest down to the program. A row shows the
// worst error of the frames since the row before.
template <class Half>
void traceback() {
  const ErrorState& state = error_state<Half>;
  FILE* stream;
  umach<Half>(3, &stream);
  std::fputs("Here is a traceback of the calls in reverse order.\n", stream);
  std::fputs("  Error Type        Error Code              Routine\n", stream);
  std::fputs("  ----------        ----------              -------\n", stream);
  const char* const row = " %5s%-9s   %-25s %s\n";
  long type = 0, number = 0;
  for (const Frame* frame = state.top; frame >= state.frame; --frame) {
    if (frame->type > type) {
      type = frame->type;
      number = frame->number;
    }
    if (frame != state.frame && !frame[-1].user && !state.full_traceback) continue;
    if (type != 0 && !frame->user) {
      std::fprintf(stream, row, "ZENT_", type_text[type], find_name<Half>(number), frame->name);
    } else {
      std::fprintf(stream, row, "", "", "", frame->name);
    }
    type = 0;
  }
}

template <class Half>
void error_stop() {
  std::exit(error_state<Half>.top->type);
}

#define ZENT_INSTANTIATE(Half)                                           \
  template void error_print<Half>(long, long, const char*, const char*); \
  template void traceback<Half>();                                       \
  template void error_stop<Half>();
ZENT_INSTANTIATE(Math)
ZENT_INSTANTIATE(Stat)
#undef ZENT_INSTANTIATE

}  // namespace zent
