/* Bessel, Kelvin and Airy functions, Fresnel integrals, elliptic integrals. */
#ifndef ZENT_BESSEL_H
#define ZENT_BESSEL_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
