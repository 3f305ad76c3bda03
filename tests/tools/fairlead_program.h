// Runs the control tool itself, as a shell would.
#pragma once

#include <unistd.h>

#include <functional>
#include <string>
#include <vector>

#include "support/child.h"
#include "support/device_test.h"

namespace fairlead_test {

// Any fixture, with the tool at hand.
template <class Fixture>
class WithControlTool : public Fixture {
 protected:
  // Becomes the tool; 126 when that fails.
  static int exec(const std::vector<std::string>& arguments) {
    std::vector<char*> argv{const_cast<char*>("fairlead")};
    for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    execv(FAIRLEAD_PROGRAM, argv.data());
    return 126;
  }

  static Ended fairlead(
      const std::vector<std::string>& arguments, std::function<void()> prepare = [] {}) {
    return run_child([&] {
      prepare();
      return exec(arguments);
    });
  }

  static void expect(const std::vector<std::string>& arguments, int status, const std::string& out,
                     const std::string& err = "") {
    const Ended ended = fairlead(arguments);
    EXPECT_EQ(status, ended.status);
    EXPECT_EQ(out, ended.out);
    EXPECT_EQ(err.empty() ? "" : "fairlead: " + err + "\n", ended.err);
  }

  // A refused command line: the reason and the way to the help.
  static void expect_usage(const std::vector<std::string>& arguments, const std::string& reason) {
    expect(arguments, 2, "", reason + "\ntry 'fairlead --help'");
  }
};

class ControlTest : public WithControlTool<DeviceTest> {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    put_file("/etc/config/net/wan.cfg", R"({"mtu":"1500","dns":{"first":"::1"}})");
    put_file("/prj/lab/answers.adp", file_content(ANSWERS_ADAPTER), 0755);
  }
};

}  // namespace fairlead_test
