// What happens when an event is cast.
#include <sys/inotify.h>

#include <algorithm>
#include <filesystem>

#include "joint_support.h"
#include "support/child.h"
#include "support/faults.h"
#include "support/small_stack.h"

namespace {

using namespace fairlead_test;

// A sanitizer's frames are several times as large as plain ones.
#ifdef FAIRLEAD_SANITIZED
constexpr size_t kStackKib = 1024;
#else
constexpr size_t kStackKib = 128;
#endif

class JointCastTest : public JointTest {
 protected:
  // Objects whose interfaces note their calls: "net/target" itself, and these, bound to its module.
  void SetUp() override {
    JointTest::SetUp();
    make_directories("/prj/net");
    std::filesystem::copy_file(TARGET_MODULE, "/prj/net/target.adp");
    for (const char* object : {"lan", "dns", "late"}) DynAdpCreate(object, "net/target");
  }

  // A joint from the object "wan" and its event to "lan.hear".
  static void hear(const char* event) { ASSERT_EQ(1, JointCreate("wan", event, "lan", "hear")); }

  // What the targets were called with: "OBJECT.INTERFACE COUNT LIST" for each call.
  static std::string heard() {
    const std::string text = file_content("/tmp/.var/heard");
    std::filesystem::remove("/tmp/.var/heard");
    return text == "<missing>" ? "" : text;
  }

  static std::string heard_with(const char* data_text) {
    talk_t* data = StringTalk(data_text);
    JointCast("wan", "up", data);
    TalkFree(data);
    return heard();
  }

  static size_t count(const std::string& text, const std::string& piece) {
    size_t found = 0;
    for (size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1))
      ++found;
    return found;
  }
};

TEST_F(JointCastTest, calls_every_target_of_the_event_in_order) {
  hear("up");
  hear("down");
  create("dns", "hear");
  create("net/target", "hear");
  JointCast("wan", "up", nullptr);
  EXPECT_EQ("lan.hear 2 wan,up\ndns.hear 2 wan,up\nnet/target.hear 2 wan,up\n", heard());
}

TEST_F(JointCastTest, without_an_event_fires_all_of_them_each_by_its_name) {
  hear("up");
  hear(nullptr);
  hear("down");
  JointCreate("lan", "up", "dns", "hear");
  JointCast("wan", nullptr, nullptr);
  EXPECT_EQ("lan.hear 2 wan,up\nlan.hear 2 wan,tmp\nlan.hear 2 wan,down\n", heard());
}

TEST_F(JointCastTest, an_event_that_was_not_named_is_fired_as_tmp) {
  hear(nullptr);
  JointCast("wan", "tmp", nullptr);
  EXPECT_EQ("lan.hear 2 wan,tmp\n", heard());
}

TEST_F(JointCastTest, names_are_compared_exactly) {
  hear("up");
  for (auto [object, event] : {std::pair{"wan", "Up"}, std::pair{"wan", "u"}, std::pair{"wan", ""},
                               std::pair{"wan/", "up"}, std::pair{"", "up"}})
    JointCast(object, event, nullptr);
  EXPECT_EQ("", heard());
}

TEST_F(JointCastTest, nothing_happens_without_object_joints_or_file) {
  errno = 0;
  JointCast(nullptr, nullptr, nullptr);
  EXPECT_EQ(0, errno);
  JointCast("wan", nullptr, nullptr);
  EXPECT_FALSE(exists(kJointFile));
  hear("up");
  JointDelete("wan", "up", "lan", "hear");
  JointCast("wan", nullptr, nullptr);
  EXPECT_EQ("", heard());
}

TEST_F(JointCastTest, a_target_that_fails_stops_no_other_one) {
  ASSERT_EQ(1, create("nobody", "there"));
  ASSERT_EQ(1, create("lan", "missing"));
  for (const char* interface : {"refuse", "nothing", "answer", "string"})
    ASSERT_EQ(1, create("lan", interface));
  hear("up");
  const std::string log = logged([] { JointCast("wan", "up", nullptr); });
  EXPECT_EQ("error: cannot find the interface(missing) at /prj/net/target.adp for lan\n", log);
  EXPECT_EQ(
      "lan.refuse 2 wan,up\nlan.nothing 2 wan,up\nlan.answer 2 wan,up\nlan.string 2 wan,up\n"
      "lan.hear 2 wan,up\n",
      heard());
}

