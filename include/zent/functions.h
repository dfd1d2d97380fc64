/* Special functions. */
#ifndef ZENT_FUNCTIONS_H
#define ZENT_FUNCTIONS_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
