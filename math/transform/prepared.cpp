// Twiddles, and the store of those that calls without a table of their own share.
#include "math/transform/prepared.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>

#include "math/transform/core.hpp"
#include "math/transform/factors.hpp"
#include "math/transform/roots.hpp"
#include "runtime/scratch.hpp"

namespace zent::transform {

namespace {

constexpr long longest_prepared = 1L << 50;  // the bytes of what belongs to longer ones could overflow

enum class Kind { none, line, columns, roots, chirp, sine, cosine };

// The newest results for a precision. Those that the call in progress has asked for stay until it ends: it may hold them.
struct Entry {
  Kind kind;
  Level level;
  long n, age, bytes;
  void* block;  // as allocated
  void* data;   // aligned
};
constexpr int entry_count = 48, kind_count = 7;
constexpr long most_bytes = 1L << 26;
constexpr std::size_t alignment = 64;

template <class Real>
struct Store {
  static inline Entry entries[entry_count];
  static inline Entry* recent[kind_count];  // what was asked for last of each kind
  static inline long clock, settled;        // entries older than `settled` are not in use
  static inline long bytes;
};

template <class Real>
Real* find(Kind kind, long n) {
  using S = Store<Real>;
  const auto fits = [kind, n, level = top_level()](const Entry& entry) {
    return entry.n == n && entry.kind == kind && entry.level == level;
  };
  Entry*& recent = S::recent[static_cast<int>(kind)];
  if (recent == nullptr || !fits(*recent)) {
    recent = std::find_if(S::entries, S::entries + entry_count, fits);
    if (recent == S::entries + entry_count) {
      recent = nullptr;
      return nullptr;
    }
  }
  recent->age = ++S::clock;
  return static_cast<Real*>(recent->data);
}

template <class Real>
void drop(Entry& entry) {
  Store<Real>::bytes -= entry.bytes;
  std::free(entry.block);
  entry = {};
}

// The entry that may go first; null when all are in use.
template <class Real>
Entry* oldest() {
  Entry* found = nullptr;
  for (Entry& entry : Store<Real>::entries) {
    if (entry.kind == Kind::none || entry.age > Store<Real>::settled) continue;
    if (found == nullptr || entry.age < found->age) found = &entry;
  }
  return found;
}

// A new entry; older ones go where it takes too much room beside them.
template <class Real>
Real* insert(Kind kind, long n, long reals) {
  using S = Store<Real>;
  const long bytes = reals * static_cast<long>(sizeof(Real));
  const auto is_empty = [](const Entry& entry) { return entry.kind == Kind::none; };
  Entry* place = std::find_if(S::entries, S::entries + entry_count, is_empty);
  while (place == S::entries + entry_count || S::bytes + bytes > most_bytes) {
    Entry* const old = oldest<Real>();
    if (old == nullptr) break;
    drop<Real>(*old);
    place = old;
  }
  if (place == S::entries + entry_count) return nullptr;
  void* const block = std::malloc(static_cast<std::size_t>(bytes) + alignment - 1);
  if (block == nullptr) return nullptr;
  const auto address = (reinterpret_cast<std::uintptr_t>(block) + alignment - 1) / alignment * alignment;
  *place = {kind, top_level(), n, ++S::clock, bytes, block, reinterpret_cast<void*>(address)};
  S::bytes += bytes;
  return static_cast<Real*>(place->data);
}

template <class Real>
void forget(Kind kind, long n) {
  for (Entry& entry : Store<Real>::entries) {
    if (entry.kind == kind && entry.n == n) drop<Real>(entry);
  }
}

Root* root_memory(long n) {
  return scratch<Math, Root>(Roots::storage(n));
}

// The shortest convenient length of at least `least`.
long convolution_length(long least) {
  long best = 0;
  for (const long odd : {1L, 3L, 5L, 9L, 15L, 25L, 27L, 45L}) {
    long length = odd;
    while (length < least) length *= 2;
    if (best == 0 || length < best) best = length;
  }
  return best;
}

}  // namespace

template <class Real>
bool complex_twiddles(long n, Real* twiddles) {
  Root* memory = root_memory(n);
  if (memory == nullptr) return false;
  const Roots roots(n, memory);
  const Factors factors = complex_factors(n);
  long l1 = 1;
  Real* pair = twiddles;
  for (int k = 0; k < factors.count; ++k) {
    const long radix = factors.factor[k], ido = n / (l1 * radix);
    for (long j = 1; j < radix; ++j) {
      const long step = j * l1;
      // The leading place of a row: 1, or for the general pass exp(2 pi i j / radix). Where a row ends its last pair falls on the
      // leading place of the next row and is overwritten by it.
      roots.get(radix > 5 ? ido * step : 0, pair);
      long angle = step;
      for (long i = 1; i < ido; ++i, angle += step) roots.get(angle, pair + 2 * i);
      pair += 2 * ido;
      if (pair < twiddles + 2 * n) roots.get(ido * step % n, pair);
    }
    l1 *= radix;
  }
  return true;
}

template <class Real>
bool real_twiddles(long n, Real* twiddles) {
  Root* memory = root_memory(n);
  if (memory == nullptr) return false;
  const Roots roots(n, memory);
  const Factors factors = real_factors(n);
  for (long k = 0; k < n; ++k) twiddles[k] = 0;
  long l1 = 1;
  Real* row = twiddles;
  for (int k = 0; k + 1 < factors.count; ++k) {
    const long radix = factors.factor[k], ido = n / (l1 * radix);
    for (long j = 1; j < radix; ++j, row += ido) {
      for (long i = 1; i <= (ido - 1) / 2; ++i) roots.get(i * j * l1, row + 2 * (i - 1));
    }
    l1 *= radix;
  }
  return true;
}

template <class Real>
bool sine_weights(long n, Real* w) {
  Root* memory = root_memory(2 * (n + 1));
  if (memory == nullptr) return false;
  const Roots roots(2 * (n + 1), memory);
  for (long k = 1; k <= n / 2; ++k) {
    Real pair[2];
    roots.get(k, pair);
    w[k - 1] = 2 * pair[1];
  }
  return true;
}

template <class Real>
bool cosine_weights(long n, Real* w) {
  Root* memory = root_memory(2 * (n - 1));
  if (memory == nullptr) return false;
  const Roots roots(2 * (n - 1), memory);
  for (long k = 1; k < n / 2; ++k) {
    Real pair[2];
    roots.get(k, pair);
    w[k] = 2 * pair[1];
    w[n - 1 - k] = 2 * pair[0];
  }
  return true;
}

namespace {

// Reals that come before an aligned part, rounded up to whole cache lines.
template <class Real>
constexpr long aligned(long reals) {
  constexpr long line = 64 / static_cast<long>(sizeof(Real));
  return (reals + line - 1) / line * line;
}

// Lays the twiddles out: `rows` and `roots` become the numbers of reals that they take.
void lay_out(Plan& plan, long& rows, long& roots) {
  rows = roots = 0;
  for (int k = 0; k < plan.count; ++k) {
    Stage& stage = plan.stage[k];
    stage.rows = rows;
    stage.roots = roots;
    if (k >= plan.first_count) rows += 2 * (stage.radix - 1) * stage.ido;
    if (by_definition(stage.radix)) roots += 2 * (stage.radix - 1);
  }
}

template <class Real>
void fill_rows(const Plan& plan, const Roots& roots, Real* rows, Real* radix_roots) {
  for (int k = 0; k < plan.count; ++k) {
    const Stage& stage = plan.stage[k];
    if (by_definition(stage.radix)) {
      for (long j = 1; j < stage.radix; ++j) roots.get(j * stage.ido * stage.l1, radix_roots + stage.roots + 2 * (j - 1));
    }
    if (k < plan.first_count) continue;
    Real* next = rows + stage.rows;
    for (long i = 0; i < stage.ido; ++i) {
      for (long j = 1; j < stage.radix; ++j, next += 2) roots.get(i * j * stage.l1, next);
    }
  }
}

// For every group of columns the twiddles of the stages before the split.
template <class Real>
void fill_columns(const Plan& plan, const Roots& roots, Real* next) {
  const long n2 = plan.n / plan.n1, width = plan.width;
  for (long group = 0; group < n2; group += width) {
    const long column = group + width <= n2 ? group : n2 - width;
    for (int k = 0; k < plan.first_count; ++k) {
      const Stage& stage = plan.stage[k];
      for (long i = 0; i < stage.ido / n2; ++i) {
        for (long j = 1; j < stage.radix; ++j, next += 2 * width) {
          for (long lane = 0; lane < width; ++lane) {
            Real pair[2];
            roots.get((column + lane + n2 * i) * j * stage.l1, pair);
            next[lane] = pair[0];
            next[width + lane] = pair[1];
          }
        }
      }
    }
  }
}

// Short columns before a large prime: what stands between the two.
template <class Real>
void fill_all(const Plan& plan, const Roots& roots, Real* next) {
  for (long row = 0; row < plan.n1; ++row) {
    for (long column = 0; column < plan.large_prime; ++column, next += 2) roots.get(row * column, next);
  }
}

template <class Real>
long column_reals(const Plan& plan) {
  if (plan.large_prime > 0) return plan.n1 > 1 ? 2 * plan.n : 0;
  return (plan.n / plan.n1 + plan.width - 1) / plan.width * 2 * plan.width * (plan.n1 - 1);
}

template <class Real>
const Prepared<Real>* prepare(Kind kind, long n) {
  Real* found = find<Real>(kind, n);
  if (found != nullptr) return reinterpret_cast<const Prepared<Real>*>(found);
  Root* memory = n > longest_prepared ? nullptr : root_memory(n);
  if (memory == nullptr) return nullptr;
  Plan plan;
  if (kind == Kind::line) {
    plan_line(n, engine<Real>().widest, plan);
  } else {
    plan_columns(n, plan);
  }
  long rows, roots;
  lay_out(plan, rows, roots);
  const long head = aligned<Real>(static_cast<long>(sizeof(Prepared<Real>) / sizeof(Real)) + 1);
  const long columns = aligned<Real>(column_reals<Real>(plan));
  const long work = aligned<Real>(kind == Kind::line ? reals_in_buffer(plan) : column_work(n));
  const long between = kind == Kind::line ? aligned<Real>(reals_between(plan)) : 0;
  found = insert<Real>(kind, n, head + columns + work + between + rows + roots);
  if (found == nullptr) return nullptr;
  auto* prepared = reinterpret_cast<Prepared<Real>*>(found);
  Real* next = found + head;
  Real* const buffer = next + columns;
  Real* const row_twiddles = buffer + work + between;
  *prepared = {plan, {row_twiddles, next, row_twiddles + rows}, buffer + work, buffer};
  const Roots unity(n, memory);
  fill_rows(plan, unity, row_twiddles, row_twiddles + rows);
  if (plan.large_prime == 0) {
    fill_columns(plan, unity, next);
  } else if (plan.n1 > 1) {
    fill_all(plan, unity, next);
  }
  return prepared;
}

}  // namespace

template <class Real>
const Prepared<Real>* prepared_line(long n) {
  return prepare<Real>(Kind::line, n);
}

template <class Real>
const Prepared<Real>* prepared_columns(long n) {
  return prepare<Real>(Kind::columns, n);
}

template <class Real>
bool prepared_roots(long n, PreparedRoots<Real>& prepared) {
  const long count = aligned<Real>(2 * (n / 4 + 1));
  Real* found = find<Real>(Kind::roots, n);
  if (found == nullptr) {
    Root* memory = root_memory(n);
    if (memory == nullptr) return false;
    found = insert<Real>(Kind::roots, n, count + n);
    if (found == nullptr) return false;
    const Roots roots(n, memory);
    for (long k = 0; k <= n / 4; ++k) roots.get(k, found + 2 * k);
  }
  prepared = {found, found + count};
  return true;
}

namespace {

template <class Real>
const Real* prepared_weights(Kind kind, long n, bool (*fill)(long, Real*)) {
  Real* w = find<Real>(kind, n);
  if (w != nullptr) return w;
  if (n > longest_table) return nullptr;
  w = insert<Real>(kind, n, n);
  if (w == nullptr || fill(n, w)) return w;
  forget<Real>(kind, n);
  return nullptr;
}

}  // namespace

template <class Real>
const Real* prepared_sine(long n) {
  return prepared_weights(Kind::sine, n, sine_weights<Real>);
}

template <class Real>
const Real* prepared_cosine(long n) {
  return prepared_weights(Kind::cosine, n, cosine_weights<Real>);
}

template <class Real>
bool prepared_chirp(long p, Chirp<Real>& chirp) {
  const long length = convolution_length(2 * p - 1), count = aligned<Real>(2 * p), filter = aligned<Real>(2 * length);
  Real* data = find<Real>(Kind::chirp, p);
  if (data == nullptr) {
    Root* memory = root_memory(2 * p);
    if (memory == nullptr) return false;
    data = insert<Real>(Kind::chirp, p, count + 2 * filter);
    if (data == nullptr) return false;
    Real* periodic = data + count;
    for (long k = 0; k < 2 * length; ++k) periodic[k] = 0;
    const Roots roots(2 * p, memory);
    long square = 0;  // j^2 modulo 2 p
    for (long j = 0; j < p; ++j) {
      roots.get(square, data + 2 * j);
      square = (square + 2 * j + 1) % (2 * p);
      for (const long place : {j, (length - j) % length}) {
        periodic[2 * place] = data[2 * j] / static_cast<Real>(length);
        periodic[2 * place + 1] = data[2 * j + 1] / static_cast<Real>(length);
      }
    }
    if (!transform<Real>(length, periodic, periodic, false)) {
      forget<Real>(Kind::chirp, p);
      return false;
    }
  }
  chirp = {length, data, data + count, data + count + filter};
  return true;
}

template <class Real>
void start_of_call() {
  Store<Real>::settled = Store<Real>::clock;
}

template <class Real>
void end_of_call() {
  using S = Store<Real>;
  S::settled = S::clock;
  if (S::bytes <= most_bytes) return;
  for (Entry& entry : S::entries) {
    if (entry.bytes > most_bytes) drop<Real>(entry);
  }
  while (S::bytes > most_bytes) drop<Real>(*oldest<Real>());
}

#define ZENT_FORM(Real)                                             \
  template bool complex_twiddles<Real>(long n, Real*);              \
  template bool real_twiddles<Real>(long n, Real*);                 \
  template bool sine_weights<Real>(long n, Real*);                  \
  template bool cosine_weights<Real>(long n, Real*);                \
  template const Real* prepared_sine<Real>(long n);                 \
  template const Real* prepared_cosine<Real>(long n);               \
  template const Prepared<Real>* prepared_line<Real>(long n);       \
  template const Prepared<Real>* prepared_columns<Real>(long n);    \
  template bool prepared_roots<Real>(long n, PreparedRoots<Real>&); \
  template bool prepared_chirp<Real>(long p, Chirp<Real>&);         \
  template void start_of_call<Real>();                              \
  template void end_of_call<Real>();
ZENT_FORM(float)
ZENT_FORM(double)
#undef ZENT_FORM

}  // namespace zent::transform
