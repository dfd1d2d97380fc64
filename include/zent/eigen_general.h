/* Eigenvalues of general matrices and of general pencils. */
#ifndef ZENT_EIGEN_GENERAL_H
#define ZENT_EIGEN_GENERAL_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
