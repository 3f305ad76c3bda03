// The request tool: what it prints, what it writes, what it says when it fails.
#include <csignal>

#include "fairlead/misc/process.h"
#include "support/syslog.h"
#include "tools/he_program.h"

namespace {

using fairlead_test::file_content;
using fairlead_test::HeTest;
using fairlead_test::put_file;

TEST_F(HeTest, prints_a_setting_as_text) { expect(he({"net/wan:mtu"}), 0, "1500\n", ""); }

TEST_F(HeTest, prints_an_object_as_compact_json) {
  expect(he({"net/wan:dns"}), 0, "{\"first\":\"::1\"}\n", "");
  expect(he({"net/wan"}), 0, "{\"mtu\":\"1500\",\"dns\":{\"first\":\"::1\"}}\n", "");
}

TEST_F(HeTest, prints_an_object_indented) {
  expect(he({"-p", "net/wan"}), 0,
         "{\n  \"mtu\": \"1500\",\n  \"dns\": {\n    \"first\": \"::1\"\n  }\n}\n", "");
}

TEST_F(HeTest, indents_without_touching_strings) {
  put_file("/etc/config/o.cfg", R"({"a":"say \"hi\"","b":"{x: 1, y}","c\\":{},"d":["x","y"]})");
  expect(he({"-p", "o"}), 0,
         R"({
  "a": "say \"hi\"",
  "b": "{x: 1, y}",
  "c\\": {},
  "d": ["x",
  "y"]
}
)",
         "");
}

TEST_F(HeTest, prints_other_kinds_of_values) {
  put_file("/etc/config/o.cfg", R"({"a":["x",1],"b":1.50,"c":true,"d":null})");
  expect(he({"o:a"}), 0, "[\"x\",1]\n", "");
  expect(he({"o:b"}), 0, "1.50\n", "");
  expect(he({"o:c"}), 0, "true\n", "");
  expect(he({"o:d"}), 0, "null\n", "");
}

TEST_F(HeTest, says_what_is_not_there) {
  expect(he({"net/wan:mto"}), 3, "", "he: nothing at net/wan:mto\n");
  expect(he({"net/lan"}), 3, "", "he: nothing at net/lan\n");
}

TEST_F(HeTest, writes_without_a_word) {
  expect(he({"net/wan:mtu=1492"}), 0, "", "");
  EXPECT_EQ(R"({"mtu":"1492","dns":{"first":"::1"}})", wan());
}

TEST_F(HeTest, merges_into_what_is_there) {
  expect(he({R"(net/wan:dns|{"second":"::2"})"}), 0, "", "");
  EXPECT_EQ(R"({"mtu":"1500","dns":{"first":"::1","second":"::2"}})", wan());
}

TEST_F(HeTest, deletes_with_an_empty_value) {
  expect(he({"net/wan:dns="}), 0, "", "");
  EXPECT_EQ(R"({"mtu":"1500"})", wan());
}

TEST_F(HeTest, a_broken_object_is_no_deletion) {
  const auto ended = he({"net/wan:dns={\"first\":"});
  EXPECT_EQ(2, ended.status);
  EXPECT_NE(std::string::npos, ended.err.find("he: 'net/wan:dns={\"first\":': the value begins "
                                              "like a JSON object but is none\n"))
      << ended.err;
  EXPECT_EQ(R"({"mtu":"1500","dns":{"first":"::1"}})", wan());
}

TEST_F(HeTest, a_text_that_would_spoil_the_file_is_refused) {
  for (const char* request :
       {"net/wan:name=5\" disk", "net/wan:na\"me=x", "net/wan:name=C:\\dir", "net/wan:name=a\\",
        "net/wan:name=\\u12x4", R"(net/wan:name=a","b":"c)"})
    expect_usage({request},
                 "'" + std::string(request) +
                     R"(': a double quote is written \" and a backslash \\ in a stored text)");
  EXPECT_EQ(R"({"mtu":"1500","dns":{"first":"::1"}})", wan());
}

TEST_F(HeTest, an_escaped_text_is_stored_and_printed_as_it_is) {
  expect(he({R"(net/wan:name=5\" \\ \u00e4)"}), 0, "", "");
  expect(he({"net/wan:name"}), 0, "5\\\" \\\\ \\u00e4\n", "");
}

TEST_F(HeTest, says_why_a_write_is_refused) {
  expect(he({"net/wan=fast"}), 1, "",
         "he: net/wan=fast: the set was refused: the value of a whole object is a JSON object\n");
  expect(he({"net/lan="}), 0, "", "");
  expect(he({"net/wan:mtu|"}), 1, "", "he: net/wan:mtu|: there is no value to merge\n");
}

