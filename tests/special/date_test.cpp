#include <gtest/gtest.h>

#include <climits>

#include "tests/support/quiet.hpp"
#include "zent.h"

namespace {

class Dates : public ::testing::Test {
 protected:
  void SetUp() override {
    be_quiet();
  }
};

// Julian day numbers by the proleptic formulas of the two calendars, in astronomical years (0 is the year before 1).
long julian_day(long day, long month, long year, bool gregorian) {
  const long y = year < 0 ? year + 1 : year;
  const long a = (14 - month) / 12, yy = y + 4800 + 4000 - a,
             m = month + 12 * a - 3;  // shifted by 4000 years: no negative numbers
  const long days = day + (153 * m + 2) / 5 + 365 * yy + yy / 4;
  return gregorian ? days - yy / 100 + yy / 400 - 32045 - 1460970 : days - 32083 - 1461000;
}

TEST_F(Dates, AgreesWithJulianDayNumbers) {
  const long epoch = julian_day(1, 1, 1900, true);
  EXPECT_EQ(epoch, 2415021);  // 1 January 1900, noon
  // From the year 1 on both calendars have the leap years that the formulas have.
  for (long year = 1; year <= 4000; ++year) {
    for (long month = 1; month <= 12; ++month) {
      for (long day : {1L, 28L}) {
        const bool gregorian = year > 1582 || (year == 1582 && (month > 10 || (month == 10 && day > 14)));
        ASSERT_EQ(zent_date_to_days(day, month, year), julian_day(day, month, year, gregorian) - epoch)
            << day << "." << month << "." << year;
      }
    }
  }
}

TEST_F(Dates, CountsAndDatesAreInverseWithoutGaps) {
  long expected = zent_date_to_days(1, 1, -1500);
  const long last = zent_date_to_days(31, 12, 3500);
  long day = 0, month = 0, year = 0;
  for (; expected <= last; ++expected) {
    zent_days_to_date(expected, &day, &month, &year);
    ASSERT_EQ(zent_date_to_days(day, month, year), expected) << day << "." << month << "." << year;
  }
}

struct Date {
  long days, day, month, year;
};

TEST_F(Dates, KnownDates) {
  const Date cases[] = {
      {0, 1, 1, 1900},
      {-1, 31, 12, 1899},
      {36524, 1, 1, 2000},
      {2299161 - 2415021, 15, 10, 1582},
      {2299160 - 2415021, 4, 10, 1582},
  };
  for (const Date& c : cases) {
    long day = 0, month = 0, year = 0;
    zent_days_to_date(c.days, &day, &month, &year);
    EXPECT_EQ(day, c.day);
    EXPECT_EQ(month, c.month);
    EXPECT_EQ(year, c.year);
    EXPECT_EQ(zent_date_to_days(c.day, c.month, c.year), c.days);
  }
  // The year after -1 is 1.
  EXPECT_EQ(zent_date_to_days(1, 1, 1) - zent_date_to_days(31, 12, -1), 1);
  // First days of years where a long jump ends exactly: 1 January of 1644 and of its like.
  for (long y : {126L, 398L, 526L, 1054L, 1326L, 1454L, 1644L, 1772L}) {
    long day = 0, month = 0, year = 0;
    zent_days_to_date(zent_date_to_days(1, 1, y), &day, &month, &year);
    EXPECT_EQ(day * 1000000 + month * 10000 + year, 1010000 + y);
  }
}

struct Refusal {
  long day, month, year, number;
};

TEST_F(Dates, RefusesImpossibleDates) {
  const Refusal cases[] = {
      {1, 0, 2000, MATH_INEQUALITY_VIOLATION_2},
      {1, 13, 2000, MATH_INEQUALITY_VIOLATION_2},
      {1, LONG_MAX, 2000, MATH_INEQUALITY_VIOLATION_2},
      {0, 1, 2000, MATH_INEQUALITY_VIOLATION_3},
      {1, 1, 0, MATH_YEAR_0},
      {5, 10, 1582, MATH_YEAR_1582},
      {14, 10, 1582, MATH_YEAR_1582},
      {29, 2, 1900, MATH_BAD_DAY},
      {31, 4, 2001, MATH_BAD_DAY},
      {29, 2, 1501, MATH_BAD_DAY},
      {1, -2147483648L, -100, MATH_INEQUALITY_VIOLATION_2},  // a Note for the year does not hide it
      {1, 1, LONG_MIN, MATH_INTEGER_OUT_OF_RANGE},
      {1, 1, LONG_MAX, MATH_INTEGER_OUT_OF_RANGE},
  };
  for (const Refusal& c : cases) {
    EXPECT_EQ(zent_date_to_days(c.day, c.month, c.year), 0);
    EXPECT_EQ(zent_error_code(), c.number) << c.day << "." << c.month << "." << c.year;
    EXPECT_EQ(zent_n1rty(1), 5);
  }
  EXPECT_EQ(zent_date_to_days(29, 2, 1500) + 1, zent_date_to_days(1, 3, 1500));
  EXPECT_EQ(zent_error_code(), 0);
  zent_date_to_days(1, 1, -46);
  EXPECT_EQ(zent_n1rty(1), 1);
  EXPECT_EQ(zent_error_code(), MATH_YEAR_45);
  zent_date_to_days(1, 1, -45);
  EXPECT_EQ(zent_n1rty(1), 0);
}

TEST_F(Dates, RefusesCountsBeyondTheRange) {
  for (long days : {LONG_MAX, LONG_MIN, 2147483648L, -2147483648L}) {
    long day = 7, month = 8, year = 9;
    zent_days_to_date(days, &day, &month, &year);
    EXPECT_EQ(zent_error_code(), MATH_INTEGER_OUT_OF_RANGE);
    EXPECT_EQ(day * 100 + month * 10 + year, 789);
  }
  for (long days : {2147483647L, -2147483647L}) {
    long day = 0, month = 0, year = 0;
    zent_days_to_date(days, &day, &month, &year);
    EXPECT_EQ(zent_error_code(), 0);
    EXPECT_EQ(zent_date_to_days(day, month, year), days);
  }
  long month = 0, year = 0;
  zent_days_to_date(0, nullptr, &month, &year);
  EXPECT_EQ(zent_error_code(), MATH_UNEXPECTED_NULL_POINTER);
}

}  // namespace
