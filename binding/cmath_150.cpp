// INTFCN: integrals of the user's function of one variable, or of two over a plane region.
#include "binding/callback.hpp"
#include "binding/routines.hpp"

namespace zent::binding {

namespace {

enum {
  selector = 2,
  fcn,
  a,
  b,
  n_points,
  points,
  weight,
  alpha,
  beta,
  bound,
  interval,
  omega,
  c,
  lower,
  upper,
  err_abs,
  err_rel,
  rule,
  err_est,
  max_subinter,
  n_subinter,
  n_evals,
  err_list,
  err_order,
  max_moments,
  max_cycles,
  n_cycles,
  result,
  used_count,
  position_count = 38
};

constexpr Position positions[position_count] = {
    precision_position,
    status_position,
    {"SELECTOR", Kind::required, Type::integer,
     "0 singular ends, 1 plain, 2 break points, 3 algebraic and logarithmic weight, 4 infinite range, 5 cos or sin, 6 Fourier, 7 "
     "principal value, 8 smooth, 9 plane region"},
    {"F", Kind::required, Type::text, "name of the user's function of one number; of two with selector 9"},
    {"A", Kind::optional, Type::real, "lower limit; not with selector 4"},
    {"B", Kind::optional, Type::real, "upper limit; not with selectors 4 and 6"},
    {"NPOINTS", Kind::optional, Type::integer, "selector 2: how many break points; default the count of POINTS"},
    {"POINTS", Kind::optional, Type::real, "selector 2: the break points"},
    {"WEIGHT", Kind::optional, Type::integer, "selector 3: 1 to 4; selectors 5 and 6: 8 cosine, 9 sine"},
    {"ALPHA", Kind::optional, Type::real, "selector 3: exponent of x - a"},
    {"BETA", Kind::optional, Type::real, "selector 3: exponent of b - x"},
    {"BOUND", Kind::optional, Type::real, "selector 4: the finite limit"},
    {"INTERVAL", Kind::optional, Type::integer, "selector 4: 5 up to BOUND, 6 from BOUND on, 7 everything"},
    {"OMEGA", Kind::optional, Type::real, "selectors 5 and 6: the frequency"},
    {"C", Kind::optional, Type::real, "selector 7: the pole"},
    {"G", Kind::optional, Type::text, "selector 9: name of the function of x that gives the lower limit of y"},
    {"H", Kind::optional, Type::text, "selector 9: name of the function of x that gives the upper limit of y"},
    {"ERR_ABS", Kind::optional, Type::real, "absolute tolerance; default the square root of the machine epsilon",
     ZENT_ERR_ABS_ADR, Pass::address},
    {"ERR_REL", Kind::optional, Type::real, "relative tolerance; the same default", ZENT_ERR_REL_ADR, Pass::address},
    {"RULE", Kind::optional, Type::integer, "1 to 6 for 15, 21, 31, 41, 51, 61 points; default 2", ZENT_RULE, Pass::value},
    {"ERR_EST", Kind::optional, Type::real, "receives the estimate of the absolute error", ZENT_ERR_EST, Pass::address},
    {"MAX_SUBINTER", Kind::optional, Type::integer, "limit of subintervals; default 500", ZENT_MAX_SUBINTER, Pass::value},
    {"N_SUBINTER", Kind::optional, Type::integer, "receives the number of subintervals", ZENT_N_SUBINTER, Pass::address},
    {"N_EVALS", Kind::optional, Type::integer, "receives the number of calls of F", ZENT_N_EVALS, Pass::address},
    {"ERR_LIST", Kind::optional, Type::real, "receives the errors of the subintervals, an array of MAX_SUBINTER", ZENT_ERR_LIST,
     Pass::address},
    {"ERR_ORDER", Kind::optional, Type::integer, "receives the numbers of the subintervals by falling error, as many",
     ZENT_ERR_ORDER, Pass::address},
    {"MAX_MOMENTS", Kind::optional, Type::integer, "levels whose Chebyshev moments are kept; default 21", ZENT_MAX_MOMENTS,
     Pass::value},
    {"MAX_CYCLES", Kind::optional, Type::integer, "limit of cycles; default 50", ZENT_MAX_CYCLES, Pass::value},
    {"N_CYCLES", Kind::optional, Type::integer, "receives the number of cycles", ZENT_N_CYCLES, Pass::address},
    {"RESULT", Kind::output, Type::real, "the integral"},
};
static_assert(used_count + 8 == position_count);

// The user's functions of the call in progress.
struct Routines {
  ORV_IDENT f, g, h;
};
Routines s_idUserRoutine;

double d_intfcn_fcn(double x) {
  return call_scalar<double>(s_idUserRoutine.f, x);
}
float f_intfcn_fcn(float x) {
  return call_scalar<float>(s_idUserRoutine.f, x);
}
double d_intfcn_fcn_2d(double x, double y) {
  return call_scalar<double>(s_idUserRoutine.f, x, y);
}
float f_intfcn_fcn_2d(float x, float y) {
  return call_scalar<float>(s_idUserRoutine.f, x, y);
}
double d_intfcn_g(double x) {
  return call_scalar<double>(s_idUserRoutine.g, x);
}
float f_intfcn_g(float x) {
  return call_scalar<float>(s_idUserRoutine.g, x);
}
double d_intfcn_h(double x) {
  return call_scalar<double>(s_idUserRoutine.h, x);
}
float f_intfcn_h(float x) {
  return call_scalar<float>(s_idUserRoutine.h, x);
}

// A member: its two forms, the positions of its fixed reals in the order of its head, and those of its integers and pointers
// behind the function.
struct Member {
  void *single, *real;
  int reals[4];  // 0 ends
  int words[2];
};
#define MEMBER(name) reinterpret_cast<void*>(zent_f_##name), reinterpret_cast<void*>(zent_d_##name)
const Member members[] = {
    {MEMBER(int_fcn_sing), {a, b}, {}},
    {MEMBER(int_fcn), {a, b}, {}},
    {MEMBER(int_fcn_sing_pts), {a, b}, {n_points, points}},
    {MEMBER(int_fcn_alg_log), {a, b, alpha, beta}, {weight}},
    {MEMBER(int_fcn_inf), {bound}, {interval}},
    {MEMBER(int_fcn_trig), {a, b, omega}, {weight}},
    {MEMBER(int_fcn_fourier), {a, omega}, {weight}},
    {MEMBER(int_fcn_cauchy), {a, b, c}, {}},
    {MEMBER(int_fcn_smooth), {a, b}, {}},
    {MEMBER(int_fcn_2d), {a, b}, {}},
};
#undef MEMBER
constexpr long plane = 9;
constexpr long member_count = sizeof members / sizeof members[0];

bool integer_fits(const Arguments& arguments, int k) {
  return !arguments.present[k] || (arguments.integer(k) <= 0x7FFFFFFF && arguments.integer(k) >= -0x80000000L);
}

// What the library would take on trust.
const char* refusal(const Arguments& arguments) {
  const long which = arguments.integer(selector);
  if (which < 0 || which >= member_count) return "INTFCN: argument SELECTOR must be from 0 to 9";
  const Member& member = members[which];
  for (int k : member.reals) {
    if (k != 0 && !arguments.present[k]) return "INTFCN: a limit, exponent, frequency or pole that SELECTOR needs is missing";
  }
  for (int k : member.words) {
    if (k != 0 && k != n_points && !arguments.present[k])
      return "INTFCN: POINTS, WEIGHT or INTERVAL, which SELECTOR needs, is missing";
  }
  if (which == plane && (!arguments.present[lower] || !arguments.present[upper])) {
    return "INTFCN: the names G and H of the functions that limit the region are missing";
  }
  for (int k : {rule, max_subinter, max_moments, max_cycles}) {
    if (!integer_fits(arguments, k)) return "INTFCN: an integer option is too large";
  }
  if (arguments.present[n_points] && arguments.present[points] && arguments.integer(n_points) > arguments.count[points]) {
    return "INTFCN: argument POINTS must have NPOINTS elements";
  }
  const long limit = arguments.present[max_subinter] ? arguments.integer(max_subinter) : 500;
  if ((arguments.present[err_list] && arguments.count[err_list] < limit) ||
      (arguments.present[err_order] && arguments.count[err_order] < limit)) {
    return "INTFCN: arguments ERR_LIST and ERR_ORDER must have MAX_SUBINTER elements";
  }
  return nullptr;
}

void add_head(Words& words, const Arguments& arguments, long which) {
  const bool real = arguments.is_double();
  if (which == plane) {
    if (real) {
      words.add(d_intfcn_fcn_2d).add(d_intfcn_g).add(d_intfcn_h);
    } else {
      words.add(f_intfcn_fcn_2d).add(f_intfcn_g).add(f_intfcn_h);
    }
  } else if (real) {
    words.add(d_intfcn_fcn);
  } else {
    words.add(f_intfcn_fcn);
  }
  for (int k : members[which].words) {
    if (k == points) {
      words.add(arguments.data[points]);
    } else if (k == n_points) {
      words.add(arguments.present[n_points] ? arguments.integer(n_points) : arguments.count[points]);
    } else if (k != 0) {
      words.add(arguments.integer(k));
    }
  }
}

template <class Real>
Real integrate(const Words& words, const Arguments& arguments, void* function, const int* reals) {
  const auto real = [&](int k) { return *arguments.array<Real>(reals[k]); };
  if (reals[1] == 0) return words.call<Real>(function, real(0));
  if (reals[2] == 0) return words.call<Real>(function, real(0), real(1));
  if (reals[3] == 0) return words.call<Real>(function, real(0), real(1), real(2));
  return words.call<Real>(function, real(0), real(1), real(2), real(3));
}

}  // namespace

const Routine routine_150 = {150, "INTFCN", true, position_count, positions};

long mathstat_150(int argc, ORV_VARIABLE** argv, char*) {
  const long failed = cmast_init("INTFCN");
  if (failed != 0) return failed;
  Arguments arguments;
  if (!read_arguments(routine_150, argc, argv, arguments)) return 0;
  const char* const why = refusal(arguments);
  if (why != nullptr) {
    refuse(why);
    return 0;
  }
  const long which = arguments.integer(selector);
  const Member& member = members[which];
  Words words;
  add_head(words, arguments, which);
  arguments.add_options(words);
  words.end();
  // The user's function may come back here with another one: the identifiers of the call further out are put back behind it.
  const Routines outer = s_idUserRoutine;
  s_idUserRoutine = {user_routine(argv[fcn]), nullptr, nullptr};
  if (which == plane) {
    s_idUserRoutine.g = user_routine(argv[lower]);
    s_idUserRoutine.h = user_routine(argv[upper]);
  }
  const bool done = guarded(
      [&] {
        if (arguments.is_double()) {
          arguments.store(result, ORV_TYP_DOUBLE, integrate<double>(words, arguments, member.real, member.reals));
        } else {
          arguments.store(result, ORV_TYP_FLOAT, integrate<float>(words, arguments, member.single, member.reals));
        }
      },
      [&] { s_idUserRoutine = outer; });
  if (!done) return 0;
  s_idUserRoutine = outer;
  long code;
  cmast_opi_clear_errors(1, &code, arguments.status, 1);
  return 0;
}

}  // namespace zent::binding
