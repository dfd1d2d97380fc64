#include "runtime/machine.hpp"

#include <cstdio>

#include "runtime/error.hpp"

namespace zent {

namespace {

constexpr long old_constants[12] = {32, 4, 2, 31, 2147483647, 2, 24, -125, 128, 53, -1021, 1024};

// Null stands for the standard stream, which is no constant of the language.
template <class Half>
constinit FILE* streams[3] = {};

}  // namespace

template <class Half>
long imach(long n) {
  if (n >= 1 && n <= 12) return old_constants[n - 1];
  raise<Half>(5, MATH_INTEGER_OUT_OF_RANGE, {.i = {1, 12, n}, .l = {"n"}});
  return 0;
}

template <class Half>
void umach(long n, FILE** stream) {
  if (n == 0 || n < -3 || n > 3) {
    raise<Half>(5, MATH_INDEX_VARIABLE_VALUE, {.i = {n}});
    return;
  }
  FILE* const standard[3] = {stdin, stdout, stderr};
  FILE*& kept = streams<Half>[(n > 0 ? n : -n) - 1];
  if (n < 0) {
    kept = *stream;
  } else {
    *stream = kept != nullptr ? kept : standard[n - 1];
  }
}

#define ZENT_INSTANTIATE(Half)     \
  template long imach<Half>(long); \
  template void umach<Half>(long, FILE**);
ZENT_INSTANTIATE(Math)
ZENT_INSTANTIATE(Stat)
#undef ZENT_INSTANTIATE

}  // namespace zent
