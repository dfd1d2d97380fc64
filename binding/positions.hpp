// The argument positions of a routine, stated once: reading the vector, presence, the words of the call, and the reference page
// of routines all come from one constant table.
#pragma once

#include "binding/words.hpp"

namespace zent::binding {

enum class Kind : unsigned char {
  required,
  optional,  // undefined means not given
  output,    // allocated by the caller, or undefined: then the wrapper stores a new value (Arguments::store)
};

enum class Type : unsigned char {
  precision,       // type code of the computation, 32 bits are read
  real_precision,  // likewise, of a real one: whatever is not 5 counts as 4
  status,          // 32 bits are written
  real,            // float or double as the precision says
  field,           // of the type code in the precision: 4, 5, 6 or 9
  complex,         // 9 in double, else 6
  integer,         // 64 bits
  text,            // a string; present only when it is not empty
  byte,
  structure,
  any,  // the wrapper looks for itself
};

// How a present optional position goes into the words of the call, behind the code of its option.
enum class Pass : unsigned char {
  none,     // the wrapper itself uses it
  flag,     // the code alone
  value,    // an integer by value
  address,  // the address of the data: arrays, outputs, and reals of _ADR options
};

inline constexpr int continues = -1;  // option code of a further value of the option before it

// As it stands: a position that a routine has and does not use.
struct Position {
  const char* name = "UNUSED";
  Kind kind = Kind::optional;
  Type type = Type::any;
  const char* meaning = "not looked at";  // one line for the reference page
  int option = 0;
  Pass pass = Pass::none;
};

enum class ErrorHalf : unsigned char { none, math, stat, table };

struct Routine {
  int number;         // MATHSTAT_<number>
  const char* label;  // for errors that the wrapper finds itself
  bool has_head;      // positions 0 and 1 are precision and status
  int position_count;
  const Position* positions;
};

inline constexpr Position precision_position = {"PRECISION", Kind::required, Type::real_precision,
                                                "type code of the computation: 5 double, 4 single"};
inline constexpr Position status_position = {"STATUS", Kind::output, Type::status, "0, or 1 after an error that is passed over"};

inline constexpr Position unused_position;

inline constexpr int most_positions = 44;

struct Arguments {
  const Routine* routine;
  ORV_VARIABLE** variable;
  int precision;
  int count_given;
  int* status;
  bool present[most_positions];
  long count[most_positions];
  void* data[most_positions];

  bool is_double() const {
    return precision == ORV_TYP_DOUBLE;
  }
  int real_type() const {
    return is_double() || precision == ORV_TYP_DCOMPLEX ? ORV_TYP_DOUBLE : ORV_TYP_FLOAT;
  }
  long integer(int k) const {
    return *static_cast<const long*>(data[k]);
  }
  template <class T>
  T* array(int k) const {
    return static_cast<T*>(data[k]);
  }
  const char* text(int k) const {  // null when absent
    return present[k] ? ORV_VarGetString(variable[k]) : nullptr;
  }

  // Stores a scalar into an output: through its data pointer, or as a new value where the caller left it undefined.
  template <class T>
  void store(int k, int type, T value) const {
    if (data[k] != nullptr) {
      *array<T>(k) = value;
    } else {
      ORV_StoreScalar(variable[k], type, &value);
    }
  }

  void add_value(Words& words, int k) const {
    words.add(integer(k));
  }
  void add_address(Words& words, int k) const {
    words.add(data[k]);
  }
  // The codes and values of all present options, in the order of the table.
  void add_options(Words& words) const;
};

// Reads a vector of argument count `argc`. A position that is missing, empty or of a type that the table does not allow raises an
// error with its name; false then (from a host that returns), with nothing pushed: the wrapper returns 0.
bool read_arguments(const Routine& routine, int argc, ORV_VARIABLE** argv, Arguments& arguments);

}  // namespace zent::binding
