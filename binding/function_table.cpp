// Weak references: a library built without one of the families has a null there, and the label is then not available.
#include "binding/function_table.hpp"

#include "zent/base.h"

#define ARGUMENTS_1(Real) Real
#define ARGUMENTS_2(Real) Real, Real
#define ARGUMENTS_3(Real) Real, Real, Real
#define PREFIX_math(P, name) zent_##P##_##name
#define PREFIX_stat(P, name) zents_##P##_##name
#define ROW(label, arrays, name, half)                                                    \
  ZENT_API __attribute__((weak)) float PREFIX_##half(f, name)(ARGUMENTS_##arrays(float)); \
  ZENT_API __attribute__((weak)) double PREFIX_##half(d, name)(ARGUMENTS_##arrays(double));
#define PAIR(label, arrays, name, other, half) ROW(label, arrays, name, half) ROW(label, arrays, other, half)

extern "C" {
#include "binding/function_labels.def"
}
#undef ROW
#undef PAIR

namespace zent::binding {

#define BOTH(half, name) reinterpret_cast<void*>(PREFIX_##half(f, name)), reinterpret_cast<void*>(PREFIX_##half(d, name))
#define ROW(label, arrays, name, half) {label, arrays, BOTH(half, name), nullptr, nullptr, false, #half[0] == 'm'},
#define PAIR(label, arrays, name, other, half) {label, arrays, BOTH(half, name), BOTH(half, other), true, #half[0] == 'm'},

const FunctionRow cmast_spcl_fcn_table[function_rows] = {
#include "binding/function_labels.def"
};

}  // namespace zent::binding
