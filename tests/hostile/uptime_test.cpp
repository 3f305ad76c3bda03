// Devices that have been up for so long that a counter of milliseconds or seconds runs over while
// the library waits. The time of day can not be set in a private root: clock_test.cpp tells what
// becomes of that.
#include <fcntl.h>
#include <sched.h>
#include <time.h>

#include <memory>

#include "hostile/hostile_support.h"
#include "support/namespaces.h"

namespace {

using namespace fairlead_test;

constexpr int kNotHere = 77;
constexpr int64_t kSecond = 1000;

class UptimeTest : public DeviceTest {
 protected:
  static int64_t milliseconds(clockid_t clock) {
    timespec now = {};
    clock_gettime(clock, &now);
    return now.tv_sec * kSecond + now.tv_nsec / 1000000;
  }

  // A child in which the machine has been up for this long.
  static std::unique_ptr<Child> up_for(int64_t uptime, const std::function<void()>& action) {
    return std::make_unique<Child>([=] {
      if (!enter_namespaces(CLONE_NEWTIME)) return kNotHere;
      std::string offsets;
      for (const auto& [name, clock] :
           {std::pair{"monotonic", CLOCK_MONOTONIC}, {"boottime", CLOCK_BOOTTIME}}) {
        const int64_t wanted = uptime - milliseconds(clock);
        const int64_t seconds = (wanted - (wanted % kSecond + kSecond) % kSecond) / kSecond;
        const int64_t rest = wanted - seconds * kSecond;
        offsets += std::string(name) + " " + std::to_string(seconds) + " " +
                   std::to_string(rest * 1000000) + "\n";
      }
      const int fd = open("/proc/self/timens_offsets", O_WRONLY | O_CLOEXEC);
      if (fd < 0 || write(fd, offsets.data(), offsets.size()) < 0) return kNotHere;
      close(fd);
      return run_watched([&] {  // a child of it is the first that sees the new clock
               EXPECT_GE(milliseconds(CLOCK_MONOTONIC), uptime);
               action();
             })
          .status;
    });
  }

  static void expect_about_a_second(int64_t begin) {
    const int64_t taken = milliseconds(CLOCK_MONOTONIC) - begin;
    EXPECT_GE(taken, 900);
    EXPECT_LT(taken, 15000);
  }

  // Each begins shortly before the counter runs over, and ends behind it.
  static constexpr int64_t kShortlyBefore[] = {
      (int64_t{1} << 31) - 300,            // milliseconds in 31 bits: 24 days
      (int64_t{1} << 32) - 300,            // in 32 bits: 49 days
      497 * 86400 * kSecond,               // hundredths of a second in 32 bits
      (int64_t{1} << 31) * kSecond - 300,  // seconds in 31 bits: 68 years
  };
};

TEST_F(UptimeTest, of_any_length_neither_shortens_nor_lengthens_a_wait) {
  WaitedFor waited_for;
  const std::function<void()> waits[] = {
      [] { EXPECT_EQ(-1, lock_open("/tmp/held", O_RDWR, 0, 1)); },
      [] { EXPECT_EQ(-1, system_call(1, 1, "sleep 60")); },
      [] { EXPECT_EQ("on", spelled(AdpGet(nullptr, "net/lamp", nullptr, nullptr))); },
  };
  std::vector<std::unique_ptr<Child>> children;
  for (const int64_t uptime : kShortlyBefore)
    for (const auto& wait : waits)
      children.push_back(up_for(uptime, [wait] {
        const int64_t begin = milliseconds(CLOCK_MONOTONIC);
        wait();
        expect_about_a_second(begin);
      }));
  bool here = true;
  for (const auto& child : children) {
    const Ended ended = child->wait();
    here = here && ended.status != kNotHere;
    EXPECT_TRUE(ended.status == 0 || !here) << ended.signal << ended.err;
  }
  waited_for.finish();
  if (!here) GTEST_SKIP() << "a process can have no clock of its own here";
}

TEST_F(UptimeTest, of_any_length_is_told) {
  const Ended ended = up_for((int64_t{1} << 31) * kSecond, [] {
                        char text[32] = "";
                        EXPECT_NE(nullptr, uptime_getting(text, sizeof text));
                        const int64_t told = strtoll(text, nullptr, 10);
                        const int64_t passed = told - (int64_t{1} << 31);
                        EXPECT_TRUE(passed >= 0 && passed < 60) << text;
                        EXPECT_NE(nullptr, livetime_getting(text, sizeof text));
                        EXPECT_NE(nullptr, strstr(text, ":24855")) << text;
                      })->wait();
  if (ended.status == kNotHere) GTEST_SKIP() << "a process can have no clock of its own here";
  EXPECT_EQ(0, ended.status) << ended.err;
}

}  // namespace
