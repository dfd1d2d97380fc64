/* The mathematics half of the library: public functions, option codes, records. Plain C.
 *
 * A function reports through the error stack (zent_error_type, zent_error_code, zent_error_options), never by a result
 * code; a failing one returns null or not-a-number. What it hands over is the caller's: zent_free_allocated_memory. */
#ifndef ZENT_H
#define ZENT_H

#include "zent/base.h"

/* Codes of zent_error_options. */
#define ZENT_SET_PRINT 10188
#define ZENT_GET_PRINT 10189
#define ZENT_SET_STOP 10190
#define ZENT_GET_STOP 10191
#define ZENT_GET_TRACEBACK 10192
#define ZENT_SET_TRACEBACK 10193
#define ZENT_SET_ERROR_FILE 10194
#define ZENT_GET_ERROR_FILE 10210
#define ZENT_ERROR_PRINT_PROC 10195
#define ZENT_ERROR_MSG_PATH 10196
#define ZENT_ERROR_MSG_NAME 10197
#define ZENT_FULL_TRACEBACK 10301
#define ZENT_LIBRARY_ID 50000
#define ZENT_SIGNAL_TRAPPING 50012

/* Codes that recur in the option lists of this half. */
#define ZENT_RETURN_USER 10260
#define ZENT_FCN_W_DATA 13101

/* Codes of the Faure sequence. */
#define ZENT_BASE 12100
#define ZENT_SKIP 12101
#define ZENT_RETURN_SKIP 12102

#define ZENT_HALF(name) zent_##name
#include "zent/runtime.inc"
#include "zent/kernels.inc"
#include "zent/random.inc"
#undef ZENT_HALF

#include "zent/special.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Sets the shuffle table (128 entries in (0, 1)) of this half; a first entry that is not positive has it rebuilt at the next draw.
 * Every bad entry raises 11031 (type 5); the good ones are stored and the table is used. */
ZENT_API void zent_rnses(float *table);
ZENT_API void zent_drnses(double *table);

#ifdef __cplusplus
}
#endif

#endif
