// Reading and writing parts of arrays.
#include "host/internal.hpp"

namespace orv {
namespace {

// What a subscript picks along one extent.
struct Picked {
  long count;
  const Subscript* subscript;
  long at(long k) const {
    switch (subscript->kind) {
      case Subscript::all:
        return k;
      case Subscript::single:
        return subscript->first;
      case Subscript::range:
        return subscript->first + k * subscript->step;
      default:
        return subscript->indices[static_cast<size_t>(k)];
    }
  }
};

void check_bounds(long index, long extent, const Value& array) {
  if (index >= 0 && index < extent) return;
  throw Error("ERROR", "Subscript " + std::to_string(index) + " is out of range: it must be from 0 to " +
                           std::to_string(extent - 1) + " in " + describe(array) + ".");
}

Picked pick(const Subscript& s, long extent, const Value& array) {
  Picked picked{extent, &s};
  switch (s.kind) {
    case Subscript::all:
      break;
    case Subscript::single:
      picked.count = 1;
      check_bounds(s.first, extent, array);
      break;
    case Subscript::range: {
      if (s.step == 0) throw Error("ERROR", "The step of a range of subscripts must not be 0.");
      const bool some = s.step > 0 ? s.first <= s.last : s.first >= s.last;
      picked.count = 0;
      if (!some) break;
      check_bounds(s.first, extent, array);
      check_bounds(s.last, extent, array);
      picked.count = (s.last - s.first) / s.step + 1;
      break;
    }
    case Subscript::list:
      picked.count = static_cast<long>(s.indices.size());
      for (long index : s.indices) check_bounds(index, extent, array);
  }
  return picked;
}

struct Selection {
  std::vector<Picked> picked;
  Dims extents;  // of the array as it is subscripted: one flat extent, or all of them
  Dims dims;     // of the result
  long count = 1;
};

Selection select(const Value& array, const std::vector<Subscript>& subscripts) {
  if (!array.defined()) detail::throw_undefined(&array.raw());
  Selection selection;
  if (subscripts.size() == 1) {
    selection.extents = {array.count()};
  } else if (subscripts.size() == array.dims().size() && !subscripts.empty()) {
    selection.extents = array.dims();
  } else {
    throw Error("ERROR", describe(array) + " needs 1 or " + std::to_string(array.dims().size()) + " subscripts, found " +
                             std::to_string(subscripts.size()) + ".");
  }
  for (size_t d = 0; d < subscripts.size(); ++d) {
    selection.picked.push_back(pick(subscripts[d], selection.extents[d], array));
    if (subscripts[d].kind != Subscript::single) selection.dims.push_back(selection.picked.back().count);
    if (__builtin_mul_overflow(selection.count, selection.picked.back().count, &selection.count)) {
      throw Error("ERROR", "The selection from " + describe(array) + " is too large.");
    }
  }
  return selection;
}

// Calls f(position in the selection, flat index in the array) in row-major order.
template <class F>
void for_each(const Selection& s, F f) {
  std::vector<long> at(s.picked.size(), 0);
  for (long k = 0; k < s.count; ++k) {
    long flat = 0;
    for (size_t d = 0; d < at.size(); ++d) flat = flat * s.extents[d] + s.picked[d].at(at[d]);
    f(k, flat);
    for (size_t d = at.size(); d-- > 0;) {
      if (++at[d] < s.picked[d].count) break;
      at[d] = 0;
    }
  }
}

}  // namespace

Value index(const Value& array, const std::vector<Subscript>& subscripts) {
  if (subscripts.size() == 1 && subscripts[0].kind == Subscript::single) {
    if (!array.defined()) detail::throw_undefined(&array.raw());
    check_bounds(subscripts[0].first, array.count(), array);
    return array.element(subscripts[0].first);
  }
  const Selection selection = select(array, subscripts);
  const ORV_SDEF definition = array.definition();
  Value result;
  if (selection.dims.empty()) {
    for_each(selection, [&](long, long flat) { result = array.element(flat); });
    return result;
  }
  ORV_VARIABLE fresh{};
  detail::set_block(fresh, detail::new_block(array.type(), selection.dims, definition), false);
  result = Value::sharing(fresh);
  detail::clear(fresh);
  const long size = detail::element_size(array.type(), definition);
  char* target = static_cast<char*>(result.writable());
  const char* source = static_cast<const char*>(array.data());
  if (size == 8) {
    for_each(selection, [&](long k, long flat) { std::memcpy(target + k * 8, source + flat * 8, 8); });
  } else {
    for_each(selection, [&](long k, long flat) {
      detail::copy_elements(array.type(), definition, target + k * size, source + flat * size, 1);
    });
  }
  return result;
}

void assign_index(Value& array, const std::vector<Subscript>& subscripts, const Value& value) {
  if (!value.defined()) detail::throw_undefined(&value.raw());
  const Selection selection = select(array, subscripts);
  const bool spread = !value.is_array();
  if (!spread && value.count() != selection.count) {
    throw Error("ERROR", "Cannot store " + describe(value) + " in " + std::to_string(selection.count) + " elements (" +
                             detail::shape_text(selection.dims) + ") of " + describe(array) + ".");
  }
  const Value source = detail::convert(value, array.type(), true);  // a copy of the reference: value may be the array itself
  const ORV_SDEF definition = array.definition();
  if (definition != source.definition()) throw Error("ERROR", "The structures are of different definitions.");
  const long size = detail::element_size(array.type(), definition);
  char* target = static_cast<char*>(array.writable());
  const char* data = static_cast<const char*>(source.data());
  for_each(selection, [&](long k, long flat) {
    detail::destroy_elements(array.type(), definition, target + flat * size, 1);
    detail::copy_elements(array.type(), definition, target + flat * size, data + (spread ? 0 : k) * size, 1);
  });
}

}  // namespace orv
