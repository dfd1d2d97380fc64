// How a length is done: the cheapest radices, and the split into columns and rows that wastes least.
#include "math/transform/plan.hpp"

namespace zent::transform {

namespace {

// What a length of small factors is made of, beside its primes above 5.
struct Powers {
  int two, three, five;
  constexpr Powers operator-(Powers b) const {
    return {two - b.two, three - b.three, five - b.five};
  }
  constexpr bool holds(Powers b) const {
    return two >= b.two && three >= b.three && five >= b.five;
  }
  constexpr bool operator==(const Powers&) const = default;
};

// The radices that have passes of their own, with the vector operations that a point costs in them: arithmetic, the twiddle, the
// way through the buffer, and for the longer ones what the registers do not hold.
struct Radix {
  long radix;
  Powers powers;
  double cost;
};
constexpr Radix radices[] = {
    {2, {1, 0, 0}, 9},     {3, {0, 1, 0}, 13},   {4, {2, 0, 0}, 12},    {5, {0, 0, 1}, 14.6},
    {6, {1, 1, 0}, 15.7},  {8, {3, 0, 0}, 15.5}, {9, {0, 2, 0}, 21.8},  {10, {1, 0, 1}, 18.6},
    {12, {2, 1, 0}, 21.5}, {15, {0, 1, 1}, 26},  {16, {4, 0, 0}, 23.5},
};
constexpr int radix_count = sizeof radices / sizeof radices[0];
constexpr double way = 5;   // through the buffer once more
constexpr double turn = 6;  // of a point in registers
constexpr double cost_of_prime(long p) {
  return 2 * static_cast<double>(p) + (p == 7 ? 3 : 9);
}

// The cheapest radices for every divisor of 2^a 3^b 5^c.
class Choices {
 public:
  explicit Choices(Powers all, long largest = longest_pass) : all_(all), largest_(largest) {
    for (int a = 0; a <= all.two; ++a) {
      for (int b = 0; b <= all.three; ++b) {
        for (int c = 0; c <= all.five; ++c) choose({a, b, c});
      }
    }
  }
  double cost(Powers p) const {
    return cost_[at(p)];
  }
  const Radix& radix(Powers p) const {
    return radices[radix_[at(p)]];
  }

