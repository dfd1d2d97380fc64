/* Integrals, Gauss rules and derivatives. */
#ifndef ZENT_QUADRATURE_H
#define ZENT_QUADRATURE_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif
#endif
