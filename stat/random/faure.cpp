// Faure sequences of the statistics half.
#include "math/random/faure.hpp"

ZENT_FAURE_HALF(zent::Stat, zents)
