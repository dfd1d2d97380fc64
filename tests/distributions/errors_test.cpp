// Errors, notes and odd arguments of the distribution functions: value, type and number, and which test comes first.
#include <sstream>
#include <tuple>

#include "reference.hpp"

namespace {

using namespace distributions_test;

constexpr double infinity = std::numeric_limits<double>::infinity();
const double none = std::nan("");

struct Row {
  const char* call;
  double value;
  bool failure;  // the very not-a-number of the machine table
  long type, number;
  double wanted;  // not-a-number: the failure value
  long wanted_type, wanted_number;
};

// The call is made before the error words are read.
#define ROW(call, wanted, type, number)                                                                                     \
  [] {                                                                                                                      \
    const auto value = call;                                                                                                \
    return Row{#call, static_cast<double>(value), is_failure(value), zents_n1rty(1), zents_n1rcd(1), wanted, type, number}; \
  }

using Make = Row (*)();

void check(const std::vector<Make>& rows) {
  be_quiet();
  for (Make make : rows) {
    const Row row = make();
    if (std::isnan(row.wanted)) {
      EXPECT_TRUE(row.failure) << row.call << " = " << row.value;
    } else {
      EXPECT_FLOAT_EQ(row.value, row.wanted) << row.call;
    }
    EXPECT_EQ(row.type, row.wanted_type) << row.call;
    EXPECT_EQ(row.number, row.wanted_number) << row.call;
  }
}

TEST(DistributionErrors, Normal) {
  check({
      ROW(zents_d_normal_cdf(-40), 0, 0, 0),
      ROW(zents_f_normal_cdf(-40), 0, 0, 0),
      ROW(zents_d_normal_cdf(infinity), 1, 0, 0),
      ROW(zents_d_normal_cdf(-infinity), 0, 0, 0),
      ROW(zents_d_normal_inverse_cdf(0), none, 5, STAT_NEED_ZERO_LT_P_LT_ONE),
      ROW(zents_d_normal_inverse_cdf(1), none, 5, STAT_NEED_ZERO_LT_P_LT_ONE),
      ROW(zents_f_normal_inverse_cdf(-1), none, 5, STAT_NEED_ZERO_LT_P_LT_ONE),
      ROW(zents_d_normal_inverse_cdf(infinity), none, 5, STAT_NEED_ZERO_LT_P_LT_ONE),
      ROW(zents_d_normal_inverse_cdf(1 - 0x1p-53), 8.209536151601387, 3, STAT_LARGE_ARG_WARN),
      ROW(zents_d_normal_inverse_cdf(5e-324), -38.46740561714434, 0, 0),
      ROW(1 / zents_d_normal_inverse_cdf(0.5), infinity, 0, 0),
      ROW(zents_d_bivariate_normal_cdf(0, 0, 1.5), none, 5, STAT_NEED_ABS_RHO_LE_1),
      ROW(zents_f_bivariate_normal_cdf(0, 0, -2), none, 5, STAT_NEED_ABS_RHO_LE_1),
      ROW(zents_d_bivariate_normal_cdf(1, 2, 1), 0.8413447460685429, 0, 0),
      ROW(zents_d_bivariate_normal_cdf(1, 0, -1), 0.3413447460685429, 0, 0),
      ROW(zents_d_bivariate_normal_cdf(-1, 0.5, -1), 0, 0, 0),
      ROW(zents_d_bivariate_normal_cdf(8, -7, -1), 1.279190447828408e-12, 0, 0),
      ROW(zents_d_bivariate_normal_cdf(-7, 8, -1), 1.279190447828408e-12, 0, 0),
      ROW(zents_d_bivariate_normal_cdf(0, 0, 0.5), 1.0 / 3, 0, 0),
      ROW(zents_d_bivariate_normal_cdf(infinity, 1, 0.5), 0.8413447460685429, 0, 0),
      ROW(zents_d_bivariate_normal_cdf(-infinity, 1, 0.5), 0, 0, 0),
      ROW(zents_d_bivariate_normal_cdf(0, 1, 0), 0.42067237303427146, 0, 0),
      ROW(zents_d_bivariate_normal_cdf(-1, 0, 0), 0.07932762696572853, 0, 0),
  });
}

TEST(DistributionErrors, ChiSquaredAndGamma) {
  check({
      ROW(zents_d_chi_squared_cdf(1.75e308, 1.75e308), 0.5, 0, 0),
      ROW(zents_d_chi_squared_cdf(-1, 0.1), 0, 1, STAT_ARG_LESS_THAN_ZERO),
      ROW(zents_d_chi_squared_cdf(1, 0.4), none, 5, STAT_DF_MUST_BE_GE_POINT_5),
      ROW(zents_d_chi_squared_cdf(1, 0.5), 0.8464864041916776, 0, 0),
      ROW(zents_f_chi_squared_cdf(1, 0.4F), none, 5, STAT_DF_MUST_BE_GE_POINT_5),
      ROW(zents_d_chi_squared_cdf(1e-12, 0.5), 0, 0, 0),
      ROW(zents_d_chi_squared_cdf(0, 3), 0, 0, 0),
      ROW(zents_d_chi_squared_cdf(200.5, 65), 1, 0, 0),
      ROW(zents_d_chi_squared_cdf(infinity, 3), 1, 0, 0),
      ROW(zents_d_chi_squared_cdf(1.9, 26), 0, 0, 0),
      ROW(zents_d_chi_squared_cdf(1.9, 66), 0, 0, 0),
      ROW(zents_d_chi_squared_cdf(2, 1000), 0, 2, STAT_NORMAL_UNDERFLOW),
      ROW(zents_d_chi_squared_cdf(1e4, 1000), 1, 0, 0),
      ROW(zents_d_chi_squared_inverse_cdf(0, 0.1), none, 5, STAT_P_OUTSIDE_OPEN_INTERVAL),
      ROW(zents_d_chi_squared_inverse_cdf(0.5, 0.4), none, 5, STAT_DF_MUST_BE_GE_POINT_5),
      ROW(zents_d_chi_squared_inverse_cdf(1e-4, 0.5), 1e-12, 3, STAT_UNABLE_TO_BRACKET_VALUE),
      ROW(zents_d_chi_squared_inverse_cdf(1e-30, 40), 2, 3, STAT_UNABLE_TO_BRACKET_VALUE),
      ROW(zents_d_gamma_cdf(-1, -1), 0, 1, STAT_ARG_LESS_THAN_ZERO),
      ROW(zents_d_gamma_cdf(0, -1), 0, 0, 0),
      ROW(zents_d_gamma_cdf(1, 0), none, 5, STAT_SHAPE_PARAMETER_NEGATIVE),
      ROW(zents_d_gamma_cdf(infinity, 3), 1, 0, 0),
      ROW(zents_d_gamma_cdf(1e9, 1e9), 0.5000042, 0, 0),
      ROW(zents_d_gamma_cdf(5e-324, 1), 0, 0, 0),
      ROW(zents_d_non_central_chi_sq(1, 0.4, -1), none, 5, STAT_DF_RANGE),
      ROW(zents_d_non_central_chi_sq(1, 200001, 0), none, 5, STAT_DF_RANGE),
      ROW(zents_d_non_central_chi_sq(1, 1, -1), none, 5, STAT_ALAM_GE_ZERO),
      ROW(zents_d_non_central_chi_sq(1, 1e5, 1.1e5), none, 5, STAT_DF_ALAM_SUM),
      ROW(zents_d_non_central_chi_sq(0, 1, 1), 0, 1, STAT_CHISQ_ZERO),
      ROW(zents_d_non_central_chi_sq(-1, 1, 1), 0, 1, STAT_CHISQ_ZERO),
      ROW(zents_d_non_central_chi_sq(3, 2, 0), 1 - std::exp(-1.5), 0, 0),
      ROW(zents_d_non_central_chi_sq(infinity, 2, 1), 1, 0, 0),
      ROW(zents_d_non_central_chi_sq_inv(1, 1, -1), none, 5, STAT_ALAM_GE_ZERO),
      ROW(zents_d_non_central_chi_sq_inv(1, 1, 1), none, 5, STAT_P_OUTSIDE_OPEN_INTERVAL),
  });
  // The walk may be cut where what is left does not count; with more terms than it takes the value comes with a Warning.
  EXPECT_NEAR(zents_d_non_central_chi_sq(38010, 10, 38000), 0.501023156539032869, 1e-12);
  EXPECT_EQ(zents_n1rty(1), 0);
  EXPECT_NEAR(zents_d_non_central_chi_sq(160100, 100, 160000), 0.5, 0.01);
  EXPECT_EQ(zents_n1rcd(1), STAT_CONV_NOT_OBTAINED);
  EXPECT_EQ(zents_n1rty(1), 3);
  // 1.1e-285, where all the terms that it takes underflow; and 0, where the others do so too.
  EXPECT_LT(zents_d_non_central_chi_sq(8249.72265625, 7.0646209716796875, 16103.630859375), 1e-284);
  EXPECT_EQ(zents_n1rcd(1), STAT_CONV_NOT_OBTAINED);
  for (float x : {8249.72265625F, 12000.0F}) {  // 1.1e-285 and 6.0e-68: plain zeros in single precision
    EXPECT_EQ(zents_f_non_central_chi_sq(x, 7.0646209716796875F, 16103.630859375F), 0);
    EXPECT_EQ(zents_n1rty(1), 0) << x;
  }
  for (double x : {5e-324, 1e-300, 1e-3, 4000.0}) {
    EXPECT_EQ(zents_d_non_central_chi_sq(x, 3, 16000), 0);
    EXPECT_EQ(zents_n1rty(1), 0) << x;
    EXPECT_EQ(zents_f_non_central_chi_sq(static_cast<float>(x), 3, 16000), 0);
    EXPECT_EQ(zents_n1rty(1), x > 1e-40 ? 0 : 1) << x;
  }
}

TEST(DistributionErrors, Student) {
  check({
      ROW(zents_d_t_cdf(infinity, -3), 1, 0, 0),
      ROW(zents_d_t_cdf(-infinity, 0), 0, 0, 0),
      ROW(zents_f_t_cdf(-std::numeric_limits<float>::infinity(), 0), 0, 0, 0),
      ROW(zents_d_t_cdf(1, 0.9), none, 5, STAT_DF_MUST_BE_AT_LEAST_ONE),
      ROW(zents_d_t_cdf(0, 1), 0.5, 0, 0),
      ROW(zents_d_t_cdf(-0.0, 7.5), 0.5, 0, 0),
      ROW(zents_d_t_cdf(1, infinity), 0.8413447460685429, 0, 0),
      ROW(zents_d_t_cdf(-1e200, 1), 1 / (M_PI * 1e200), 0, 0),
      ROW(zents_d_t_inverse(0.5, 0.5), none, 5, STAT_DF_MUST_BE_AT_LEAST_ONE),
      ROW(zents_d_t_inverse(2, 0.5), none, 5, STAT_DF_MUST_BE_AT_LEAST_ONE),
      ROW(zents_d_t_inverse(0, 1), none, 5, STAT_P_OUTSIDE_OPEN_INTERVAL),
      ROW(zents_f_t_inverse(1, 1), none, 5, STAT_P_OUTSIDE_OPEN_INTERVAL),
      ROW(zents_d_t_inverse(0.5 + 0x1p-53, 5), 0, 0, 0),
      ROW(zents_d_t_inverse(0.5 - 0x1p-54, 5), 0, 0, 0),
      ROW(zents_d_t_inverse(0.75, 1), 1, 0, 0),
      ROW(zents_d_t_inverse(0.975, infinity), 1.959963984540054, 0, 0),
      ROW(zents_d_non_central_t_cdf(1, 0, 1), none, 5, STAT_WRONG_DFE_VALUE),
      ROW(zents_f_non_central_t_cdf(1, -1, 1), none, 5, STAT_WRONG_DFE_VALUE),
      ROW(zents_d_non_central_t_cdf(infinity, 3, 1), 1, 0, 0),
      ROW(zents_d_non_central_t_cdf(0, 3, 1), 0.15865525393145707, 0, 0),
      ROW(zents_d_non_central_t_inv_cdf(0.5, 0, 1), none, 5, STAT_WRONG_DFE_VALUE),
      ROW(zents_d_non_central_t_inv_cdf(1, 3, 1), none, 5, STAT_P_OUTSIDE_OPEN_INTERVAL),
  });
}

TEST(DistributionErrors, BetaAndF) {
  check({
      ROW(zents_d_F_cdf(0, 1, 1), 0, 1, STAT_DIST_FCN_SET_TO_ZERO),
      ROW(zents_d_F_cdf(-1, 0, 1), none, 5, STAT_DFN_OR_DFD_IS_NEGATIVE),
      ROW(zents_d_F_cdf(1, 1, -1), none, 5, STAT_DFN_OR_DFD_IS_NEGATIVE),
      ROW(zents_d_F_cdf(infinity, 1, 1), 1, 0, 0),
      ROW(zents_d_F_cdf(1.5, 2, infinity), 1 - std::exp(-1.5), 0, 0),
      ROW(zents_d_F_cdf(1.5, infinity, 2), std::exp(-1 / 1.5), 0, 0),
      ROW(zents_d_F_inverse_cdf(0, -1, 1), none, 5, STAT_P_OUTSIDE_OPEN_INTERVAL),
      ROW(zents_d_F_inverse_cdf(0.5, -1, 1), none, 5, STAT_DFN_OR_DFD_IS_NEGATIVE),
      ROW(zents_f_F_inverse_cdf(0.5, 1, 0), none, 5, STAT_DFN_OR_DFD_IS_NEGATIVE),
      ROW(zents_d_F_inverse_cdf(0.5, 2, 2), 1, 0, 0),
      ROW(zents_d_F_inverse_cdf(0.999999, 1, 0.01), infinity, 4, STAT_F_INVERSE_OVERFLOW),
      ROW(zents_d_beta_cdf(2, 0, 0), none, 5, STAT_NEED_POSITIVE_PIN_VALUE),
      ROW(zents_d_beta_cdf(2, 1, 0), none, 5, STAT_NEED_POSITIVE_QIN_VALUE),
      ROW(zents_d_beta_cdf(0, 1, 1), 0, 1, STAT_ZERO_AT_X),
      ROW(zents_d_beta_cdf(1, 1, 1), 1, 1, STAT_ONE_AT_X),
      ROW(zents_f_beta_cdf(5, 1, 1), 1, 1, STAT_ONE_AT_X),
      ROW(zents_d_beta_inverse_cdf(2, 0, 0), none, 5, STAT_PIN_MUST_BE_POSITIVE),
      ROW(zents_d_beta_inverse_cdf(2, 1, 0), none, 5, STAT_QIN_MUST_BE_POSITIVE),
      ROW(zents_d_beta_inverse_cdf(1, 1, 1), none, 5, STAT_P_OUTSIDE_EXCLUSIVE_INT),
      ROW(zents_dbetin(0, 1, 1), none, 5, STAT_P_OUTSIDE_EXCLUSIVE_INT),
      ROW(zents_betin(0.25F, 1, 1), 0.25, 0, 0),
  });
}

TEST(DistributionErrors, Discrete) {
  check({
      ROW(zents_d_binomial_cdf(0, 0, 0.5), none, 5, STAT_NEED_N_GREATER_THAN_ZERO),
      ROW(zents_d_binomial_cdf(-1, 5, 1.5), none, 5, STAT_BAD_PROBABILITY_VALUE),
      ROW(zents_d_binomial_cdf(-1, 5, 0.5), 0, 1, STAT_LESS_THAN_ZERO),
      ROW(zents_d_binomial_cdf(6, 5, 0.5), 1, 1, STAT_GREATER_THAN_N),
      ROW(zents_d_binomial_pdf(6, 5, 0.5), 0, 1, STAT_GREATER_THAN_N),
      ROW(zents_f_binomial_pdf(-1, 5, 0.5F), 0, 1, STAT_LESS_THAN_ZERO),
      ROW(zents_d_binomial_cdf(0, 5, 0), 1, 0, 0),
      ROW(zents_d_binomial_cdf(4, 5, 1), 0, 0, 0),
      ROW(zents_d_binomial_pdf(5, 5, 1), 1, 0, 0),
      ROW(zents_d_binomial_pdf(1, 5, 0), 0, 0, 0),
      ROW(zents_d_binomial_cdf(50000, 100000, 0.5), 0.5012615, 0, 0),
      ROW(zents_f_binomial_cdf(0, 1000000000, 1e-9F), 0.36787945139184, 0, 0),  // 1 - p rounds to 1
      ROW(zents_f_binomial_cdf(100, 100000000000, 1e-9F), 0.52656231126460, 0, 0),
      ROW(zents_d_binomial_cdf(900, 9000000000000000000, 1e-16), 0.50886412546822, 0, 0),
      ROW(zents_d_poisson_cdf(-1, 0), none, 5, STAT_THETA_MUST_BE_POSITIVE),
      ROW(zents_d_poisson_cdf(-1, 1), 0, 1, STAT_LESS_THAN_ZERO),
      ROW(zents_d_poisson_pdf(-1, 1), 0, 1, STAT_LESS_THAN_ZERO),
      ROW(zents_d_poisson_cdf(0, 1e-17), 1, 0, 0),
      ROW(zents_d_poisson_pdf(1, 1e-17), 1e-17, 0, 0),
      ROW(zents_d_poisson_pdf(2, 1e-17), 0, 0, 0),
      ROW(zents_d_poisson_cdf(800, 700), 0.99989993, 0, 0),
      ROW(zents_d_poisson_cdf(std::numeric_limits<long>::max() - 1, 5), 1, 0, 0),
      ROW(zents_d_poisson_cdf(5, infinity), 0, 0, 0),
      ROW(zents_d_hyper_cdf(-1, 0, 3, 2), none, 4, STAT_LOT_SIZE_TOO_SMALL),
      ROW(zents_d_hyper_cdf(1, 0, 3, 5), none, 5, STAT_NEED_ARGUMENT_GT_ZERO),
      ROW(zents_d_hyper_cdf(1, 5, 3, 4), none, 4, STAT_LOT_SIZE_TOO_SMALL),
      ROW(zents_d_hypergeometric_pdf(1, 5, 3, 4), none, 4, STAT_LOT_SIZE_TOO_SMALL),
      ROW(zents_d_hyper_cdf(-1, 2, 3, 5), 0, 1, STAT_LESS_THAN_ZERO),
      ROW(zents_d_hyper_cdf(3, 2, 3, 5), 1, 1, STAT_K_GREATER_THAN_N),
      ROW(zents_d_hypergeometric_pdf(3, 2, 3, 5), 0, 1, STAT_K_GREATER_THAN_N),
      ROW(zents_d_hyper_cdf(2, 3, 1, 5), 1, 0, 0),
      ROW(zents_d_hyper_cdf(0, 4, 4, 5), 0, 0, 0),
      ROW(zents_f_hyper_cdf(1, 2, 3, 5), 0.7, 0, 0),
      ROW(zents_dbinom(5, 2), 10, 0, 0),
      ROW(zents_binom(2, 5), none, 5, STAT_INEQUALITY_VIOLATION_0),
  });
}

TEST(DistributionErrors, NotANumberComesBackWithoutAMessage) {
  be_quiet();
  const double x = none;
  const double values[] = {
      zents_d_normal_cdf(x),
      zents_d_normal_inverse_cdf(x),
      zents_d_bivariate_normal_cdf(0, x, 0),
      zents_d_chi_squared_cdf(x, 0.1),
      zents_d_chi_squared_cdf(1, x),
      zents_d_chi_squared_inverse_cdf(x, 3),
      zents_d_non_central_chi_sq(1, 2, x),
      zents_d_non_central_chi_sq_inv(0.5, x, 1),
      zents_d_gamma_cdf(x, 1),
      zents_d_t_cdf(x, 0),
      zents_d_t_cdf(1, x),
      zents_d_t_inverse(0.5, x),
      zents_d_non_central_t_cdf(1, 2, x),
      zents_d_non_central_t_inv_cdf(x, 2, 1),
      zents_d_F_cdf(x, 1, 1),
      zents_d_F_inverse_cdf(0.5, x, 1),
      zents_d_beta_cdf(0.5, 1, x),
      zents_d_beta_inverse_cdf(x, 1, 1),
      zents_d_non_central_t_cdf(1, 0, x),
      zents_d_binomial_cdf(1, 2, x),
      zents_d_binomial_cdf(1, 0, x),
      zents_d_poisson_cdf(1, x),
  };
  for (const double& value : values) EXPECT_TRUE(std::isnan(value)) << &value - values;
  EXPECT_EQ(zents_n1rty(1), 0);
}

// Every combination of wild arguments ends soon, with a probability or with an error and not-a-number.
const double reals[] = {-30, 0, 5e-324, 0.1, 0.5, 1 - 0x1p-53, 1, 65.5, 1e3, 1e8, 1e300, infinity};
const long integers[] = {-1, 0, 1, 2, 7, 400, 2000001, 3000000000L, std::numeric_limits<long>::max()};

template <class T>
const auto& values_of() {
  if constexpr (std::is_same_v<T, long>) {
    return integers;
  } else {
    return reals;
  }
}

template <class Real>
void judge(Real value, bool probability, const std::string& what) {
  const long type = zents_n1rty(1);
  if (value != value) {
    EXPECT_GE(type, 4) << what;
    EXPECT_TRUE(is_failure(value)) << what;
  } else {
    EXPECT_LT(type, 5) << what << " = " << value;
    if (probability) {
      EXPECT_TRUE(value >= 0 && value <= 1) << what << " = " << value;
    }
  }
}

template <class Real, class A, class... More>
void try_all(const std::string& name, bool probability, Real (*f)(A, More...)) {
  auto walk = [&](auto&& self, auto... fixed) -> void {
    if constexpr (sizeof...(fixed) == 1 + sizeof...(More)) {
      std::ostringstream text;
      text << name;
      ((text << " " << fixed), ...);
      judge(f(fixed...), probability, text.str());
    } else {
      using Next = std::tuple_element_t<sizeof...(fixed), std::tuple<A, More...>>;
      for (auto v : values_of<Next>()) self(self, fixed..., static_cast<Next>(v));
    }
  };
  walk(walk);
}

#define TRY(name, probability)                            \
  try_all("zents_d_" #name, probability, zents_d_##name); \
  try_all("zents_f_" #name, probability, zents_f_##name)

TEST(DistributionErrors, WildArgumentsEndInAProbabilityOrAnError) {
  be_quiet();
  TRY(normal_cdf, true);
  TRY(normal_inverse_cdf, false);
  TRY(bivariate_normal_cdf, true);
  TRY(chi_squared_cdf, true);
  TRY(chi_squared_inverse_cdf, false);
  TRY(gamma_cdf, true);
  TRY(non_central_chi_sq, true);
  TRY(non_central_chi_sq_inv, false);
  TRY(t_cdf, true);
  TRY(t_inverse, false);
  TRY(non_central_t_cdf, true);
  TRY(non_central_t_inv_cdf, false);
  TRY(F_cdf, true);
  TRY(F_inverse_cdf, false);
  TRY(beta_cdf, true);
  TRY(beta_inverse_cdf, true);
  TRY(binomial_cdf, true);
  TRY(binomial_pdf, true);
  TRY(poisson_cdf, true);
  TRY(poisson_pdf, true);
  TRY(hyper_cdf, true);
  TRY(hypergeometric_pdf, true);
}

}  // namespace
