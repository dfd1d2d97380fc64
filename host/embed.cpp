// The host for programs in C.
#include <cstdio>
#include <map>

#include "host/internal.hpp"
#include "host/module.hpp"
#include "host/orv_embed.h"

using orv::Dims;
using orv::Error;
using orv::Value;

#define ORV_EMBED extern "C" __attribute__((visibility("default")))

namespace {

struct Native {
  orv_embed_routine routine;
  void* context;
};
std::map<const void*, Native>& natives() {
  static auto* const table = new std::map<const void*, Native>;  // by identifier
  return *table;
}

// The body's errors as text: nothing leaves towards C.
template <class Body>
int report(char* error_text, size_t size, const Body& body) noexcept {
  const char* why = "Unable to allocate memory.";
  try {
    body();
    if (error_text && size) *error_text = 0;
    return 1;
  } catch (const std::bad_alloc&) {
    if (error_text && size) std::snprintf(error_text, size, "%s", why);
  } catch (const std::exception& error) {
    if (error_text && size) std::snprintf(error_text, size, "%s", error.what());
  }
  return 0;
}

// A variable of the C interface is the first member of a value of its own.
static_assert(sizeof(Value) == sizeof(ORV_VARIABLE));

Value* value_of(ORV_VARIABLE* v) {
  return reinterpret_cast<Value*>(v);
}
const Value* value_of(const ORV_VARIABLE* v) {
  return reinterpret_cast<const Value*>(v);
}

template <class Make>
ORV_VARIABLE* make(const Make& produce) noexcept {
  Value* value = nullptr;
  report(nullptr, 0, [&] { value = new Value(produce()); });
  return reinterpret_cast<ORV_VARIABLE*>(value);
}

Value make_array(int type, int rank, const long* dims, const void* data) {
  if (rank < 1 || !dims) throw Error("ERROR", "An array needs at least one dimension.");
  Value array = Value::array(type, Dims(dims, dims + rank));
  if (!data) return array;
  if (type == ORV_TYP_STRING) {
    for (long k = 0; k < array.count(); ++k) {
      const char* text = static_cast<const char* const*>(data)[k];
      orv::detail::store_text(static_cast<ORV_STRING*>(array.writable())[k], text ? text : "");
    }
  } else {
    std::memcpy(array.writable(), data, static_cast<size_t>(array.count() * ORV_TypeSizeFunc(type)));
  }
  return array;
}

template <class Make>
int set(ORV_VARIABLE* target, const Make& produce) noexcept {
  return report(nullptr, 0, [&] { orv::assign(target, produce()); });
}

}  // namespace

bool orv::detail::call_native(ORV_IDENT name, std::span<ORV_VARIABLE*> arguments, Value& result) {
  if (natives().empty()) return false;
  const auto found = natives().find(name);
  if (found == natives().end()) return false;
  char text[1024] = "";
  ORV_VARIABLE local{};
  const int status = found->second.routine(found->second.context, static_cast<int>(arguments.size()), arguments.data(), &local,
                                           text, sizeof text);
  Value taken = Value::sharing(local);
  clear(local);
  if (status != 0) throw Error("ERROR", *text ? text : std::string(name) + " failed.");
  result = std::move(taken);
  return true;
}

ORV_EMBED int orv_embed_load(const char* path, char* error_text, size_t size) {
  return report(error_text, size, [&] { orv::load_module(path ? path : ""); });
}

ORV_EMBED int orv_embed_register(int (*load)(void), char* error_text, size_t size) {
  return report(error_text, size, [&] { orv::register_module(load); });
}

ORV_EMBED int orv_embed_call(const char* name, int argc, ORV_VARIABLE** argv, char* error_text, size_t size) {
  return report(error_text, size, [&] {
    std::vector<Value*> arguments;
    for (int k = 0; k < argc; ++k) {
      if (!argv[k]) throw Error("ERROR", "Argument " + std::to_string(k + 1) + " is a null pointer.");
      arguments.push_back(value_of(argv[k]));
    }
    orv::call_procedure(name ? name : "", arguments);
  });
}

