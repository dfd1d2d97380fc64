/* Types and small definitions shared by both halves of the library. */
#ifndef ZENT_BASE_H
#define ZENT_BASE_H

#include <stdio.h>

#if defined(__GNUC__)
#define ZENT_API __attribute__((visibility("default")))
#else
#define ZENT_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Complex values, real part first; the same records serve both halves. Every integer of the interface is a long. */
typedef struct {
  float re, im;
} zent_f_complex;

typedef struct {
  double re, im;
} zent_d_complex;

/* What a wrapper notes before a library call, so that it can put things back when a host error jumps over the library. */
typedef struct {
  long trap_depth; /* signal traps armed or counted */
  long jump_depth; /* jump buffers in use */
  void *scratch;   /* newest work memory of the calls in progress */
} zent_trap_state;

/* The frame of a library call as it stands before a routine of the host that the call makes. */
typedef struct {
  void *frame;
  long type, number, user;
} zent_frame_state;

/* Machine constants 1 to 8 of both precisions; see f_machine and d_machine. */
typedef struct {
  float single[8];
  double real[8];
} zent_machine_table;

/* Severity of an error; see zent_error_options for what each one does. */
enum {
  ZENT_NOTE = 1,
  ZENT_ALERT = 2,
  ZENT_WARNING = 3,
  ZENT_FATAL = 4,
  ZENT_TERMINAL = 5,
  ZENT_WARNING_IMMEDIATE = 6,
  ZENT_FATAL_IMMEDIATE = 7,
  ZENT_INTERNAL = 8
};

/* Error numbers of both halves by name, such as MATH_SINGULAR_MATRIX. */
enum zent_math_error {
#define E(name, number, tarn) name = number,
#include "zent/math_errors.def"
#undef E
  ZENT_MATH_ERROR_END
};
enum zent_stat_error {
#define E(name, number, tarn) name = number,
#define REPEAT(name, number, tarn)
#include "zent/stat_errors.def"
#undef E
  ZENT_STAT_ERROR_END
};

#ifdef __cplusplus
}
#endif
#endif
