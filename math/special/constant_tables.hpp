// Tables of physical constants, units and prefixes. The rows are sorted by name: they are searched by bisection.
#pragma once

namespace zent {

struct ConstantRow {
  const char* name;
  double value;
  const char* unit;
};

// The values are those of the 1986 adjustment of the fundamental constants.
constexpr ConstantRow lv_const_table[] = {
    {"AMU", 1.6605402e-27, "kg"},
    {"ATM", 101325.0, "N/m^2"},
    {"AU", 149600000000.0, "m"},
    {"AVOGADRO", 6.0221367e+23, "1"},
    {"BOLTZMAN", 1.380658e-23, "J/K"},
    {"BOLTZMANN", 1.380658e-23, "J/K"},
    {"C", 299792458.0, "m/s"},
    {"CATALAN", 0.915965594177219, "1"},
    {"E", 2.718281828459045, "1"},
    {"ELECTRONCHARGE", 1.60217733e-19, "C"},
    {"ELECTRONMASS", 9.1093897e-31, "kg"},
    {"ELECTRONVOLT", 1.60217733e-19, "J"},
    {"EULER", 0.5772156649015329, "1"},
    {"FARADAY", 96485.309, "C"},
    {"FINESTRUCTURE", 0.00729735308, "1"},
    {"GAMMA", 0.5772156649015329, "1"},
    {"GAS", 8.31451, "J/mole/K"},
    {"GRAVITY", 6.67259e-11, "N*m^2/kg^2"},
    {"HBAR", 1.05457266e-34, "J*s"},
    {"PERFECTGASVOLUME", 0.02241383, "m^3/mole"},
    {"PI", 3.141592653589793, "1"},
    {"PLANCK", 6.6260755e-34, "J*s"},
    {"PROTONMASS", 1.6726231e-27, "kg"},
    {"RYDBERG", 10973731.534, "1/m"},
    {"SPEEDLIGHT", 299792458.0, "m/s"},
    {"STANDARDGRAVITY", 9.80665, "m/s^2"},
    {"STANDARDPRESSURE", 101325.0, "N/m^2"},
    {"STEFANBOLTZMAN", 5.67051e-08, "W/K^4/m^2"},
    {"STEFANBOLTZMANN", 5.67051e-08, "W/K^4/m^2"},
    {"WATERTRIPLE", 273.16, "K"},
};

struct UnitRow {
  const char* name;
  signed char exponent[5];  // length, mass, time, electric current, temperature
  double factor;            // to the base units
};

// Some rows look like slips and are kept, because results depend on them: AMU has the factor of the kilogram, C and COULOMB differ in
// the sign of time, L has its exponent under time, SEC and MOLE have no dimension. Temperatures are scale factors without offset.
constexpr UnitRow lv_conv_table[] = {
    {"1", {0, 0, 0, 0, 0}, 1.0},
    {"A", {0, 0, 0, 1, 0}, 1.0},
    {"ABAMPERE", {0, 0, 0, 1, 0}, 10.0},
    {"ABCOULOMB", {0, 0, 1, 1, 0}, 10.0},
    {"ABVOLT", {2, 1, -3, -1, 0}, 1e-08},
    {"ACRE", {2, 0, 0, 0, 0}, 4046.8564223999992},
    {"AMPERE", {0, 0, 0, 1, 0}, 1.0},
    {"AMU", {0, 1, 0, 0, 0}, 1.0},
    {"ANGSTROM", {1, 0, 0, 0, 0}, 1e-10},
    {"ATM", {-1, 1, -2, 0, 0}, 101325.0},
    {"ATMOSPHERE", {-1, 1, -2, 0, 0}, 101325.0},
    {"AU", {1, 0, 0, 0, 0}, 149600000000.0},
    {"BAR", {-1, 1, -2, 0, 0}, 100000.0},
    {"BTU", {2, 1, -2, 0, 0}, 1054.35},
    {"C", {0, 0, -1, 1, 0}, 1.0},
    {"CELSIUS", {0, 0, 0, 0, 1}, 1.0},
    {"COULOMB", {0, 0, 1, 1, 0}, 1.0},
    {"DAY", {0, 0, 1, 0, 0}, 86400.0},
    {"DEGC", {0, 0, 0, 0, 1}, 1.0},
    {"DEGF", {0, 0, 0, 0, 1}, 0.5555555555555556},
    {"DEGK", {0, 0, 0, 0, 1}, 1.0},
    {"DYNE", {1, 1, -2, 0, 0}, 1e-05},
    {"ERG", {2, 1, -2, 0, 0}, 1e-07},
    {"FAHRENHEIT", {0, 0, 0, 0, 1}, 0.5555555555555556},
    {"FARAD", {-2, -1, 4, 2, 0}, 1.0},
    {"FEET", {1, 0, 0, 0, 0}, 0.30479999999999996},
    {"FOOT", {1, 0, 0, 0, 0}, 0.30479999999999996},
    {"G", {0, 1, 0, 0, 0}, 0.001},
    {"GAUSS", {1, -2, -1, 0, 0}, 0.0001},
    {"GRAM", {0, 1, 0, 0, 0}, 0.001},
    {"HENRY", {2, 1, -2, -2, 0}, 1.0},
    {"HERTZ", {0, 0, -1, 0, 0}, 1.0},
    {"HOUR", {0, 0, 1, 0, 0}, 3600.0},
    {"HR", {0, 0, 1, 0, 0}, 3600.0},
    {"HZ", {0, 0, -1, 0, 0}, 1.0},
    {"IN", {1, 0, 0, 0, 0}, 0.0254},
    {"J", {2, 1, -2, 0, 0}, 1.0},
    {"JOULE", {2, 1, -2, 0, 0}, 1.0},
    {"K", {0, 0, 0, 0, 1}, 1.0},
    {"KELVIN", {0, 0, 0, 0, 1}, 1.0},
    {"L", {0, 0, 3, 0, 0}, 0.001},
    {"LB", {0, 1, 0, 0, 0}, 0.45359237},
    {"LITER", {3, 0, 0, 0, 0}, 0.001},
    {"LITRE", {3, 0, 0, 0, 0}, 0.001},
    {"M", {1, 0, 0, 0, 0}, 1.0},
    {"MAXWELL", {2, 1, -2, -1, 0}, 1e-08},
    {"METER", {1, 0, 0, 0, 0}, 1.0},
    {"METRE", {1, 0, 0, 0, 0}, 1.0},
    {"MICRON", {1, 0, 0, 0, 0}, 1e-06},
    {"MILE", {1, 0, 0, 0, 0}, 1609.3439999999998},
    {"MILL", {1, 0, 0, 0, 0}, 2.54e-05},
    {"MIN", {0, 0, 1, 0, 0}, 60.0},
    {"MINUTE", {0, 0, 1, 0, 0}, 60.0},
    {"MOLE", {0, 0, 0, 0, 0}, 1.0},
    {"N", {1, 1, -2, 0, 0}, 1.0},
    {"NEWTON", {1, 1, -2, 0, 0}, 1.0},
    {"OHM", {2, 1, -3, -2, 0}, 1.0},
    {"OUNCE", {0, 1, 0, 0, 0}, 0.028349523125},
    {"OZ", {0, 1, 0, 0, 0}, 0.028349523125},
    {"PARSEC", {1, 0, 0, 0, 0}, 3.0857215014323856e+16},
    {"PASCAL", {-1, 1, -2, 0, 0}, 1.0},
    {"POINT", {1, 0, 0, 0, 0}, 0.0003514598},
    {"POISE", {-1, 1, -1, 0, 0}, 0.1},
    {"POUND", {0, 1, 0, 0, 0}, 0.45359237},
    {"POUNDAL", {1, 1, -2, 0, 0}, 0.138255},
    {"S", {0, 0, 1, 0, 0}, 1.0},
    {"SEC", {0, 0, 0, 0, 0}, 1.0},
    {"SECOND", {0, 0, 1, 0, 0}, 1.0},
    {"SLUG", {0, 1, 0, 0, 0}, 14.5939},
    {"STATAMPERE", {0, 0, 0, 1, 0}, 3.3356409519815207e-10},
    {"STATCOULOMB", {0, 0, 1, 1, 0}, 3.3356409519815207e-10},
    {"STOKE", {2, 0, -1, 0, 0}, 0.0001},
    {"T", {0, 1, -2, -1, 0}, 1.0},
    {"TESLA", {0, 1, -2, -1, 0}, 1.0},
    {"V", {2, 1, -3, -1, 0}, 1.0},
    {"VOLT", {2, 1, -3, -1, 0}, 1.0},
    {"W", {2, 1, -3, 0, 0}, 1.0},
    {"WATT", {2, 1, -3, 0, 0}, 1.0},
    {"WB", {2, 1, -2, -1, 0}, 1.0},
    {"WEBER", {2, 1, -2, -1, 0}, 1.0},
    {"YARD", {1, 0, 0, 0, 0}, 0.9144},
    {"YEAR", {0, 0, 1, 0, 0}, 31536000.0},
};

struct PrefixRow {
  const char* word;
  int length;
  double factor;
};

// Tried in this order; the row of nulls ends the search.
constexpr PrefixRow lv_prefix_table[] = {
    {"ATTO", 4, 1e-18},
    {"FEMTO", 5, 1e-15},
    {"PICO", 4, 1e-12},
    {"NANO", 4, 1e-9},
    {"MICRO", 5, 1e-6},
    {"MILLI", 5, 1e-3},
    {"CENTI", 5, 1e-2},
    {"DECI", 4, 1e-1},
    {"DECA", 4, 10.0},
    {"KILO", 4, 1e3},
    {"MYRIA", 5, 1e4},
    {"MEGA", 4, 1e6},
    {"GIGA", 4, 1e9},
    {"TERA", 4, 1e12},
    {nullptr, 0, 0.0},
};

// One-letter prefixes: the letter at place i stands for the power 3i - 18 of ten, but for C and D. The blank is a real entry.
constexpr char one_letter_prefixes[] = "AFPNUMCK GTD";

}  // namespace zent
