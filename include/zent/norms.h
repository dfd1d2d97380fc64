/* Norms of vectors and matrices, and products of matrices. */
#ifndef ZENT_NORMS_H
#define ZENT_NORMS_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
