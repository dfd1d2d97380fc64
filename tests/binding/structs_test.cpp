// Splines and radial fits through host variables and structures and back.
#include <cmath>

#include "tests/binding/module.hpp"
#include "zent.h"
#include "zent/records.h"

namespace {

using namespace binding_test;

TEST(SplineStructures, ComeBackAsTheyWent) {
  load();
  long order[] = {2, 3}, num_coef[] = {2, 3}, num_knots[] = {4, 6};
  double k0[] = {0, 0, 1, 1}, k1[] = {0, 0, 0, 2, 2, 2}, c[] = {1, 2, 3, 4, 5, 6};
  double *knots[] = {k0, k1}, *coef[] = {c};
  const Zent_d_spline spline = {2, 1, order, num_coef, num_knots, knots, coef};
  Value out[7];
  ORV_VARIABLE* variables[7];
  for (int k = 0; k < 7; ++k) variables[k] = out[k].variable();
  cmast_bspline_to_TVH(&spline, ORV_TYP_DOUBLE, variables);
  const char* const tags[] = {"DOMAIN_DIM", "TARGET_DIM", "ORDER", "NUM_COEF", "NUM_KNOTS", "KNOTS", "COEF"};
  std::vector<std::pair<std::string, Value>> rows;
  for (int k = 0; k < 7; ++k) rows.emplace_back(tags[k], out[k]);
  Value structure = Value::structure(orv::define_structure(rows), -1);
  for (const auto& [tag, value] : rows) structure.set_tag(tag, value);
  auto* const back = static_cast<Zent_d_spline*>(cmast_tsdh_to_Cstruct(structure.variable(), ORV_TYP_DOUBLE, 0));
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->domain_dim, 2);
  EXPECT_EQ(back->order[1], 3);
  EXPECT_EQ(back->num_coef[0], 2);
  EXPECT_EQ(back->num_knots[1], 6);
  for (int k = 0; k < 6; ++k) EXPECT_EQ(back->knots[1][k], k1[k]);
  for (int k = 0; k < 6; ++k) EXPECT_EQ(back->coef[0][k], c[k]);
  zent_free_allocated_memory(back);
}

TEST(RadialStructures, ComeBackAsTheyWentAndSelectTheFunction) {
  load();
  float centers[] = {1, 2, 3, 4}, weights[] = {5, 6, 7};
  const Zent_f_radial_fit fit = {2, 2, 1, centers, weights, nullptr, 3.0F, nullptr, nullptr};
  Value out;
  cmast_radial_struct(&fit, ORV_TYP_FLOAT, "", out.variable());
  Zent_f_radial_fit back;
  ASSERT_EQ(cmast_chk_radial_struct(out.variable(), ORV_TYP_FLOAT, &back), 1);
  EXPECT_EQ(back.extra_terms, 1);
  EXPECT_EQ(back.centers[3], 4.0F);
  EXPECT_EQ(back.coefficients[2], 7.0F);
  EXPECT_EQ(global_delta, 3.0);
  EXPECT_FLOAT_EQ(back.radial_function(4.0F), 5.0F);
  Value number = Value::real(1);
  EXPECT_EQ(cmast_chk_radial_struct(number.variable(), ORV_TYP_FLOAT, &back), 0);
}

}  // namespace
