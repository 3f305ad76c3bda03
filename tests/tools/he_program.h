// Runs the request tool itself, as a shell would.
#pragma once

#include <unistd.h>

#include <functional>
#include <string>
#include <vector>

#include "support/child.h"
#include "support/device_test.h"

namespace fairlead_test {

class HeTest : public DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    put_file("/etc/config/net/wan.cfg", R"({"mtu":"1500","dns":{"first":"::1"}})");
  }

  // `prepare` runs in the tool's process before the tool does.
  static Ended he(
      const std::vector<std::string>& arguments, std::function<void()> prepare = [] {}) {
    return run("he", arguments, prepare);
  }

  static Ended run(
      const std::string& label, const std::vector<std::string>& arguments,
      std::function<void()> prepare = [] {}) {
    std::vector<char*> argv{const_cast<char*>(label.c_str())};
    for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    return run_child([&] {
      prepare();
      execv(HE_PROGRAM, argv.data());
      return 126;
    });
  }

  static void expect(const Ended& ended, int status, const std::string& out,
                     const std::string& err) {
    EXPECT_EQ(status, ended.status);
    EXPECT_EQ(out, ended.out);
    EXPECT_EQ(err, ended.err);
  }

  // A refused command line: the reason and the way to the help.
  static void expect_usage(const std::vector<std::string>& arguments, const std::string& reason) {
    expect(he(arguments), 2, "", "he: " + reason + "\ntry 'he --help'\n");
  }

  static void install_answers() {
    put_file("/prj/lab/answers.adp", file_content(ANSWERS_ADAPTER), 0755);
  }

  static std::string wan() { return file_content("/etc/config/net/wan.cfg"); }
};

}  // namespace fairlead_test
