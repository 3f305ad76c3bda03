// The control tool: its grammar, its answers in three forms, and its exit codes.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <sstream>

#include "fairlead/misc/process.h"
#include "support/namespaces.h"
#include "tools/fairlead_program.h"

namespace {

using fairlead_test::ControlTest;
using fairlead_test::Ended;
using fairlead_test::file_content;
using fairlead_test::put_file;

// Grammar

TEST_F(ControlTest, refuses_what_it_does_not_know) {
  expect_usage({}, "no command given");
  expect_usage({"cable"}, "unknown noun 'cable'");
  expect_usage({"config"}, "config needs a verb");
  expect_usage({"config", "eat"}, "unknown verb 'eat' for config");
  expect_usage({"config", "list", "--speed", "9600"}, "config list has no option --speed");
  expect_usage({"config", "list", "--fast"}, "unknown option '--fast'");
}

TEST_F(ControlTest, names_missing_and_surplus_arguments) {
  expect_usage({"config", "get"}, "config get needs NAME [PATH]");
  expect_usage({"config", "get", "a", "b", "c"}, "config get: 'c' is one argument too many");
  expect_usage({"adapter", "bind", "", "x"}, "adapter bind: OBJECT is empty");
  expect_usage({"service", "start", "x", "y", "", "z"}, "service start: INTERFACE is empty");
  expect_usage({"at", "", "AT"}, "at: DEVICE is empty");
}

TEST_F(ControlTest, checks_the_values_of_options) {
  expect_usage({"net", "resolve", "x", "--timeout"}, "--timeout needs a value: SECONDS");
  for (const char* wrong : {"", "0", "-1", "1s", " 1", "99999999999"})
    expect_usage({"net", "resolve", "x", "--timeout", wrong},
                 "--timeout: '" + std::string(wrong) + "' is no number of seconds, at least 1");
  expect_usage({"at", "/dev/null", "AT", "--speed", "fast"},
               "--speed: 'fast' is no number of baud, at least 1");
}

TEST_F(ControlTest, takes_everything_behind_two_dashes_for_arguments) {
  expect({"value", "set", "dashes", "--", "--json"}, 0, "");
  expect({"value", "get", "dashes"}, 0, "--json\n");
}

TEST_F(ControlTest, tells_its_version) {
  expect({"--version"}, 0, "fairlead " FAIRLEAD_VERSION "\n");
}

TEST_F(ControlTest, survives_any_argument) {
  const std::string nasty[] = {
      "", std::string(4096, 'x'), "%s%n%d", "a\nb", "'\"`$(ls)", "../..", "\xff\xfe", "{"};
  const Ended commands = fairlead({"--commands"});
  std::istringstream lines(commands.out);
  size_t runs = 0;
  for (std::string noun, verb, rest; lines >> noun >> verb && std::getline(lines, rest);) {
    if (verb == "watch" || verb == "-" || verb == "resolve") continue;
    for (const std::string& text : nasty) {
      const Ended ended = fairlead({noun, verb, text, text, text});
      EXPECT_LE(ended.status, 3) << noun << ' ' << verb << ' ' << text;
      EXPECT_EQ(0, ended.signal) << noun << ' ' << verb << ' ' << text;
      ++runs;
    }
  }
  EXPECT_GT(runs, 200u);
}

// Help

TEST_F(ControlTest, helps_with_each_command_it_lists) {
  const Ended commands = fairlead({"--commands"});
  std::istringstream lines(commands.out);
  size_t count = 0;
  for (std::string noun, verb, rest; lines >> noun >> verb && std::getline(lines, rest); ++count) {
    std::vector<std::string> words{noun};
    if (verb != "-") words.push_back(verb);
    words.push_back("--help");
    const Ended help = fairlead(words);
    EXPECT_EQ(0, help.status);
    EXPECT_NE(std::string::npos, help.out.find("example:\n  fairlead " + noun)) << help.out;
    EXPECT_NE(std::string::npos, help.out.find("--json")) << help.out;
  }
  EXPECT_GE(count, 30u);
}

TEST_F(ControlTest, helps_with_a_noun) {
  const Ended help = fairlead({"config", "--help"});
  EXPECT_EQ(0, help.status);
  for (const char* verb : {"config list", "config get", "config set", "config delete"})
    EXPECT_NE(std::string::npos, help.out.find(verb));
  EXPECT_EQ(std::string::npos, help.out.find("adapter"));
}

TEST_F(ControlTest, fails_when_the_answer_cannot_be_written) {
  const Ended ended = fairlead({"--help"}, [] {
    close(1);
    open("/dev/full", O_WRONLY);
  });
  EXPECT_EQ(1, ended.status);
  EXPECT_EQ("fairlead: standard output: No space left on device\n", ended.err);
}

// Configuration

TEST_F(ControlTest, reads_settings) {
  expect({"config", "get", "net/wan", "mtu"}, 0, "1500\n");
  expect({"config", "get", "net/wan"}, 0, "mtu\t1500\ndns/first\t::1\n");
  expect({"config", "get", "net/wan", "--json"}, 0,
         "{\"mtu\":\"1500\",\"dns\":{\"first\":\"::1\"}}\n");
  expect({"config", "get", "net/wan", "dns/third"}, 3, "", "nothing at net/wan:dns/third");
  expect({"config", "get", "net/lan"}, 3, "", "nothing at net/lan");
}

TEST_F(ControlTest, tells_what_cannot_be_read_from_what_is_not_there) {
  const int lock = lock_open("/etc/config/net/wan.cfg", O_RDWR, 0, 1);
  ASSERT_LE(0, lock);
  expect({"config", "get", "net/wan", "mtu"}, 1, "",
         "net/wan:mtu cannot be read: Device or resource busy");
  expect({"config", "delete", "net/wan", "mtu"}, 1, "",
         "net/wan:mtu cannot be deleted: Device or resource busy");
  lock_close(lock);
}

TEST_F(ControlTest, changes_settings) {
  expect({"config", "set", "net/wan", "mtu", "1492"}, 0, "");
  expect({"config", "set", "net/wan", "dns", R"({"second":"::2"})", "--json"}, 0,
         "{\"result\":\"done\"}\n");
  EXPECT_EQ(R"({"mtu":"1492","dns":{"second":"::2"}})", file_content("/etc/config/net/wan.cfg"));
  expect({"config", "delete", "net/wan", "dns"}, 0, "");
  expect({"config", "delete", "net/wan", "dns"}, 3, "", "nothing at net/wan:dns");
  EXPECT_EQ(R"({"mtu":"1492"})", file_content("/etc/config/net/wan.cfg"));
  expect({"config", "delete", "net/wan"}, 0, "");
  EXPECT_NE(0, access("/etc/config/net/wan.cfg", F_OK));
}

TEST_F(ControlTest, deletes_nothing_by_a_bad_value) {
  const std::string before = file_content("/etc/config/net/wan.cfg");
  const Ended broken = fairlead({"config", "set", "net/wan", "mtu", "{broken"});
  EXPECT_EQ(2, broken.status);
  EXPECT_NE(
      std::string::npos,
      broken.err.find("fairlead: '{broken' is no value: it is empty, or begins like an object"));
  expect_usage({"config", "set", "net/wan", "mtu", ""},
               "'' is no value: it is empty, or begins like an object and is none");
  expect_usage({"config", "set", "net/wan", "mtu", "say \"hi\""},
               R"('say "hi"': a double quote is written \" and a backslash \\ in a stored text)");
  expect_usage({"config", "set", "net/wan", "/", "text"},
               "'text': the value of a whole object is an object, {...}");
  EXPECT_EQ(before, file_content("/etc/config/net/wan.cfg"));
}

TEST_F(ControlTest, stays_inside_the_configuration_store) {
  put_file("/tmp/out.cfg", R"({"a":"b"})");
  for (const char* name : {"../../tmp/out", "net/../../../tmp/out", "..", "./net/wan"}) {
    const std::string reason =
        "'" + std::string(name) + "' is no configuration: '.' and '..' are no names";
    expect_usage({"config", "get", name}, reason);
    expect_usage({"config", "set", name, "a", "c"}, reason);
    expect_usage({"config", "delete", name}, reason);
    expect_usage({"config", "list", name}, reason);
  }
  EXPECT_EQ(R"({"a":"b"})", file_content("/tmp/out.cfg"));
  expect({"config", "set", "net/..x", "a", "b"}, 0, "");
}

TEST_F(ControlTest, lists_configuration_files) {
  expect({"config", "list"}, 0, "net/wan\t/etc/config/net/wan.cfg\n");
  expect({"config", "list", "--json"}, 0, "{\"net\":{\"wan\":\"/etc/config/net/wan.cfg\"}}\n");
  expect({"config", "list", "nowhere"}, 3, "", "there is no configuration in 'nowhere'");
}

// Adapters and projects

TEST_F(ControlTest, binds_shows_and_unbinds_adapters) {
  expect({"adapter", "list"}, 3, "", "no adapter is registered");
  expect({"adapter", "bind", "net/lan", "lab/none"}, 1, "",
         "there is no adapter 'lab/none' in /prj");
  expect({"adapter", "bind", "net/lan", "lab/answers"}, 0, "");
  expect({"adapter", "list"}, 0, "net/lan\t/prj/lab/answers.adp\n");
  expect({"adapter", "list", "net"}, 0, "lan\t/prj/lab/answers.adp\n");
  expect({"adapter", "show", "net/lan"}, 0,
         "object\tnet/lan\nkind\tregistered module\nfile\t/prj/lab/answers.adp\n");
  expect({"adapter", "unbind", "net/lan"}, 0, "");
  expect({"adapter", "unbind", "net/lan"}, 3, "", "nothing is registered at 'net/lan'");
}

TEST_F(ControlTest, tells_who_serves_an_object) {
  expect({"adapter", "show", "lab/answers"}, 0,
         "object\tlab/answers\nkind\tmodule\nfile\t/prj/lab/answers.adp\n");
  expect({"adapter", "show", "net/wan"}, 0, "object\tnet/wan\nkind\tconfiguration\n");
  put_file("/prj/lab/led.ash", "#!/bin/sh\n", 0755);
  expect({"adapter", "show", "lab/led"}, 0,
         "object\tlab/led\nkind\tscript\nfile\t/prj/lab/led.ash\n");
  expect({"adapter", "show", "/"}, 1, "", "'/' names no object");
}

TEST_F(ControlTest, lists_interfaces) {
  const Ended listed = fairlead({"adapter", "call-list", "lab/answers", "--json"});
  EXPECT_EQ(0, listed.status);
  EXPECT_EQ('{', listed.out[0]);
  expect({"adapter", "call-list", "net/wan"}, 3, "", "'net/wan' offers no interfaces");
}

TEST_F(ControlTest, tells_of_an_adapter_that_crashes) {
  put_file("/prj/lab/ends.ash", "#!/bin/sh\nexit 0\n", 0755);
  expect({"joint", "create", "net/wan", "up", "lab/answers", "crash"}, 0, "");
  expect({"joint", "cast", "net/wan", "up"}, 1, "", "an adapter crashed: Killed");
  expect({"joint", "cast", "net/wan", "down"}, 0, "");
}

TEST_F(ControlTest, keeps_messages_out_of_json) {
  put_file("/prj/lab/led.cfg", R"({"on":"1"})");
  const Ended installed = fairlead({"project", "install", "lab", "--json"});
  EXPECT_EQ("{\"result\":\"done\"}\n", installed.out);
  EXPECT_EQ("info: install a config /prj/lab/led.cfg to /etc/config/lab/led.cfg by lab\n",
            installed.err);
  const Ended removed = fairlead({"project", "uninstall", "lab", "--json"});
  EXPECT_EQ("{\"result\":\"done\"}\n", removed.out);
  expect({"log", "mode", "console"}, 0, "");
  const Ended written = fairlead({"log", "write", "info", "up", "--json"});
  EXPECT_EQ("{\"result\":\"done\"}\n", written.out);
  EXPECT_EQ("info: up\n", written.err);
}

TEST_F(ControlTest, tells_of_settings_that_were_not_copied) {
  put_file("/prj/lab/led.cfg", R"({"on":"1"})");
  fairlead_test::make_directories("/etc/config/lab/led.cfg");
  const Ended ended = fairlead({"project", "install", "lab"});
  EXPECT_EQ(1, ended.status);
  EXPECT_EQ("fairlead: '/etc/config/lab/led.cfg' was not copied\n", ended.err);
}

TEST_F(ControlTest, lists_and_installs_projects) {
  put_file("/prj/lab/led.cfg", R"({"on":"1"})");
  expect({"project", "list"}, 0, "lab\t/prj/lab\n");
  expect({"project", "list", "lab"}, 0,
         "adapters/lab/answers\t/prj/lab/answers.adp\nsettings/lab/led\t/prj/lab/led.cfg\n");
  expect({"project", "list", "bar"}, 3, "", "there is no project 'bar'");
  EXPECT_EQ(0, fairlead({"project", "install", "lab"}).status);
  EXPECT_EQ(R"({"on":"1"})", file_content("/etc/config/lab/led.cfg"));
  EXPECT_EQ(0, fairlead({"project", "uninstall", "lab"}).status);
  expect({"project", "uninstall", "lab"}, 3, "", "'lab' has no settings installed");
  expect({"project", "install", "bar"}, 3, "", "there is no project 'bar'");
}

// Values and the log

TEST_F(ControlTest, sets_and_shows_values) {
  expect({"value", "get", "wan"}, 3, "", "there is no value 'wan'");
  expect({"value", "set", "wan", "up \"now\""}, 0, "");
  expect({"value", "get", "wan"}, 0, "up \"now\"\n");
  expect({"value", "get", "wan", "--json"}, 0, "{\"value\":\"up \\\"now\\\"\"}\n");
  expect({"value", "get", "wan", "--int"}, 1, "", "'wan' has 9 bytes, a number has 4");
  expect({"value", "list"}, 0, "wan\t9\n");
}

TEST_F(ControlTest, sets_numbers_of_32_bits) {
  expect({"value", "set", "mask", "4294967295", "--int"}, 0, "");
  expect({"value", "get", "mask", "--int"}, 0, "4294967295\n");
  expect({"value", "get", "mask"}, 0, "ffffffff\n");
  for (const char* wrong : {"4294967296", "-1", "x", "1x", ""})
    expect_usage({"value", "set", "mask", wrong, "--int"},
                 "'" + std::string(wrong) + "' is no number from 0 to 4294967295");
}

TEST_F(ControlTest, keeps_stores_apart) {
  expect({"value", "set", "a", "1", "--store", "lab"}, 0, "");
  expect({"value", "get", "a"}, 3, "", "there is no value 'a'");
  expect({"value", "get", "a", "--store", "lab"}, 0, "1\n");
}

// Whatever is opened as a store and is none gets removed.
TEST_F(ControlTest, opens_no_file_elsewhere_as_a_store) {
  put_file("/tmp/kept", "precious");
  for (const char* name : {"../../kept", "../kept", "a%sb", ".x", "/tmp/kept", ""})
    for (const std::vector<std::string>& verb :
         {std::vector<std::string>{"list"}, {"get", "a"}, {"set", "a", "b"}}) {
      std::vector<std::string> words{"value"};
      words.insert(words.end(), verb.begin(), verb.end());
      words.insert(words.end(), {"--store", name});
      expect_usage(words, "--store: '" + std::string(name) +
                              "' is no name of a store: no '/', no '%', no '.' at its front");
    }
  EXPECT_EQ("precious", file_content("/tmp/kept"));
}

TEST_F(ControlTest, makes_no_store_by_looking) {
  expect({"value", "get", "a", "--store", "lab"}, 3, "", "there is no store 'lab'");
  expect({"value", "list", "--store", "lab"}, 3, "", "there is no store 'lab'");
  EXPECT_FALSE(fairlead_test::exists("/tmp/.var/gvalue/lab"));
}

TEST_F(ControlTest, sets_no_log_setting_to_a_text) {
  for (const char* name : {"log_level", "log_mode"})
    expect_usage({"value", "set", name, "debug"},
                 "'" + std::string(name) + "' is a number: use --int, or the verbs of log");
  expect({"value", "set", "log_level", "7", "--int"}, 0, "");
  expect({"log", "level"}, 0, "debug\n");
}

TEST_F(ControlTest, shows_and_changes_the_log_settings) {
  expect({"log", "level"}, 0, "info\n");
  expect({"log", "mode"}, 0, "syslog\n");
  expect({"log", "level", "debug"}, 0, "");
  expect({"log", "mode", "console", "where"}, 0, "");
  expect({"log", "level"}, 0, "debug\n");
  expect({"log", "mode"}, 0, "console where\n");
  expect_usage({"log", "level", "loud"},
               "'loud' is no level: emerg alert error warn notice info debug");
  expect_usage({"log", "mode", "pigeon"}, "'pigeon' is no mode: syslog console where");
}

TEST_F(ControlTest, writes_messages) {
  expect({"log", "mode", "console"}, 0, "");
  expect({"log", "write", "info", "100% \"up\""}, 0, "info: 100% \"up\"\n");
  expect({"log", "write", "debug", "hidden"}, 0, "");
}

// Joints

TEST_F(ControlTest, makes_lists_and_takes_joints_away) {
  expect({"joint", "list"}, 3, "", "there are no joints");
  expect({"joint", "create", "net/wan", "up", "lab/answers", "echo"}, 0, "");
  expect({"joint", "create", "net/wan", "up", "lab/answers", "echo"}, 0, "");
  expect({"joint", "list", "--json"}, 0, "{\"net/wan\":{\"up\":{\"lab/answers.echo\":\"\"}}}\n");
  expect({"joint", "cast", "net/wan", "up", "{\"ip\":\"10.0.0.1\"}"}, 0, "");
  expect({"joint", "delete", "net/wan", "up", "lab/answers", "echo"}, 0, "");
  expect({"joint", "delete", "net/wan", "up", "lab/answers", "echo"}, 3, "",
         "there is no joint from 'up' of 'net/wan' to 'lab/answers.echo'");
  expect({"joint", "delete", "net/wan", "up", "lab/answers"}, 3, "",
         "there is no joint from 'up' of 'net/wan' to 'lab/answers'");
  expect({"joint", "list", "net/lan"}, 3, "", "'net/lan' has no joints");
}

TEST_F(ControlTest, names_what_makes_no_joint) {
  expect_usage({"joint", "create", "net/wan", "u\"p", "lab/answers", "echo"},
               R"('u"p': a double quote is written \" and a backslash \\ in a name)");
  fairlead_test::make_directories("/tmp/.var/joint.cache");
  const Ended ended = fairlead({"joint", "create", "net/wan", "up", "lab/answers", "echo"});
  EXPECT_EQ(1, ended.status);
  EXPECT_EQ(0U,
            ended.err.find(
                "fairlead: no joint from 'up' of 'net/wan' to 'lab/answers.echo' can be made: "))
      << ended.err;
}

// Network

TEST_F(ControlTest, tells_facts_of_an_interface) {
  const Ended info = fairlead({"net", "info", "lo", "--json"});
  EXPECT_EQ(0, info.status);
  EXPECT_EQ(0u, info.out.find("{\"interface\":\"lo\",\"flags\":\"")) << info.out;
  expect({"net", "info", "none0"}, 3, "", "there is no interface 'none0'");
  expect({"net", "counters", "none0"}, 3, "", "there is no interface 'none0'");
  EXPECT_EQ(0u, fairlead({"net", "counters", "lo"}).out.find("received_bytes\t"));
}

TEST_F(ControlTest, reckons_with_hardware_addresses) {
  expect({"net", "mac", "00:11:22:33:44:ff", "1"}, 0,
         "mac\t00:11:22:33:45:00\nserial\t001122334500\n");
  expect_usage({"net", "mac", "eth0"}, "'eth0' is no hardware address such as 00:11:22:33:44:55");
  expect_usage({"net", "mac", "00:11:22:33:44:55", "x"}, "'x' is no amount");
}

// Text that is no address would be this machine, where something listens.
TEST_F(ControlTest, connects_to_no_other_host_than_the_named_one) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  ASSERT_EQ(0, bind(listener, reinterpret_cast<sockaddr*>(&address), size));
  ASSERT_EQ(0, listen(listener, 1));
  getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
  const std::string port = std::to_string(ntohs(address.sin_port));
  expect({"net", "connect", "127.0.0.1", port}, 0, "");
  expect({"net", "connect", "no host", port}, 3, "",
         "'no host' has no address, or nobody who knows it answers");
  close(listener);
}

// The tool sees a table in which another interface, whose name ends the same, comes first.
TEST_F(ControlTest, finds_the_counters_of_no_other_interface) {
  put_file("/tmp/table",
           "head\nhead\n   xlo: 9 9 9 9 9 9 9 9 9 9 9 9 9 9 9 9\n"
           "    lo: 1 2 3 4 0 0 0 0 5 6 7 8 0 0 0 0\n");
  const Ended ended = fairlead({"net", "counters", "lo"}, [] {
    if (!fairlead_test::enter_namespaces(CLONE_NEWNS) || !fairlead_test::hide("/proc")) _exit(77);
    put_file("/proc/net/dev", file_content("/tmp/table"));
  });
  if (ended.status == 77) GTEST_SKIP() << "no namespaces here";
  EXPECT_EQ(
      "received_bytes\t1\nreceived_packets\t2\nreceive_errors\t3\nreceive_drops\t4\n"
      "sent_bytes\t5\nsent_packets\t6\nsend_errors\t7\nsend_drops\t8\n",
      ended.out);
}

TEST_F(ControlTest, resolves_and_connects) {
  expect({"net", "resolve", "127.0.0.1"}, 0, "127.0.0.1\n");
  expect_usage({"net", "connect", "127.0.0.1", "70000"}, "'70000' is no port from 1 to 65535");
  EXPECT_EQ(1, fairlead({"net", "connect", "127.0.0.1", "1"}).status);
}

// Encoders

TEST_F(ControlTest, encodes) {
  expect({"encode", "md5", "abc"}, 0, "900150983cd24fb0d6963f7d28e17f72\n");
  expect({"encode", "md5", ""}, 0, "d41d8cd98f00b204e9800998ecf8427e\n");
  expect({"encode", "base64", "ab"}, 0, "YWI=\n");
  expect({"encode", "url", "a b/c"}, 0, "a+b%2Fc\n");
  expect({"encode", "hex", "a\xff"}, 0, "61FF\n");
  expect({"encode", "hex", "a", "--json"}, 0, "{\"hex\":\"61\"}\n");
}

TEST_F(ControlTest, decodes) {
  expect({"encode", "base64", "YWI=", "--decode"}, 0, "ab\n");
  expect({"encode", "url", "a+b%2fc", "--decode"}, 0, "a b/c\n");
  expect({"encode", "hex", "61ff00", "--decode"}, 0, std::string("a\xff\0\n", 4));
  expect_usage({"encode", "base64", "Y W", "--decode"}, "'Y W' is no base64");
  expect_usage({"encode", "hex", "6g", "--decode"}, "'6g' is no even number of hexadecimal digits");
}

// Modem

TEST_F(ControlTest, names_a_device_that_is_none) {
  put_file("/tmp/plain", "some text");
  expect({"at", "/tmp/plain", "AT"}, 1, "", "/tmp/plain: this is no device");
  EXPECT_EQ("some text", file_content("/tmp/plain"));
  expect({"at", "/dev/none", "AT"}, 1, "", "/dev/none: No such file or directory");
}

}  // namespace
