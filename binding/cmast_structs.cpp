// Splines between the library's records and host variables.
#include <cstdlib>
#include <cstring>

#include "binding/raise.hpp"
#include "binding/tag_spans.hpp"
#include "zent/records.h"

namespace {

using zent::binding::raise_error;

// Splines and piecewise polynomials share their layout; `knots` are the breakpoints of the latter.
template <class Real>
struct Spline {
  long domain_dim, target_dim;
  long* order;
  long* num_coef;
  long* num_knots;
  Real** knots;
  Real** coef;
};
static_assert(sizeof(Spline<double>) == sizeof(Zent_d_spline) && sizeof(Spline<double>) == sizeof(Zent_d_ppoly));

template <class Real>
inline constexpr int type_of = sizeof(Real) == sizeof(double) ? ORV_TYP_DOUBLE : ORV_TYP_FLOAT;

long sum(const long* x, long n) {
  long total = 0;
  for (long i = 0; i < n; ++i) total += x[i];
  return total;
}

// Coefficients of one target: a spline counts them by dimension of its domain, a piecewise polynomial by target.
long coefficients(const long* num_coef, long domain_dim, long target, bool is_ppoly) {
  if (is_ppoly) return num_coef[target];
  long product = 1;
  for (long d = 0; d < domain_dim; ++d) product *= num_coef[d];
  return product;
}

void put_integers(const long* x, long n, ORV_VARIABLE* out) {
  ORV_VARIABLE* temp = nullptr;
  void* const data = ORV_MakeTempArray(ORV_TYP_INT64, 1, &n, 0, &temp);
  if (data == nullptr) return;
  std::memcpy(data, x, static_cast<std::size_t>(n) * sizeof(long));
  ORV_VarCopy(temp, out);
}

// Vectors one after the other in one array.
template <class Real, class Length>
void put_vectors(Real* const* vectors, long count, Length length, ORV_VARIABLE* out) {
  long total = 0;
  for (long k = 0; k < count; ++k) total += length(k);
  ORV_VARIABLE* temp = nullptr;
  auto* data = static_cast<Real*>(ORV_MakeTempArray(type_of<Real>, 1, &total, 0, &temp));
  if (data == nullptr) return;
  for (long k = 0; k < count; ++k) {
    std::memcpy(data, vectors[k], static_cast<std::size_t>(length(k)) * sizeof(Real));
    data += length(k);
  }
  ORV_VarCopy(temp, out);
}

template <class Real>
void put_spline(const void* record, bool is_ppoly, ORV_VARIABLE** out) {
  const auto& spline = *static_cast<const Spline<Real>*>(record);
  const long dims = spline.domain_dim;
  ORV_StoreScalar(out[0], ORV_TYP_INT64, &spline.domain_dim);
  ORV_StoreScalar(out[1], ORV_TYP_INT64, &spline.target_dim);
  put_integers(spline.order, dims, out[2]);
  put_integers(spline.num_coef, is_ppoly ? spline.target_dim : dims, out[3]);
  put_integers(spline.num_knots, dims, out[4]);
  put_vectors(
      spline.knots, dims, [&](long d) { return spline.num_knots[d]; }, out[5]);
  put_vectors(
      spline.coef, spline.target_dim, [&](long t) { return coefficients(spline.num_coef, dims, t, is_ppoly); }, out[6]);
}

void put(const void* record, long type, bool is_ppoly, ORV_VARIABLE** out) {
  if (record == nullptr) return;
  if (type == ORV_TYP_FLOAT) {
    put_spline<float>(record, is_ppoly, out);
  } else {
    put_spline<double>(record, is_ppoly, out);
  }
}

// What a structure says of itself, still in the structure's memory.
struct Parts {
  long domain_dim, target_dim;
  const long *order, *num_coef, *num_knots;
  const void *knots, *coef;
};

constexpr long most_dims = 64;  // far above any use; keeps products of a spoiled structure from running away
constexpr long most_elements = 1L << 40;

const void* tag(ORV_VARIABLE* structure, const char* name) {
  return ORV_StructGetTagAddress(structure, name, 0, 1, nullptr);
}

long dimension(ORV_VARIABLE* structure, const char* name) {
  const auto* const value = static_cast<const long*>(tag(structure, name));
  return value != nullptr ? *value : 1;
}

// The tags leave room for each other with the lengths that the structure claims. Lengths of the numbers are known once the counts
// have been read.
bool has_room(const Parts& parts, bool is_ppoly, long knots, long coef, long real_bytes) {
  const long dims_bytes = parts.domain_dim * static_cast<long>(sizeof(long));
  const long counts_bytes = is_ppoly ? parts.target_dim * static_cast<long>(sizeof(long)) : dims_bytes;
  const zent::binding::TagSpan spans[] = {{parts.order, dims_bytes},
                                          {parts.num_coef, counts_bytes},
                                          {parts.num_knots, dims_bytes},
                                          {parts.knots, knots * real_bytes},
                                          {parts.coef, coef * real_bytes}};
  return zent::binding::disjoint(spans);
}

// The counts have to follow from each other.
bool consistent(const Parts& parts, bool is_ppoly, long real_bytes) {
  if (parts.domain_dim < 1 || parts.domain_dim > most_dims || parts.target_dim < 1 || parts.target_dim > most_dims) return false;
  if (!parts.order || !parts.num_coef || !parts.num_knots || !parts.knots || !parts.coef) return false;
  if (!has_room(parts, is_ppoly, 1, 1, real_bytes)) return false;
  long pieces = 1;
  for (long d = 0; d < parts.domain_dim; ++d) {
    const long order = parts.order[d], knots = parts.num_knots[d];
    if (order < 1 || order > most_elements || knots < 2 || knots > most_elements) return false;
    const long factor = is_ppoly ? (knots - 1) * order : parts.num_coef[d];
    if (!is_ppoly && (factor < order || knots != factor + order)) return false;
    if (__builtin_mul_overflow(pieces, factor, &pieces) || pieces > most_elements) return false;
  }
  for (long t = 0; is_ppoly && t < parts.target_dim; ++t) {
    if (parts.num_coef[t] != pieces) return false;
  }
  return has_room(parts, is_ppoly, sum(parts.num_knots, parts.domain_dim), parts.target_dim * pieces, real_bytes);
}

// One block: record, pointer vectors, integers, numbers.
template <class Real>
void* get_spline(const Parts& parts, bool is_ppoly) {
  const long dims = parts.domain_dim, targets = parts.target_dim;
  const long counts = is_ppoly ? targets : dims;
  const long knots = sum(parts.num_knots, dims);
  const long each = coefficients(parts.num_coef, dims, 0, is_ppoly);
  const long bytes = static_cast<long>(sizeof(Spline<Real>)) + (dims + targets) * static_cast<long>(sizeof(Real*)) +
                     (2 * dims + counts) * static_cast<long>(sizeof(long)) +
                     (knots + targets * each) * static_cast<long>(sizeof(Real));
  auto* const spline = static_cast<Spline<Real>*>(std::malloc(static_cast<std::size_t>(bytes)));
  if (spline == nullptr) return nullptr;
  spline->domain_dim = dims;
  spline->target_dim = targets;
  spline->knots = reinterpret_cast<Real**>(spline + 1);
  spline->coef = spline->knots + dims;
  spline->order = reinterpret_cast<long*>(spline->coef + targets);
  spline->num_coef = spline->order + dims;
  spline->num_knots = spline->num_coef + counts;
  auto* numbers = reinterpret_cast<Real*>(spline->num_knots + dims);
  std::memcpy(spline->order, parts.order, static_cast<std::size_t>(dims) * sizeof(long));
  std::memcpy(spline->num_coef, parts.num_coef, static_cast<std::size_t>(counts) * sizeof(long));
  std::memcpy(spline->num_knots, parts.num_knots, static_cast<std::size_t>(dims) * sizeof(long));
  std::memcpy(numbers, parts.knots, static_cast<std::size_t>(knots) * sizeof(Real));
  std::memcpy(numbers + knots, parts.coef, static_cast<std::size_t>(targets * each) * sizeof(Real));
  for (long d = 0; d < dims; ++d, numbers += parts.num_knots[d - 1]) spline->knots[d] = numbers;
  for (long t = 0; t < targets; ++t, numbers += each) spline->coef[t] = numbers;
  return spline;
}

}  // namespace

