/* The statistics half of the library: public functions, option codes, records. Plain C.
 * Its error stack, catalogue and settings are its own; the conventions are those of zent.h. */
#ifndef ZENTS_H
#define ZENTS_H

#include "zent/base.h"

/* Codes of zents_error_options. */
#define ZENTS_SET_PRINT 14520
#define ZENTS_GET_PRINT 11990
#define ZENTS_SET_STOP 14530
#define ZENTS_GET_STOP 12000
#define ZENTS_SET_TRACEBACK 14540
#define ZENTS_GET_TRACEBACK 12010
#define ZENTS_SET_ERROR_FILE 14490
#define ZENTS_GET_ERROR_FILE 11970
#define ZENTS_ERROR_PRINT_PROC 11420
#define ZENTS_ERROR_MSG_PATH 11410
#define ZENTS_ERROR_MSG_NAME 11400
#define ZENTS_FULL_TRACEBACK 11850
#define ZENTS_LIBRARY_ID 50000
#define ZENTS_SIGNAL_TRAPPING_ON 16040
#define ZENTS_SIGNAL_TRAPPING_OFF 16041
#define ZENTS_SIGNAL_TRAPPING 16042

/* Codes that recur in the option lists of this half. */
#define ZENTS_RETURN_USER 14280

#define ZENT_HALF(name) zents_##name
#include "zent/runtime.inc"
#include "zent/kernels.inc"
#undef ZENT_HALF

#endif
