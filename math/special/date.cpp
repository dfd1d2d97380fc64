// Calendar dates and day counts. Day 0 is 1 January 1900; the calendar is Julian up to 4 October 1582 and Gregorian from
// 15 October 1582 on, without the ten days between; the year before 1 is -1.
#include <climits>
#include <cstdlib>

#include "runtime/envelope.hpp"
#include "zent.h"

namespace zent {
namespace {

constexpr long reform_year = 1582;
constexpr long reform_year_days = 355;
constexpr long first_calendar_year = -45;       // the Julian calendar was introduced in this year
constexpr long year_limit = 25000000000000000;  // day counts of later and earlier years have no 64-bit value

// Day of the year before each month's first, counted forward from the first of January and backward from the year's end.
constexpr long lv_ndate[12] = {-1, 30, 58, 89, 119, 150, 180, 211, 242, 272, 303, 333};
constexpr long lv_ndate2[12] = {366, 335, 307, 276, 246, 215, 185, 154, 123, 93, 62, 32};

// First day of each month within a year.
constexpr long common_year[12] = {1, 32, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335};
constexpr long leap_year[12] = {1, 32, 61, 92, 122, 153, 183, 214, 245, 275, 306, 336};
constexpr long year_1582[12] = {1, 32, 60, 91, 121, 152, 182, 213, 244, 274, 295, 325};

constexpr long month_length[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// Flag 1 for a leap year, -1 for a common one. Before the reform every fourth year is one, negative years included.
void l_n4yin(long year, long* flag) {
  if (year == 0) {
    raise<Math>(5, MATH_YEAR_0);
  } else if (year % 4 != 0) {
    *flag = -1;
  } else if (year > reform_year && year % 100 == 0) {
    *flag = year % 400 == 0 ? 1 : -1;
  } else {
    *flag = 1;
  }
}

bool is_leap(long year) {
  long flag = -1;
  l_n4yin(year, &flag);
  return flag == 1;
}

long year_length(long year) {
  return year == reform_year ? reform_year_days : is_leap(year) ? 366 : 365;
}

void l_c1dat(long day, long month, long year, long* position) {
  zent_c1iarg(month, "month", 1, 12, position);
  zent_c1iarg(day, "day", 1, -1, position);
  const bool in_range = !failed<Math>();
  if (year == 0) {
    raise<Math>(5, MATH_YEAR_0);
    return;
  }
  if (year == reform_year && month == 10 && day >= 5 && day <= 14) {
    raise<Math>(5, MATH_YEAR_1582, {.i = {day}});
    return;
  }
  if (!in_range) return;  // no month to look up, and a Note would stand in the place of the error
  if (year < first_calendar_year) raise<Math>(1, MATH_YEAR_45, {.i = {year}});
  const long length = month_length[month - 1] + (month == 2 && is_leap(year) ? 1 : 0);
  if (day > length) raise<Math>(5, MATH_BAD_DAY, {.i = {month, year, length, day}});
}

long days_since_1900(long day, long month, long year) {
  const long y = year - 1900;
  const long centuries_kept = y <= 99 ? 0 : (year - 2000) / 400 + 1;  // years divisible by 400 stay leap years
  const long leap_days = y / 4 - (y / 100 - centuries_kept);
  const long count = leap_days * 366 + (y - leap_days) * 365 + lv_ndate[month - 1] + day;
  return is_leap(year) && month < 3 ? count - 1 : count;
}

long days_before_1900(long day, long month, long year) {
  const long a = 1900 - year;
  const long leap_days = a / 4 - (a < 200 ? a / 100 : 2);  // 1800 and 1700 alone are Gregorian centuries
  long count = leap_days * 366 + (a - leap_days) * 365 - 365 + lv_ndate2[month - 1] - day;
  const bool julian = year < reform_year || (year == reform_year && (month <= 9 || (month == 10 && day < 5)));
  if (julian) count -= 10;
  if (year < 0) count -= 366;  // no year 0 to step over
  if (is_leap(year) && month > 2) count -= 1;
  return -count;
}

long l_date_to_days(long day, long month, long year) {
  long position = 0;
  if (year > year_limit || year < -year_limit) {
    raise<Math>(5, MATH_INTEGER_OUT_OF_RANGE, {.i = {-year_limit, year_limit, year}, .l = {"year"}});
    return 0;
  }
  l_c1dat(day, month, year, &position);
  if (zent_n1rty(0) >= 2) return 0;  // a Note does not stop it
  return year >= 1900 ? days_since_1900(day, month, year) : days_before_1900(day, month, year);
}

struct Date {
  long day, month, year;
};

// Month and day from the day of the year.
void l_n3yin(const long* day_of_year, const long* leap_flag, const long* year, long* month, long* day) {
  const long n = *day_of_year;
  if (n < 1) raise<Math>(5, MATH_NEGATIVE_DAYS, {.i = {n}});
  if (*year == reform_year && n > reform_year_days) raise<Math>(5, MATH_DAYS_1582, {.i = {n}});
  if (*leap_flag == 1 && n > 366) raise<Math>(5, MATH_LEAP_YEAR_DAYS, {.i = {n}});
  if (*leap_flag == -1 && n >= 366) raise<Math>(5, MATH_DAYS_PER_YEAR, {.i = {n}});
  if (zent_n1rty(0) > 1) return;
  const long* first = *year == reform_year ? year_1582 : *leap_flag == 1 ? leap_year : common_year;
  long m = 11;
  while (first[m] > n) --m;
  *month = m + 1;
  *day = n - first[m] + 1;
  if (*year == reform_year && *month == 10 && *day > 4) *day += 10;
}

// Long jumps of 400 and 128 years, then a walk by years. Both counts of days are those of the Gregorian calendar.
void year_from_1900(long a, long* year, long* day_of_year) {
  const long rest = a % 146097;
  long start = a - rest % 46751;
  *year = 1900 + 400 * (a / 146097) + 128 * (rest / 46751);
  for (long length = year_length(*year); start + length <= a; length = year_length(*year)) {
    start += length;
    *year += 1;
  }
  *day_of_year = a - start + 1;
}

// The same backward. Up to the reform the cycles are those of the Julian calendar.
void year_before_1900(long a, long* year, long* day_of_year) {
  const long base = a < 115783 ? 1899 : a < 116138 ? reform_year : reform_year - 1;
  const long rest = base == 1899 ? a : base == reform_year ? a - 115782 : a - 116137;
  long passed = 0;
  *year = base;
  if (base != reform_year) {
    const long cycle = base < 1583 ? 146100 : 146097;
    const long chunk = base < 1583 ? 46752 : 46751;
    const long part = rest % cycle;
    *year = base - 400 * (rest / cycle) - 128 * (part / chunk);
    passed = rest - part % chunk;
  }
  const long target = a >= 694693 ? rest + 1 : rest;  // 29 February of the missing year 0
  bool stepped = false;
  if (*year < 1) *year -= 1, stepped = true;
  while (passed + year_length(*year) < target) {
    passed += year_length(*year);
    *year -= 1;
    if (*year < 1 && !stepped) *year -= 1, stepped = true;
  }
  *day_of_year = year_length(*year) - target + passed + 1;
  // A jump that ends exactly on a year's first day starts the walk one year too low.
  if (*day_of_year > year_length(*year)) {
    *day_of_year -= year_length(*year);
    *year += *year == -1 ? 2 : 1;
  }
}

void l_days_to_date(long days, long* day, long* month, long* year) {
  if (day == nullptr || month == nullptr || year == nullptr) {
    raise<Math>(5, MATH_UNEXPECTED_NULL_POINTER, {.l = {day == nullptr ? "day" : month == nullptr ? "month" : "year"}});
    return;
  }
  if (days > INT_MAX || days < -INT_MAX) {
    raise<Math>(5, MATH_INTEGER_OUT_OF_RANGE, {.i = {-INT_MAX, INT_MAX, days}, .l = {"days"}});
    return;
  }
  Date date{0, 0, 0};
  long day_of_year = 0, leap_flag = -1;
  if (days >= 0) {
    year_from_1900(days, &date.year, &day_of_year);
  } else {
    year_before_1900(-days, &date.year, &day_of_year);
  }
  l_n4yin(date.year, &leap_flag);
  l_n3yin(&day_of_year, &leap_flag, &date.year, &date.month, &date.day);
  if (zent_n1rty(0) > 1) return;
  *day = date.day;
  *month = date.month;
  *year = date.year;
}

}  // namespace
}  // namespace zent

extern "C" long zent_date_to_days(long day, long month, long year) {
  return zent::scalar_call<zent::Math>("zent_date_to_days", [=] { return zent::l_date_to_days(day, month, year); });
}

extern "C" void zent_days_to_date(long days, long* day, long* month, long* year) {
  zent::public_call<zent::Math>("zent_days_to_date", [=] { zent::l_days_to_date(days, day, month, year); });
}