extern "C" {

void cmast_bspline_to_TVH(const void* spline, long type, ORV_VARIABLE** out7) {
  put(spline, type, false, out7);
}

void cmast_ppoly_to_TVH(const void* ppoly, long type, ORV_VARIABLE** out7) {
  put(ppoly, type, true, out7);
}

void* cmast_tsdh_to_Cstruct(ORV_VARIABLE* structure, long type, long is_ppoly) {
  Parts parts = {};
  if (structure->type == ORV_TYP_STRUCT) {
    parts.domain_dim = dimension(structure, "DOMAIN_DIM");
    parts.target_dim = dimension(structure, "TARGET_DIM");
    parts.order = static_cast<const long*>(tag(structure, "ORDER"));
    parts.num_coef = static_cast<const long*>(tag(structure, "NUM_COEF"));
    parts.num_knots = static_cast<const long*>(tag(structure, is_ppoly != 0 ? "NUM_BREAKPOINTS" : "NUM_KNOTS"));
    parts.knots = tag(structure, is_ppoly != 0 ? "BREAKPOINTS" : "KNOTS");
    parts.coef = tag(structure, "COEF");
  }
  if (!consistent(parts, is_ppoly != 0, ORV_TypeSizeFunc(type == ORV_TYP_FLOAT ? ORV_TYP_FLOAT : ORV_TYP_DOUBLE))) {
    raise_error("The structure is not one of a spline: its dimensions, orders and counts do not fit together");
    return nullptr;
  }
  return type == ORV_TYP_FLOAT ? get_spline<float>(parts, is_ppoly != 0) : get_spline<double>(parts, is_ppoly != 0);
}
}
