/* Linear least squares and the singular value decomposition. */
#ifndef ZENT_LEAST_SQUARES_H
#define ZENT_LEAST_SQUARES_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
