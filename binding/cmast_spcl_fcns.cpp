// Element loops over scalar functions of one, two and three arguments.
#include "binding/cmast.h"

namespace {

// Every array is stepped by the element size of the first, so one loop serves contiguous arrays and fields of records.
template <class Real, class... Reals>
void apply(Real (*function)(Reals...), long count, long step, char* out, const auto*... in) {
  for (long i = 0; i < count; ++i) {
    *reinterpret_cast<Real*>(out + i * step) = function(*reinterpret_cast<const Reals*>(in + i * step)...);
  }
}

}  // namespace

extern "C" {

void cmast_call_spcl_fcn1_f(float (*fn)(float), long count, long step, const char* a, char* out) {
  apply(fn, count, step, out, a);
}
void cmast_call_spcl_fcn1_d(double (*fn)(double), long count, long step, const char* a, char* out) {
  apply(fn, count, step, out, a);
}
void cmast_call_spcl_fcn2_f(float (*fn)(float, float), long count, long step, const char* a, const char* b, char* out) {
  apply(fn, count, step, out, a, b);
}
void cmast_call_spcl_fcn2_d(double (*fn)(double, double), long count, long step, const char* a, const char* b, char* out) {
  apply(fn, count, step, out, a, b);
}
void cmast_call_spcl_fcn3_f(float (*fn)(float, float, float), long count, long step, const char* a, const char* b, const char* c,
                            char* out) {
  apply(fn, count, step, out, a, b, c);
}
void cmast_call_spcl_fcn3_d(double (*fn)(double, double, double), long count, long step, const char* a, const char* b,
                            const char* c, char* out) {
  apply(fn, count, step, out, a, b, c);
}
}
