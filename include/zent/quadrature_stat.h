/* The statistics half's own copies of the building blocks of the integrators. */
#ifndef ZENT_QUADRATURE_STAT_H
#define ZENT_QUADRATURE_STAT_H

#include "zent/base.h"

#pragma push_macro("ZENT_HALF")
#undef ZENT_HALF
#define ZENT_HALF(name) zents_##name
#include "zent/quadrature_support.inc"
#undef ZENT_HALF
#pragma pop_macro("ZENT_HALF")

#endif
