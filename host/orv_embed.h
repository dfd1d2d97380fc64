/* The host in a program of one's own, in C: load a module, make variables, call procedures, let them call functions in C.
 *
 * Nothing here jumps or throws: a call that fails returns 0 (or null) and writes why into error_text, cut to size bytes and
 * always terminated; error_text may be null. Text is copied on the way in. One thread at a time. */
#ifndef ORV_EMBED_H
#define ORV_EMBED_H

#include <stddef.h>

#include "binding/orv_host.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Loads the shared object of a module. 1 on success. */
int orv_embed_load(const char* path, char* error_text, size_t size);

/* Starts a module that is linked into the program: its entry point is given. 1 on success. */
int orv_embed_register(int (*load)(void), char* error_text, size_t size);

/* Calls a registered procedure (any case) with argc variables. The procedure may change and redefine each of them; they stay the
 * caller's. Variables come from the functions below. 1 on success. */
int orv_embed_call(const char* name, int argc, ORV_VARIABLE** argv, char* error_text, size_t size);

/* New variables; null if memory ran out or the type or shape is wrong. The caller releases each with orv_embed_release.
 * An array has rank extents in dims, the last of which varies fastest, and holds zeros, or a copy of data if that is not null
 * (for strings: an array of const char pointers). */
ORV_VARIABLE* orv_embed_undefined(void);
ORV_VARIABLE* orv_embed_real(double value);
ORV_VARIABLE* orv_embed_float(float value);
ORV_VARIABLE* orv_embed_integer(long value);
ORV_VARIABLE* orv_embed_complex(double re, double im);
ORV_VARIABLE* orv_embed_string(const char* text);
ORV_VARIABLE* orv_embed_array(int type, int rank, const long* dims, const void* data);
void orv_embed_release(ORV_VARIABLE* variable); /* null is allowed */

/* What a variable holds: its type code, its number of elements (0 when undefined), its rank (0: a scalar), an extent, and its
 * first element, which stays valid until the variable changes. */
int orv_embed_type(const ORV_VARIABLE* variable);
long orv_embed_count(const ORV_VARIABLE* variable);
int orv_embed_rank(const ORV_VARIABLE* variable);
long orv_embed_extent(const ORV_VARIABLE* variable, int dimension);
void* orv_embed_data(ORV_VARIABLE* variable);

/* A scalar, or an array of one element, as a number. 1 on success. */
int orv_embed_to_real(const ORV_VARIABLE* variable, double* value, char* error_text, size_t size);
int orv_embed_to_integer(const ORV_VARIABLE* variable, long* value, char* error_text, size_t size);
/* Characters of a string scalar, "" for anything else. */
const char* orv_embed_text(const ORV_VARIABLE* variable);

/* A user routine in C. A function stores its result in *result, which is undefined at first; what a procedure stores
 * there is ignored, its outputs go to the arguments. Returns 0 on success; otherwise error_text is what the caller of the module
 * is told. orv_embed_set_real, _set_array and _set_string store a value in a result or an argument. 1 on success. */
typedef int (*orv_embed_routine)(void* context, int argc, ORV_VARIABLE** argv, ORV_VARIABLE* result, char* error_text,
                                 size_t size);
int orv_embed_set_real(ORV_VARIABLE* target, double value);
int orv_embed_set_integer(ORV_VARIABLE* target, long value);
int orv_embed_set_string(ORV_VARIABLE* target, const char* text);
int orv_embed_set_array(ORV_VARIABLE* target, int type, int rank, const long* dims, const void* data);

/* Makes a C function known under a name (any case) that a module is then given as a string; null takes it away. 1 on success. */
int orv_embed_define(const char* name, orv_embed_routine routine, void* context);

/* Where notes and warnings go; null: standard error. */
void orv_embed_information_sink(void (*sink)(void* context, const char* text), void* context);

#ifdef __cplusplus
}
#endif
#endif
