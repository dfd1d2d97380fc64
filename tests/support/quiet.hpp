// Errors that neither print nor stop the process, in both halves: a test asks for the numbers itself.
#pragma once

#include "zent.h"
#include "zents.h"

inline void be_quiet() {
  for (int type = 1; type <= 7; ++type) {
    zent_error_options(ZENT_SET_PRINT, type, 0, ZENT_SET_STOP, type, 0, 0);
    zents_error_options(ZENTS_SET_PRINT, type, 0, ZENTS_SET_STOP, type, 0, 0);
  }
}
