// All zeros of a polynomial.
#include "math/roots/poly_complex.hpp"
#include "math/roots/poly_real.hpp"
#include "math/roots/poly_refine.hpp"
#include "runtime/envelope.hpp"
#include "runtime/options.hpp"
#include "zent.h"

namespace zent::roots {

namespace {

template <class T>
struct Form;
template <>
struct Form<float> {
  using Complex = zent_f_complex;
  using Solver = RealPolynomial<float>;
  static constexpr auto eig_gen = zent_f_eig_gen;
};
template <>
struct Form<double> {
  using Complex = zent_d_complex;
  using Solver = RealPolynomial<double>;
  static constexpr auto eig_gen = zent_d_eig_gen;
};
template <>
struct Form<zent_f_complex> {
  using Complex = zent_f_complex;
  using Solver = ComplexPolynomial<zent_f_complex>;
  static constexpr auto eig_gen = zent_c_eig_gen;
};
template <>
struct Form<zent_d_complex> {
  using Complex = zent_d_complex;
  using Solver = ComplexPolynomial<zent_d_complex>;
  static constexpr auto eig_gen = zent_z_eig_gen;
};

template <class C>
struct PolynomialOptions {
  C* user = nullptr;
  bool companion = false;
};

template <class C>
void parse(Options& list, PolynomialOptions<C>& o) {
  while (const int code = list.code()) {
    if (code == ZENT_RETURN_USER) {
      o.user = list.pointer<C>();
    } else if (code == ZENT_COMPANION) {
      o.companion = true;
    } else if (!list.unknown<Math>(code)) {
      return;
    }
  }
}

template <class T>
void check(long ndeg, const T* coef, bool companion) {
  constexpr bool complex = kernel::ComplexRecord<T>;
  if (coef == nullptr) raise<Math>(5, MATH_REQ_ARGUMENT_IS_NULL, {.l = {"coef"}});
  if (ndeg < 1 || (!companion && ndeg > (complex ? 50 : 100))) {
    raise<Math>(5, complex ? MATH_POLYNOMIAL_DEGREE_50 : MATH_POLYNOMIAL_DEGREE, {.i = {ndeg}});
  }
}

template <class T>
bool finite(T x) {
  if constexpr (kernel::ComplexRecord<T>) {
    return std::isfinite(x.re) && std::isfinite(x.im);
  } else {
    return std::isfinite(x);
  }
}

// Eigenvalues of the matrix with ones below the diagonal and the quotients of the coefficients in the last column. The vectors
// are asked for with them, though nobody wants them: the way to values alone eliminates, which on these matrices loses all digits
// at degree 300, where the way with vectors, by reflections throughout, keeps them for twice the time.
template <class T>
bool l_companion(long ndeg, const T* coef, typename Form<T>::Complex* zeros) {
  using Complex = typename Form<T>::Complex;
  long size;
  T* matrix = __builtin_mul_overflow(ndeg, ndeg, &size) ? nullptr : scratch_zero<Math, T>(size);
  Complex* vectors = matrix == nullptr ? nullptr : scratch<Math, Complex>(size);
  if (vectors == nullptr) {
    raise_out_of_memory<Math>({ndeg}, {"ndeg"});
    return false;
  }
  for (long i = 1; i < ndeg; ++i) matrix[i * ndeg + i - 1] = kernel::from_real<T>(1);
  for (long i = 0; i < ndeg; ++i) matrix[i * ndeg + ndeg - 1] = -(coef[i] / coef[ndeg]);
  return Form<T>::eig_gen(ndeg, matrix, ZENT_VECTORS_USER, vectors, ZENT_RETURN_USER, zeros, 0) != nullptr;
}

// Zeros at infinity and at the origin first, then those of what is left.
template <class T>
bool l_three_stages(long ndeg, const T* coef, typename Form<T>::Complex* zeros) {
  using Complex = typename Form<T>::Complex;
  using Real = kernel::RealOf<T>;
  long high = ndeg, low = 0;
  while (high > 0 && coef[high] == T{}) --high;
  while (low < high && coef[low] == T{}) ++low;
  bool usable = true;
  for (long i = low; i <= high; ++i) usable = usable && finite(coef[i]);
  typename Form<T>::Solver solver;
  const bool work = usable && high > low;
  Refinement<T> refinement;
  if (work && !(solver.template allocate<Math>(high - low) && refinement.template allocate<Math>(high - low))) {
    raise_out_of_memory<Math>({ndeg}, {"ndeg"});
    return false;
  }
  ZeroList<Complex> list = {zeros, 0};
  for (long i = high; i < ndeg; ++i) list.add({Machine<Real>::infinity, 0});
  for (long i = 0; i < low; ++i) list.add({0, 0});
  if (high < ndeg) raise<Math>(3, MATH_ZERO_COEFF, {.i = {ndeg - high, high}});
  bool all = usable;
  if constexpr (kernel::ComplexRecord<T>) {
    if (work) all = solver.l_zpocc(high - low, coef + low, list);
  } else {
    if (work) all = solver.l_zporc(high - low, coef + low, list);
  }
  if (work && all) refinement.run(high - low, coef + low, zeros + ndeg - high + low);
  if (!all) raise<Math>(3, MATH_FEWER_ZEROS_FOUND, {.i = {list.count, ndeg - list.count}});
  return true;
}

template <class T>
typename Form<T>::Complex* l_zeros_poly(long ndeg, const T* coef, Options& list) {
  using Complex = typename Form<T>::Complex;
  constexpr auto nan = Machine<kernel::RealOf<T>>::not_a_number;
  PolynomialOptions<Complex> o;
  parse(list, o);
  check(ndeg, coef, o.companion);
  if (failed<Math>()) return nullptr;
  Complex* zeros = o.user != nullptr ? o.user : result<Math, Complex>(ndeg);
  if (zeros == nullptr) {
    raise_out_of_memory<Math>({ndeg}, {"ndeg"});
    return nullptr;
  }
  for (long i = 0; i < ndeg && o.user == nullptr; ++i) zeros[i] = {nan, nan};
  if (!(o.companion ? l_companion(ndeg, coef, zeros) : l_three_stages(ndeg, coef, zeros))) return nullptr;
  if (o.user == nullptr) keep<Math>(zeros);
  return zeros;
}

}  // namespace

}  // namespace zent::roots

#define ZENT_FORM(P, T, C)                                                                                       \
  extern "C" C* zent_##P##_zeros_poly(long ndeg, T* coef, ...) {                                                 \
    ZENT_OPTIONS(options, coef, 2);                                                                              \
    C* zeros = zent::public_call<zent::Math>("zent_" #P "_zeros_poly",                                           \
                                             [&] { return zent::roots::l_zeros_poly<T>(ndeg, coef, options); }); \
    ZENT_OPTIONS_END(options);                                                                                   \
    return zeros;                                                                                                \
  }
ZENT_FORM(f, float, zent_f_complex)
ZENT_FORM(d, double, zent_d_complex)
ZENT_FORM(c, zent_f_complex, zent_f_complex)
ZENT_FORM(z, zent_d_complex, zent_d_complex)
#undef ZENT_FORM
