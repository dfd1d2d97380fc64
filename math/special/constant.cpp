// Named constants and their conversion into a unit that the caller writes as an expression.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "math/special/constant_tables.hpp"
#include "runtime/envelope.hpp"
#include "zent.h"

namespace zent {
namespace {

constexpr long factor_limit = 10;             // names in one unit expression
constexpr long power_limit = 1000000000;      // keeps the sums of exponents far from overflow
constexpr double standard_gravity = 9.80665;  // m/s^2: what turns a mass into a force
constexpr int dimension_count = 5;

char upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

template <class Row, std::size_t rows>
const Row* l_find(const Row (&table)[rows], const char* name) {
  const Row* row = std::lower_bound(std::begin(table), std::end(table), name,
                                    [](const Row& a, const char* b) { return std::strcmp(a.name, b) < 0; });
  return row != std::end(table) && std::strcmp(row->name, name) == 0 ? row : nullptr;
}

template <class Real>
struct Unit {
  long exponent[dimension_count];
  Real factor;
};

// One factor of a unit expression: a name, what its prefixes multiply it by, and its power.
template <class Real>
struct Factor {
  const char* name;
  long power;
  Real scale;
};

template <class Real>
Real integer_power(Real base, long power) {
  Real result = 1, square = base;
  for (unsigned long n = power < 0 ? -static_cast<unsigned long>(power) : static_cast<unsigned long>(power); n != 0; n >>= 1) {
    if (n & 1) result *= square;
    square *= square;
  }
  return power < 0 ? 1 / result : result;
}

void l_illegal_unit(const char* name) {
  raise<Math>(5, MATH_ILLEGAL_UNIT, {.l = {name}});
}

// Power of ten of a one-letter prefix by its place; C and D do not fit the rule of thousands.
int prefix_power(long place) {
  return place == 6 ? -2 : place == 11 ? -1 : static_cast<int>(3 * place - 18);
}

// Drops the prefix of a name. A name of two letters is always taken as prefix and unit when its first letter can be a prefix.
template <class Real>
void l_prefix(Factor<Real>& factor) {
  const char* const name = factor.name;
  const std::size_t length = std::strlen(name);
  if (length == 2) {
    if (const char* place = std::strchr(one_letter_prefixes, name[0])) {
      factor.scale *= integer_power<Real>(10, prefix_power(place - one_letter_prefixes));
      factor.name += 1;
    }
  } else if (length == 3 && name[0] == 'D' && name[1] == 'K') {
    factor.scale *= 10;
    factor.name += 2;
  } else {
    for (const PrefixRow* row = lv_prefix_table; row->word != nullptr; ++row) {
      if (std::strncmp(name, row->word, static_cast<std::size_t>(row->length)) != 0) continue;
      factor.scale *= static_cast<Real>(row->factor);
      factor.name += row->length;
      break;
    }
  }
}

// Splits an expression in place at "*", "/" and "^". Returns the number of factors, or -1 after an error.
template <class Real>
long l_split(char* text, Factor<Real> (&factors)[factor_limit]) {
  long count = 0;
  char separator = '*';
  for (char* token = text;;) {
    char* end = token + std::strcspn(token, "*/^");
    const char next = *end;
    *end = '\0';
    if (separator == '^') {
      char* digits_end = nullptr;
      const long power = std::strtol(token, &digits_end, 10);
      if (count == 0 || *token == '\0' || power > power_limit || power < -power_limit ||
          __builtin_mul_overflow(factors[count - 1].power, power, &factors[count - 1].power) ||
          std::labs(factors[count - 1].power) > power_limit) {
        return l_illegal_unit(token), -1;
      }
    } else {
      if (*token == '\0' || count == factor_limit) return l_illegal_unit(token), -1;
      factors[count++] = {token, separator == '/' ? -1 : 1, 1};
    }
    if (next == '\0') return count;
    separator = next;
    token = end + 1;
  }
}

// Reads a unit expression: products and quotients of names with optional prefixes and integer powers.
template <class Real>
void l_c3nit(const char* text, Unit<Real>& unit) {
  push<Math>("l_c3nit");
  unit = {{0, 0, 0, 0, 0}, 1};
  const long size = static_cast<long>(std::strlen(text)) + 1;
  char* copy = scratch<Math, char>(size);
  if (copy == nullptr) {
    raise_out_of_memory<Math>({size}, {"unit"});
  } else {
    std::transform(text, text + size, copy, upper);
    Factor<Real> factors[factor_limit];
    const long count = l_split(copy, factors);
    for (long k = 0; k < count; ++k) l_prefix(factors[k]);
    for (long k = 0; k < count; ++k) {
      const UnitRow* row = l_find(lv_conv_table, factors[k].name);
      if (row == nullptr) {
        l_illegal_unit(factors[k].name);
        break;
      }
      const long power = factors[k].power;
      for (int d = 0; d < dimension_count; ++d) unit.exponent[d] += power * row->exponent[d];
      factors[k].scale *= static_cast<Real>(row->factor);
      unit.factor *= power == 1 ? factors[k].scale : integer_power(factors[k].scale, power);
    }
  }
  pop<Math>("l_c3nit");
}

// Is the unit "SI", in any case?
bool l_iicsr(const char* unit) {
  return upper(unit[0]) == 'S' && upper(unit[1]) == 'I' && unit[2] == '\0';
}

// True if a mass in the first unit, weighed at standard gravity, has the dimension of the second.
template <class Real>
bool agrees_as_force(const Unit<Real>& mass, const Unit<Real>& force) {
  Unit<Real> weighed = mass;
  weighed.exponent[0] += 1;
  weighed.exponent[2] -= 2;
  return std::equal(weighed.exponent, weighed.exponent + dimension_count, force.exponent);
}

template <class Real>
Real l_convert(const char* old_unit, const char* new_unit, Real value) {
  Unit<Real> from{{0, 0, 0, 0, 0}, 1}, to{{0, 0, 0, 0, 0}, 1};
  const bool new_si = l_iicsr(new_unit), old_si = l_iicsr(old_unit);
  if (!new_si) {
    l_c3nit(new_unit, to);
    if (inner_failed<Math>()) return Machine<Real>::not_a_number;
  }
  if (!old_si) {
    l_c3nit(old_unit, from);
    if (inner_failed<Math>()) return Machine<Real>::not_a_number;
  }
  // The quotient first: converting into the same unit then leaves the value as it is.
  if (new_si || old_si || std::equal(from.exponent, from.exponent + dimension_count, to.exponent)) {
    return value * (from.factor / to.factor);
  }
  const Real gravity = static_cast<Real>(standard_gravity);
  if (agrees_as_force(from, to)) {
    raise<Math>(3, MATH_MASS_TO_FORCE);
    return value * gravity * (from.factor / to.factor);
  }
  if (agrees_as_force(to, from)) {
    raise<Math>(3, MATH_MASS_TO_FORCE);
    return value * (from.factor / (gravity * to.factor));
  }
  raise<Math>(5, MATH_INCOMPATIBLE_UNITS, {.l = {old_unit, new_unit}});
  return Machine<Real>::not_a_number;
}

template <class Real>
Real l_cunit(const char* old_unit, const char* new_unit, Real value) {
  push<Math>("l_cunit");
  const Real result = l_convert(old_unit, new_unit, value);
  pop<Math>("l_cunit");
  return result;
}

// A name is found whatever its case, and with blanks or underscores between its letters.
const ConstantRow* find_constant(const char* name) {
  char key[32];  // longer than every name of the table
  std::size_t length = 0;
  for (; name != nullptr && *name != '\0' && length < sizeof key - 1; ++name) {
    if (*name != ' ' && *name != '_') key[length++] = upper(*name);
  }
  key[length] = '\0';
  return l_find(lv_const_table, key);
}

template <class Real>
Real l_constant(const char* name, const char* unit) {
  push<Math>("l_constant");
  Real result = Machine<Real>::not_a_number;
  if (const ConstantRow* row = find_constant(name)) {
    const Real value = static_cast<Real>(row->value);
    result = unit == nullptr ? value : l_cunit(row->unit, unit, value);
  } else {
    raise<Math>(5, MATH_BAD_CONST_NAME, {.l = {name == nullptr ? "" : name}});
  }
  pop<Math>("l_constant");
  return result;
}

}  // namespace
}  // namespace zent

#define ZENT_FORM(P, Real)                                                                                            \
  extern "C" Real zent_##P##_constant(const char* name, const char* unit) {                                           \
    return zent::public_call<zent::Math>("zent_" #P "_constant", [=] { return zent::l_constant<Real>(name, unit); }); \
  }
ZENT_FORM(f, float)
ZENT_FORM(d, double)
#undef ZENT_FORM