TEST_F(JointCastTest, a_target_without_an_interface_is_skipped) {
  put_file(kJointFile, R"({"wan":{"up":{"lan":"","lan.hear":""}}})");
  JointCast("wan", "up", nullptr);
  EXPECT_EQ("lan.hear 2 wan,up\n", heard());
}

TEST_F(JointCastTest, parameters_inside_a_target_do_not_count) {
  ASSERT_EQ(1, create("lan", "hear[1,2,3]"));
  JointCast("wan", "up", nullptr);
  EXPECT_EQ("lan.hear 2 wan,up\n", heard());
}

TEST_F(JointCastTest, each_call_is_logged_from_its_fixed_line) {
  ASSERT_EQ(1, GlogOpen("test", LOG_MODE_CONSOLE | LOG_MODE_WHERE, 7));
  hear("up");
  const std::string place = "{" + std::to_string(getpid()) + "/joint/";
  EXPECT_EQ("debug: joint for lan.hear[wan,up]" + place + "65}\n",
            capture([] { JointCast("wan", "up", nullptr); }).out);
  talk_t* data = RenderCreate("10.0.0.1");
  EXPECT_EQ("debug: joint for lan.hear[wan,up,10.0.0.1]" + place + "57}\n",
            capture([&] { JointCast("wan", "up", data); }).out);
  TalkFree(data);
}

TEST_F(JointCastTest, the_calls_are_silent_below_the_debug_threshold) {
  ASSERT_EQ(1, GlogOpen("test", LOG_MODE_CONSOLE, 6));
  hear("up");
  const Captured captured = capture([] { JointCast("wan", "up", nullptr); });
  EXPECT_EQ("", captured.out + captured.err);
}

TEST_F(JointCastTest, a_string_and_an_object_arrive_as_one_parameter) {
  hear("up");
  EXPECT_EQ("lan.hear 3 wan,up,10.0.0.1\n", heard_with("10.0.0.1"));
  EXPECT_EQ("lan.hear 3 wan,up,{\"a\":\"1, 2\",\"b\":{\"c\":\"d\"}}\n",
            heard_with("{\"a\":\"1, 2\",\"b\":{\"c\":\"d\"}}"));
}

TEST_F(JointCastTest, percent_and_quotes_in_data_are_only_text) {
  hear("up");
  EXPECT_EQ("lan.hear 3 wan,up,100%s%n%%\n", heard_with("100%s%n%%"));
  EXPECT_EQ("lan.hear 3 wan,up,\"a, b\"\n", heard_with("\"a, b\""));
}

TEST_F(JointCastTest, a_string_with_a_comma_arrives_as_several_parameters) {
  hear("up");
  EXPECT_EQ("lan.hear 5 wan,up,a,b,c\n", heard_with("a,b, c"));
  EXPECT_EQ("lan.hear 3 wan,up,[a,b]\n", heard_with("[a,b]"));
  EXPECT_EQ("lan.hear 3 wan,up,(a\n", heard_with("(a b)"));  // ends at the blank
}

TEST_F(JointCastTest, of_data_with_very_many_commas_the_twentieth_parameter_is_the_rest) {
  hear("up");
  std::string data = "1";
  for (int number = 2; number <= 30; ++number) data += "," + std::to_string(number);
  EXPECT_EQ("lan.hear 20 wan,up," + data + "\n", heard_with(data.c_str()));
}

TEST_F(JointCastTest, empty_data_is_an_empty_parameter) {
  hear("up");
  talk_t* data = RenderCreate("");
  JointCast("wan", "up", data);
  TalkFree(data);
  EXPECT_EQ("lan.hear 3 wan,up,\n", heard());
}

TEST_F(JointCastTest, a_member_is_told_by_its_name) {
  hear("up");
  vessel_t* vessel = StringVessel("{\"a\":\"1\"}");
  JointCast("wan", "up", VesselFind(vessel, "a"));
  TalkFree(vessel);
  EXPECT_EQ("lan.hear 3 wan,up,a\n", heard());
}

