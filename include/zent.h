/* The mathematics half of the library: public functions, option codes, records. Plain C.
 *
 * A function reports through the error stack (zent_error_type, zent_error_code, zent_error_options), never by a result
 * code; a failing one returns null or not-a-number. What it hands over is the caller's: zent_free_allocated_memory. */
#ifndef ZENT_H
#define ZENT_H

#include "zent/base.h"
#include "zent/option_codes.h"

#define ZENT_HALF(name) zent_##name
#include "zent/runtime.inc"
#include "zent/kernels.inc"
#include "zent/random.inc"
#undef ZENT_HALF

#include "zent/eigen.h"
#include "zent/eigen_general.h"
#include "zent/bessel.h"
#include "zent/functions.h"
#include "zent/least_squares.h"
#include "zent/linear.h"
#include "zent/band.h"
#include "zent/norms.h"
#include "zent/optimize.h"
#include "zent/quadrature.h"
#include "zent/quadrature2.h"
#include "zent/roots.h"
#include "zent/special.h"
#include "zent/transform.h"

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
