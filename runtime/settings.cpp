// The settings of the error system: what prints, what stops, where to, and whether signals are trapped.
#include <cstdlib>
#include <cstring>

#include "runtime/envelope.hpp"
#include "runtime/error_stack.hpp"
#include "runtime/options.hpp"
#include "zent.h"
#include "zents.h"

namespace zent {

namespace {

enum class Setting {
  set_print,
  get_print,
  set_stop,
  get_stop,
  set_traceback,
  get_traceback,
  set_file,
  get_file,
  print_procedure,
  message_path,
  message_name,
  full_traceback,
  library_id,
  trapping,
  trapping_on,
  trapping_off,
  unknown
};

struct Code {
  int math, stat;  // 0: the half has no such option
  Setting setting;
};
constexpr Code codes[] = {
    {ZENT_SET_PRINT, ZENTS_SET_PRINT, Setting::set_print},
    {ZENT_GET_PRINT, ZENTS_GET_PRINT, Setting::get_print},
    {ZENT_SET_STOP, ZENTS_SET_STOP, Setting::set_stop},
    {ZENT_GET_STOP, ZENTS_GET_STOP, Setting::get_stop},
    {ZENT_SET_TRACEBACK, ZENTS_SET_TRACEBACK, Setting::set_traceback},
    {ZENT_GET_TRACEBACK, ZENTS_GET_TRACEBACK, Setting::get_traceback},
    {ZENT_SET_ERROR_FILE, ZENTS_SET_ERROR_FILE, Setting::set_file},
    {ZENT_GET_ERROR_FILE, ZENTS_GET_ERROR_FILE, Setting::get_file},
    {ZENT_ERROR_PRINT_PROC, ZENTS_ERROR_PRINT_PROC, Setting::print_procedure},
    {ZENT_ERROR_MSG_PATH, ZENTS_ERROR_MSG_PATH, Setting::message_path},
    {ZENT_ERROR_MSG_NAME, ZENTS_ERROR_MSG_NAME, Setting::message_name},
    {ZENT_FULL_TRACEBACK, ZENTS_FULL_TRACEBACK, Setting::full_traceback},
    {ZENT_LIBRARY_ID, ZENTS_LIBRARY_ID, Setting::library_id},
    {ZENT_SIGNAL_TRAPPING, ZENTS_SIGNAL_TRAPPING, Setting::trapping},
    {0, ZENTS_SIGNAL_TRAPPING_ON, Setting::trapping_on},
    {0, ZENTS_SIGNAL_TRAPPING_OFF, Setting::trapping_off},
};

template <class Half>
Setting setting_of(int code) {
  for (const Code& row : codes) {
    if (code == (Half::is_math ? row.math : row.stat)) return row.setting;
  }
  return Setting::unknown;
}

// The stated upper bound is 5 although 6 and 7 are accepted.
template <class Half>
bool check_type(long type) {
  if (type >= 1 && type <= 7) return true;
  raise<Half>(5, MATH_INTEGER_OUT_OF_RANGE, {.i = {1, 5, type}, .l = {"type"}});
  return false;
}

template <class Half>
void set_flag(bool* flags, Options& options) {
  const long type = options.integer();
  const long value = options.integer();
  if (check_type<Half>(type)) flags[type] = value != 0;
}

template <class Half>
void get_flag(const bool* flags, Options& options) {
  const long type = options.integer();
  long* value = options.pointer<long>();
  if (check_type<Half>(type)) *value = flags[type];
}

// Null for a null text; false without memory.
template <class Half>
bool copy_text(const char* text, const char* name, char*& copy) {
  copy = nullptr;
  if (text == nullptr) return true;
  const std::size_t bytes = std::strlen(text) + 1;
  copy = static_cast<char*>(std::malloc(bytes));
  if (copy == nullptr) {
    raise_out_of_memory<Half>({static_cast<long>(bytes)}, {name});
    return false;
  }
  std::memcpy(copy, text, bytes);
  return true;
}

template <class Half>
void set_path(const char* text) {
  char* copy;
  if (!copy_text<Half>(text, "path", copy)) return;
  std::free(error_state<Half>.catalogue.path);
  error_state<Half>.catalogue.path = copy;
}

template <class Half>
constinit char* own_file_name = nullptr;

template <class Half>
void set_file_name(const char* text) {
  char* copy;
  if (!copy_text<Half>(text, "name", copy)) return;
  error_state<Half>.catalogue.file = copy != nullptr ? copy : Half::catalogue_file;
  std::free(own_file_name<Half>);
  own_file_name<Half> = copy;
}

template <class Half>
void set_print_procedure(PrintProcedure procedure) {
  error_state<Half>.print = procedure != nullptr ? procedure : error_print<Half>;
}

// One option with its values. False ends the list.
template <class Half>
bool apply(int code, Options& options) {
  ErrorState& state = error_state<Half>;
  switch (setting_of<Half>(code)) {
    case Setting::set_print:
      set_flag<Half>(state.print_flag, options);
      break;
    case Setting::get_print:
      get_flag<Half>(state.print_flag, options);
      break;
    case Setting::set_stop:
      set_flag<Half>(state.stop_flag, options);
      break;
    case Setting::get_stop:
      get_flag<Half>(state.stop_flag, options);
      break;
    case Setting::set_traceback:
      set_flag<Half>(state.traceback_flag, options);
      break;
    case Setting::get_traceback:
      get_flag<Half>(state.traceback_flag, options);
      break;
    case Setting::set_file: {
      FILE* stream = options.pointer<FILE>();
      umach<Half>(-3, &stream);
      break;
    }
    case Setting::get_file:
      umach<Half>(3, options.pointer<FILE*>());
      break;
    case Setting::print_procedure:
      set_print_procedure<Half>(options.function<PrintProcedure>());
      break;
    case Setting::message_path:
      set_path<Half>(options.pointer<const char>());
      break;
    case Setting::message_name:
      set_file_name<Half>(options.pointer<const char>());
      break;
    case Setting::full_traceback:
      state.full_traceback = options.integer() != 0;
      break;
    case Setting::library_id:
      *options.pointer<long>() = Half::id;
      break;
    case Setting::trapping:
      trap_status<Half> = options.integer();
      break;
    case Setting::trapping_on:
      trap_status<Half> = 1;
      break;
    case Setting::trapping_off:
      trap_status<Half> = 0;
      break;
    case Setting::unknown:
      options.unknown<Half>(code);
      return false;
  }
  return true;
}

}  // namespace

template <class Half>
void error_options(const char* name, int code, va_list list) {
  Options options;
  va_copy(options.list, list);
  options.position = 1;
  public_call<Half>(name, [&] {
    for (int next = code; next != 0 && apply<Half>(next, options);) next = options.code();
  });
  va_end(options.list);
}

template <class Half>
void error_flags(const char* name, long type, long* print, long* stop) {
  ErrorState& state = error_state<Half>;
  if (type < -8 || type > 8) {
    push<Half>(name);
    raise<Half>(5, MATH_INTEGER_OUT_OF_RANGE, {.i = {-8, 8, type}, .l = {"type"}});
    pop<Half>(name);
  } else if (type < 0) {
    *print = state.print_flag[-type];
    *stop = state.stop_flag[-type];
  } else if (type > 0) {  // sets, never clears
    if (*print > 0) state.print_flag[type] = true;
    if (*stop > 0) state.stop_flag[type] = true;
  } else {
    for (long each = 1; each <= 7; ++each) {
      if (*print >= 0) state.print_flag[each] = *print != 0;
      if (*stop >= 0) state.stop_flag[each] = *stop != 0;
    }
  }
}

#define ZENT_INSTANTIATE(Half)                                  \
  template void error_options<Half>(const char*, int, va_list); \
  template void error_flags<Half>(const char*, long, long*, long*);
ZENT_INSTANTIATE(Math)
ZENT_INSTANTIATE(Stat)
#undef ZENT_INSTANTIATE

}  // namespace zent