ORV_EMBED ORV_VARIABLE* orv_embed_undefined(void) {
  return make([] { return Value(); });
}
ORV_EMBED ORV_VARIABLE* orv_embed_real(double value) {
  return make([&] { return Value::real(value); });
}
ORV_EMBED ORV_VARIABLE* orv_embed_float(float value) {
  return make([&] { return Value::real(static_cast<double>(value)).converted(ORV_TYP_FLOAT); });
}
ORV_EMBED ORV_VARIABLE* orv_embed_integer(long value) {
  return make([&] { return Value::integer(value); });
}
ORV_EMBED ORV_VARIABLE* orv_embed_complex(double re, double im) {
  return make([&] {
    Value z = Value::zero(ORV_TYP_DCOMPLEX);
    *static_cast<ORV_DCOMPLEX*>(z.writable()) = {re, im};
    return z;
  });
}
ORV_EMBED ORV_VARIABLE* orv_embed_string(const char* text) {
  return make([&] { return Value::text(text ? text : ""); });
}
ORV_EMBED ORV_VARIABLE* orv_embed_array(int type, int rank, const long* dims, const void* data) {
  return make([&] { return make_array(type, rank, dims, data); });
}
ORV_EMBED void orv_embed_release(ORV_VARIABLE* variable) {
  delete value_of(variable);
}

ORV_EMBED int orv_embed_type(const ORV_VARIABLE* variable) {
  return variable->type;
}
ORV_EMBED long orv_embed_count(const ORV_VARIABLE* variable) {
  return value_of(variable)->count();
}
ORV_EMBED int orv_embed_rank(const ORV_VARIABLE* variable) {
  return static_cast<int>(value_of(variable)->dims().size());
}
ORV_EMBED long orv_embed_extent(const ORV_VARIABLE* variable, int dimension) {
  const Dims& dims = value_of(variable)->dims();
  return dimension >= 0 && static_cast<size_t>(dimension) < dims.size() ? dims[static_cast<size_t>(dimension)] : 0;
}
// Not through writable(): borrowed data of an argument are to be read and written in place.
ORV_EMBED void* orv_embed_data(ORV_VARIABLE* variable) {
  return const_cast<void*>(value_of(variable)->data());
}

ORV_EMBED int orv_embed_to_real(const ORV_VARIABLE* variable, double* value, char* error_text, size_t size) {
  return report(error_text, size, [&] { *value = value_of(variable)->to_real(); });
}
ORV_EMBED int orv_embed_to_integer(const ORV_VARIABLE* variable, long* value, char* error_text, size_t size) {
  return report(error_text, size, [&] { *value = value_of(variable)->to_integer(); });
}
ORV_EMBED const char* orv_embed_text(const ORV_VARIABLE* variable) {
  const bool scalar = variable->type == ORV_TYP_STRING && !orv::detail::has_block(*variable);
  return scalar && variable->value.str.len > 0 ? variable->value.str.text : "";
}

ORV_EMBED int orv_embed_set_real(ORV_VARIABLE* target, double value) {
  return set(target, [&] { return Value::real(value); });
}
ORV_EMBED int orv_embed_set_integer(ORV_VARIABLE* target, long value) {
  return set(target, [&] { return Value::integer(value); });
}
ORV_EMBED int orv_embed_set_string(ORV_VARIABLE* target, const char* text) {
  return set(target, [&] { return Value::text(text ? text : ""); });
}
ORV_EMBED int orv_embed_set_array(ORV_VARIABLE* target, int type, int rank, const long* dims, const void* data) {
  return set(target, [&] { return make_array(type, rank, dims, data); });
}

ORV_EMBED int orv_embed_define(const char* name, orv_embed_routine routine, void* context) {
  return report(nullptr, 0, [&] {
    if (!name || !*name) throw Error("ERROR", "A routine needs a name.");
    const ORV_IDENT ident = orv::detail::intern(name);
    if (routine) {
      natives()[ident] = {routine, context};
    } else {
      natives().erase(ident);
    }
  });
}

ORV_EMBED void orv_embed_information_sink(void (*sink)(void* context, const char* text), void* context) {
  orv::set_information_sink(sink, context);
}
