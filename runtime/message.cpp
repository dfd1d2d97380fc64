// The message parser: a catalogue text with its substitutions, written into the half's growing buffer.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "runtime/error_stack.hpp"

namespace zent {

namespace {

constexpr long headroom = 512;
constexpr long spec_bytes = 160;

char out_of_memory_text[] = "Out of memory in error handler.";

template <class Half>
[[noreturn]] void out_of_memory() {
  ErrorState& state = error_state<Half>;
  state.message = out_of_memory_text;
  state.message_capacity = 0;
  announce<Half>(state.top->name, 8, MATH_OUT_OF_MEMORY, true);
  if (state.traceback_flag[8]) traceback<Half>();
  error_stop<Half>();
}

// Room for `more` bytes behind the first `used`, and for what ends a text.
template <class Half>
void reserve(long used, long more) {
  ErrorState& state = error_state<Half>;
  long capacity = state.message_capacity;
  while (capacity - used < more + headroom) capacity *= 2;
  if (capacity == state.message_capacity) return;
  const bool embedded = state.message == state.first_message;
  void* grown = std::realloc(embedded ? nullptr : state.message, static_cast<std::size_t>(capacity));
  if (grown == nullptr) out_of_memory<Half>();
  if (embedded) std::memcpy(grown, state.message, static_cast<std::size_t>(used));
  state.message = static_cast<char*>(grown);
  state.message_capacity = capacity;
}

// The text so far is state.message[0, used).
template <class Half>
struct Writer {
  long used = 0;

  Writer() {  // after a shortage of memory (a print procedure or an exit handler may raise again) only the first bytes serve
    ErrorState& state = error_state<Half>;
    if (state.message != out_of_memory_text) return;
    state.message = state.first_message;
    state.message_capacity = message_bytes;
  }

  void put(char c) {
    reserve<Half>(used, 1);
    error_state<Half>.message[used++] = c;
  }
  // Measured first, so that neither a long value nor a wide field can overrun the buffer.
  template <class... Values>
  void format(const char* spec, Values... values) {
    const int length = std::snprintf(nullptr, 0, spec, values...);
    if (length <= 0) return;
    reserve<Half>(used, length + 1L);
    std::snprintf(error_state<Half>.message + used, static_cast<std::size_t>(length) + 1, spec, values...);
    used += length;
  }
};

// What a kind of value may be formatted with.
struct Kind {
  const char* letters;      // of the substitution
  const char* conversions;  // of the format
  int values;
  const char* standard;
};
constexpr Kind kinds[] = {
    {"iI", "dioxXu", 1, "%ld"}, {"rRdDfF", "eEfFgGaA", 1, "%e"}, {"cCzZ", "eEfFgGaA", 2, "(%e,%e)"}, {"lLsS", "s", 1, "%s"}};

// A format from the catalogue, with the length of 64-bit integers put in. False unless it takes exactly the values of its kind: a
// damaged catalogue must not read arguments that are not there.
bool translate(const char* from, const char* to, const Kind& kind, char* spec) {
  if (to - from > spec_bytes / 2) return false;
  int values = 0;
  while (from < to) {
    const bool conversion = *from == '%';
    *spec++ = *from++;
    if (!conversion) continue;
    if (from < to && *from == '%') {
      *spec++ = *from++;
      continue;
    }
    int digits = 0;
    while (from < to && std::strchr("-+ #.0123456789", *from) != nullptr && *from != '\0') {
      digits = *from >= '0' && *from <= '9' ? digits + 1 : 0;
      if (digits > 4) return false;
      *spec++ = *from++;
    }
    while (from < to && (*from == 'l' || *from == 'h')) ++from;
    if (from == to || std::strchr(kind.conversions, *from) == nullptr) return false;
    if (kind.conversions[0] == 'd') *spec++ = 'l';
    *spec++ = *from++;
    ++values;
  }
  *spec = '\0';
  return values == kind.values;
}

template <class Half>
void substitute(Writer<Half>& out, char letter, int n, const char* format, const char* end) {
  const ErrorState& state = error_state<Half>;
  int which = 0;
  while (which < 4 && std::strchr(kinds[which].letters, letter) == nullptr) ++which;
  if (which == 4) {
    out.format("%%(%c%c)", letter, '0' + n);
    return;
  }
  char translated[spec_bytes];
  const bool own = format < end && translate(format, end, kinds[which], translated);
  const char* spec = own ? translated : kinds[which].standard;
  if (which == 0) {
    out.format(spec, state.i[n]);
  } else if (which == 1) {
    out.format(spec, state.r[n]);
  } else if (which == 2) {
    out.format(spec, state.c[n].re, state.c[n].im);
  } else {
    out.format(spec, state.l[n] == nullptr ? "" : state.l[n]);
  }
}

}  // namespace

template <class Half>
void parse_message(const char* text) {
  Writer<Half> out;
  while (*text != '\0') {
    if (text[0] == '%' && text[1] == '/') {
      out.put('\n');
      text += 2;
      continue;
    }
    const bool key = text[0] == '%' && text[1] == '(' && text[2] != '\0' && text[3] >= '0' && text[3] <= '9';
    const char* end = key ? std::strchr(text + 4, ')') : nullptr;
    if (end == nullptr) {
      out.put(*text++);
      continue;
    }
    substitute(out, text[2], text[3] - '0', text[4] == '%' ? text + 4 : end, end);
    text = end + 1;
  }
  error_state<Half>.message[out.used] = '\0';
}

template <class Half>
void format_bad_type(long type, const char* text) {
  Writer<Half> out;
  out.format("Error type must be -1,...,8, but type = %ld.  Message = \"%s\"", type, text);
}

#define ZENT_INSTANTIATE(Half)                    \
  template void parse_message<Half>(const char*); \
  template void format_bad_type<Half>(long, const char*);
ZENT_INSTANTIATE(Math)
ZENT_INSTANTIATE(Stat)
#undef ZENT_INSTANTIATE

}  // namespace zent
