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

/* Codes of the Faure sequence. */
#define ZENTS_BASE 40016
#define ZENTS_SKIP 40017
#define ZENTS_RETURN_SKIP 40018

#define ZENT_HALF(name) zents_##name
#include "zent/runtime.inc"
#include "zent/kernels.inc"
#include "zent/random.inc"
#undef ZENT_HALF

#include "zent/distributions.h"
#include "zent/eigen.h"
#include "zent/linear.h"
#include "zent/quadrature_stat.h"

#ifdef __cplusplus
extern "C" {
#endif

ZENT_API long zents_random_option_get(void);

/* The seed 100,000 steps further along the same unshuffled generator. Raises 65100 for a shuffled one and 65101 for generator 7
 * (type 5) and then returns the seed as it came. */
ZENT_API long zents_random_substream_seed_get(long seed);

/* The shuffle table of 128 entries of a precision. Set: a first entry that is not positive has it rebuilt from the seed; else the
 * first entry outside (0, 1) raises 11031 (type 5), with those before it stored. Get: into *table a new array, or the caller's with
 * ZENTS_RETURN_USER; 11001 for another option. A null table raises 150 here and below. A table built in single precision can hold 1:
 * the quotients of the 64 greatest states round up to it. */
ZENT_API void zents_f_random_table_set(float *table);
ZENT_API void zents_d_random_table_set(double *table);
ZENT_API void zents_f_random_table_get(float **table, ...);
ZENT_API void zents_d_random_table_get(double **table, ...);

/* The table of generator 7: 1563 words and the two indices (counted from 1; reduced into 1 to 1563 when stored). A first word below 1
 * has it rebuilt from the seed; another value below 1 raises 65102 (type 5), with those before it stored. */
ZENT_API void zents_random_GFSR_table_set(long *table);
ZENT_API void zents_random_GFSR_table_get(long **table, ...);

#ifdef __cplusplus
}
#endif

#endif