TEST_F(JointCastTest, data_without_a_text_is_left_out) {
  hear("up");
  vessel_t* vessel = StringVessel("{\"n\":7,\"a\":[1],\"t\":true,\"z\":null}");
  for (const char* kind : {"n", "a", "t", "z"}) {
    JointCast("wan", "up", VesselGetX(vessel, kind));
    EXPECT_EQ("lan.hear 2 wan,up\n", heard()) << kind;
  }
  VesselClearX(vessel, "n");  // an object that has no text form
  JointCast("wan", "up", vessel);
  EXPECT_EQ("lan.hear 2 wan,up\n", heard());
  TalkFree(vessel);
}

TEST_F(JointCastTest, an_object_of_twenty_segments_casts_and_is_called) {
  std::string object = "1";
  for (int segment = 2; segment <= 20; ++segment) object += "/" + std::to_string(segment);
  ASSERT_EQ(1, DynAdpCreate(object.c_str(), "net/target"));
  ASSERT_EQ(1, JointCreate(object.c_str(), "up", object.c_str(), "hear"));
  JointCast(object.c_str(), "up", nullptr);
  EXPECT_EQ(object + ".hear 2 " + object + ",up\n", heard());
}

TEST_F(JointCastTest, an_object_path_is_rebuilt_before_it_is_called) {
  ASSERT_EQ(1, create("//net///target/", "hear"));
  JointCast("wan", "up", nullptr);
  EXPECT_EQ("net/target.hear 2 wan,up\n", heard());
}

TEST_F(JointCastTest, what_targets_edit_counts_from_the_next_cast_on) {
  ASSERT_EQ(1, create("dns", "edit"));
  hear("up");
  JointCast("wan", "up", nullptr);
  EXPECT_EQ("dns.edit 2 wan,up\nlan.hear 2 wan,up\n", heard());
  EXPECT_EQ(R"({"up":{"dns.edit":"","late.hear":""}})", listed("wan"));
}

TEST_F(JointCastTest, reads_the_file_once_for_a_thousand_joints) {
  std::string text;
  for (int number = 0; number < 1000; ++number)
    text += (text.empty() ? "" : ",") + ("\"object" + std::to_string(number) + ".hear\":\"\"");
  put_file(kJointFile, "{\"wan\":{\"up\":{" + text + "}}}");
  GlogOpen("test", LOG_MODE_CONSOLE, 6);
  const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  ASSERT_GE(inotify_add_watch(watch, kJointFile, IN_OPEN | IN_CLOSE), 0);
  for (int cast = 1; cast <= 2; ++cast) {
    JointCast("wan", "up", nullptr);
    alignas(inotify_event) char events[4096];
    EXPECT_EQ(2 * static_cast<ssize_t>(sizeof(inotify_event)), read(watch, events, sizeof events))
        << "opened and closed";
  }
  close(watch);
}

TEST_F(JointCastTest, casts_inside_casts_each_call_their_targets) {
  ASSERT_EQ(1, JointCreate("wan", "up", "lan", "pass"));
  ASSERT_EQ(1, JointCreate("lan", "up", "dns", "pass"));
  ASSERT_EQ(1, JointCreate("dns", "up", "late", "hear"));
  EXPECT_EQ("", logged([] { JointCast("wan", "up", nullptr); }));
  EXPECT_EQ("lan.pass 2 wan,up\ndns.pass 2 lan,up\nlate.hear 2 dns,up\n", heard());
}

TEST_F(JointCastTest, joints_in_a_ring_end_after_32_casts_and_one_message) {
  ASSERT_EQ(1, JointCreate("lan", "up", "dns", "pass"));
  ASSERT_EQ(1, JointCreate("dns", "up", "lan", "pass"));
  ASSERT_EQ(1, JointCreate("lan", "up", "late", "hear"));
  const std::string log = logged([] { JointCast("lan", "up", nullptr); });
  EXPECT_EQ("error: casts of lan are nested too deep\n", log);
  const std::string calls = heard();
  EXPECT_EQ(32U, count(calls, ".pass "));
  EXPECT_EQ(16U, count(calls, "late.hear 2 lan,up\n"));  // the targets beside the ring
}

