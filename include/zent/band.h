/* Band systems of linear equations. */
#ifndef ZENT_BAND_H
#define ZENT_BAND_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
