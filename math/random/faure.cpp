// Faure sequences of the mathematics half.
#include "math/random/faure.hpp"

ZENT_FAURE_HALF(zent::Math, zent)
