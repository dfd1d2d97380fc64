// The way in and the way out of every wrapper.
#include "binding/cmast.h"
#include "binding/words.hpp"
#include "zent.h"
#include "zents.h"

namespace {

constexpr int ring_rows = 10;
constexpr int label_bytes = 16;

// Everything is shown to the user, nothing stops the process: fatal errors are thrown by the host on the way out.
void bridge_errors() {
  zent_error_options(ZENT_SET_PRINT, 1, 1, ZENT_SET_PRINT, 2, 1, ZENT_SET_STOP, 4, 0, ZENT_SET_STOP, 5, 0, ZENT_ERROR_PRINT_PROC,
                     cmath_err_print_proc, 0);
  zents_error_options(ZENTS_SET_PRINT, 1, 1, ZENTS_SET_PRINT, 2, 1, ZENTS_SET_STOP, 4, 0, ZENTS_SET_STOP, 5, 0,
                      ZENTS_ERROR_PRINT_PROC, cstat_err_print_proc, 0);
}

}  // namespace

extern "C" {

long curr_fcn_idx;
char curr_fcn_name[ring_rows][label_bytes];
ORV_ERRSTATE errState;
long cmast_initialized;
long cmath_continue_on_error;
long cmath_print_level = 2;
long cmast_opi_err_code;

void cmast_push_fcn_name(const char* label) {
  if (++curr_fcn_idx >= ring_rows) curr_fcn_idx = 0;
  ORV_StrBase_strlcpy(curr_fcn_name[curr_fcn_idx], label, label_bytes);
}

void cmast_pop_fcn_name(void) {
  if (--curr_fcn_idx < 0) curr_fcn_idx = ring_rows - 1;
}

long cmast_init(const char* label) {
  cmast_push_fcn_name(label);
  if (cmast_initialized == 0) {
    cmast_initialized = 1;
    cmath_continue_on_error = 0;
    cmath_print_level = 2;
    cmast_opi_err_code = 0;
    bridge_errors();
  }
  return 0;
}

long cmast_opi_clear_errors(long is_math, long* code_out, int* status_out, long pop) {
  long result = 0;
  switch (is_math != 0 ? zent_n1rty(1) : zents_n1rty(1)) {
    case ZENT_NOTE:
    case ZENT_ALERT:
    case ZENT_WARNING:
    case ZENT_WARNING_IMMEDIATE:
      break;
    case ZENT_FATAL:
    case ZENT_TERMINAL:
    case ZENT_FATAL_IMMEDIATE:
      // An empty frame of the same half leaves its last-error words at 0.
      if (is_math != 0) {
        zent_e1psh(" ");
        zent_e1pop(" ");
      } else {
        zents_e1psh(" ");
        zents_e1pop(" ");
      }
      result = cmath_continue_on_error + 1;
      break;
    default:
      cmast_opi_err_code = 0;
  }
  if (code_out != nullptr) *code_out = cmast_opi_err_code;
  if (status_out != nullptr) *status_out = result == 2;
  if (pop != 0) cmast_pop_fcn_name();
  if (result != 0) ORV_MessageThrowErrstate(ORV_MSG_RAISE, &errState);
  return result;
}

long cmast_call_void_fcn(void* fn, const long* words) {
  return zent::binding::call_words<long>(fn, words, std::make_index_sequence<zent::binding::word_count>());
}

void* cmast_call_mem32bit_fcn(void* fn, const long* words) {
  return zent::binding::call_words<void*>(fn, words, std::make_index_sequence<zent::binding::word_count>());
}
}