TEST_F(HeTest, names_the_error_of_a_refused_write) {
  const int lock = lock_open("/etc/config/net/wan.cfg", 2, 0, 1);
  ASSERT_LE(0, lock);
  expect(he({"net/wan:mtu=1492"}), 1, "",
         "he: net/wan:mtu=1492: the set was refused: Device or resource busy\n");
  lock_close(lock);
}

// A script that takes a setting for missing would go on with another one.
TEST_F(HeTest, tells_what_cannot_be_read_from_what_is_not_there) {
  const int lock = lock_open("/etc/config/net/wan.cfg", 2, 0, 1);
  ASSERT_LE(0, lock);
  for (const char* way : {"-p", "-s"}) {
    expect(he({way, "net/wan:mtu"}), 1, "", "he: net/wan:mtu: Device or resource busy\n");
    expect(he({way, "net/wan"}), 1, "", "he: net/wan: Device or resource busy\n");
    expect(he({way, "net/lan"}), 3, "", "he: nothing at net/lan\n");
  }
  expect(he({"-q", "net/wan"}), 1, "", "");
  lock_close(lock);
  expect(he({"-s", "net/wan:none"}), 3, "", "he: nothing at net/wan:none\n");
}

TEST_F(HeTest, lists_configurations_adapters_and_registrations) {
  install_answers();
  expect(he({":"}), 0, "{\"net\":{\"wan\":\"/etc/config/net/wan.cfg\"}}\n", "");
  expect(he({"?"}), 0, "{\"lab/answers\":\"/prj/lab/answers.adp\"}\n", "");
  expect(he({"."}), 3, "", "he: no adapter is registered\n");
  put_file("/tmp/.var/dadp.cache", R"({"a":"/prj/lab/answers.adp"})");
  expect(he({"."}), 0, "{\"a\":\"/prj/lab/answers.adp\"}\n", "");
}

TEST_F(HeTest, calls_and_prints_what_comes_back) {
  install_answers();
  expect(he({"lab/answers.done"}), 0, "", "");
  expect(he({"lab/answers.echo[hello]"}), 0, "hello\n", "");
  expect(he({R"(lab/answers.echo[{"a":"b"}])"}), 0, "{\"a\":\"b\"}\n", "");
}

TEST_F(HeTest, says_how_a_call_failed) {
  install_answers();
  expect(he({"lab/answers.failed"}), 1, "", "he: lab/answers.failed: the call failed\n");
  expect(he({"lab/answers.nothing"}), 3, "", "he: lab/answers.nothing: nothing came back\n");
  expect(he({"lab/answers.reboot"}), 3, "",
         "he: lab/answers.reboot: lab/answers has no interface 'reboot'\n");
  expect(he({"net/wan.up"}), 3, "", "he: net/wan.up: net/wan has no adapter, so no interfaces\n");
}

TEST_F(HeTest, an_odd_answer_is_printed_and_a_failure) {
  install_answers();
  expect(he({"lab/answers.array"}), 1, "[\"a\",1]\n",
         "he: lab/answers.array: the answer is neither an object nor a text\n");
  expect(he({"lab/answers.unfinished"}), 1, "",
         "he: lab/answers.unfinished: the answer cannot be printed: a member has no value\n");
}

TEST_F(HeTest, codes_for_a_read_are_done_or_failed) {
  install_answers();
  expect(he({"lab/answers:done"}), 0, "", "");
  expect(he({"lab/answers:failed"}), 1, "",
         "he: lab/answers:failed: the adapter reports a failure\n");
}

TEST_F(HeTest, lists_interfaces) {
  install_answers();
  const auto ended = he({"lab/answers."});
  EXPECT_EQ(0, ended.status);
  EXPECT_NE(std::string::npos, ended.out.find(R"("echo":{"opt":"TEXT","intro":"says it"})"));
  expect(he({"net/wan."}), 3, "", "he: net/wan.: net/wan has no adapter, so no interfaces\n");
}

TEST_F(HeTest, isolated_requests_give_the_same_answers) {
  install_answers();
  expect(he({"-s", "net/wan:mtu"}), 0, "1500\n", "");
  expect(he({"-sp", "net/wan:dns"}), 0, "{\n  \"first\": \"::1\"\n}\n", "");
  expect(he({"-s", "net/wan:mtu=1492"}), 0, "", "");
  expect(he({"-s", "lab/answers.echo[hello]"}), 0, "hello\n", "");
  expect(he({"-s", "lab/answers.failed"}), 1, "", "he: lab/answers.failed: the call failed\n");
  EXPECT_EQ(R"({"mtu":"1492","dns":{"first":"::1"}})", wan());
}

