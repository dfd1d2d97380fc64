// The accuracy table of the documentation: the functions of both precisions, and GSL and Boost where they are installed, on the
// points of bench/accuracy/*.tsv.
//   bench_accuracy bench/accuracy/*.tsv         a table in Markdown for each file
//   bench_accuracy -w bench/accuracy/*.tsv      the worst points besides
//
// A point file has lines `function  number of arguments  arguments  value  condition number`, separated by tabs; the value has 25
// digits or more. What is called for a function stands in the .inc file of its family: ROW(name, F(single form), D(double form),
// GSL(...), BOOST(...)), NONE where a peer has none, and `x` the array of arguments.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "zent.h"
#include "zents.h"

#ifdef ZENT_HAVE_GSL
#include <gsl/gsl_cdf.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_math.h>
#include <gsl/gsl_randist.h>
#include <gsl/gsl_sf.h>
#endif
#ifdef ZENT_HAVE_BOOST
#include <boost/math/distributions.hpp>
#include <boost/math/special_functions.hpp>
#endif

namespace {

#ifdef ZENT_HAVE_BOOST
namespace policies = boost::math::policies;
// In the precision of its arguments, as ours; errors give not-a-number or infinity.
using Real =
    policies::policy<policies::promote_float<false>, policies::promote_double<false>,
                     policies::domain_error<policies::ignore_error>, policies::pole_error<policies::ignore_error>,
                     policies::overflow_error<policies::ignore_error>, policies::evaluation_error<policies::ignore_error>,
                     policies::rounding_error<policies::ignore_error>,
                     policies::indeterminate_result_error<policies::ignore_error>, policies::discrete_quantile<policies::real>>;
[[maybe_unused]] const Real real;
#define BOOST(...)                \
  [](const double* x) -> double { \
    using namespace boost::math;  \
    return __VA_ARGS__;           \
  }
#else
#define BOOST(...) nullptr
#endif
#ifdef ZENT_HAVE_GSL
#define GSL(...) [](const double* x) -> double { return __VA_ARGS__; }
#else
#define GSL(...) nullptr
#endif
#define F(...) [](const float* x) -> float { return __VA_ARGS__; }
#define D(...) [](const double* x) -> double { return __VA_ARGS__; }
#define NONE nullptr

constexpr int most_arguments = 6;

struct Row {
  const char* name;
  float (*single)(const float*);
  double (*ours)(const double*);
  double (*gsl)(const double*);
  double (*boost)(const double*);
};
#define ROW(...) Row{__VA_ARGS__},
const Row rows[] = {
#if __has_include("accuracy/gamma.inc")
#include "accuracy/gamma.inc"
#endif
#if __has_include("accuracy/bessel.inc")
#include "accuracy/bessel.inc"
#endif
#if __has_include("accuracy/distributions.inc")
#include "accuracy/distributions.inc"
#endif
    Row{nullptr, nullptr, nullptr, nullptr, nullptr}};

const Row* find(const std::string& name) {
  for (const Row& row : rows) {
    if (row.name != nullptr && name == row.name) return &row;
  }
  return nullptr;
}

std::string number(double x) {
  char text[32];
  std::snprintf(text, sizeof text, x < 10 ? "%.1f" : x < 1e6 ? "%.0f" : "%.0e", x);
  return text;
}

// What one implementation makes of the points of a function.
struct Errors {
  long points = 0, failures = 0;
  double greatest = 0, scaled = 0;  // in epsilons; the latter over max(1, condition number)
  std::string where;

