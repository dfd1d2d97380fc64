/* The library from C, without any host:
 *   cc constants.c $(pkg-config --cflags --libs zent) -o constants && ./constants */
#include <stdio.h>
#include <zent.h>

int main(void) {
  long day, month, year;

  printf("speed of light       %.9g km/s\n", zent_d_constant("SPEEDLIGHT", "km/s"));
  printf("machine epsilon      %.17g\n", zent_d_machine(4));
  zent_days_to_date(zent_date_to_days(4, 10, 1582) + 1, &day, &month, &year);
  printf("the day after 4 October 1582 was %ld.%ld.%ld\n", day, month, year);

  /* An error of a caller would stop the process; a program that goes on by itself says so and asks for the number. */
  zent_error_options(ZENT_SET_STOP, ZENT_TERMINAL, 0, 0);
  zent_d_constant("SPEEDLIGHT", "kg");
  printf("error number         %ld\n", zent_error_code());
  return 0;
}
