// Reading of an argument vector by its table.
#include "binding/positions.hpp"

#include <cstdio>

namespace zent::binding {

namespace {

const char* type_name(int type) {
  switch (type) {
    case ORV_TYP_UNDEF:
      return "undefined";
    case ORV_TYP_BYTE:
      return "byte";
    case ORV_TYP_FLOAT:
      return "single precision";
    case ORV_TYP_DOUBLE:
      return "double precision";
    case ORV_TYP_COMPLEX:
      return "single precision complex";
    case ORV_TYP_STRING:
      return "a string";
    case ORV_TYP_STRUCT:
      return "a structure";
    case ORV_TYP_DCOMPLEX:
      return "double precision complex";
    case ORV_TYP_INT64:
      return "a 64-bit integer";
    default:
      return "another type";
  }
}

// The type code that a position must have; -1 for any.
int expected_type(const Arguments& arguments, Type type) {
  const int precision = arguments.precision;
  switch (type) {
    case Type::real:
      return arguments.real_type();
    case Type::complex:
      return precision == ORV_TYP_DCOMPLEX ? ORV_TYP_DCOMPLEX : ORV_TYP_COMPLEX;
    case Type::field:
      return precision == ORV_TYP_COMPLEX || precision == ORV_TYP_DCOMPLEX ? precision : arguments.real_type();
    case Type::integer:
      return ORV_TYP_INT64;
    case Type::text:
      return ORV_TYP_STRING;
    case Type::byte:
      return ORV_TYP_BYTE;
    case Type::structure:
      return ORV_TYP_STRUCT;
    default:
      return -1;
  }
}

// The label stands for a call in progress only; an argument that is refused ends it.
bool refuse(const Arguments& arguments, const Position& position, const char* why, const char* expected, const char* found) {
  char text[256];
  std::snprintf(text, sizeof text, "%s: argument %s %s%s%s%s", arguments.routine->label, position.name, why, expected,
                found[0] == '\0' ? "" : ", not ", found);
  return zent::binding::refuse(text);
}

bool refuse_undefined(ORV_VARIABLE* variable) {
  cmast_pop_fcn_name();
  ORV_MessageVE_UNDEFVAR(variable, ORV_MSG_RAISE);
  return false;
}

bool fetch(Arguments& arguments, const Position& position, int k) {
  ORV_VarGetData(arguments.variable[k], &arguments.count[k], &arguments.data[k], 0);
  if (arguments.count[k] < 1 || arguments.data[k] == nullptr) return refuse(arguments, position, "is empty", "", "");
  arguments.present[k] = true;
  return true;
}

// The two fixed positions are 32 bits at the data pointer, whatever number type the caller has there.
bool read_head(Arguments& arguments, const Position& position, int k) {
  const int type = arguments.variable[k]->type;
  if (type == ORV_TYP_UNDEF) return refuse_undefined(arguments.variable[k]);
  if (type == ORV_TYP_BYTE || type == ORV_TYP_STRING || type == ORV_TYP_STRUCT) {
    return refuse(arguments, position, "must be ", type_name(ORV_TYP_INT64), type_name(type));
  }
  if (!fetch(arguments, position, k)) return false;
  if (position.type == Type::status) {
    arguments.status = arguments.array<int>(k);
    return true;
  }
  arguments.precision = *arguments.array<int>(k);
  if (position.type == Type::real_precision && !arguments.is_double()) arguments.precision = ORV_TYP_FLOAT;
  return true;
}

bool read_position(Arguments& arguments, const Position& position, int k) {
  ORV_VARIABLE* const variable = arguments.variable[k];
  const bool in_head = position.type == Type::precision || position.type == Type::real_precision || position.type == Type::status;
  if (in_head) return read_head(arguments, position, k);
  if (variable->type == ORV_TYP_UNDEF) return position.kind != Kind::required || refuse_undefined(variable);
  const int expected = expected_type(arguments, position.type);
  if (expected >= 0 && variable->type != expected) {
    return refuse(arguments, position, "must be ", type_name(expected), type_name(variable->type));
  }
  if (position.type != Type::text) return fetch(arguments, position, k);
  ORV_VarGetData(variable, &arguments.count[k], &arguments.data[k], 0);
  const auto* const string = arguments.array<const ORV_STRING>(k);
  arguments.present[k] = arguments.count[k] > 0 && string != nullptr && string->len > 0;
  if (arguments.present[k] && arguments.count[k] > 1) return refuse(arguments, position, "must be one string", "", "");
  if (position.kind == Kind::required) {
    if (arguments.count[k] < 1) return refuse(arguments, position, "is empty", "", "");
    arguments.present[k] = true;  // an empty text is for the library to refuse
  }
  return true;
}

}  // namespace

bool read_arguments(const Routine& routine, int argc, ORV_VARIABLE** argv, Arguments& arguments) {
  arguments = Arguments{};
  arguments.routine = &routine;
  arguments.variable = argv;
  arguments.count_given = argc < routine.position_count ? argc : routine.position_count;
  for (int k = 0; k < arguments.count_given; ++k) {
    if (!read_position(arguments, routine.positions[k], k)) return false;
  }
  return true;
}

void Arguments::add_options(Words& words) const {
  bool option_open = false;
  for (int k = 0; k < count_given; ++k) {
    const Position& position = routine->positions[k];
    if (position.option == 0) continue;
    if (position.option == continues) {
      if (!option_open || !present[k]) continue;
    } else {
      option_open = present[k];
      if (!option_open) continue;
      words.option(position.option);
    }
    if (position.pass == Pass::value) add_value(words, k);
    if (position.pass == Pass::address) add_address(words, k);
  }
}

}  // namespace zent::binding