  void note(long double found, long double value, double epsilon, double condition, const std::string& arguments) {
    ++points;
    if (!std::isfinite(found)) {
      ++failures;
      if (where.empty()) where = arguments + " fails";
      return;
    }
    const double error = static_cast<double>(std::fabs((value == 0 ? found : (found - value) / value))) / epsilon;
    greatest = std::fmax(greatest, error);
    const double over = error / std::fmax(1, condition);
    if (over <= scaled) return;
    scaled = over;
    where = arguments;
  }
  // Worse by more than the noise of a few points.
  bool worse_than(const Errors& peer) const {
    return failures > peer.failures || (failures == peer.failures && scaled > 1 && scaled > peer.scaled * 1.1);
  }
  std::string text() const {
    if (points == 0) return "";
    std::string result = number(greatest) + " (" + number(scaled) + ")";
    if (failures > 0) result += ", fails " + std::to_string(failures);
    return result;
  }
};

struct Result {
  std::string name;
  Errors single, ours, gsl, boost;
};

std::vector<std::string> split(const std::string& line) {
  std::vector<std::string> fields(1);
  for (char c : line) {
    if (c == '\t') {
      fields.emplace_back();
    } else if (c != '\n') {
      fields.back() += c;
    }
  }
  return fields;
}

void measure_point(const Row& row, const std::vector<std::string>& fields, Result& result) {
  const long n = std::atol(fields[1].c_str());
  if (n < 1 || n > most_arguments || fields.size() < static_cast<std::size_t>(n + 4)) return;
  double x[most_arguments] = {};
  float y[most_arguments] = {};
  std::string arguments;
  bool both = true;  // single precision has the same point
  for (long k = 0; k < n; ++k) {
    const std::string& field = fields[static_cast<std::size_t>(k + 2)];
    x[k] = std::strtod(field.c_str(), nullptr);
    y[k] = static_cast<float>(x[k]);
    both = both && static_cast<double>(y[k]) == x[k];
    arguments += " " + field;
  }
  const long double value = std::strtold(fields[static_cast<std::size_t>(n + 2)].c_str(), nullptr);
  const double condition = std::strtod(fields[static_cast<std::size_t>(n + 3)].c_str(), nullptr);
  const long double size = std::fabs(value);
  if (row.ours != nullptr) result.ours.note(row.ours(x), value, 0x1p-52, condition, arguments);
  if (row.gsl != nullptr) result.gsl.note(row.gsl(x), value, 0x1p-52, condition, arguments);
#ifdef ZENT_HAVE_BOOST
  if (row.boost != nullptr) {
    double found = std::nan("");
    try {
      found = row.boost(x);
    } catch (const std::exception&) {  // counts as a failure
    }
    result.boost.note(found, value, 0x1p-52, condition, arguments);
  }
#endif
  if (row.single != nullptr && both && (size == 0 || (size > 0x1p-126L && size < 0x1p128L))) {
    result.single.note(row.single(y), value, 0x1p-23, condition, arguments);
  }
}

void measure(const char* path, bool worst) {
  std::FILE* file = std::fopen(path, "r");
  if (file == nullptr) {
    std::fprintf(stderr, "%s cannot be read\n", path);
    return;
  }
  std::vector<Result> results;
  std::map<std::string, std::size_t> places;
  char line[4096];
  while (std::fgets(line, sizeof line, file) != nullptr) {
    if (line[0] == '#') continue;
    const std::vector<std::string> fields = split(line);
    const Row* row = find(fields[0]);
    if (row == nullptr || fields.size() < 5) continue;
    const auto place = places.emplace(fields[0], results.size());
    if (place.second) results.push_back(Result{fields[0], {}, {}, {}, {}});
    measure_point(*row, fields, results[place.first->second]);
  }
  std::fclose(file);
  std::printf("| Function | Points | double | single | GSL | Boost |\n|---|---|---|---|---|---|\n");
  for (const Result& r : results) {
    const bool peers = r.gsl.points > 0 || r.boost.points > 0;
    const bool behind =
        peers && (r.gsl.points == 0 || r.ours.worse_than(r.gsl)) && (r.boost.points == 0 || r.ours.worse_than(r.boost));
    std::printf("| %s%s | %ld | %s | %s | %s | %s |\n", r.name.c_str(), behind ? " !" : "", r.ours.points, r.ours.text().c_str(),
                r.single.text().c_str(), r.gsl.text().c_str(), r.boost.text().c_str());
    if (!worst) continue;
    const char* const names[] = {"double", "single", "GSL", "Boost"};
    const Errors* const all[] = {&r.ours, &r.single, &r.gsl, &r.boost};
    for (int k = 0; k < 4; ++k) {
      if (all[k]->points > 0) std::printf("    %-7s at%s\n", names[k], all[k]->where.c_str());
    }
  }
}

}  // namespace

int main(int count, char** arguments) {
  for (int type = 1; type <= 7; ++type) {
    zent_error_options(ZENT_SET_PRINT, type, 0, ZENT_SET_STOP, type, 0, 0);
    zents_error_options(ZENTS_SET_PRINT, type, 0, ZENTS_SET_STOP, type, 0, 0);
  }
#ifdef ZENT_HAVE_GSL
  gsl_set_error_handler_off();
#endif
  const bool worst = count > 1 && std::strcmp(arguments[1], "-w") == 0;
  for (int i = worst ? 2 : 1; i < count; ++i) {
    if (i > (worst ? 2 : 1)) std::printf("\n");
    measure(arguments[i], worst);
  }
}
