// The nonnegative definite kernels of the statistics half.
#include "math/linalg/cholesky_entries.hpp"

ZENT_NONNEG_ENTRIES(zent::Stat, zents)
