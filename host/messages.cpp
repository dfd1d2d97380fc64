// Messages: blocks of formats, the saved message, and the way of an error out of a module.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "host/internal.hpp"
#include "host/module.hpp"

struct ORV_MSG_BLOCK_ {
  struct Row {
    std::string name, format;
  };
  std::vector<Row> rows;
};

namespace orv {
namespace {

jmp_buf* installed_buffer = nullptr;
InformationSink information_sink = nullptr;
void* information_context = nullptr;

// Errors may be raised for want of memory, so the room for one is there from the start.
struct Pending {
  std::string name = "ERROR", text, file;
  int line = 0, column = 0;
  const char* fixed = nullptr;  // stands in when its words could not be kept
} pending;

struct Call {
  const void* frame;
  jmp_buf* before;
};
std::vector<Call> calls;

// Room for the name of a message behind its text in the saved state.
constexpr size_t name_room = 64;
constexpr size_t text_room = sizeof(ORV_ERRSTATE::text) - name_room;

struct Message {
  std::string name, text;
};

// Only %s takes a value. Values are copied as they are, percent signs and all.
Message format_message(ORV_MSG_BLOCK block, int code, va_list values) {
  const long row = -static_cast<long>(code);
  if (!block || row < 0 || row >= static_cast<long>(block->rows.size())) {
    return {"ERROR", "Message " + std::to_string(code) + " is not defined."};
  }
  Message message{block->rows[static_cast<size_t>(row)].name, ""};
  const std::string& format = block->rows[static_cast<size_t>(row)].format;
  int used = 0;
  for (size_t k = 0; k < format.size(); ++k) {
    if (format[k] != '%' || k + 1 == format.size() || (format[k + 1] != 's' && format[k + 1] != '%')) {
      message.text += format[k];
    } else if (format[++k] == '%') {
      message.text += '%';
    } else {
      const char* value = va_arg(values, const char*);
      if (!value) value = "";
      message.text += value;
      // A library error carries label, type, name and text: its own name says more than the message's.
      if (++used == 3 && code == 0 && *value) message.name = value;
    }
  }
  return message;
}

void copy_cut(char* target, const std::string& text, size_t room) {
  size_t n = text.size();
  if (n > room - 1) {
    n = room - 1;
    while (n > 0 && (static_cast<unsigned char>(text[n]) & 0xC0) == 0x80) --n;  // not within a character
  }
  std::memcpy(target, text.data(), n);
  target[n] = 0;
}

// True: the caller has to jump.
bool deliver(const Message& message, int action, ORV_ERRSTATE* state) {
  if (action == ORV_MSG_INFO) {
    detail::emit_information(message.text.c_str());
  } else if (action == ORV_MSG_RAISE) {
    detail::set_pending(Error(message.name, message.text));
    return true;
  } else if (action == ORV_MSG_SAVE && state) {
    copy_cut(state->text, message.text, text_room);
    copy_cut(state->text + text_room, message.name, name_room);
  }
  return false;
}

}  // namespace

void set_information_sink(InformationSink sink, void* context) {
  information_sink = sink;
  information_context = context;
}

namespace detail {

void emit_information(const char* text) {
  if (information_sink) {
    information_sink(information_context, text);
  } else {
    std::fprintf(stderr, "%% %s\n", text);
  }
}

void set_pending(const Error& error) noexcept {
  try {
    pending = {error.name, error.what(), error.file, error.line, error.column, nullptr};
  } catch (...) {
    pending.fixed = "Unable to allocate memory.";
  }
}

void set_pending(const char* text) noexcept {
  try {
    pending = {"ERROR", text, "", 0, 0, nullptr};
  } catch (...) {
    pending.fixed = "Unable to allocate memory.";
  }
}

Error take_pending() {
  Error error(pending.name, pending.fixed ? pending.fixed : pending.text);
  error.file = pending.file;
  error.line = pending.line;
  error.column = pending.column;
  pending.fixed = nullptr;
  return error;
}

jmp_buf* jump_buffer() noexcept {
  return installed_buffer;
}
void set_jump_buffer(jmp_buf* buffer) noexcept {
  installed_buffer = buffer;
}

void leave_call(size_t depth) noexcept {
  while (calls.size() > depth) {
    installed_buffer = calls.back().before;
    calls.pop_back();
  }
}

// Is the buffer one of a call with this frame, or of anything it called? Buffers that are not on the stack are not.
static bool belongs_to(const void* frame, const jmp_buf* buffer) noexcept {
  constexpr size_t deepest_stack = size_t{64} << 20;
  const auto top = reinterpret_cast<size_t>(frame), place = reinterpret_cast<size_t>(buffer);
  return place < top && top - place < deepest_stack;
}

// A trapped signal may have thrown away calls without leave_call. Their frames lie below this one. The routine that the signal's
// jump landed in may have put its own buffer back already; that one stays.
static void forget_dead_calls(const void* here) noexcept {
  while (!calls.empty() && calls.back().frame < here) {
    if (belongs_to(calls.back().frame, installed_buffer)) installed_buffer = calls.back().before;
    calls.pop_back();
  }
}

size_t enter_call(const void* frame, jmp_buf* buffer) {
  forget_dead_calls(frame);
  calls.push_back({frame, installed_buffer});
  installed_buffer = buffer;
  return calls.size() - 1;
}

void raise_pending() {
  forget_dead_calls(__builtin_frame_address(0));
  if (!installed_buffer) {
    std::fprintf(stderr, "%% %s\n", pending.fixed ? pending.fixed : pending.text.c_str());
    std::exit(1);
  }
  longjmp(*installed_buffer, 1);
}

}  // namespace detail
}  // namespace orv

