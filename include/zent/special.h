/* Constants, unit conversion and calendar dates. */
#ifndef ZENT_SPECIAL_H
#define ZENT_SPECIAL_H

#include "zent/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A named mathematical or physical constant (1986 adjustment), such as "PI", "SPEEDLIGHT" or "ELECTRONMASS".
 *   name    in any case; blanks and underscores do not count
 *   unit    null: the value in the table's own unit; "SI": in the base units; else an expression of unit names with prefixes,
 *           products, quotients and integer powers: "km/s", "KG*M^2/S^2". At most 10 names. A power belongs to one name, and so
 *           does "/": M/S/S is length over time squared. Temperatures are scaled, not shifted.
 *   result  the value; not-a-number after an error
 *   raises  12111 no such constant, 12112 the dimensions do not agree, 12114 a name that is no unit, an empty name, too many
 *           names or a power beyond 1e9 (all type 5); 12113 a Warning: a mass was taken as the force of its standard weight,
 *           or a force as a mass
 * A name of two letters is always a one-letter prefix and a unit when its first letter can be one: "AU" is atto-U, an error. */
ZENT_API float zent_f_constant(const char *name, const char *unit);
ZENT_API double zent_d_constant(const char *name, const char *unit);

/* Days from 1 January 1900 (day 0) to a date; negative before it. Julian calendar up to 4 October 1582, Gregorian from
 * 15 October 1582; there is no year 0, and every fourth year before the reform is a leap year, negative ones included.
 *   result  the count; 0 after an error
 *   raises  602 month outside 1 to 12, 603 day below 1, 12001 year 0, 12002 a day that the reform left out, 12004 a day beyond
 *           the month's end, 132 a year beyond 2.5e16 either way (type 5); 12003 a Note: a year before -45 */
ZENT_API long zent_date_to_days(long day, long month, long year);

/* The date of a day count: the inverse of zent_date_to_days, for counts from -2147483647 to 2147483647.
 *   day, month, year   written only when no error was raised
 *   raises  132 a count beyond the range, 150 a null pointer (type 5) */
ZENT_API void zent_days_to_date(long days, long *day, long *month, long *year);

#ifdef __cplusplus
}
#endif
#endif
