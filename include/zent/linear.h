/* Dense systems of linear equations. */
#ifndef ZENT_LINEAR_H
#define ZENT_LINEAR_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
