/* Eigenvalues and eigenvectors. */
#ifndef ZENT_EIGEN_H
#define ZENT_EIGEN_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
