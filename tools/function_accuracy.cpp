// Measures the special functions against the values of tools/reference_values.py and prints one line for each function and
// precision: points, largest relative error in units of the machine epsilon, the same over max(1, condition number), and where.
//   function_accuracy tests/data/functions/*.tsv
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "zent.h"
#include "zents.h"

namespace {

struct Row {
  const char* name;
  float (*f1)(float);
  double (*d1)(double);
  float (*f2)(float, float);
  double (*d2)(double, double);
  float (*f3)(float, float, float);
  double (*d3)(double, double, double);
};
#define ONE(name) \
  { #name, zent_f_##name, zent_d_##name, nullptr, nullptr, nullptr, nullptr }
#define TWO(name) \
  { #name, nullptr, nullptr, zent_f_##name, zent_d_##name, nullptr, nullptr }
#define THREE(name) \
  { #name, nullptr, nullptr, nullptr, nullptr, zent_f_##name, zent_d_##name }
const Row rows[] = {ONE(erf),       ONE(erfc), ONE(erf_inverse), ONE(erfc_inverse),     ONE(gamma),
                    ONE(log_gamma), TWO(beta), TWO(log_beta),    TWO(gamma_incomplete), THREE(beta_incomplete)};

struct Worst {
  long points = 0;
  double error = 0, scaled = 0;
  double at[3] = {0, 0, 0};
};

void note(Worst& worst, long double found, long double value, double epsilon, double condition, const double* x) {
  ++worst.points;
  double error = static_cast<double>(std::fabs((found - value) / value)) / epsilon;
  if (error != error) error = HUGE_VAL;
  if (error > worst.error) worst.error = error;
  const double scaled = error / std::fmax(1, condition);
  if (scaled > worst.scaled) {
    worst.scaled = scaled;
    std::memcpy(worst.at, x, sizeof worst.at);
  }
}

bool in_single(double x) {
  return static_cast<double>(static_cast<float>(x)) == x;
}

void measure(const char* path) {
  std::FILE* file = std::fopen(path, "r");
  if (file == nullptr) return;
  char line[512];
  const Row* row = nullptr;
  Worst single, real;
  while (std::fgets(line, sizeof line, file) != nullptr) {
    if (line[0] == '#') continue;
    char* field = std::strtok(line, "\t");
    for (const Row& r : rows) {
      if (std::strcmp(r.name, field) == 0) row = &r;
    }
    if (row == nullptr) break;
    const long n = std::atol(std::strtok(nullptr, "\t"));
    double x[3] = {0, 0, 0};
    for (long k = 0; k < n && k < 3; ++k) x[k] = std::strtod(std::strtok(nullptr, "\t"), nullptr);
    const long double value = std::strtold(std::strtok(nullptr, "\t"), nullptr);
    const double condition = std::strtod(std::strtok(nullptr, "\t"), nullptr);
    note(real, row->d1 ? row->d1(x[0]) : row->d2 ? row->d2(x[0], x[1]) : row->d3(x[0], x[1], x[2]), value, 0x1p-52, condition, x);
    const double size = std::fabs(static_cast<double>(value));
    if (!in_single(x[0]) || !in_single(x[1]) || !in_single(x[2]) || size < 1e-35 || size > 3e38) continue;
    const float y[3] = {static_cast<float>(x[0]), static_cast<float>(x[1]), static_cast<float>(x[2])};
    note(single,
         row->f1   ? row->f1(y[0])
         : row->f2 ? row->f2(y[0], y[1])
                   : row->f3(y[0], y[1], y[2]),
         value, 0x1p-23, condition, x);
  }
  std::fclose(file);
  if (row == nullptr) return;
  std::printf("%-18s d %6ld points  error %9.2f  over condition %7.2f  at %.17g %.17g %.17g\n", row->name, real.points,
              real.error, real.scaled, real.at[0], real.at[1], real.at[2]);
  std::printf("%-18s f %6ld points  error %9.2f  over condition %7.2f  at %.17g %.17g %.17g\n", row->name, single.points,
              single.error, single.scaled, single.at[0], single.at[1], single.at[2]);
}

}  // namespace

int main(int count, char** arguments) {
  for (int type = 1; type <= 7; ++type) zent_error_options(ZENT_SET_PRINT, type, 0, ZENT_SET_STOP, type, 0, 0);
  for (int i = 1; i < count; ++i) measure(arguments[i]);
}
