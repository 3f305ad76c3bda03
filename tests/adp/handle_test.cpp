// Handles, modules, values and interfaces in the caller's process.
#include <unistd.h>

#include "adp/adp_support.h"

namespace {

using fairlead_test::file_content;
using fairlead_test::put_file;
using fairlead_test::spelled;

class HandleTest : public fairlead_test::AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    install("probe", "net/probe");
  }

  static std::string list_of(const char* object) { return spelled(AdpCallList(nullptr, object)); }

  static std::string call(const char* object, const char* name) {
    return spelled(AdpCall(nullptr, object, name, nullptr, nullptr));
  }

  // What the call logs.
  static std::string complaint(const char* object, const char* name) {
    return fairlead_test::capture([&] { EXPECT_EQ("null", call(object, name)); }).err;
  }
};

TEST_F(HandleTest, a_handle_names_its_object_and_its_adapter) {
  adp_t* adp = AdpFileOpen(nullptr, "net/probe");
  ASSERT_NE(nullptr, adp);
  EXPECT_EQ(ADP_PRJ, adp->type);
  EXPECT_STREQ("net/probe", adp->name);
  EXPECT_STREQ("/prj/net/probe.adp", adp->file);
  EXPECT_STREQ("net", adp->module->project);
  EXPECT_STREQ("probe", adp->module->adapter);
  AdpFileClose(adp);
}

TEST_F(HandleTest, handles_on_one_file_share_its_module) {
  DynAdpCreate("lan", "net/probe");
  adp_t* first = AdpFileOpen(nullptr, "net/probe");
  adp_t* second = AdpFileOpen(nullptr, "lan");
  adp_module_t* module = first->module;
  EXPECT_EQ(module, second->module);
  EXPECT_EQ(ADP_DYN, second->type);
  EXPECT_EQ(2, module->references);
  AdpFileClose(first);
  AdpFileClose(second);
  EXPECT_EQ(0, module->references);
  unlink("/prj/net/probe.adp");
  put_file("/prj/net/probe.adp", "no longer a module");
  adp_t* third = AdpFileOpen(nullptr, "net/probe");  // found again without loading
  ASSERT_NE(nullptr, third);
  EXPECT_EQ(module, third->module);
  AdpFileClose(third);
  AdpFileClose(nullptr);
}

TEST_F(HandleTest, a_record_wins_over_the_text) {
  char text[] = "/net//probe";
  slash_t path;
  SlashAnalysis(&path, text);
  adp_t* adp = AdpFileOpen(&path, "other");
  EXPECT_STREQ("net/probe", adp->name);
  AdpFileClose(adp);
  SlashClear(&path);
}

TEST_F(HandleTest, an_open_without_object_or_path_is_logged) {
  EXPECT_EQ("error: argument error\n",
            logged([] { EXPECT_EQ(nullptr, AdpFileOpen(nullptr, nullptr)); }));
  slash_t empty{};
  EXPECT_EQ("error: argument error\n",
            logged([&] { EXPECT_EQ(nullptr, AdpFileOpen(&empty, "net/probe")); }));
  EXPECT_EQ("error: get the adp path failed\n",
            logged([] { EXPECT_EQ(nullptr, AdpFileOpen(nullptr, "//")); }));
}

TEST_F(HandleTest, a_file_that_is_no_module_is_logged) {
  put_file("/prj/net/bad.adp", "text");
  EXPECT_EQ("error: cannot load the file(/prj/net/bad.adp)(err:8/Exec format error)\n",
            logged([] { EXPECT_EQ(nullptr, AdpFileOpen(nullptr, "net/bad")); }));
}

TEST_F(HandleTest, a_bound_module_that_is_gone_is_logged_as_such) {
  put_file("/tmp/.var/dadp.cache", "{\"x\":\"/prj/net/gone.adp\"}");
  EXPECT_EQ("error: cannot load the file(/prj/net/gone.adp)(err:2/No such file or directory)\n",
            logged([] { EXPECT_EQ(nullptr, AdpFileOpen(nullptr, "x")); }));
}

