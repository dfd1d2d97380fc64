/* Constants, unit conversion and calendar dates. */
#ifndef ZENT_SPECIAL_H
#define ZENT_SPECIAL_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

ZENT_API float zent_f_constant(const char *name, const char *unit);
ZENT_API double zent_d_constant(const char *name, const char *unit);

ZENT_API long zent_date_to_days(long day, long month, long year);
ZENT_API void zent_days_to_date(long days, long *day, long *month, long *year);

#ifdef __cplusplus
}
#endif
#endif
