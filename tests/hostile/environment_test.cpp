// Environments that a caller did not choose with care.
#include <csignal>

#include "hostile/hostile_support.h"
#include "support/capture.h"

namespace {

using namespace fairlead_test;

constexpr char kScript[] = "/prj/net/lamp.ash";

// Every variable of the script contract, set by somebody else, and a second time, as no function of
// the C library would do it but any program can hand it over.
const char* const kForged[] = {"pipeid=1",      "adp=forged",        "interface=forged",
                               "config=forged", "value=forged",      "paramter_count=9",
                               "paramter0=f",   "paramter1=forged",  "paramter2=forged",
                               "paramter7=f",   "PATH=/usr/bin:/bin"};

class HostileEnvironmentTest : public DeviceTest {
 protected:
  static void put_script(const std::string& shell, const std::string& body) {
    put_file(kScript, "#!" + shell + "\n" + body, 0755);
  }

  // Tells what it was asked for, "-" where there is no such variable.
  static void put_telling_script(const std::string& shell) {
    std::string body = "{";
    for (const char* name : {"adp", "interface", "config", "value", "paramter_count", "paramter0",
                             "paramter1", "paramter2"})
      body += std::string(" printf '%s|' \"${") + name + "--}\";";
    put_script(shell, body + "} >&$pipeid\n");
  }

  static void with_forged_variables(const std::function<void()>& action) {
    const auto ended = run_watched([&] {
      static const char* twice[2 * std::size(kForged) + 1];  // the environment up to the end
      std::copy(std::begin(kForged), std::end(kForged), twice);
      std::copy(std::begin(kForged), std::end(kForged), twice + std::size(kForged));
      environ = const_cast<char**>(twice);
      action();
    });
    EXPECT_EQ(0, ended.status) << ended.signal << ended.err;
  }

  static std::string get() { return spelled(AdpGet(nullptr, "net/lamp", nullptr, nullptr)); }
};

TEST_F(HostileEnvironmentTest, of_the_caller_is_not_taken_for_the_request) {
  for (const char* shell : {"/bin/sh", "/bin/busybox sh"}) {
    put_telling_script(shell);
    with_forged_variables([&] {
      adp_t* lamp = AdpFileOpen(nullptr, "net/lamp");
      EXPECT_EQ("net/lamp|:|a|forged|9|f|forged|forged|", spelled(AdpAbGet(lamp, nullptr, "a")));
      EXPECT_EQ("net/lamp|:|-|forged|9|f|forged|forged|",
                spelled(AdpAbGet(lamp, nullptr, nullptr)));
      EXPECT_EQ("forged|.|forged|forged|9|f|forged|forged|", spelled(AdpIfList(lamp)));
      EXPECT_EQ("net/lamp|blink|forged|forged|2||blue|forged|",
                spelled(AdpIfCall(lamp, "blink", nullptr, "blue,")));
      EXPECT_EQ("net/lamp|blink|forged|forged|-1|f|forged|forged|",
                spelled(AdpIfCall(lamp, "blink", nullptr, nullptr)));
      AdpFileClose(lamp);
    });
  }
}

TEST_F(HostileEnvironmentTest, of_the_caller_is_not_taken_for_what_to_set) {
  put_script("/bin/sh",
             "printf '%s|%s|%s|%s' \"$adp\" \"$interface\" \"${config--}\" \"${value--}\" "
             ">/tmp/seen\nprintf '\\001' >&$pipeid\n");
  with_forged_variables([] {
    EXPECT_EQ(1, AdpSet(nullptr, "net/lamp", nullptr, "a", nullptr, "1"));
    EXPECT_EQ("net/lamp|=|a|1", file_content("/tmp/seen"));
    EXPECT_EQ(1, AdpSet(nullptr, "net/lamp", nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ("net/lamp|=|-|-", file_content("/tmp/seen"));
    EXPECT_EQ(1, AdpSecureSet(nullptr, "net/lamp", nullptr, "a", nullptr, "2"));
    EXPECT_EQ("net/lamp|=|a|2", file_content("/tmp/seen"));
  });
}

// These belong to a shell that talks to a person, or that was told to trace. A script is neither.
TEST_F(HostileEnvironmentTest, of_shells_runs_nothing_in_a_script_or_a_command) {
  put_file("/tmp/profile", "touch /tmp/ran\n");
  for (const char* shell : {"/bin/sh", "/bin/busybox sh"}) {
    put_script(shell, "set -- $adp\nprintf '%s' \"$#\" >&$pipeid\n");
    const auto ended = run_watched([&] {
      setenv("ENV", "/tmp/profile", 1);
      setenv("PS1", "$(touch /tmp/ran)", 1);
      setenv("PS4", "$(touch /tmp/ran)", 1);
      setenv("PROMPT_COMMAND", "touch /tmp/ran", 1);
      setenv("IFS", "/", 1);
      EXPECT_EQ("1", get()) << shell;
      EXPECT_EQ(0, system_string("true"));
      EXPECT_EQ(0, system_call(5, 1, "true"));
    });
    EXPECT_EQ(0, ended.status) << ended.signal << ended.err;
    EXPECT_FALSE(exists("/tmp/ran")) << shell;
  }
}

TEST_F(HostileEnvironmentTest, that_is_empty_is_enough) {
  put_script("/bin/sh", "printf on >&$pipeid\n");
  const auto ended = run_watched([] {
    clearenv();
    EXPECT_EQ("on", get());
    EXPECT_EQ(0, system_call(5, 1, "true"));
    EXPECT_EQ(0, system_string("true"));
    // There is no request tool in the C library's own path.
    EXPECT_EQ(0, ServiceStart("wan", "net/lamp", "run", nullptr));
    EXPECT_EQ(-1, ServiceStop("wan"));
    EXPECT_EQ(ESRCH, errno);
  });
  EXPECT_EQ(0, ended.status) << ended.signal << ended.err;
}

TEST_F(HostileEnvironmentTest, that_asks_for_a_missing_preload_spoils_no_answer) {
  put_script("/bin/sh", "printf on >&$pipeid\n");
  const auto ended = run_watched([] {
    setenv("LD_PRELOAD", "/tmp/none.so", 1);
    EXPECT_EQ("on", get());
    EXPECT_EQ(0, system_call(5, 1, "true"));
  });
  EXPECT_EQ(0, ended.status) << ended.signal << ended.err;
}

// A program can be started with 128 KiB in one variable.
TEST_F(HostileEnvironmentTest, cannot_hold_a_request_that_is_too_large) {
  put_script("/bin/sh", "touch /tmp/ran\nprintf '\\001' >&$pipeid\n");
  const auto ended = run_watched([] {
    const std::string large(200000, 'x');
    const auto printed = capture([&] {
      GlogOpen("test", LOG_MODE_CONSOLE, 3);
      EXPECT_EQ(0, AdpSet(nullptr, "net/lamp", nullptr, "a", nullptr, large.c_str()));
      EXPECT_EQ(nullptr, AdpCall(nullptr, "net/lamp", "blink", nullptr, "%s,", large.c_str()));
      GlogClose();
    });
    EXPECT_EQ(
        "error: execl the /prj/net/lamp.ash error(err:7/Argument list too long)\n"
        "error: execl the /prj/net/lamp.ash error(err:7/Argument list too long)\n",
        printed.err);
  });
  EXPECT_EQ(0, ended.status) << ended.signal << ended.err;
  EXPECT_FALSE(exists("/tmp/ran"));
}

}  // namespace