TEST_F(HeTest, an_isolated_request_survives_a_crash) {
  install_answers();
  EXPECT_EQ(SIGKILL, he({"lab/answers.crash"}).signal);
  expect(he({"-s", "lab/answers.crash"}), 1, "", "he: lab/answers.crash: the adapter crashed\n");
  expect(he({"-s", "-q", "lab/answers.crash"}), 1, "", "");
  expect(he({"-s", "lab/answers.nothing"}), 3, "", "he: lab/answers.nothing: nothing came back\n");
}

TEST_F(HeTest, a_script_that_is_killed_is_a_failure) {
  put_file("/prj/lab/script.ash", "#!/bin/sh\nkill -9 $$\n", 0755);
  for (const char* request : {"lab/script", "lab/script.", "lab/script.call"})
    expect(he({request}), 1, "", std::string("he: ") + request + ": the adapter crashed\n");
  expect(he({"lab/script=x"}), 1, "",
         "he: lab/script=x: the set was refused: the adapter crashed\n");
}

TEST_F(HeTest, a_script_that_cannot_be_executed_is_a_failure) {
  put_file("/prj/lab/script.ash", "#!/bin/sh\n", 0644);
  expect(he({"lab/script"}), 1, "", "he: lab/script: the script cannot be executed\n");
  expect(he({"-s", "lab/script.call"}), 1, "",
         "he: lab/script.call: the script cannot be executed\n");
  expect(he({"lab/script=x"}), 1, "",
         "he: lab/script=x: the set was refused: the script cannot be executed\n");
}

// Where children are not waited for, their end tells nothing.
TEST_F(HeTest, no_crash_is_seen_where_the_ends_of_children_are_ignored) {
  put_file("/prj/lab/script.ash", "#!/bin/sh\nexit 0\n", 0755);
  const auto ignore = [] { signal(SIGCHLD, SIG_IGN); };
  expect(he({"lab/script.call"}, ignore), 3, "", "he: lab/script.call: nothing came back\n");
}

TEST_F(HeTest, quiet_prints_neither_answer_nor_reason) {
  install_answers();
  expect(he({"-q", "net/wan"}), 0, "", "");
  expect(he({"-q", "net/lan"}), 3, "", "");
  expect(he({"-q", "lab/answers.failed"}), 1, "", "");
  expect(he({"-q", "lab/answers.array"}), 1, "", "");
}

TEST_F(HeTest, help_and_version_go_to_standard_output) {
  const auto help = he({"--help"});
  EXPECT_EQ(0, help.status);
  EXPECT_EQ(0u, help.out.find("usage: he "));
  expect(he({"--version"}), 0, "he " FAIRLEAD_VERSION "\n", "");
}

TEST_F(HeTest, usage_errors_name_the_argument) {
  expect_usage({}, "no request given");
  expect_usage({"-p"}, "no request given");
  expect_usage({"-x", "a"}, "unknown switch '-x'");
  expect_usage({"-px", "a"}, "unknown switch '-x'");
  expect_usage({"--all"}, "unknown switch '--all'");
  expect_usage({"a", "b"}, "one request at a time: 'b' is a second one");
  expect_usage({"-r"}, "-r needs a file name, or - for standard input");
  expect_usage({"-r", "x", "-r", "y"}, "-r stands there twice");
  expect_usage({"-r", "x", "net/wan"}, "with -r there is no place for the identifier 'net/wan'");
}

TEST_F(HeTest, an_identifier_without_object_is_a_usage_error) {
  for (const char* text : {"", " ", "/"})
    expect_usage({text}, "'" + std::string(text) + "': no object is named there");
}

TEST_F(HeTest, switches_end_at_two_dashes) {
  put_file("/etc/config/-p.cfg", R"({"a":"b"})");
  expect(he({"--", "-p:a"}), 0, "b\n", "");
}

TEST_F(HeTest, works_without_a_run_time_folder) {
  fairlead_test::remove_tree("/tmp/.var");
  expect(he({"net/wan:mtu"}), 0, "1500\n", "");
  expect(he({"net/wan:mtu=1492"}), 0, "", "");
}

TEST_F(HeTest, argument_zero_is_never_a_switch) {
  expect(run("--help", {"net/wan:mtu"}), 0, "1500\n", "");
  expect(run("-q", {"net/wan:mtu"}), 0, "1500\n", "");
  expect(run("", {"net/wan:mtu"}), 0, "1500\n", "");
}

TEST_F(HeTest, argument_zero_names_the_log_lines) {
  fairlead_test::Syslog syslog;
  install_answers();
  run("wan-watch", {"lab/answers.reboot"});
  EXPECT_NE("", syslog.wait_for("wan-watch: cannot find the interface(reboot)"));
}

}  // namespace
