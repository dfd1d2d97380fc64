// The memory behind variables, and the value that owns one.
#include "host/value.hpp"

#include <cstdlib>

#include "host/internal.hpp"

namespace orv {

namespace detail {

long element_size(int type, ORV_SDEF definition) {
  if (type == ORV_TYP_STRUCT) return definition ? definition->size : 0;
  return ORV_TypeSizeFunc(type);
}

long checked_count(const Dims& dims, long size) {
  long count = 1;
  for (long extent : dims) {
    if (extent < 0) throw Error("ERROR", "An extent of an array must be at least 0, but the shape is " + shape_text(dims) + ".");
    if (__builtin_mul_overflow(count, extent, &count)) throw Error("ERROR", "Array is too large: " + shape_text(dims) + ".");
  }
  long bytes;
  if (__builtin_mul_overflow(count, size, &bytes)) throw Error("ERROR", "Array is too large: " + shape_text(dims) + ".");
  return count;
}

static char* zeroed(long count, long size) {
  const size_t bytes = static_cast<size_t>(count) * static_cast<size_t>(size);
  void* data = std::calloc(bytes ? bytes : 1, 1);
  if (!data) throw Error("ERROR", "Unable to allocate memory: " + std::to_string(bytes) + " bytes for an array.");
  return static_cast<char*>(data);
}

Block* new_block(int type, const Dims& dims, ORV_SDEF definition, bool scalar) {
  const long size = element_size(type, definition);
  if (size <= 0) throw Error("ERROR", "There are no arrays of type " + type_name(type) + " (" + std::to_string(type) + ").");
  const long count = scalar ? 1 : checked_count(dims, size);
  auto block = std::make_unique<Block>();
  block->type = type;
  block->count = count;
  block->element_size = size;
  block->definition = definition;
  block->dims = dims;
  block->data = zeroed(count, size);
  return block.release();
}

static void release_data(Block& block) noexcept {
  if (block.release) {
    block.release(block.data);
  } else if (!block.borrowed) {
    destroy_elements(block.type, block.definition, block.data, block.count);
    std::free(block.data);
  }
}

void drop(Block* block) noexcept {
  if (--block->references > 0) return;
  release_data(*block);
  delete block;
}

Block* clone(const Block& source) {
  Block* copy = new_block(source.type, source.dims, source.definition, source.dims.empty());
  try {
    copy_elements(source.type, source.definition, copy->data, source.data, source.count);
  } catch (...) {
    drop(copy);
    throw;
  }
  return copy;
}

void detach(Block& block) {
  if (!block.borrowed) return;
  char* own = zeroed(block.count, block.element_size);
  copy_elements(block.type, block.definition, own, block.data, block.count);
  block.data = own;
  block.borrowed = false;
}

void forget(Block& block) noexcept {
  if (!block.borrowed) return;
  const size_t bytes = static_cast<size_t>(block.count * block.element_size);
  block.data = static_cast<char*>(std::calloc(bytes ? bytes : 1, 1));
  if (!block.data) block.count = 0;
  block.borrowed = false;
}

void set_block(ORV_VARIABLE& variable, Block* block, bool scalar) noexcept {
  variable.type = static_cast<unsigned char>(block->type);
  variable.flags = static_cast<unsigned char>((variable.flags & ORV_V_TEMP) | ORV_V_DYNAMIC | (scalar ? 0 : flag_array) |
                                              (block->type == ORV_TYP_STRUCT ? flag_structure : 0));
  variable.value.arr = block;
}

void make_unique(ORV_VARIABLE& variable) {
  if (!has_block(variable)) return;
  Block* block = block_of(variable);
  if (block->references == 1) return;
  Block* copy = clone(*block);
  drop(block);
  variable.value.arr = copy;
}

void store_text(ORV_STRING& target, std::string_view text) {
  if (text.size() > 0x7ffffffe) throw Error("ERROR", "A string may have at most 2147483646 characters.");
  char* copy = nullptr;
  if (!text.empty()) {
    copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (!copy) throw Error("ERROR", "Unable to allocate memory for a string.");
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = 0;
  }
  if (target.len > 0) std::free(target.text);
  target.len = static_cast<int>(text.size());
  target.text = copy;
}

void copy_elements(int type, ORV_SDEF definition, void* target, const void* source, long n) {
  if (n <= 0) return;
  if (type == ORV_TYP_STRING) {
    auto* to = static_cast<ORV_STRING*>(target);
    auto* from = static_cast<const ORV_STRING*>(source);
    for (long k = 0; k < n; ++k) store_text(to[k], text_of(from[k]));
  } else if (type == ORV_TYP_STRUCT && definition->owns_memory) {
    for (long k = 0; k < n; ++k) {
      for (const auto& tag : definition->tags) {
        copy_elements(tag.type, tag.definition, static_cast<char*>(target) + k * definition->size + tag.offset,
                      static_cast<const char*>(source) + k * definition->size + tag.offset, tag.count);
      }
    }
  } else {
    std::memcpy(target, source, static_cast<size_t>(n * element_size(type, definition)));
  }
}

void destroy_elements(int type, ORV_SDEF definition, void* data, long n) noexcept {
  if (type == ORV_TYP_STRING) {
    auto* strings = static_cast<ORV_STRING*>(data);
    for (long k = 0; k < n; ++k) {
      if (strings[k].len > 0) std::free(strings[k].text);
      strings[k] = {};
    }
  } else if (type == ORV_TYP_STRUCT && definition->owns_memory) {
    for (long k = 0; k < n; ++k) {
      for (const auto& tag : definition->tags) {
        destroy_elements(tag.type, tag.definition, static_cast<char*>(data) + k * definition->size + tag.offset, tag.count);
      }
    }
  }
}

void clear(ORV_VARIABLE& variable) noexcept {
  if (has_block(variable)) {
    drop(block_of(variable));
  } else if (variable.type == ORV_TYP_STRING && variable.value.str.len > 0) {
    std::free(variable.value.str.text);
  }
  variable.type = ORV_TYP_UNDEF;
  variable.flags &= ORV_V_TEMP;
  variable.value.dcmp = {};
}

void share(const ORV_VARIABLE& source, ORV_VARIABLE& target) {
  const unsigned char temporary = target.flags & ORV_V_TEMP;
  if (has_block(source)) {
    ++block_of(source)->references;
    target.value = source.value;
  } else if (source.type == ORV_TYP_STRING) {
    target.value.str = {};
    store_text(target.value.str, text_of(source.value.str));
  } else {
    target.value = source.value;
  }
  target.type = source.type;
  target.flags = static_cast<unsigned char>((source.flags & ~ORV_V_TEMP) | temporary);
}

void move_contents(ORV_VARIABLE& source, ORV_VARIABLE& target) noexcept {
  target.value = source.value;
  target.type = source.type;
  target.flags = static_cast<unsigned char>((source.flags & ~ORV_V_TEMP) | (target.flags & ORV_V_TEMP));
  source.type = ORV_TYP_UNDEF;
  source.flags &= ORV_V_TEMP;
  source.value.dcmp = {};
}

}  // namespace detail

using detail::block_of;
using detail::has_block;

Value::Value() : v_{} {}
Value::Value(const Value& other) : v_{} {
  detail::share(other.v_, v_);
}
Value::Value(Value&& other) noexcept : v_(other.v_) {
  other.v_ = {};
}
Value& Value::operator=(Value other) {
  std::swap(v_, other.v_);
  return *this;
}
Value::~Value() {
  if (v_.type >= ORV_TYP_STRING || v_.flags) detail::clear(v_);
}

Value Value::real(double x) {
  Value value;
  value.v_.type = ORV_TYP_DOUBLE;
  value.v_.value.d = x;
  return value;
}
Value Value::integer(long k) {
  Value value;
  value.v_.type = ORV_TYP_INT64;
  value.v_.value.l64 = k;
  return value;
}
Value Value::boolean(bool b) {
  Value value;
  value.v_.type = ORV_TYP_BYTE;
  value.v_.value.c = b;
  return value;
}
Value Value::text(std::string_view text) {
  Value value;
  value.v_.type = ORV_TYP_STRING;
  value.v_.flags = ORV_V_DYNAMIC;
  detail::store_text(value.v_.value.str, text);
  return value;
}
Value Value::zero(int type) {
  if (type == ORV_TYP_STRING) return text("");
  if (ORV_TypeSizeFunc(type) == 0 && type != ORV_TYP_UNDEF)
    throw Error("ERROR", "There are no scalars of type " + type_name(type) + ".");
  Value value;
  value.v_.type = static_cast<unsigned char>(type);
  return value;
}
Value Value::array(int type, const Dims& dims) {
  if (dims.empty()) return zero(type);
  Value value;
  detail::set_block(value.v_, detail::new_block(type, dims, nullptr), false);
  return value;
}
Value Value::structure(ORV_SDEF definition, long n) {
  if (!definition) throw Error("ERROR", "The structure is not defined.");
  Value value;
  const bool scalar = n < 0;
  detail::set_block(value.v_, detail::new_block(ORV_TYP_STRUCT, scalar ? Dims{} : Dims{n}, definition, scalar), scalar);
  return value;
}

int Value::type() const {
  return v_.type;
}
bool Value::defined() const {
  return v_.type != ORV_TYP_UNDEF;
}
bool Value::is_array() const {
  return (v_.flags & detail::flag_array) != 0;
}
bool Value::is_text() const {
  return v_.type == ORV_TYP_STRING;
}
const Dims& Value::dims() const {
  static const Dims none;
  return is_array() ? block_of(v_)->dims : none;
}
long Value::count() const {
  if (has_block(v_)) return block_of(v_)->count;
  return defined() ? 1 : 0;
}
const void* Value::data() const {
  return has_block(v_) ? static_cast<const void*>(block_of(v_)->data) : &v_.value;
}
void* Value::writable() {
  if (!has_block(v_)) return &v_.value;
  if (block_of(v_)->borrowed) {
    detail::Block* copy = detail::clone(*block_of(v_));
    detail::drop(block_of(v_));
    v_.value.arr = copy;
  } else {
    detail::make_unique(v_);
  }
  return block_of(v_)->data;
}

Value Value::element(long k) const {
  if (k < 0 || k >= count()) {
    throw Error("ERROR", "Subscript " + std::to_string(k) + " is out of range for " + describe(*this) + ".");
  }
  if (!is_array()) return *this;
  const detail::Block& block = *block_of(v_);
  const char* source = block.data + k * block.element_size;
  if (block.type == ORV_TYP_STRUCT) {
    Value one = structure(block.definition, -1);
    detail::copy_elements(block.type, block.definition, one.writable(), source, 1);
    return one;
  }
  if (block.type == ORV_TYP_STRING) return text(detail::text_of(*reinterpret_cast<const ORV_STRING*>(source)));
  Value one = zero(block.type);
  std::memcpy(&one.v_.value, source, static_cast<size_t>(block.element_size));
  return one;
}

void Value::set_element(long k, const Value& scalar) {
  if (k < 0 || k >= count()) {
    throw Error("ERROR", "Subscript " + std::to_string(k) + " is out of range for " + describe(*this) + ".");
  }
  if (scalar.count() != 1)
    throw Error("ERROR", "Expected a scalar for an element of " + describe(*this) + ", found " + describe(scalar) + ".");
  const Value converted = detail::convert(scalar, type(), true);
  if (type() == ORV_TYP_STRUCT && converted.definition() != definition()) {
    throw Error("ERROR", "The structures are of different definitions.");
  }
  const ORV_SDEF of = type() == ORV_TYP_STRUCT ? definition() : nullptr;
  char* target = static_cast<char*>(writable()) + k * detail::element_size(type(), of);
  if (target == converted.data()) return;
  detail::destroy_elements(type(), of, target, 1);
  detail::copy_elements(type(), of, target, converted.data(), 1);
}

Value Value::reshaped(const Dims& dims) const {
  if (!defined()) detail::throw_undefined(nullptr);
  const long size = detail::element_size(type(), type() == ORV_TYP_STRUCT ? definition() : nullptr);
  if (detail::checked_count(dims, size) != count()) {
    throw Error("ERROR", "Cannot give " + describe(*this) + " the shape " + detail::shape_text(dims) +
                             ": the number of elements differs.");
  }
  if (dims.empty()) return element(0);
  Value result;
  detail::set_block(result.v_, detail::new_block(type(), dims, type() == ORV_TYP_STRUCT ? definition() : nullptr), false);
  detail::copy_elements(type(), block_of(result.v_)->definition, result.writable(), data(), count());
  return result;
}

ORV_VARIABLE* Value::variable() {
  writable();
  return &v_;
}

Value Value::sharing(const ORV_VARIABLE& variable) {
  Value value;
  detail::share(variable, value.v_);
  return value;
}

void Value::give_to(ORV_VARIABLE& target) {
  detail::move_contents(v_, target);
}

Value Value::adopt(ORV_VARIABLE* variable) {
  if (!variable) return {};
  Value value;
  if (detail::is_temporary(variable)) {
    if (has_block(*variable)) detail::detach(*block_of(*variable));
    detail::move_contents(*variable, value.v_);
    detail::release_temporary(variable);
  } else {
    detail::share(*variable, value.v_);
    if (has_block(value.v_) && block_of(value.v_)->borrowed) value.writable();
  }
  return value;
}

}  // namespace orv
