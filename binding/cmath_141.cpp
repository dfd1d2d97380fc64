// FFTINIT: tables for FFTCOMP.
#include <cstring>

#include "binding/routines.hpp"
#include "math/transform/factors.hpp"
#include "zent.h"

namespace zent::binding {

namespace {

enum { kind = 2, n_position, result_position, unused, position_count = 6 };

constexpr Position positions[] = {
    {"PRECISION", Kind::required, Type::precision, "type code of the computation: 5 or 4 real, 9 or 6 complex"},
    status_position,
    {"KIND", Kind::required, Type::integer, "1 sine, 2 cosine, else real or complex as the type code says"},
    {"N", Kind::required, Type::integer, "length of the transform"},
    {"RESULT", Kind::output, Type::any,
     "an undefined variable: receives the table, a vector of reals; stays undefined for N = 1"},
    unused_position,
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

template <class Real>
Real* make_table(long selector, bool complex_values, long n, long& length) {
  constexpr bool wide = sizeof(Real) == sizeof(double);
  using namespace zent::transform;
  const auto table = [&](auto in_double, auto in_single) -> Real* {
    if constexpr (wide) {
      return in_double(n);
    } else {
      return in_single(n);
    }
  };
  if (selector == 1) {
    length = sine_table_length(n);
    return table(zent_d_fft_sine_init, zent_f_fft_sine_init);
  }
  if (selector == 2) {
    length = cosine_table_length(n);
    return table(zent_d_fft_cosine_init, zent_f_fft_cosine_init);
  }
  if (complex_values) {
    length = complex_table_length(n);
    return table(zent_z_fft_complex_init, zent_c_fft_complex_init);
  }
  length = real_table_length(n);
  return table(zent_d_fft_real_init, zent_f_fft_real_init);
}

}  // namespace

const Routine routine_141 = {141, "FFTINIT", true, position_count, positions};

long mathstat_141(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("FFTINIT");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_141, argc, argv, arguments)) return 0;
  const int precision = arguments.precision;
  const bool wide = precision == ORV_TYP_DOUBLE || precision == ORV_TYP_DCOMPLEX;
  const bool complex_values = precision == ORV_TYP_COMPLEX || precision == ORV_TYP_DCOMPLEX;
  const long selector = arguments.integer(kind), n = arguments.integer(n_position);
  long length = 0, code;
  void* table = wide ? static_cast<void*>(make_table<double>(selector, complex_values, n, length))
                     : make_table<float>(selector, complex_values, n, length);
  if (cmast_opi_clear_errors(1, &code, arguments.status, 1) == 0 && table != nullptr) {
    ORV_VARIABLE* temporary = nullptr;
    void* data = ORV_MakeTempVector(wide ? ORV_TYP_DOUBLE : ORV_TYP_FLOAT, length, 0, &temporary);
    if (data != nullptr) {
      std::memcpy(data, table, static_cast<std::size_t>(length) * (wide ? sizeof(double) : sizeof(float)));
      ORV_VarCopy(temporary, argv[result_position]);
    }
  }
  zent_free_allocated_memory(table);
  return 0;
}

}  // namespace zent::binding
