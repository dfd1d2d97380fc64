/* Probability distributions. */
#ifndef ZENT_DISTRIBUTIONS_H
#define ZENT_DISTRIBUTIONS_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
