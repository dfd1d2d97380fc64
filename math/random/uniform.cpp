// Uniform streams of the mathematics half: generators 1 to 6.
#include "math/random/uniform.hpp"

ZENT_UNIFORM_HALF(zent::Math, zent)

extern "C" void zent_rnses(float* table) {
  zent::public_call<zent::Math>("zent_rnses", [=] { zent::uniform::l_table_set<zent::Math>(table); });
}
extern "C" void zent_drnses(double* table) {
  zent::public_call<zent::Math>("zent_drnses", [=] { zent::uniform::l_table_set<zent::Math>(table); });
}
