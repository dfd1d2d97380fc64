// FFTCOMP: Fourier, sine and cosine transforms.
#include "binding/routines.hpp"
#include "math/transform/factors.hpp"
#include "zent.h"

namespace zent::binding {

namespace {

enum { kind = 2, n_position, columns, p, result_position, backward, params, row_params, position_count = 10 };

constexpr Position positions[] = {
    {"PRECISION", Kind::required, Type::precision, "type code of the computation: 5 or 4 real, 9 or 6 complex"},
    status_position,
    {"KIND", Kind::required, Type::integer, "1 sine, 2 cosine, else real or complex as the type code says"},
    {"N", Kind::required, Type::integer, "length of the transform; in two dimensions the number of rows"},
    {"NCOL", Kind::optional, Type::integer, "in two dimensions the number of columns"},
    {"P", Kind::required, Type::field, "the values to be transformed, N, or N by NCOL"},
    {"RESULT", Kind::output, Type::any, "an undefined variable: receives the transform, shaped as P"},
    {"BACKWARD", Kind::optional, Type::integer, "given: the backward transform", ZENT_BACKWARD, Pass::flag},
    {"PARAMS", Kind::optional, Type::real, "table made by FFTINIT for N; in two dimensions for NCOL"},
    {"ROW_PARAMS", Kind::optional, Type::real, "in two dimensions the table for N"},
};
static_assert(sizeof positions / sizeof positions[0] == position_count);

bool is_complex(int precision) {
  return precision == ORV_TYP_COMPLEX || precision == ORV_TYP_DCOMPLEX;
}

// The length that the table of this transform has.
long table_length(long selector, bool complex_values, long n) {
  using namespace zent::transform;
  if (selector == 1) return sine_table_length(n);
  if (selector == 2) return cosine_table_length(n);
  return complex_values ? complex_table_length(n) : real_table_length(n);
}

const char* refusal(const Arguments& arguments) {
  const long selector = arguments.integer(kind), n = arguments.integer(n_position);
  const bool complex_values = is_complex(arguments.precision), plane = arguments.present[columns];
  const long ncol = plane ? arguments.integer(columns) : 1;
  if (complex_values && (selector == 1 || selector == 2)) return "FFTCOMP: sine and cosine transforms take real values";
  if (plane && !complex_values) return "FFTCOMP: a transform in two dimensions takes complex values";
  if (n > 0 && ncol > 0 && (n > arguments.count[p] || ncol > arguments.count[p] || arguments.count[p] != n * ncol)) {
    return "FFTCOMP: argument P must have N elements, or N by NCOL";
  }
  const long first = plane ? ncol : n;
  if (arguments.present[params] && arguments.count[params] != table_length(selector, complex_values, first)) {
    return "FFTCOMP: argument PARAMS is not a table for this transform and length";
  }
  if (plane && arguments.present[params] != arguments.present[row_params]) {
    return "FFTCOMP: a transform in two dimensions takes both tables, PARAMS and ROW_PARAMS, or none";
  }
  if (arguments.present[row_params] && arguments.count[row_params] != table_length(selector, complex_values, n)) {
    return "FFTCOMP: argument ROW_PARAMS is not a table for this length";
  }
  return nullptr;
}

void* function(int precision, long selector, bool plane) {
  const bool wide = precision == ORV_TYP_DOUBLE || precision == ORV_TYP_DCOMPLEX;
  const auto choose = [wide](auto* in_double, auto* in_single) {
    return wide ? reinterpret_cast<void*>(in_double) : reinterpret_cast<void*>(in_single);
  };
  if (plane) return choose(zent_z_fft_2d_complex, zent_c_fft_2d_complex);
  if (is_complex(precision)) return choose(zent_z_fft_complex, zent_c_fft_complex);
  if (selector == 1) return choose(zent_d_fft_sine, zent_f_fft_sine);
  if (selector == 2) return choose(zent_d_fft_cosine, zent_f_fft_cosine);
  return choose(zent_d_fft_real, zent_f_fft_real);
}

}  // namespace

const Routine routine_140 = {140, "FFTCOMP", true, position_count, positions};

long mathstat_140(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("FFTCOMP");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_140, argc, argv, arguments)) return 0;
  if (const char* text = refusal(arguments)) {
    refuse(text);
    return 0;
  }
  const long selector = arguments.integer(kind);
  const bool plane = arguments.present[columns];
  const bool trigonometric = selector == 1 || selector == 2;
  const long dims[2] = {arguments.integer(n_position), plane ? arguments.integer(columns) : 1};
  const int type = is_complex(arguments.precision) ? arguments.precision : arguments.real_type();
  ORV_VARIABLE* temporary = nullptr;
  // A length that the library refuses gets a result of one element, which is never handed over.
  const long one = 1;
  const bool sound = dims[0] > 0 && dims[1] > 0;
  void* data = ORV_MakeTempArray(type, sound && plane ? 2 : 1, sound ? dims : &one, 0, &temporary);
  if (data == nullptr) return 0;
  Words words;
  words.add(dims[0]);
  if (plane) words.add(dims[1]);
  words.add(arguments.data[p]);
  if (arguments.present[backward] && !trigonometric) words.option(ZENT_BACKWARD);
  if (plane && arguments.present[params]) {
    words.option(ZENT_PARAMS_2D, arguments.data[params], arguments.data[row_params]);
  } else if (arguments.present[params]) {
    words.option(ZENT_PARAMS, arguments.data[params]);
  }
  words.option(ZENT_RETURN_USER, data).end();
  words.call<void*>(function(arguments.precision, selector, plane));
  long code;
  if (cmast_opi_clear_errors(1, &code, arguments.status, 1) == 0) ORV_VarCopy(temporary, argv[result_position]);
  return 0;
}

}  // namespace zent::binding