TEST_F(JointCastTest, a_ring_of_two_branches_makes_32_calls_for_each_of_its_outermost_targets) {
  ASSERT_EQ(1, JointCreate("lan", "up", "lan", "pass"));
  ASSERT_EQ(1, JointCreate("lan", "up", "dns", "pass"));
  ASSERT_EQ(1, JointCreate("dns", "up", "lan", "pass"));
  ASSERT_EQ(1, JointCreate("dns", "up", "dns", "pass"));
  const std::string log = logged([] { JointCast("lan", "up", nullptr); });
  EXPECT_EQ("error: casts of lan are nested too deep\n", log);
  EXPECT_EQ(2U * 32U, count(heard(), ".pass "));
}

TEST_F(JointCastTest, a_child_counts_the_casts_around_it_but_not_their_end) {
  ASSERT_EQ(1, JointCreate("lan", "up", "lan", "pass"));
  ASSERT_EQ(1, JointCreate("lan", "up", "late", "away"));
  ASSERT_EQ(1, JointCreate("daemon", "up", "dns", "hear"));
  const std::string log = logged([] { JointCast("lan", "up", nullptr); });
  EXPECT_EQ("error: casts of lan are nested too deep\nerror: casts of daemon are nested too deep\n",
            log);
  EXPECT_EQ(31U, count(heard(), "dns.hear "));  // from the deepest level there is no further one
}

TEST_F(JointCastTest, the_next_outermost_cast_starts_afresh) {
  ASSERT_EQ(1, JointCreate("lan", "up", "lan", "pass"));
  for (int round = 0; round < 2; ++round) {
    const std::string log = logged([] { JointCast("lan", "up", nullptr); });
    EXPECT_EQ("error: casts of lan are nested too deep\n", log);
    EXPECT_EQ(32U, count(heard(), "lan.pass "));
  }
}

TEST_F(JointCastTest, the_deepest_cast_fits_on_a_small_stack) {
  ASSERT_EQ(1, JointCreate("lan", "up", "lan", "pass"));
  JointCast("lan", "up", nullptr);  // loads the module, which takes a stack of its own
  run_on_small_stack(kStackKib, [this] {
    const std::string log = logged([] { JointCast("lan", "up", nullptr); });
    EXPECT_EQ("error: casts of lan are nested too deep\n", log);
  });
}

TEST_F(JointCastTest, lost_memory_calls_a_target_whole_or_not_at_all) {
  hear("up");
  talk_t* data = RenderCreate("a");
  JointCast("wan", "up", data);  // loads the module
  heard();
  int called = 0, nth = 1;
  for (bool fired = true; fired && nth < 200; ++nth) {
    const Ended child = run_child([&] {
      Fault fault(Call::kMalloc, {.nth = nth, .error = ENOMEM});
      JointCast("wan", "up", data);
      fault.disarm();
      return fault.fired() ? 0 : 1;
    });
    EXPECT_EQ(0, child.signal) << nth;
    EXPECT_TRUE(child.status == 0 || child.status == 1 || child.status == 255) << child.status;
    if (child.status == 255) {
      EXPECT_NE(std::string::npos, child.err.find("emerg: out of memory\n")) << child.err;
    }
    fired = child.status != 1;
    const std::string calls = heard();
    if (calls.empty()) continue;
    ++called;
    EXPECT_EQ(0U, calls.find("lan.hear 3 ")) << nth << calls;  // the list is the target's own
  }
  EXPECT_LT(nth, 200);
  EXPECT_GT(called, 0);
  TalkFree(data);
}

// By the contract of scripts (docs/adapters.md) the last parameter of a list stays behind.
TEST_F(JointCastTest, a_script_is_told_all_parameters_but_the_last) {
  put_file("/prj/net/note.ash",
           "#!/bin/sh\n"
           "echo \"$adp.$interface $paramter_count $paramter1,$paramter2\" >>/tmp/.var/heard\n",
           0755);
  ASSERT_EQ(1, create("net/note", "hear"));
  EXPECT_EQ("net/note.hear 3 wan,up\n", heard_with("{\"a\":\"1\"}"));
  JointCast("wan", "up", nullptr);
  EXPECT_EQ("net/note.hear 2 wan,\n", heard());
}

}  // namespace