TEST_F(HandleTest, a_module_path_without_two_levels_is_logged) {
  put_file("/tmp/.var/dadp.cache", "{\"x\":\"/short.adp\",\"y\":\"nodot\"}");
  EXPECT_EQ("error: cannot parse the project identify and padp identify by path(/short.adp)\n",
            logged([] { EXPECT_EQ(nullptr, AdpFileOpen(nullptr, "x")); }));
  EXPECT_EQ("error: cannot parse the project identify and padp identify by path(nodot)\n",
            logged([] { EXPECT_EQ(nullptr, AdpFileOpen(nullptr, "y")); }));
}

TEST_F(HandleTest, a_deeper_file_is_named_by_its_last_two_levels) {
  install("tables", "a/odd/twice");
  EXPECT_EQ("first", call("a/odd/twice", "a"));
}

TEST_F(HandleTest, set_and_get_go_to_the_module) {
  answer_with("{\"a\":\"1\"}");
  EXPECT_EQ("{\"a\":\"1\"}", spelled(AdpGet(nullptr, "net/probe", nullptr, "x/y")));
  EXPECT_EQ(1, AdpSet(nullptr, "net/probe", nullptr, "x//y", nullptr, " {\"b\":\"2\"}"));
  EXPECT_EQ(1, AdpSet(nullptr, "net/probe", nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(0, AdpSet(nullptr, "net/probe", nullptr, nullptr, nullptr, "refuse"));
  EXPECT_EQ("net/probe|x/y|{\"b\":\"2\"}\nnet/probe|-|-\nnet/probe|-|refuse\n", sets());
}

TEST_F(HandleTest, a_set_function_may_return_any_other_value_than_1_for_failure) {
  EXPECT_EQ(5, AdpSet(nullptr, "net/probe", nullptr, nullptr, nullptr, "odd"));
}

TEST_F(HandleTest, a_module_without_set_and_get_is_served_by_the_store) {
  install("tables", "odd/gap");
  EXPECT_EQ(1, AdpSet(nullptr, "odd/gap", nullptr, "a/b", nullptr, "1"));
  EXPECT_EQ("{\"a\":{\"b\":\"1\"}}", file_content("/etc/config/odd/gap.cfg"));
  EXPECT_EQ("1", spelled(AdpGet(nullptr, "odd/gap", nullptr, "a/b")));
  EXPECT_EQ(1, AdpSet(nullptr, "odd/gap", nullptr, nullptr, nullptr, "{\"c\":\"2\"}"));
  EXPECT_EQ("{\"c\":\"2\"}", spelled(AdpGet(nullptr, "odd/gap", nullptr, nullptr)));
}

TEST_F(HandleTest, a_pure_object_is_served_by_the_store) {
  EXPECT_EQ(1, AdpSet(nullptr, "sys", nullptr, "host", nullptr, "box"));
  EXPECT_EQ("{\"host\":\"box\"}", spelled(AdpGet(nullptr, "sys", nullptr, nullptr)));
  EXPECT_EQ(1, AdpSet(nullptr, "sys", nullptr, "host", nullptr, nullptr));  // null deletes
  EXPECT_EQ("{}", spelled(AdpGet(nullptr, "sys", nullptr, nullptr)));
}

TEST_F(HandleTest, a_value_text_that_gives_no_value_deletes) {
  put_file("/etc/config/sys.cfg", "{\"a\":\"1\",\"b\":\"2\",\"c\":\"3\"}");
  EXPECT_EQ(1, AdpSet(nullptr, "sys", nullptr, "a", nullptr, "{broken"));
  EXPECT_EQ(1, AdpSet(nullptr, "sys", nullptr, "b", nullptr, ""));
  EXPECT_EQ("{\"c\":\"3\"}", file_content("/etc/config/sys.cfg"));
}

TEST_F(HandleTest, a_node_wins_over_the_value_text_and_stays_the_callers) {
  talk_t* value = StringTalk("node");
  EXPECT_EQ(1, AdpSet(nullptr, "sys", nullptr, "a", value, "text"));
  EXPECT_STREQ("node", RenderString(value));
  TalkFree(value);
  EXPECT_EQ("{\"a\":\"node\"}", file_content("/etc/config/sys.cfg"));
}

TEST_F(HandleTest, a_path_without_segments_addresses_the_whole_object) {
  put_file("/etc/config/sys.cfg", "{\"a\":\"1\"}");
  EXPECT_EQ("{\"a\":\"1\"}", spelled(AdpGet(nullptr, "sys", nullptr, "/")));
  EXPECT_EQ(1, AdpSet(nullptr, "sys", nullptr, "", nullptr, "{\"b\":\"2\"}"));
  EXPECT_EQ("{\"b\":\"2\"}", file_content("/etc/config/sys.cfg"));
}

TEST_F(HandleTest, null_handles_and_names_are_refused) {
  const auto refused = [](auto result) {
    const int error = errno;
    errno = 0;
    return !result && error == EINVAL;
  };
  errno = 0;
  EXPECT_TRUE(refused(AdpAbSet(nullptr, nullptr, nullptr, nullptr, nullptr)));
  EXPECT_TRUE(refused(AdpAbGet(nullptr, nullptr, nullptr)));
  EXPECT_TRUE(refused(AdpIfList(nullptr)));
  EXPECT_TRUE(refused(AdpIfCall(nullptr, "x", nullptr, nullptr)));
  EXPECT_TRUE(refused(AdpCall(nullptr, "net/probe", nullptr, nullptr, nullptr)));
  adp_t* adp = AdpFileOpen(nullptr, "net/probe");
  errno = 0;
  EXPECT_TRUE(refused(AdpIfCall(adp, nullptr, nullptr, nullptr)));
  AdpFileClose(adp);
}

TEST_F(HandleTest, a_handle_without_its_module_is_logged) {
  adp_t adp = {ADP_PRJ, "net/x", "/prj/net/x.adp", nullptr};
  const std::string line =
      "error: adp library member cannot be null when type is ADP_DYN/ADP_PRJ\n";
  EXPECT_EQ(line,
            logged([&] { EXPECT_EQ(0, AdpAbSet(&adp, nullptr, nullptr, nullptr, nullptr)); }));
  EXPECT_EQ(line, logged([&] { EXPECT_EQ(nullptr, AdpAbGet(&adp, nullptr, nullptr)); }));
  EXPECT_EQ(line, logged([&] { EXPECT_EQ(nullptr, AdpIfList(&adp)); }));
  EXPECT_EQ(line, logged([&] { EXPECT_EQ(nullptr, AdpIfCall(&adp, "x", nullptr, nullptr)); }));
}

TEST_F(HandleTest, unknown_codes_are_served_by_nobody) {
  adp_t adp = {4, "net/x", "", nullptr};
  EXPECT_EQ("", logged([&] {
              EXPECT_EQ(0, AdpAbSet(&adp, nullptr, nullptr, nullptr, "1"));
              EXPECT_EQ(nullptr, AdpAbGet(&adp, nullptr, nullptr));
              EXPECT_EQ(nullptr, AdpIfList(&adp));
              EXPECT_EQ(nullptr, AdpIfCall(&adp, "x", nullptr, nullptr));
            }));
}

TEST_F(HandleTest, interfaces_are_listed_with_opt_and_intro) {
  install("tables", "odd/gap");
  EXPECT_EQ("{\"a\":{\"opt\":\"x\",\"intro\":\"y\"},\"b\":{}}",
            list_of("odd/gap"));  // the third ends it
}

TEST_F(HandleTest, odd_tables_list_what_is_usable) {
  for (const char* name : {"odd/hole", "odd/blank", "odd/twice", "odd/zero", "odd/null"})
    install("tables", name);
  EXPECT_EQ("{\"a\":{},\"c\":{}}", list_of("odd/blank"));
  EXPECT_EQ("{\"a\":{}}", list_of("odd/hole"));
  EXPECT_EQ("{\"a\":{\"opt\":\"two\"},\"b\":{}}", list_of("odd/twice"));
  EXPECT_EQ("{}", list_of("odd/zero"));
  EXPECT_EQ("", logged([] { EXPECT_EQ("null", list_of("odd/null")); }));
}

TEST_F(HandleTest, missing_tables_are_logged_by_a_listing) {
  install("tables", "odd/none");
  install("tables", "odd/bare");
  EXPECT_EQ("error: cannot find the symblic(odd_none__if_array) at /prj/odd/none.adp\n",
            logged([] { EXPECT_EQ("null", list_of("odd/none")); }));
  EXPECT_EQ("error: cannot find the symblic(odd_bare__if_size) at /prj/odd/bare.adp\n",
            logged([] { EXPECT_EQ("null", list_of("odd/bare")); }));
}

TEST_F(HandleTest, missing_and_empty_tables_are_logged_by_a_call) {
  for (const char* name : {"odd/none", "odd/bare", "odd/zero", "odd/null"}) install("tables", name);
  EXPECT_EQ(
      "error: cannot find the symblic(odd_none__if_array) at /prj/odd/none.adp for odd/none.a\n",
      complaint("odd/none", "a"));
  EXPECT_EQ(
      "error: cannot find the symblic(odd_null__if_array) at /prj/odd/null.adp for odd/null.a\n",
      complaint("odd/null", "a"));
  EXPECT_EQ(
      "error: cannot find the symblic(odd_bare__if_size) at /prj/odd/bare.adp for odd/bare.a\n",
      complaint("odd/bare", "a"));
  EXPECT_EQ(
      "error: cannot find the symblic(odd_zero__if_size) at /prj/odd/zero.adp for odd/zero.a\n",
      complaint("odd/zero", "a"));
}

TEST_F(HandleTest, a_call_finds_its_interface_before_the_tables_end) {
  install("tables", "odd/gap");
  EXPECT_EQ("second", call("odd/gap", "b"));
  EXPECT_EQ("error: cannot find the interface(d) at /prj/odd/gap.adp for odd/gap\n",
            complaint("odd/gap", "d"));
  EXPECT_EQ("error: cannot find the interface(B) at /prj/odd/gap.adp for odd/gap\n",
            complaint("odd/gap", "B"));
}

TEST_F(HandleTest, results_pass_unchanged) {
  EXPECT_EQ("done", call("net/probe", "done"));
  EXPECT_EQ("failed", call("net/probe", "failed"));
  EXPECT_EQ("null", call("net/probe", "nothing"));
  EXPECT_EQ("just so", call("net/probe", "string"));
}

TEST_F(HandleTest, parameters_come_as_a_list_or_from_a_format) {
  EXPECT_EQ("{\"object\":\"net/probe\",\"count\":\"2\",\"list\":\"eth0,3\"}",
            spelled(AdpCall(nullptr, "net/probe", "echo", nullptr, "%s,%d", "eth0", 3)));
  EXPECT_EQ("{\"object\":\"net/probe\",\"count\":\"1\",\"list\":\"100%s\"}",
            spelled(AdpCall(nullptr, "net/probe", "echo", nullptr, "100%%s")));
  EXPECT_EQ("{\"object\":\"net/probe\",\"count\":\"-1\"}", call("net/probe", "echo"));
  char text[] = "x,y";
  param_t list{};
  ParamAnalysis(&list, text);
  EXPECT_EQ("{\"object\":\"net/probe\",\"count\":\"2\",\"list\":\"x,y\"}",
            spelled(AdpCall(nullptr, "net/probe", "echo", &list, "%s", "ignored")));
  ParamClear(&list);
}

TEST_F(HandleTest, an_empty_format_gives_no_parameters) {
  const char* empty = "";
  EXPECT_EQ("{\"object\":\"net/probe\",\"count\":\"-1\"}",
            spelled(AdpCall(nullptr, "net/probe", "echo", nullptr, empty, 0)));
}

TEST_F(HandleTest, a_pure_object_has_no_interfaces) {
  const auto said = fairlead_test::capture([] {
    EXPECT_EQ("null", list_of("sys"));
    EXPECT_EQ("null", call("sys", "x"));
  });
  EXPECT_EQ(
      "debug: cannot list the pure config adp(sys)\n"
      "debug: cannot call interface(x) at the pure config adp(sys)\n",
      said.out);
  EXPECT_EQ("", said.err);
}

TEST_F(HandleTest, a_call_on_what_cannot_be_opened_is_logged) {
  put_file("/prj/net/bad.adp", "text");
  const std::string log = complaint("net/bad", "x");
  EXPECT_NE(std::string::npos, log.find("warn: cannot open the corrent adp file for net/bad.x\n"))
      << log;
}

TEST_F(HandleTest, the_message_names_an_object_by_its_record_too) {
  put_file("/prj/net/bad.adp", "text");
  char text[] = "net//bad";
  slash_t object;
  ASSERT_EQ(1, SlashAnalysis(&object, text));
  std::string log =
      logged([&] { EXPECT_EQ(nullptr, AdpCall(&object, nullptr, "x", nullptr, nullptr)); });
  EXPECT_NE(std::string::npos, log.find("warn: cannot open the corrent adp file for net/bad.x\n"))
      << log;
  // The record is what is opened; the text is what is told.
  log = logged([&] { EXPECT_EQ(nullptr, AdpCall(&object, "other", "x", nullptr, nullptr)); });
  EXPECT_NE(std::string::npos, log.find("(/prj/net/bad.adp)")) << log;
  EXPECT_NE(std::string::npos, log.find("warn: cannot open the corrent adp file for other.x\n"))
      << log;
  SlashClear(&object);
  log = logged([] { EXPECT_EQ(nullptr, AdpCall(nullptr, nullptr, "x", nullptr, nullptr)); });
  EXPECT_EQ("error: argument error\nwarn: cannot open the corrent adp file for .x\n", log);
}

TEST_F(HandleTest, what_cannot_be_opened_gives_0) {
  put_file("/prj/net/bad.adp", "text");
  logged([] {
    EXPECT_EQ(0, AdpSet(nullptr, "net/bad", nullptr, nullptr, nullptr, "1"));
    EXPECT_EQ(nullptr, AdpGet(nullptr, "net/bad", nullptr, nullptr));
    EXPECT_EQ(nullptr, AdpCallList(nullptr, "net/bad"));
  });
}

TEST_F(HandleTest, a_script_serves_all_calls) {
  put_file("/prj/led/red.ash", "#!/bin/sh\nprintf '%s' \"$interface\" >&$pipeid\n", 0755);
  EXPECT_EQ(":", spelled(AdpGet(nullptr, "led/red", nullptr, nullptr)));
  EXPECT_EQ(".", list_of("led/red"));
  EXPECT_EQ("blink", call("led/red", "blink"));
  EXPECT_EQ(0, AdpSet(nullptr, "led/red", nullptr, nullptr, nullptr, "1"));
}

TEST_F(HandleTest, an_over_long_object_is_cut_and_ended) {
  const std::string name(400, 'n');
  adp_t* adp = AdpFileOpen(nullptr, name.c_str());
  ASSERT_NE(nullptr, adp);
  EXPECT_EQ(name.substr(0, 255), adp->name);
  AdpFileClose(adp);
}

}  // namespace
