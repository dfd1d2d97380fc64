/* Fourier transforms. */
#ifndef ZENT_TRANSFORM_H
#define ZENT_TRANSFORM_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
