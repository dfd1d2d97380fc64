// Radial fits between the library's record and host structures, and the radial functions that such a structure selects.
#include <cmath>
#include <cstring>

#include "binding/callback.hpp"
#include "binding/tag_spans.hpp"
#include "zent/records.h"

extern "C" {
double global_delta;
}

namespace {

using namespace zent::binding;

ORV_IDENT s_idUserRoutine;

float f_radbf_fcn(float r) {
  return call_scalar<float>(s_idUserRoutine, r);
}
double d_radbf_fcn(double r) {
  return call_scalar<double>(s_idUserRoutine, r);
}
float f_local_radbf_fcn(float r) {
  const auto delta = static_cast<float>(global_delta);
  return std::sqrt(r * r + delta * delta);
}
double d_local_radbf_fcn(double r) {
  return std::sqrt(r * r + global_delta * global_delta);
}

struct FloatForm {
  using Fit = Zent_f_radial_fit;
  using Real = float;
  static constexpr auto user = f_radbf_fcn, local = f_local_radbf_fcn;
};
struct DoubleForm {
  using Fit = Zent_d_radial_fit;
  using Real = double;
  static constexpr auto user = d_radbf_fcn, local = d_local_radbf_fcn;
};

void* tag(ORV_VARIABLE* structure, const char* name) {
  return ORV_StructGetTagAddress(structure, name, 0, 1, nullptr);
}

void copy_tag(ORV_VARIABLE* structure, const char* name, const void* data, long bytes) {
  if (void* const target = tag(structure, name)) std::memcpy(target, data, static_cast<std::size_t>(bytes));
}

template <class Form>
void put_fit(const typename Form::Fit& fit, const char* fcn_name, ORV_VARIABLE* out) {
  using Real = typename Form::Real;
  constexpr long type = real_type_code<Real>, size = sizeof(Real);
  const long points[] = {2, fit.dimension, fit.num_centers}, weights[] = {1, fit.num_centers + fit.extra_terms};
  const ORV_STRUCT_TAG tags[] = {{ORV_StructTagIdentHash("DIMENSION"), nullptr, ORV_TYP_INT64, 0},
                                 {ORV_StructTagIdentHash("NUM_CENTERS"), nullptr, ORV_TYP_INT64, 0},
                                 {ORV_StructTagIdentHash("EXTRA_TERMS"), nullptr, ORV_TYP_INT64, 0},
                                 {ORV_StructTagIdentHash("CENTERS"), points, type, 0},
                                 {ORV_StructTagIdentHash("COEFFICIENTS"), weights, type, 0},
                                 {ORV_StructTagIdentHash("RADIAL_FCN"), nullptr, ORV_TYP_STRING, 0},
                                 {ORV_StructTagIdentHash("DELTA"), nullptr, type, 0},
                                 {nullptr, nullptr, 0, 0}};
  ORV_VARIABLE* temp = nullptr;
  if (ORV_MakeTempStructVector(ORV_MakeStruct(nullptr, tags), 1, &temp, 1) == nullptr) return;
  copy_tag(temp, "DIMENSION", &fit.dimension, sizeof(long));
  copy_tag(temp, "NUM_CENTERS", &fit.num_centers, sizeof(long));
  copy_tag(temp, "EXTRA_TERMS", &fit.extra_terms, sizeof(long));
  copy_tag(temp, "CENTERS", fit.centers, fit.dimension * fit.num_centers * size);
  copy_tag(temp, "COEFFICIENTS", fit.coefficients, weights[1] * size);
  copy_tag(temp, "DELTA", &fit.delta, size);
  if (void* const name = tag(temp, "RADIAL_FCN"))
    ORV_StrStore(static_cast<ORV_STRING*>(name), fcn_name != nullptr ? fcn_name : "");
  ORV_VarCopy(temp, out);
}

template <class Form>
long get_fit(ORV_VARIABLE* structure, typename Form::Fit& fit) {
  using Real = typename Form::Real;
  const auto* const dimension = static_cast<const long*>(tag(structure, "DIMENSION"));
  const auto* const centers = static_cast<const long*>(tag(structure, "NUM_CENTERS"));
  const auto* const extra = static_cast<const long*>(tag(structure, "EXTRA_TERMS"));
  const auto* const delta = static_cast<const Real*>(tag(structure, "DELTA"));
  const auto* const name = static_cast<const ORV_STRING*>(tag(structure, "RADIAL_FCN"));
  auto* const points = static_cast<Real*>(tag(structure, "CENTERS"));
  auto* const weights = static_cast<Real*>(tag(structure, "COEFFICIENTS"));
  if (!dimension || !centers || !extra || !delta || !name || !points || !weights) return 0;
  if (*dimension < 1 || *centers < 1 || *extra < 0) return 0;
  constexpr long size = sizeof(Real);
  long points_bytes, weights_bytes;
  if (__builtin_mul_overflow(*dimension, *centers, &points_bytes) || __builtin_mul_overflow(points_bytes, size, &points_bytes) ||
      __builtin_add_overflow(*centers, *extra, &weights_bytes) || __builtin_mul_overflow(weights_bytes, size, &weights_bytes)) {
    return 0;
  }
  const TagSpan spans[] = {{dimension, sizeof(long)}, {centers, sizeof(long)}, {extra, sizeof(long)},   {delta, size},
                           {name, sizeof *name},      {points, points_bytes},  {weights, weights_bytes}};
  if (!disjoint(spans)) return 0;
  fit = {};
  fit.dimension = *dimension;
  fit.num_centers = *centers;
  fit.extra_terms = *extra;
  fit.centers = points;
  fit.coefficients = weights;
  fit.delta = *delta;
  global_delta = static_cast<double>(*delta);
  const bool has_name = name->len > 0;
  if (has_name) s_idUserRoutine = ORV_IdentHash(name->text, 0, 1, 2, 0);
  fit.radial_function = has_name ? Form::user : Form::local;
  return 1;
}

}  // namespace

extern "C" {

void cmast_radial_struct(const void* fit, long type, const char* fcn_name, ORV_VARIABLE* out) {
  if (fit == nullptr) return;
  if (type == ORV_TYP_FLOAT) {
    put_fit<FloatForm>(*static_cast<const Zent_f_radial_fit*>(fit), fcn_name, out);
  } else {
    put_fit<DoubleForm>(*static_cast<const Zent_d_radial_fit*>(fit), fcn_name, out);
  }
}

long cmast_chk_radial_struct(ORV_VARIABLE* structure, long type, void* fit) {
  if (structure->type != ORV_TYP_STRUCT) return 0;
  return type == ORV_TYP_FLOAT ? get_fit<FloatForm>(structure, *static_cast<Zent_f_radial_fit*>(fit))
                               : get_fit<DoubleForm>(structure, *static_cast<Zent_d_radial_fit*>(fit));
}
}
