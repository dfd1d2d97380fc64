// The classic test problems of minimization as sums of squares, with start points and minima. Source: More, Garbow and Hillstrom,
// ACM TOMS 7 (1981).
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

namespace problems {

template <class T>
struct Problem {
  const char* name;
  long m, n;
  std::vector<double> start;
  std::vector<double> minima;  // of the sum of squares, the global one first
  void (*residuals)(long m, long n, const T* x, T* f);
};

inline constexpr double bard_y[] = {.14, .18, .22, .25, .29, .32, .35, .39, .37, .58, .73, .96, 1.34, 2.10, 4.39};
inline constexpr double gaussian_y[] = {.0009, .0044, .0175, .0540, .1295, .2420, .3521, .3989,
                                        .3521, .2420, .1295, .0540, .0175, .0044, .0009};
inline constexpr double meyer_y[] = {34780, 28610, 23650, 19630, 16370, 13720, 11540, 9744,
                                     8261,  7030,  6005,  5147,  4427,  3820,  3307,  2872};
inline constexpr double kowalik_y[] = {.1957, .1947, .1735, .1600, .0844, .0627, .0456, .0342, .0323, .0235, .0246};
inline constexpr double kowalik_u[] = {4, 2, 1, .5, .25, .167, .125, .1, .0833, .0714, .0625};
inline constexpr double osborne_1_y[] = {.844, .908, .932, .936, .925, .908, .881, .850, .818, .784, .751,
                                         .718, .685, .658, .628, .603, .580, .558, .538, .522, .506, .490,
                                         .478, .467, .457, .448, .438, .431, .424, .420, .414, .411, .406};
inline constexpr double osborne_2_y[] = {1.366, 1.191, 1.112, 1.013, .991, .885, .831, .847, .786, .725, .746, .679, .608,
                                         .655,  .616,  .606,  .602,  .626, .651, .724, .649, .649, .694, .644, .624, .661,
                                         .612,  .558,  .533,  .495,  .500, .423, .395, .375, .372, .391, .396, .405, .428,
                                         .429,  .523,  .562,  .607,  .653, .672, .708, .633, .668, .645, .632, .591, .559,
                                         .597,  .625,  .739,  .710,  .729, .720, .636, .581, .428, .292, .162, .098, .054};

template <class T>
T square(T x) {
  return x * x;
}
template <class T>
T number(double x) {
  return static_cast<T>(x);
}

template <class T>
void rosenbrock(long, long n, const T* x, T* f) {
  for (long i = 0; i < n; i += 2) {
    f[i] = 10 * (x[i + 1] - x[i] * x[i]);
    f[i + 1] = 1 - x[i];
  }
}
template <class T>
void freudenstein_roth(long, long, const T* x, T* f) {
  f[0] = -13 + x[0] + ((5 - x[1]) * x[1] - 2) * x[1];
  f[1] = -29 + x[0] + ((x[1] + 1) * x[1] - 14) * x[1];
}
template <class T>
void powell_badly_scaled(long, long, const T* x, T* f) {
  f[0] = 10000 * x[0] * x[1] - 1;
  f[1] = std::exp(-x[0]) + std::exp(-x[1]) - number<T>(1.0001);
}
template <class T>
void brown_badly_scaled(long, long, const T* x, T* f) {
  f[0] = x[0] - 1000000;
  f[1] = x[1] - number<T>(2e-6);
  f[2] = x[0] * x[1] - 2;
}
template <class T>
void beale(long, long, const T* x, T* f) {
  f[0] = number<T>(1.5) - x[0] * (1 - x[1]);
  f[1] = number<T>(2.25) - x[0] * (1 - x[1] * x[1]);
  f[2] = number<T>(2.625) - x[0] * (1 - x[1] * x[1] * x[1]);
}
template <class T>
void jennrich_sampson(long m, long, const T* x, T* f) {
  for (long i = 0; i < m; ++i) {
    const T k = number<T>(i + 1.0);
    f[i] = 2 + 2 * k - (std::exp(k * x[0]) + std::exp(k * x[1]));
  }
}
template <class T>
void helical_valley(long, long, const T* x, T* f) {
  T theta = std::atan2(x[1], x[0]) / number<T>(2 * 3.14159265358979323846);
  if (theta < number<T>(-0.25)) theta += 1;
  f[0] = 10 * (x[2] - 10 * theta);
  f[1] = 10 * (std::sqrt(x[0] * x[0] + x[1] * x[1]) - 1);
  f[2] = x[2];
}
template <class T>
void bard(long m, long, const T* x, T* f) {
  for (long i = 0; i < m; ++i) {
    const T u = number<T>(i + 1.0), v = 16 - u, w = std::min(u, v);
    f[i] = number<T>(bard_y[i]) - (x[0] + u / (v * x[1] + w * x[2]));
  }
}
template <class T>
void gaussian(long m, long, const T* x, T* f) {
  for (long i = 0; i < m; ++i)
    f[i] = x[0] * std::exp(-x[1] * square(number<T>((7.0 - i) / 2) - x[2]) / 2) - number<T>(gaussian_y[i]);
}
template <class T>
void meyer(long m, long, const T* x, T* f) {
  for (long i = 0; i < m; ++i) f[i] = x[0] * std::exp(x[1] / (number<T>(50.0 + 5 * i) + x[2])) - number<T>(meyer_y[i]);
}
template <class T>
void box(long m, long, const T* x, T* f) {
  for (long i = 0; i < m; ++i) {
    const T t = number<T>(0.1 * (i + 1));
    f[i] = std::exp(-t * x[0]) - std::exp(-t * x[1]) - x[2] * (std::exp(-t) - std::exp(-10 * t));
  }
}
template <class T>
void powell_singular(long, long n, const T* x, T* f) {
  for (long i = 0; i < n; i += 4) {
    f[i] = x[i] + 10 * x[i + 1];
    f[i + 1] = std::sqrt(number<T>(5)) * (x[i + 2] - x[i + 3]);
    f[i + 2] = square(x[i + 1] - 2 * x[i + 2]);
    f[i + 3] = std::sqrt(number<T>(10)) * square(x[i] - x[i + 3]);
  }
}
template <class T>
void wood(long, long, const T* x, T* f) {
  f[0] = 10 * (x[1] - x[0] * x[0]);
  f[1] = 1 - x[0];
  f[2] = std::sqrt(number<T>(90)) * (x[3] - x[2] * x[2]);
  f[3] = 1 - x[2];
  f[4] = std::sqrt(number<T>(10)) * (x[1] + x[3] - 2);
  f[5] = (x[1] - x[3]) / std::sqrt(number<T>(10));
}
template <class T>
void kowalik_osborne(long m, long, const T* x, T* f) {
  for (long i = 0; i < m; ++i) {
    const T u = number<T>(kowalik_u[i]);
    f[i] = number<T>(kowalik_y[i]) - x[0] * (u * u + u * x[1]) / (u * u + u * x[2] + x[3]);
  }
}
template <class T>
void brown_dennis(long m, long, const T* x, T* f) {
  for (long i = 0; i < m; ++i) {
    const T t = number<T>((i + 1) / 5.0);
    f[i] = square(x[0] + t * x[1] - std::exp(t)) + square(x[2] + x[3] * std::sin(t) - std::cos(t));
  }
}
template <class T>
void osborne_1(long m, long, const T* x, T* f) {
  for (long i = 0; i < m; ++i) {
    const T t = number<T>(10.0 * i);
    f[i] = number<T>(osborne_1_y[i]) - (x[0] + x[1] * std::exp(-t * x[3]) + x[2] * std::exp(-t * x[4]));
  }
}
template <class T>
void biggs(long m, long, const T* x, T* f) {
  for (long i = 0; i < m; ++i) {
    const T t = number<T>(0.1 * (i + 1));
    const T y = std::exp(-t) - 5 * std::exp(-10 * t) + 3 * std::exp(-4 * t);
    f[i] = x[2] * std::exp(-t * x[0]) - x[3] * std::exp(-t * x[1]) + x[5] * std::exp(-t * x[4]) - y;
  }
}
template <class T>
void osborne_2(long m, long, const T* x, T* f) {
  for (long i = 0; i < m; ++i) {
    const T t = number<T>(i / 10.0);
    f[i] = number<T>(osborne_2_y[i]) - (x[0] * std::exp(-t * x[4]) + x[1] * std::exp(-square(t - x[8]) * x[5]) +
                                        x[2] * std::exp(-square(t - x[9]) * x[6]) + x[3] * std::exp(-square(t - x[10]) * x[7]));
  }
}
template <class T>
void watson(long, long n, const T* x, T* f) {
  for (long i = 0; i < 29; ++i) {
    const T t = number<T>((i + 1) / 29.0);
    T sum = 0, slope = 0, power = 1;
    for (long j = 0; j < n; ++j) {
      sum += x[j] * power;
      if (j + 1 < n) slope += number<T>(j + 1.0) * x[j + 1] * power;
      power *= t;
    }
    f[i] = slope - sum * sum - 1;
  }
  f[29] = x[0];
  f[30] = x[1] - x[0] * x[0] - 1;
}
template <class T>
void penalty(long, long n, const T* x, T* f) {
  T sum = 0;
  for (long i = 0; i < n; ++i) {
    f[i] = std::sqrt(number<T>(1e-5)) * (x[i] - 1);
    sum += x[i] * x[i];
  }
  f[n] = sum - number<T>(0.25);
}
template <class T>
void variably_dimensioned(long, long n, const T* x, T* f) {
  T sum = 0;
  for (long i = 0; i < n; ++i) {
    f[i] = x[i] - 1;
    sum += number<T>(i + 1.0) * (x[i] - 1);
  }
  f[n] = sum;
  f[n + 1] = sum * sum;
}
template <class T>
void chebyquad(long m, long n, const T* x, T* f) {
  for (long i = 0; i < m; ++i) f[i] = 0;
  for (long j = 0; j < n; ++j) {
    const T u = 2 * x[j] - 1;
    T before = 1, now = u;
    for (long i = 0; i < m; ++i) {
      f[i] += now;
      const T next = 2 * u * now - before;
      before = now;
      now = next;
    }
  }
  for (long i = 0; i < m; ++i) {
    f[i] /= number<T>(static_cast<double>(n));
    if (i % 2 == 1) f[i] += 1 / number<T>(square(i + 1.0) - 1);
  }
}

template <class T>
std::vector<Problem<T>> all() {
  std::vector<double> ten_rosenbrock, eight_powell, ten_dimensions, eight_chebyquad;
  for (int i = 0; i < 5; ++i) ten_rosenbrock.insert(ten_rosenbrock.end(), {-1.2, 1});
  for (int i = 0; i < 2; ++i) eight_powell.insert(eight_powell.end(), {3, -1, 0, 1});
  for (int i = 0; i < 10; ++i) ten_dimensions.push_back(1 - (i + 1) / 10.0);
  for (int i = 0; i < 8; ++i) eight_chebyquad.push_back((i + 1) / 9.0);
  return {
      {"rosenbrock", 2, 2, {-1.2, 1}, {0}, rosenbrock<T>},
      {"freudenstein roth", 2, 2, {0.5, -2}, {0, 48.98425}, freudenstein_roth<T>},
      {"powell badly scaled", 2, 2, {0, 1}, {0}, powell_badly_scaled<T>},
      {"brown badly scaled", 3, 2, {1, 1}, {0}, brown_badly_scaled<T>},
      {"beale", 3, 2, {1, 1}, {0}, beale<T>},
      {"jennrich sampson", 10, 2, {0.3, 0.4}, {124.3621824}, jennrich_sampson<T>},
      {"helical valley", 3, 3, {-1, 0, 0}, {0}, helical_valley<T>},
      {"bard", 15, 3, {1, 1, 1}, {8.214877e-3, 17.4286926}, bard<T>},
      {"gaussian", 15, 3, {0.4, 1, 0}, {1.12793277e-8}, gaussian<T>},
      {"meyer", 16, 3, {0.02, 4000, 250}, {87.9458552}, meyer<T>},
      {"box", 10, 3, {0, 10, 20}, {0}, box<T>},
      {"powell singular", 4, 4, {3, -1, 0, 1}, {0}, powell_singular<T>},
      {"wood", 6, 4, {-3, -1, -3, -1}, {0}, wood<T>},
      {"kowalik osborne", 11, 4, {0.25, 0.39, 0.415, 0.39}, {3.0750561e-4, 1.02734e-3}, kowalik_osborne<T>},
      {"brown dennis", 20, 4, {25, 5, -5, -1}, {85822.2016}, brown_dennis<T>},
      {"osborne 1", 33, 5, {0.5, 1.5, -1, 0.01, 0.02}, {5.46489470e-5}, osborne_1<T>},
      {"biggs", 13, 6, {1, 2, 1, 1, 1, 1}, {0, 5.65565e-3, 0.30636677}, biggs<T>},
      {"osborne 2", 65, 11, {1.3, 0.65, 0.65, 0.7, 0.6, 3, 5, 7, 2, 4.5, 5.5}, {4.01377363e-2, 1.78981}, osborne_2<T>},
      {"watson 6", 31, 6, std::vector<double>(6), {2.28767005e-3}, watson<T>},
      {"watson 9", 31, 9, std::vector<double>(9), {1.39976013e-6}, watson<T>},
      {"watson 12", 31, 12, std::vector<double>(12), {4.72238110e-10}, watson<T>},
      {"extended rosenbrock", 10, 10, ten_rosenbrock, {0}, rosenbrock<T>},
      {"extended powell", 8, 8, eight_powell, {0}, powell_singular<T>},
      {"penalty", 5, 4, {1, 2, 3, 4}, {2.24997751e-5}, penalty<T>},
      {"variably dimensioned", 12, 10, ten_dimensions, {0}, variably_dimensioned<T>},
      {"chebyquad", 8, 8, eight_chebyquad, {3.51687373e-3}, chebyquad<T>},
  };
}

// Its start, `factor` times as far away; the classic replacement where the start is 0.
template <class T>
std::vector<T> start_of(const Problem<T>& p, double factor) {
  std::vector<T> x;
  bool zero = true;
  for (double s : p.start) zero = zero && s == 0;
  for (double s : p.start) x.push_back(static_cast<T>(zero && factor > 1 ? factor : s * factor));
  return x;
}

}  // namespace problems
