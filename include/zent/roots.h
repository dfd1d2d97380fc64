/* Zeros of functions, systems and polynomials. */
#ifndef ZENT_ROOTS_H
#define ZENT_ROOTS_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
