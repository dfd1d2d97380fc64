/* What the module's units share with each other and with modules loaded after it: the way in and out of a wrapper, the error
 * bridge, and the conversion of structures. Plain C, C linkage, exported by orv_zent.so. */
#ifndef ORV_ZENT_CMAST_H
#define ORV_ZENT_CMAST_H

#include "binding/orv_host.h"
#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Load ---------------------------------------------------------------------------------------------------------- */

/* Defines the structures and the message block and registers the routines. 1 when the module is ready, 0 when it is not. */
ZENT_API int ORV_Load(void);
ZENT_API ORV_MSG_BLOCK _ORV_orv_zent_msg_init(void); /* the block, also kept in _ORV_orv_zent_msg_block; or null */
ZENT_API int _ORV_orv_zent_rtn_init(void);           /* 1 when the host took the table */
ZENT_API extern ORV_MSG_BLOCK _ORV_orv_zent_msg_block;

/* Messages of the block. */
enum { ORV_M_ZENT_LIBRARYERROR = 0, ORV_M_ZENT_ERROR = -1, ORV_M_ZENT_WRGNUMELEM = -2 };

/* ---- Way in and way out --------------------------------------------------------------------------------------------- */

ZENT_API extern long curr_fcn_idx;          /* row of the ring that is shown in messages */
ZENT_API extern char curr_fcn_name[10][16]; /* labels of wrappers in progress */
ZENT_API extern ORV_ERRSTATE errState;      /* text of a fatal error until it is thrown */
ZENT_API extern long cmast_initialized;     /* set by the first cmast_init */
ZENT_API extern long cmath_continue_on_error;
ZENT_API extern long cmath_print_level;
ZENT_API extern long cmast_opi_err_code; /* host number of the message delivered last; 0 when nothing stands */

/* Pushes the label (its first 15 characters) and sets up the error bridge the first time. Returns 0; a wrapper returns any other
   result to the host. */
ZENT_API long cmast_init(const char* label);
ZENT_API void cmast_push_fcn_name(const char* label);
ZENT_API void cmast_pop_fcn_name(void);

/* The way out of every wrapper: reads the type of the last public function of one half, stores the host number and the status
   (both may be null), pops the label if asked, and throws a fatal error. Returns 0, or 1 or 2 from a host that lets it return. */
ZENT_API long cmast_opi_clear_errors(long is_math, long* code_out, int* status_out, long pop);

/* Calls a public function with 61 machine words; see binding/words.hpp for functions with real arguments or results. */
ZENT_API long cmast_call_void_fcn(void* fn, const long* words);
ZENT_API void* cmast_call_mem32bit_fcn(void* fn, const long* words);

/* out[i] = fn(a[i], ...) for count elements, every array stepped by `step` bytes. */
ZENT_API void cmast_call_spcl_fcn1_f(float (*fn)(float), long count, long step, const char* a, char* out);
ZENT_API void cmast_call_spcl_fcn1_d(double (*fn)(double), long count, long step, const char* a, char* out);
ZENT_API void cmast_call_spcl_fcn2_f(float (*fn)(float, float), long count, long step, const char* a, const char* b, char* out);
ZENT_API void cmast_call_spcl_fcn2_d(double (*fn)(double, double), long count, long step, const char* a, const char* b,
                                     char* out);
ZENT_API void cmast_call_spcl_fcn3_f(float (*fn)(float, float, float), long count, long step, const char* a, const char* b,
                                     const char* c, char* out);
ZENT_API void cmast_call_spcl_fcn3_d(double (*fn)(double, double, double), long count, long step, const char* a, const char* b,
                                     const char* c, char* out);

/* The least prime not below n (2 for n below 2; 0 when no 64-bit number is one), and 1 or 0: is n prime. */
ZENT_API long nextPrime(long n);
ZENT_API long isPrime(long n);

/* ---- Error bridge ---------------------------------------------------------------------------------------------------- */

typedef struct {
  const char* name;
  long number; /* of the library */
  long tarn;   /* what a host program sees: from 10001 (math) and 20001 (statistics) */
} cmast_err_row;

enum { cmath_err_table_rows = 978, cstat_err_table_rows = 1222 };
ZENT_API extern const cmast_err_row cmath_err_table[cmath_err_table_rows];
ZENT_API extern const cmast_err_row cstat_err_table[cstat_err_table_rows];

/* The print procedures of the two halves. The frame's name is not shown: the user knows the label. */
ZENT_API void cmath_err_print_proc(long type, long number, const char* frame, const char* text);
ZENT_API void cstat_err_print_proc(long type, long number, const char* frame, const char* text);
ZENT_API void ORV_ZENT_err_print_proc(long type, long number, const char* frame, const char* text, long is_stat);

/* Look-ups in the math table when is_math is exactly 1, else in the statistics table; the first row that matches. */
ZENT_API const char* cmast_err_name_from_number(long number, long is_math, long use_zent_number); /* or "<unknown error>" */
ZENT_API long cmast_zent_num_tarn_num(long number, long is_math, long from_zent);                 /* or -1 */
ZENT_API long cmast_err_number_from_name(const char* name, long is_math, long want_zent);         /* or -1 */

/* ---- Structures ------------------------------------------------------------------------------------------------------ */

/* A spline or piecewise polynomial (records of include/zent/records.h, in single for type 4, else in double) into seven output
   variables: domain dimension, target dimension, orders, coefficient counts, knot (breakpoint) counts, all knots one dimension
   after the other, all coefficients. */
ZENT_API void cmast_bspline_to_TVH(const void* spline, long type, ORV_VARIABLE** out7);
ZENT_API void cmast_ppoly_to_TVH(const void* ppoly, long type, ORV_VARIABLE** out7);

/* The reverse: a new record in one block that zent_free_allocated_memory releases. The structure has the tags DOMAIN_DIM,
   TARGET_DIM (1 where missing), ORDER, NUM_COEF, NUM_KNOTS and KNOTS, or NUM_BREAKPOINTS and BREAKPOINTS, and COEF. Raises
   message -1 for one that does not fit together; null then and when memory is short. */
ZENT_API void* cmast_tsdh_to_Cstruct(ORV_VARIABLE* structure, long type, long is_ppoly);

/* A radial fit into a structure variable, with the name of the user's radial function ("" for the built-in one), and back: the
   record then points into the structure. 0 when the structure is not one of a radial fit. */
ZENT_API void cmast_radial_struct(const void* fit, long type, const char* fcn_name, ORV_VARIABLE* out);
ZENT_API long cmast_chk_radial_struct(ORV_VARIABLE* structure, long type, void* fit);
ZENT_API extern double global_delta; /* parameter of the built-in radial function of the structure read last */

#ifdef __cplusplus
}
#endif
#endif