 private:
  static constexpr int most = 4096;  // the exponents of a long make fewer divisors than that
  int at(Powers p) const {
    return (p.two * (all_.three + 1) + p.three) * (all_.five + 1) + p.five;
  }
  void choose(Powers p) {
    const int here = at(p);
    cost_[here] = p == Powers{} ? 0 : 1e300;
    for (int k = 0; k < radix_count; ++k) {
      if (radices[k].radix > largest_ || !p.holds(radices[k].powers)) continue;
      const double cost = cost_[at(p - radices[k].powers)] + radices[k].cost;
      if (cost >= cost_[here]) continue;
      cost_[here] = cost;
      radix_[here] = static_cast<signed char>(k);
    }
  }
  Powers all_;
  long largest_;
  double cost_[most] = {};
  signed char radix_[most] = {};
};

struct Length {
  Powers powers;
  int primes;  // how many above 5
  long prime[most_factors];
};

Length taken_apart(long n) {
  const Factors factors = complex_factors(n);
  Length length = {};
  for (int k = 0; k < factors.count; ++k) {
    switch (factors.factor[k]) {
      case 2:
        ++length.powers.two;
        break;
      case 3:
        ++length.powers.three;
        break;
      case 4:
        length.powers.two += 2;
        break;
      case 5:
        ++length.powers.five;
        break;
      default:
        length.prime[length.primes++] = factors.factor[k];
    }
  }
  return length;
}

void add_stage(Plan& plan, long radix) {
  plan.stage[plan.count++].radix = radix;
}

// Radices in rising order, or falling; the primes of prime[] behind the others of columns, which end where turning is cheap, and
// before those of rows.
void add_stages(Plan& plan, const Choices& choices, Powers powers, const long* prime, int primes, bool falling) {
  if (!falling) {
    for (int k = 0; k < primes; ++k) add_stage(plan, prime[k]);
  }
  const int start = plan.count;
  while (!(powers == Powers{})) {
    const Radix& next = choices.radix(powers);
    add_stage(plan, next.radix);
    powers = powers - next.powers;
    for (int k = plan.count - 1; k > start; --k) {
      Stage &before = plan.stage[k - 1], &here = plan.stage[k];
      if (before.radix == here.radix || (before.radix > here.radix) == falling) break;
      const long radix = here.radix;
      here.radix = before.radix;
      before.radix = radix;
    }
  }
  if (falling) {
    for (int k = 0; k < primes; ++k) add_stage(plan, prime[k]);
  }
}

// l1 and ido of all stages, as stages of n.
void place_stages(Plan& plan) {
  long l1 = 1;
  for (int k = 0; k < plan.count; ++k) {
    Stage& stage = plan.stage[k];
    stage.l1 = l1;
    l1 *= stage.radix;
    stage.ido = plan.n / l1;
  }
}

struct Split {
  double cost;
  int width;
  Powers first;
  int first_primes;
};

// Groups are whole vectors, so lengths that are no multiple of the width cost extra; narrower vectors are cheaper, but not by
// half.
void weigh(const Length& length, const Choices& choices, long n, int widest, Powers first, int first_primes, Split& best) {
  long n1 = 1;
  double down = choices.cost(first), along = choices.cost(length.powers - first);
  for (int k = 0; k < first.two; ++k) n1 *= 2;
  for (int k = 0; k < first.three; ++k) n1 *= 3;
  for (int k = 0; k < first.five; ++k) n1 *= 5;
  for (int k = 0; k < length.primes; ++k) {
    if (k < first_primes) n1 *= length.prime[k];
    (k < first_primes ? down : along) += cost_of_prime(length.prime[k]);
  }
  const long n2 = n / n1;
  for (int width = widest; width > 2 && 2 * width >= widest; width /= 2) {
    if (n1 < width || n2 < width) continue;
    const bool turned_at_once = n1 % width == 0 && n1 <= 16 && choices.radix(first).radix == n1;
    const double of_columns = static_cast<double>((n2 + width - 1) / width * n1) * (down + turn + (turned_at_once ? 0 : way));
    const double of_rows = static_cast<double>((n1 + width - 1) / width * n2) * along;
    // A long buffer falls out of the nearest cache.
    const double cost =
        (of_columns + of_rows) * (width == widest ? 1 : 0.6) * (1 + 0.0005 * static_cast<double>(n1 > n2 ? n1 : n2));
    if (cost < best.cost) best = {cost, width, first, first_primes};
  }
}

// One line, no stages yet.
void begin(Plan& plan, long n) {
  plan.n = n;
  plan.count = plan.first_count = 0;
  plan.width = 1;
  plan.n1 = 1;
  plan.large_prime = 0;
}

}  // namespace

void plan_line(long n, int widest, Plan& plan) {
  const Length length = taken_apart(n);
  begin(plan, n);
  if (length.primes > 0 && length.prime[length.primes - 1] > largest_radix) {
    plan.large_prime = length.prime[length.primes - 1];
    plan.n1 = n / plan.large_prime;
    return;
  }
  const Choices choices(length.powers);
  double whole = choices.cost(length.powers);
  for (int k = 0; k < length.primes; ++k) whole += cost_of_prime(length.prime[k]);
  Split best = {0.5 * whole * static_cast<double>(n), 1, {}, 0};
  for (int a = 0; a <= length.powers.two; ++a) {
    for (int b = 0; b <= length.powers.three; ++b) {
      for (int c = 0; c <= length.powers.five; ++c) {
        for (int t = 0; t <= length.primes; ++t) weigh(length, choices, n, widest, {a, b, c}, t, best);
      }
    }
  }
  plan.width = best.width;
  if (best.width == 1) {
    add_stages(plan, Choices(length.powers, 5), length.powers, length.prime, length.primes, false);
    return place_stages(plan);
  }
  add_stages(plan, choices, best.first, length.prime, best.first_primes, true);
  plan.first_count = plan.count;
  for (int k = 0; k < plan.count; ++k) plan.n1 *= plan.stage[k].radix;
  add_stages(plan, choices, length.powers - best.first, length.prime + best.first_primes, length.primes - best.first_primes,
             false);
  place_stages(plan);
}

void plan_columns(long n, Plan& plan) {
  const Length length = taken_apart(n);
  begin(plan, n);
  add_stages(plan, Choices(length.powers), length.powers, length.prime, length.primes, false);
  place_stages(plan);
}

long reals_between(const Plan& plan) {
  if (plan.large_prime > 0) return 2 * plan.n;
  if (plan.width == 1) return 0;
  return (plan.n1 + plan.width - 1) / plan.width * plan.width * (plan.n / plan.n1) * 2;
}

long reals_in_buffer(const Plan& plan) {
  const long n2 = plan.n / plan.n1;
  return plan.large_prime > 0 ? 0 : 4 * plan.width * (plan.n1 > n2 ? plan.n1 : n2);
}

}  // namespace zent::transform
