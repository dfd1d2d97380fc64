#include <csetjmp>
#include <csignal>
#include <cstdint>

#include "tests/runtime/halves.hpp"

template <class Api>
class Trap : public Runtime<Api> {
 protected:
  // Wild addresses and undefined instructions, as a user function makes them.
  __attribute__((no_sanitize("undefined"))) static void fault(int kind) {
    if (kind % 2 == 0) {
      static int* volatile wild = nullptr;
      *wild = 1;
    } else {
      __builtin_trap();
    }
  }
  static void (*handler(int signal))(int) {
    struct sigaction action;
    sigaction(signal, nullptr, &action);
    return action.sa_handler;
  }
  static void quiet() {
    long off = 0;
    Api::e1pos(0, &off, &off);
  }
};
TYPED_TEST_SUITE(Trap, Halves);

TYPED_TEST(Trap, TenThousandFaultsLeaveNothingBehind) {
  using Api = TypeParam;
  using Half = typename Api::Half;
  this->quiet();
  const auto before_segv = this->handler(SIGSEGV), before_ill = this->handler(SIGILL);
  std::size_t used = 0;
  for (int k = 0; k < 10000; ++k) {
    const double value = zent::public_call<Half>("faulty", [&] {
      zent::scratch<Half, double>(100);
      zent::result<Half, double>(10);
      Api::e1psh("inner");
      Api::e1usr("ON");
      Api::e1psh("deeper");
      this->fault(k);
      return 1.0;
    });
    ASSERT_NE(value, value);
    ASSERT_EQ(Api::n1rty(1), 5);
    ASSERT_EQ(Api::error_code(), 102);
    ASSERT_EQ(this->state.top, this->state.frame);
    ASSERT_EQ(this->state.i[1], k % 2 == 0 ? SIGSEGV : SIGILL);
    ASSERT_EQ(zent::public_call<Half>("sound", [] { return 2.0; }), 2.0);
    ASSERT_EQ(Api::error_code(), 0);
    if (k == 0) used = mallinfo2().uordblks;
  }
  EXPECT_EQ(mallinfo2().uordblks, used);
  EXPECT_EQ(this->handler(SIGSEGV), before_segv);
  EXPECT_EQ(this->handler(SIGILL), before_ill);
}

TYPED_TEST(Trap, FaultPrintsItsOwnErrorAndTheViolation) {
  using Api = TypeParam;
  const std::string text = this->printed([&] {
    zent::public_call<typename Api::Half>("faulty", [&] {
      Api::e1usr("ON");
      this->fault(0);
    });
  });
  EXPECT_NE(text.find("\n*** TERMINAL Error from faulty.  "), text.rfind("\n*** TERMINAL Error from faulty.  ")) << text;
}

template <class Half>
static int nested(int depth, int fault_at, void (*fault)(int)) {
  int answered = zent::public_call<Half>("nested", [=] {
    if (depth == fault_at) fault(depth);
    return depth == fault_at ? 0 : 1 + nested<Half>(depth + 1, fault_at, fault);
  });
  return answered;
}

TYPED_TEST(Trap, NestedDeeperThanItCanArm) {
  using Api = TypeParam;
  using Half = typename Api::Half;
  this->quiet();
  const auto before = this->handler(SIGSEGV);
  for (int depth : {1, 5, 14, 15, 20}) {
    const int armed = depth < 15 ? depth : 14;  // the call that catches, counted from 0
    EXPECT_EQ(nested<Half>(0, depth, this->fault), armed) << depth;
    EXPECT_EQ(this->state.top, this->state.frame);
    EXPECT_EQ(this->state.jump_depth, 0);
    EXPECT_EQ(zent::trap_depth<Half>, 0);
    EXPECT_EQ(Api::error_type(), 5);
  }
  EXPECT_EQ(this->handler(SIGSEGV), before);
}

// The half armed last catches, and one fault after the other inside one outer call.
TYPED_TEST(Trap, TheHalvesInsideEachOther) {
  using Half = typename TypeParam::Half;
  using Other = typename Half::Other;
  this->quiet();
  long off = 0;
  zent_e1pos(0, &off, &off);
  zents_e1pos(0, &off, &off);
  const auto before = this->handler(SIGSEGV);
  int outer_ran_on = 0;
  zent::public_call<Half>("a", [&] {
    for (int k = 0; k < 4; ++k) {
      zent::public_call<Other>("b", [&] {
        zent::public_call<Half>("c", [&] { this->fault(k); });
        EXPECT_EQ(zent::error_state<Half>.number_word[1], 102);
        this->fault(k);
      });
      EXPECT_EQ(zent::error_state<Other>.number_word[1], 102);
      zent::public_call<Half>("d", [&] { this->fault(k + 1); });
      ++outer_ran_on;
    }
    zent::scalar_call<Other>("untrapped", [&] { this->fault(0); });
    ++outer_ran_on;
  });
  EXPECT_EQ(outer_ran_on, 4);
  EXPECT_EQ(zent::error_state<Other>.top, zent::error_state<Other>.frame);
  EXPECT_EQ(zent::trap_depth<Other>, 0);
  EXPECT_EQ(this->handler(SIGSEGV), before);
}

