// Injected faults: they meet the calls of a shared library, the right one of them, and end with
// their scope.
#include "support/faults.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "support/child.h"
#include "support/device_test.h"
#include "support/fault_probe.h"

namespace {

using fairlead_test::Call;
using fairlead_test::EachCall;
using fairlead_test::Ended;
using fairlead_test::Fault;
using fairlead_test::FaultPlan;
using fairlead_test::kForever;
using fairlead_test::run_child;

class FaultsTest : public fairlead_test::DeviceTest {};

// Every way of making a call stands in the probe library's table.
class ProbeTest : public FaultsTest {
 protected:
  void SetUp() override {
    FaultsTest::SetUp();
    fairlead_test::put_file("/tmp/probe", "");
  }

  template <class Action>
  void for_each_probe(Action action) {
    size_t count = 0;
    const Probe* const probes = fault_probes(&count);
    for (size_t i = 0; i < count; ++i) action(probes[i]);
  }
};

TEST_F(ProbeTest, calls_succeed_when_nothing_is_armed) {
  const Ended child = run_child([&] {
    for_each_probe([](const Probe& probe) {
      EXPECT_TRUE(probe.succeeds()) << probe.name << ": " << strerror(errno);
    });
  });
  EXPECT_EQ(0, child.status);
}

TEST_F(ProbeTest, each_call_of_a_shared_library_can_fail) {
  const Ended child = run_child([&] {
    for_each_probe([](const Probe& probe) {
      probe.succeeds();  // opens what it needs
      Fault fault(probe.kind, {.error = EXDEV});
      errno = 0;
      const bool succeeded = probe.succeeds();
      const int error = errno;
      fault.disarm();
      EXPECT_FALSE(succeeded) << probe.name;
      EXPECT_EQ(EXDEV, error) << probe.name;
      EXPECT_TRUE(fault.fired()) << probe.name;
    });
  });
  EXPECT_EQ(0, child.status);
}

TEST_F(ProbeTest, any_meets_everything_but_allocations) {
  const Ended child = run_child([&] {
    for_each_probe([](const Probe& probe) {
      probe.succeeds();
      Fault fault(Call::kAny, {.error = EXDEV, .times = kForever});
      const bool succeeded = probe.succeeds();
      fault.disarm();
      EXPECT_EQ(probe.kind == Call::kMalloc, succeeded) << probe.name;
    });
  });
  EXPECT_EQ(0, child.status);
}

TEST_F(FaultsTest, only_the_nth_call_fails) {
  Fault fault(Call::kOpen, {.nth = 2, .error = EMFILE});
  const int first = open("/tmp", O_RDONLY);
  const int second = open("/tmp", O_RDONLY);
  const int error = errno;
  const int third = open("/tmp", O_RDONLY);
  EXPECT_LE(0, first);
  EXPECT_EQ(-1, second);
  EXPECT_EQ(EMFILE, error);
  EXPECT_LE(0, third);
  EXPECT_EQ(3, fault.calls());
  close(first);
  close(third);
}

TEST_F(FaultsTest, a_fault_can_last) {
  Fault fault(Call::kOpen, {.nth = 2, .error = ENFILE, .times = kForever});
  const int first = open("/tmp", O_RDONLY);
  EXPECT_LE(0, first);
  for (int round = 0; round < 5; ++round) EXPECT_EQ(-1, open("/tmp", O_RDONLY));
  close(first);
}

TEST_F(FaultsTest, a_fault_ends_with_its_scope) {
  { Fault fault(Call::kOpen, {.error = EMFILE, .times = kForever}); }
  const int fd = open("/tmp", O_RDONLY);
  EXPECT_LE(0, fd);
  close(fd);
}

TEST_F(FaultsTest, calls_are_counted_without_a_fault) {
  Fault fault(Call::kOpen, {.nth = 0});
  for (int round = 0; round < 3; ++round) close(open("/tmp", O_RDONLY));
  EXPECT_EQ(3, fault.calls());
  EXPECT_FALSE(fault.fired());
}

TEST_F(FaultsTest, reads_and_writes_move_less) {
  const int fd = open("/tmp/short", O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  {
    Fault fault(Call::kWrite, {.at_most = 3});
    EXPECT_EQ(3, write(fd, "abcdef", 6));
    EXPECT_EQ(2, write(fd, "gh", 2));
  }
  char bytes[8];
  Fault fault(Call::kRead, {.at_most = 1});
  EXPECT_EQ(1, pread(fd, bytes, sizeof bytes, 0));
  EXPECT_EQ(5, pread(fd, bytes, sizeof bytes, 0));
  EXPECT_EQ("abcgh", std::string(bytes, 5));
  close(fd);
}

TEST_F(FaultsTest, a_signal_can_end_the_process_before_a_call) {
  const Ended child = run_child([] {
    Fault fault(Call::kRename, {.signal = SIGKILL});
    rename("/tmp/from", "/tmp/to");
    return 7;
  });
  EXPECT_EQ(SIGKILL, child.signal);
}

TEST_F(FaultsTest, a_fault_in_a_child_counts_as_fired) {
  Fault fault(Call::kOpen, {.error = EMFILE});
  const Ended child = run_child([] { return open("/tmp", O_RDONLY) == -1 ? 5 : 6; });
  EXPECT_EQ(5, child.status);
  EXPECT_TRUE(fault.fired());
}

TEST_F(FaultsTest, each_call_walks_through_all_calls_and_ends_with_none_failing) {
  std::string results;
  for (EachCall each(Call::kOpen, {.error = EMFILE}); each.next();) {
    results += each.run([] {
      int failed = 0;
      for (int round = 1; round <= 3; ++round) {
        const int fd = open("/tmp", O_RDONLY);
        if (fd < 0) failed = round;
        if (fd >= 0) close(fd);
      }
      return std::to_string(failed);
    });
    results += each.fired() ? "f " : "- ";
  }
  EXPECT_EQ("1f 2f 3f 0- ", results);
}

TEST_F(FaultsTest, allocations_fail_in_turn) {
  std::string results;
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    const int made = each.run([] {
      int blocks = 0;
      for (int round = 0; round < 2; ++round) {
        void* volatile block = malloc(8);
        if (block) ++blocks;
        free(block);
      }
      return blocks;
    });
    results += static_cast<char>('0' + made);
  }
  EXPECT_EQ("112", results);
}

}  // namespace
