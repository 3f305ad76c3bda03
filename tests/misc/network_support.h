// A network of the test's own: interfaces, addresses and routes that no other process sees.
#pragma once

#include <functional>
#include <string>

#include "misc_support.h"
#include "support/namespaces.h"

namespace misc_test {

class NetworkTest : public fairlead_test::DeviceTest {
 protected:
  // Runs checks in a process with a network of its own, in which "lo" is up; `setup` holds lines
  // for the `ip` command. What the checks change in their process must be as before at their end.
  void with_network(const std::string& setup, std::function<void()> checks) {
    const auto ended = fairlead_test::run_child([&] {
      if (!fairlead_test::enter_namespaces(CLONE_NEWNET | CLONE_NEWNS)) return kNoNamespace;
      fairlead_test::put_file("/tmp/setup", "link set lo up\n" + setup);
      if (system("ip -batch /tmp/setup") != 0) return kNoNetwork;
      return checked(checks);
    });
    judge(ended);
  }

  // The same with nothing in "/proc" but one file.
  void with_table(const std::string& path, const std::string& content,
                  std::function<void()> checks) {
    const auto ended = fairlead_test::run_child([&] {
      if (!fairlead_test::enter_namespaces(CLONE_NEWNS) || !fairlead_test::hide("/proc"))
        return kNoNamespace;
      if (!content.empty()) fairlead_test::put_file(path, content);
      checks();
      return 0;
    });
    judge(ended);
  }

 private:
  static constexpr int kNoNamespace = 77;
  static constexpr int kNoNetwork = 78;

  static int checked(const std::function<void()>& checks) {
    const auto before = fairlead_test::take_census();
    checks();
    EXPECT_EQ("", fairlead_test::difference(before, fairlead_test::take_census()));
    return 0;
  }

  static void judge(const fairlead_test::Ended& ended) {
    if (ended.status == kNoNamespace) GTEST_SKIP() << "no namespaces here";
    if (ended.status == kNoNetwork && ended.err.find("Unknown device type") != std::string::npos)
      GTEST_SKIP() << "this kernel has no such interface: " << ended.err;
    EXPECT_EQ(0, ended.status) << "signal " << ended.signal << "\n" << ended.err;
  }
};

}  // namespace misc_test