TYPED_TEST(Trap, HostJumpOverACall) {
  using Api = TypeParam;
  using Half = typename Api::Half;
  this->quiet();
  const auto before = this->handler(SIGSEGV);
  std::size_t used = 0;
  static jmp_buf host;
  static int k;
  for (k = 0; k < 10000; ++k) {
    Api::e1psh("base");
    zent_trap_state own, other;
    Api::trap_mark(&own);
    zent::trap_mark<typename Half::Other>(&other);
    if (setjmp(host) == 0) {
      zent::public_call<Half>("outer", [&] {
        zent::scratch<Half, char>(1000);
        zent::public_call<typename Half::Other>("middle", [&] {
          zent::scratch<typename Half::Other, char>(1000);
          zent::public_call<Half>("inner", [&] { longjmp(host, 1); });
        });
      });
    }
    // In either order.
    if (k % 2 == 0) Api::trap_release(&own);
    zent::trap_release<typename Half::Other>(&other);
    if (k % 2 != 0) Api::trap_release(&own);
    ASSERT_EQ(this->handler(SIGSEGV), before);
    ASSERT_EQ(this->state.top - this->state.frame, 3);  // the frames stay: outer and inner above base
    this->state.signal_jump = 1;
    Api::e1pop("base");
    zent::drop_frames<typename Half::Other>(zent::error_state<typename Half::Other>.frame);
    if (k == 0) used = mallinfo2().uordblks;
  }
  EXPECT_EQ(mallinfo2().uordblks, used);
  EXPECT_EQ(zent::trap_owner, 0);
  zent::public_call<Half>("after", [&] { this->fault(0); });
  EXPECT_EQ(Api::error_code(), 102);
}

TYPED_TEST(Trap, SwitchAndExportedArming) {
  using Api = TypeParam;
  const auto before = this->handler(SIGILL);
  for (int k = 0; k < 20; ++k) Api::set_signal(1);
  EXPECT_NE(this->handler(SIGILL), before);
  for (int k = 0; k < 20; ++k) Api::set_signal(0);
  EXPECT_EQ(this->handler(SIGILL), before);
  Api::set_signal(0);  // one too many
  const auto unarmed = [&] {
    Api::options(Api::trapping, 0, 0);
    zent::public_call<typename Api::Half>("f", [&] { this->fault(0); });
  };
  EXPECT_EXIT(unarmed(), ::testing::KilledBySignal(SIGSEGV), "");
  const auto without_buffer = [&] {
    Api::set_signal(1);
    this->fault(0);
  };
  EXPECT_EXIT(without_buffer(), ::testing::KilledBySignal(SIGSEGV), "");
  Api::options(Api::trapping, 0, 0);
  EXPECT_EQ(zent::trap_status<typename Api::Half>, 0);
  Api::options(Api::trapping, 1, 0);
}

TYPED_TEST(Trap, ScratchAndResults) {
  using Half = typename TypeParam::Half;
  const auto body = [] {
    for (long n : {0L, 1L, 7L, 1000L}) {
      auto* work = zent::scratch_zero<Half, double>(n);
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(work) % 64, 0u);
      for (long i = 0; i < n; ++i) EXPECT_EQ(work[i], 0);
      for (long i = 0; i < n; ++i) work[i] = 1;
    }
    EXPECT_EQ((zent::scratch<Half, double>(-1)), nullptr);
    EXPECT_EQ((zent::scratch<Half, double>(1L << 61)), nullptr);
    EXPECT_EQ((zent::result<Half, double>(1L << 60)), nullptr);
    zent::result<Half, double>(50);
    double* x = zent::result<Half, double>(3);
    zent::scratch<Half, char>(1);
    x[2] = 5;
    zent::keep<Half>(x);
    zent::keep<Half>(nullptr);
    return x;
  };
  double* kept = zent::public_call<Half>("f", body);
  EXPECT_EQ(kept[2], 5);
  EXPECT_EQ(zent::scratch_mark<Half>(), nullptr);
  zent_free_allocated_memory(kept);
  const std::size_t used = mallinfo2().uordblks;  // the first call has filled the allocator's caches
  zents_free_allocated_memory(zent::public_call<Half>("f", body));
  EXPECT_EQ(mallinfo2().uordblks, used);
}

// A print procedure of the host leaves the handler by a jump while an outer call of the same half is armed: the handlers must
// stand for that call again, since the system has taken the one that ran away.
TYPED_TEST(Trap, HostJumpOutOfTheHandler) {
  using Api = TypeParam;
  using Half = typename Api::Half;
  static jmp_buf host;
  const auto jump = [](long, long, const char*, const char*) { longjmp(host, 1); };
  const auto before = this->handler(SIGSEGV);
  for (int k = 0; k < 100; ++k) {
    const double value = zent::public_call<Half>("outer", [&] {
      zent_trap_state mark;
      Api::trap_mark(&mark);
      Api::e1usr("ON");
      Api::options(Api::print_proc, static_cast<zent::PrintProcedure>(jump), 0);
      if (setjmp(host) == 0) zent::public_call<Half>("inner", [&] { this->fault(k); });
      Api::trap_release(&mark);
      Api::options(Api::print_proc, record, 0);
      this->fault(k);
      return 1.0;
    });
    ASSERT_NE(value, value);
    ASSERT_EQ(Api::error_code(), 102);
    ASSERT_EQ(this->state.top, this->state.frame);
  }
  EXPECT_EQ(this->handler(SIGSEGV), before);
}
