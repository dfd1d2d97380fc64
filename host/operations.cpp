// The operations on variables that a module calls. Each works in a function that may throw and jumps, if at all, from a frame
// that holds nothing with a destructor.
#include <algorithm>
#include <cstdlib>
#include <unordered_set>

#include "host/internal.hpp"

using orv::Dims;
using orv::Error;
using orv::Value;
namespace detail = orv::detail;

std::string detail::upper(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return result;
}

ORV_IDENT detail::intern(std::string_view name) {
  static auto* const names = new std::unordered_set<std::string>;  // nodes do not move
  return names->insert(upper(name)).first->c_str();
}

namespace {

void* make_temporary(int type, const Dims& dims, ORV_VARIABLE** v) {
  if (type == ORV_TYP_STRUCT) throw Error("ERROR", "An array of structures needs a definition.");
  if (dims.empty()) throw Error("ERROR", "An array needs at least one dimension.");
  ORV_VARIABLE* temporary = detail::new_temporary();
  detail::Block* block;
  try {
    block = detail::new_block(type, dims, nullptr);
  } catch (...) {
    detail::release_temporary(temporary);
    throw;
  }
  detail::set_block(*temporary, block, false);
  *v = temporary;
  return block->data;
}

void copy_variable(ORV_VARIABLE* source, ORV_VARIABLE* target) {
  if (source == target) return;
  Value taken = Value::adopt(source);
  detail::clear(*target);
  taken.give_to(*target);
}

ORV_VARIABLE* import_array(int n_dims, const long* dims, int type, void* data, void (*release)(void*), ORV_SDEF def) {
  const long size = detail::element_size(type, def);
  if (n_dims < 1 || !dims || size <= 0)
    throw Error("ERROR", "Cannot import memory as an array of type " + orv::type_name(type) + ".");
  auto block = std::make_unique<detail::Block>();
  block->dims.assign(dims, dims + n_dims);
  block->type = type;
  block->count = detail::checked_count(block->dims, size);
  block->element_size = size;
  block->data = static_cast<char*>(data);
  block->release = release;
  block->borrowed = release == nullptr;
  block->definition = type == ORV_TYP_STRUCT ? def : nullptr;
  ORV_VARIABLE* v = detail::new_temporary();
  detail::set_block(*v, block.release(), false);
  return v;
}

void store_scalar(ORV_VARIABLE* v, int type, const void* value) {
  const long size = ORV_TypeSizeFunc(type);
  if (size == 0) throw Error("ERROR", "There are no scalars of type " + orv::type_name(type) + ".");
  ORV_VARIABLE fresh{};
  fresh.type = static_cast<unsigned char>(type);
  if (type == ORV_TYP_STRING) {
    fresh.flags = ORV_V_DYNAMIC;
    detail::store_text(fresh.value.str, detail::text_of(*static_cast<const ORV_STRING*>(value)));
  } else {
    std::memcpy(&fresh.value, value, static_cast<size_t>(size));
  }
  detail::clear(*v);
  detail::move_contents(fresh, *v);
}

}  // namespace

ORV_SERVED void ORV_VarGetData(ORV_VARIABLE* v, long* count, void** data, int) {
  if (detail::has_block(*v)) {
    *count = detail::block_of(*v)->count;
    *data = detail::block_of(*v)->data;
  } else if (v->type != ORV_TYP_UNDEF) {
    *count = 1;
    *data = &v->value;
  } else {
    *count = 0;
    *data = nullptr;
    ORV_MessageVE_UNDEFVAR(v, ORV_MSG_RAISE);
  }
}

ORV_SERVED char* ORV_VarGetString(ORV_VARIABLE* v) {
  static char empty[8];
  char* text = empty;
  empty[0] = 0;
  detail::serve([&] {
    if (v->type == ORV_TYP_UNDEF) detail::throw_undefined(v);
    const bool array = detail::has_block(*v);
    if (v->type != ORV_TYP_STRING || (array && detail::block_of(*v)->count != 1)) {
      throw Error("ERROR", "Expected a string, found " + orv::describe(Value::sharing(*v)) + ".");
    }
    const ORV_STRING& s = array ? *reinterpret_cast<ORV_STRING*>(detail::block_of(*v)->data) : v->value.str;
    if (s.len > 0) text = s.text;
  });
  return text;
}

ORV_SERVED ORV_VARIABLE* ORV_VarTypeConvert(ORV_VARIABLE* v, int type) {
  if (v->type == type && type != ORV_TYP_UNDEF) return v;
  ORV_VARIABLE* result = nullptr;
  detail::serve([&] {
    if (v->type == ORV_TYP_UNDEF) detail::throw_undefined(v);
    Value converted = detail::convert(Value::sharing(*v), type, v->type == ORV_TYP_COMPLEX || v->type == ORV_TYP_DCOMPLEX);
    result = detail::new_temporary();
    converted.give_to(*result);
  });
  return result;
}

