// The covariance kernel of the mathematics half.
#include "math/optimize/covariance.hpp"

#include "zent/optimize.h"

ZENT_RCOVB_ENTRIES(zent)
