/* Both public headers serve plain C, alone and together. */
#include "zent.h"
#include "zents.h"

double c_headers_sum(void);
double c_headers_sum(void) {
  zent_d_complex z = {1.0, 2.0};
  zents_e1stz(1, z);
  zent_error_options(ZENT_SET_PRINT, ZENT_NOTE, 0, 0);
  return zent_d_machine(4) + zents_machine.real[0] + zent_D_NUMBER[11];
}
