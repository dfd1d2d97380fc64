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

// Two targets over one dimension in two pieces of order 2, in single precision.
TEST(PiecewisePolynomials, ComeBackAsTheyWent) {
  load();
  long order[] = {2}, num_coef[] = {4, 4}, num_breakpoints[] = {3};
  float b[] = {0, 1, 3}, c0[] = {1, 2, 3, 4}, c1[] = {5, 6, 7, 8};
  float *breakpoints[] = {b}, *coef[] = {c0, c1};
  const Zent_f_ppoly ppoly = {1, 2, order, num_coef, num_breakpoints, breakpoints, coef};
  Value out[7];
  ORV_VARIABLE* variables[7];
  for (int k = 0; k < 7; ++k) variables[k] = out[k].variable();
  cmast_ppoly_to_TVH(&ppoly, ORV_TYP_FLOAT, variables);
  EXPECT_EQ(out[3].count(), 2);
  EXPECT_EQ(out[6].type(), ORV_TYP_FLOAT);
  EXPECT_EQ(out[6].count(), 8);
  const char* const tags[] = {"DOMAIN_DIM", "TARGET_DIM", "ORDER", "NUM_COEF", "NUM_BREAKPOINTS", "BREAKPOINTS", "COEF"};
  const auto structure_of = [&] {
    std::vector<std::pair<std::string, Value>> rows;
    for (int k = 0; k < 7; ++k) {
      if (out[k].defined()) rows.emplace_back(tags[k], out[k]);
    }
    Value structure = Value::structure(orv::define_structure(rows), -1);
    for (const auto& [tag, value] : rows) structure.set_tag(tag, value);
    return structure;
  };
  Value structure = structure_of();
  auto* const back = static_cast<Zent_f_ppoly*>(cmast_tsdh_to_Cstruct(structure.variable(), ORV_TYP_FLOAT, 1));
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->target_dim, 2);
  EXPECT_EQ(back->num_coef[1], 4);
  EXPECT_EQ(back->breakpoints[0][2], 3.0F);
  EXPECT_EQ(back->coef[1][3], 8.0F);
  zent_free_allocated_memory(back);
  out[0] = out[1] = Value();  // one dimension and one target need no tags of their own
  structure = structure_of();
  auto* const short_form = static_cast<Zent_f_ppoly*>(cmast_tsdh_to_Cstruct(structure.variable(), ORV_TYP_FLOAT, 1));
  ASSERT_NE(short_form, nullptr);
  EXPECT_EQ(short_form->target_dim, 1);
  EXPECT_EQ(short_form->coef[0][3], 4.0F);
  zent_free_allocated_memory(short_form);

  static ORV_VARIABLE* spoiled;
  static const ORV_PROC wrapper = [](int, ORV_VARIABLE**, char*) -> long {
    cmast_tsdh_to_Cstruct(spoiled, ORV_TYP_FLOAT, 1);
    return 0;
  };
  static const ORV_SYSRTN row[] = {{wrapper, "SPOILED", 0, 0, 0, nullptr}};
  ASSERT_EQ(ORV_SysRtnAdd(row, 0, 1), 1);
  std::vector<Value> none;
  out[4] = Value::integer(4000);  // more than there is between the tags
  out[3] = Value::integer(2 * 3999);
  structure = structure_of();
  spoiled = structure.variable();
  EXPECT_NE(error_of("SPOILED", none).find("not one of a spline"), std::string::npos);
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