using orv::detail::raise_pending;
using orv::detail::serve;

ORV_SERVED ORV_MSG_BLOCK ORV_MessageDefineBlock(const char* name, int n, const ORV_MSG_ROW* rows) {
  static auto* const blocks = new std::map<std::string, ORV_MSG_BLOCK_>;
  ORV_MSG_BLOCK block = nullptr;
  if (!name || n < 0 || (n > 0 && !rows)) return nullptr;
  serve([&] {
    std::vector<ORV_MSG_BLOCK_::Row> copies;
    for (int k = 0; k < n; ++k) copies.push_back({rows[k].name ? rows[k].name : "", rows[k].format ? rows[k].format : ""});
    block = &(*blocks)[name];
    block->rows = std::move(copies);
  });
  return block;
}

ORV_SERVED void ORV_MessageFromBlock(ORV_MSG_BLOCK block, int code, int action, ...) {
  va_list values;
  va_start(values, action);
  bool jump = false;
  const bool formatted =
      orv::detail::attempt([&] { jump = orv::deliver(orv::format_message(block, code, values), action, nullptr); });
  va_end(values);
  if (jump || !formatted) raise_pending();
}

ORV_SERVED void ORV_MessageSyscode2FromBlock(ORV_MSG_BLOCK block, int code, int, int, int action, ORV_ERRSTATE* state, ...) {
  va_list values;
  va_start(values, state);
  bool jump = false;
  const bool formatted =
      orv::detail::attempt([&] { jump = orv::deliver(orv::format_message(block, code, values), action, state); });
  va_end(values);
  if (jump || !formatted) raise_pending();
}

ORV_SERVED void ORV_MessageThrowErrstate(int action, ORV_ERRSTATE* state) {
  bool jump = false;
  const bool done = orv::detail::attempt([&] {
    state->text[orv::text_room - 1] = 0;
    state->text[sizeof state->text - 1] = 0;
    const char* name = state->text + orv::text_room;
    jump = orv::deliver({*name ? name : "ERROR", *state->text ? state->text : "Unknown error."}, action, nullptr);
  });
  if (jump || !done) raise_pending();
}

ORV_SERVED void ORV_MessageVE_UNDEFVAR(ORV_VARIABLE* v, int action) {
  bool jump = false;
  const bool done = orv::detail::attempt([&] {
    try {
      orv::detail::throw_undefined(v);
    } catch (const orv::Error& error) {
      jump = orv::deliver({error.name, error.what()}, action, nullptr);
    }
  });
  if (jump || !done) raise_pending();
}

ORV_SERVED jmp_buf* ORV_MessageGJE(void) {
  return orv::detail::jump_buffer();
}

ORV_SERVED void ORV_MessageSJE(jmp_buf* buffer) {
  orv::detail::set_jump_buffer(buffer);
}
