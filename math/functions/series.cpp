// Chebyshev series support of the mathematics half.
#include "math/functions/series.hpp"

#include "zent/functions.h"

extern "C" float zent_csevl(const float* series, long n, float x) {
  return zent::series::csevl<zent::Math>(series, n, x);
}
extern "C" double zent_dcsevl(const double* series, long n, double x) {
  return zent::series::csevl<zent::Math>(series, n, x);
}
extern "C" long zent_inits(const float* series, long n, float eta) {
  return zent::series::initds<zent::Math>(series, n, eta);
}
extern "C" long zent_initds(const double* series, long n, double eta) {
  return zent::series::initds<zent::Math>(series, n, eta);
}