ORV_SERVED void ORV_VarCopy(ORV_VARIABLE* source, ORV_VARIABLE* target) {
  detail::serve([&] { copy_variable(source, target); });
}

ORV_SERVED void* ORV_MakeTempArray(int type, int n_dims, const long* dims, int, ORV_VARIABLE** v) {
  void* data = nullptr;
  detail::serve([&] { data = make_temporary(type, n_dims > 0 && dims ? Dims(dims, dims + n_dims) : Dims(), v); });
  return data;
}

ORV_SERVED void* ORV_MakeTempVector(int type, long n, int, ORV_VARIABLE** v) {
  void* data = nullptr;
  detail::serve([&] { data = make_temporary(type, {n}, v); });
  return data;
}

ORV_SERVED void* ORV_GetScratch(ORV_VARIABLE** v, long n, long element_size) {
  void* data = nullptr;
  detail::serve([&] { data = make_temporary(ORV_TYP_BYTE, {n, element_size}, v); });
  return data;
}

ORV_SERVED ORV_VARIABLE* ORV_ImportArray(int n_dims, const long* dims, int type, void* data, void (*release)(void*),
                                         ORV_SDEF def) {
  ORV_VARIABLE* v = nullptr;
  detail::serve([&] { v = import_array(n_dims, dims, type, data, release, def); });
  return v;
}

ORV_SERVED ORV_VARIABLE* ORV_Gettmp(void) {
  ORV_VARIABLE* v = nullptr;
  detail::serve([&] { v = detail::new_temporary(); });
  return v;
}

ORV_SERVED void ORV_Deltmp(ORV_VARIABLE* v) {
  detail::release_temporary(v);
}

ORV_SERVED void ORV_Delvar(ORV_VARIABLE* v) {
  if (!v) return;
  if (detail::is_temporary(v)) {
    detail::release_temporary(v);
  } else if (v->flags & ORV_V_DYNAMIC) {
    detail::clear(*v);
  }
}

ORV_SERVED void ORV_StoreScalar(ORV_VARIABLE* v, int type, const void* value) {
  detail::serve([&] { store_scalar(v, type, value); });
}

ORV_SERVED void ORV_StrStore(ORV_STRING* target, const char* text) {
  detail::serve([&] { detail::store_text(*target, text ? text : ""); });
}

ORV_SERVED double ORV_DoubleScalar(ORV_VARIABLE* v) {
  if (v->type == ORV_TYP_DOUBLE && !detail::has_block(*v)) return v->value.d;
  double x = 0;
  detail::serve([&] {
    if (v->type == ORV_TYP_UNDEF) detail::throw_undefined(v);
    x = Value::sharing(*v).to_real();
  });
  return x;
}

ORV_SERVED long ORV_MEMINTScalar(ORV_VARIABLE* v) {
  if (v->type == ORV_TYP_INT64 && !detail::has_block(*v)) return v->value.l64;
  long k = 0;
  detail::serve([&] {
    if (v->type == ORV_TYP_UNDEF) detail::throw_undefined(v);
    const Value value = Value::sharing(*v);
    if (value.count() != 1) throw Error("ERROR", "Expected an integer, found " + orv::describe(value) + ".");
    k = *detail::convert(value, ORV_TYP_INT64, false).as<long>();
  });
  return k;
}

ORV_SERVED long ORV_TypeSizeFunc(int type) {
  switch (type) {
    case ORV_TYP_BYTE:
      return 1;
    case ORV_TYP_FLOAT:
      return 4;
    case ORV_TYP_DOUBLE:
    case ORV_TYP_COMPLEX:
    case ORV_TYP_INT64:
      return 8;
    case ORV_TYP_STRING:
    case ORV_TYP_DCOMPLEX:
      return 16;
    default:
      return 0;
  }
}

ORV_SERVED ORV_IDENT ORV_IdentHash(const char* name, int, int, int, int) {
  ORV_IDENT ident = nullptr;
  detail::serve([&] { ident = detail::intern(name ? name : ""); });
  return ident;
}

ORV_SERVED long ORV_StrBase_strlcpy(char* target, const char* text, long size) {
  const size_t length = std::strlen(text);
  if (size > 0) {
    const size_t kept = std::min(length, static_cast<size_t>(size - 1));
    std::memcpy(target, text, kept);
    target[kept] = 0;
  }
  return static_cast<long>(length);
}
