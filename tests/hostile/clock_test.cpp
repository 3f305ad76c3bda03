// A time of day that jumps back and forth while the library waits.
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>

#include "hostile/hostile_support.h"

namespace {

bool jumps = false;
int asked = 0;

// A 32-bit kernel has a call of its own for seconds of 64 bits.
constexpr long clock_call() {
#ifdef SYS_clock_gettime64
  if (sizeof(time_t) > sizeof(long)) return SYS_clock_gettime64;
#endif
#ifdef SYS_clock_gettime
  return SYS_clock_gettime;
#else
  return -1;
#endif
}

int64_t monotonic_milliseconds() {
  timespec now;
  syscall(clock_call(), CLOCK_MONOTONIC, &now);
  return now.tv_sec * int64_t{1000} + now.tv_nsec / 1000000;
}

}  // namespace

// Stands in for the C library's, as the test program is searched first.
extern "C" int clock_gettime(clockid_t id, timespec* now) {
  const int result = static_cast<int>(syscall(clock_call(), id, now));
  if (jumps && (id == CLOCK_REALTIME || id == CLOCK_REALTIME_COARSE || id == CLOCK_TAI))
    now->tv_sec += ++asked % 2 ? 1000000 : -1000000;
  return result;
}

namespace {

using namespace fairlead_test;

class HostileClockTest : public DeviceTest {
 protected:
  // How long an action takes in a process in which the clock jumps.
  static int64_t milliseconds_of(const std::function<void()>& action) {
    jumps = true;
    const int64_t begin = monotonic_milliseconds();
    action();
    jumps = false;
    return monotonic_milliseconds() - begin;
  }
};

TEST_F(HostileClockTest, is_seen_by_who_asks_for_the_time_of_day) {
  jumps = true;
  timespec first, second;
  clock_gettime(CLOCK_REALTIME, &first);
  clock_gettime(CLOCK_REALTIME, &second);
  jumps = false;
  EXPECT_GT(first.tv_sec, second.tv_sec);
}

TEST_F(HostileClockTest, neither_shortens_nor_lengthens_a_wait) {
  WaitedFor waited_for;
  const auto ended = run_watched([] {
    asked = 0;
    const int64_t lock = milliseconds_of([] {
      EXPECT_EQ(-1, lock_open("/tmp/held", O_RDWR, 0, 1));
      EXPECT_EQ(EBUSY, errno);
    });
    const int64_t command = milliseconds_of([] {
      EXPECT_EQ(-1, system_call(1, 1, "sleep 60"));
      EXPECT_EQ(ETIMEDOUT, errno);
    });
    const int64_t script = milliseconds_of(
        [] { EXPECT_EQ("on", spelled(AdpGet(nullptr, "net/lamp", nullptr, nullptr))); });
    for (const int64_t taken : {lock, command, script}) {
      EXPECT_GE(taken, 900);
      EXPECT_LT(taken, 15000);
    }
    EXPECT_EQ(0, asked);
  });
  waited_for.finish();
  EXPECT_EQ(0, ended.status) << ended.signal << ended.err;
}

}  // namespace
