#include "runtime/trap.hpp"

#include <csetjmp>
#include <csignal>

#include "runtime/error_stack.hpp"

namespace zent {

namespace {

constexpr long save_slots = 40;
constexpr int trapped[2] = {SIGILL, SIGSEGV};
static_assert(SIGSEGV + 2 * (trap_depth_limit - 1) < save_slots);

struct TrapRecord {
  struct sigaction saved[save_slots];  // what stood before, at signal + 2 * depth
  long owner[trap_depth_limit];        // and whose it was
  long order[trap_depth_limit];        // of the installations of both halves
};

template <class Half>
constinit TrapRecord records{};
constinit long install_count = 0;

long number_of(int signal) {
  switch (signal) {
    case SIGINT:
      return MATH_SIGNAL_INT;
    case SIGILL:
      return MATH_SIGNAL_ILL;
    case SIGABRT:
      return MATH_SIGNAL_ABRT;
    case SIGFPE:
      return MATH_SIGNAL_FPE;
    case SIGSEGV:
      return MATH_SIGNAL_SGEV;
    default:
      return 0;
  }
}

template <class Half>
void handle_signal(int signal) {
  ErrorState& state = error_state<Half>;
  state.signal_jump = 1;
  store_integer<Half>(1, signal);
  if (const long number = number_of(signal); number != 0) raise<Half>(5, number);
  if (trap_depth < Half >> 0 && state.jump_depth > 0) std::longjmp(state.jump[--state.jump_depth].buffer, 1);
}

// The handler is gone once it runs and its signal is not blocked in it: a jump out of it leaves nothing to undo.
template <class Half>
void put_handlers(struct sigaction* saved) {
  struct sigaction action = {};
  action.sa_handler = handle_signal<Half>;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
  sigemptyset(&action.sa_mask);
  for (int signal : trapped) sigaction(signal, &action, saved == nullptr ? nullptr : saved + signal);
}

// Installations made after `order` are void: the calls that made them were jumped over.
template <class Half>
void forget_later(long order) {
  for (long depth = 0; depth < trap_depth_limit; ++depth) {
    if (trap_installed<Half>[depth] && records<Half>.order[depth] > order) trap_installed<Half>[depth] = false;
  }
}

// Back to `depth`. What the lowest abandoned installation found is what must stand again.
template <class Half>
void unwind_traps(long depth) {
  for (long d = depth; d < trap_depth<Half> && d < trap_depth_limit; ++d) {
    if (!trap_installed<Half>[d]) continue;
    forget_later<Half>(records<Half>.order[d]);
    forget_later<typename Half::Other>(records<Half>.order[d]);
    trap_restore<Half>(d);
    break;
  }
  if (trap_depth < Half >> depth) trap_depth<Half> = depth;
}

}  // namespace

template <class Half>
constinit long TrapStorage<Half>::status = 1;
template <class Half>
constinit long TrapStorage<Half>::depth = 0;
template <class Half>
constinit bool TrapStorage<Half>::installed[trap_depth_limit] = {};

template <class Half>
void trap_install(long depth) {
  TrapRecord& record = records<Half>;
  put_handlers<Half>(record.saved + 2 * depth);
  record.owner[depth] = trap_owner;
  record.order[depth] = ++install_count;
  trap_installed<Half>[depth] = true;
  trap_owner = Half::id;
}

template <class Half>
void trap_restore(long depth) {
  const TrapRecord& record = records<Half>;
  for (int signal : trapped) sigaction(signal, record.saved + signal + 2 * depth, nullptr);
  trap_owner = record.owner[depth];
  trap_installed<Half>[depth] = false;
}

template <class Half>
void trap_caught(long depth) {
  unwind_traps<Half>(depth);
  // The signal took one of the handlers away, and an outer call of this half still counts on it.
  if (trap_owner == Half::id) put_handlers<Half>(nullptr);
}

template <class Half>
void trap_return(const Standing& own, const Standing& other) {
  using Other = typename Half::Other;
  error_state<Half>.jump_depth = own.jump_depth;
  trap_caught<Half>(own.trap_depth);
  unwind_traps<Other>(other.trap_depth);
  error_state<Other>.jump_depth = other.jump_depth;
  scratch_release<Other>(other.scratch);
  drop_frames<Other>(other.top);
  raise<Half>(5, MATH_MAJOR_VIOLATION);
  drop_frames<Half>(own.top);
}

template <class Half>
void trap_mark(zent_trap_state* state) {
  *state = {trap_depth<Half>, error_state<Half>.jump_depth, scratch_newest<Half>};
}

template <class Half>
void trap_release(const zent_trap_state* state) {
  trap_caught<Half>(state->trap_depth);  // the jump may have left a handler of the trap, whose signal is then no longer caught
  error_state<Half>.jump_depth = state->jump_depth;
  scratch_release<Half>(state->scratch);
}

#define ZENT_INSTANTIATE(Half)                                       \
  template long TrapStorage<Half>::status;                           \
  template long TrapStorage<Half>::depth;                            \
  template bool TrapStorage<Half>::installed[trap_depth_limit];      \
  template void trap_install<Half>(long);                            \
  template void trap_restore<Half>(long);                            \
  template void trap_caught<Half>(long);                             \
  template void trap_return<Half>(const Standing&, const Standing&); \
  template void trap_mark<Half>(zent_trap_state*);                   \
  template void trap_release<Half>(const zent_trap_state*);
ZENT_INSTANTIATE(Math)
ZENT_INSTANTIATE(Stat)
#undef ZENT_INSTANTIATE

}  // namespace zent
