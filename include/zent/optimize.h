/* Minimization and nonlinear least squares. */
#ifndef ZENT_OPTIMIZE_H
#define ZENT_OPTIMIZE_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
