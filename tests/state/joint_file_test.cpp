// The file of joints as docs/events.md describes it, and what a damaged one does to its readers:
// nothing.
#include <sys/stat.h>

#include <algorithm>

#include "joint_support.h"
#include "support/small_stack.h"

namespace {

using namespace fairlead_test;

constexpr char kExample[] =
    R"({"net/wan":{"up":{"dns.restart":"","net/lan.refresh":""},"down":{"dns.stop":""}}})";
constexpr char kNewJoint[] = R"({"wan":{"up":{"lan.refresh":""}}})";

class JointFileTest : public JointTest {
 protected:
  // Every reader meets the file; none may crash or call anything.
  void expect_no_joints(const std::string& what) {
    EXPECT_EQ(nullptr, JointList(nullptr)) << what;
    EXPECT_EQ(nullptr, JointList("net/wan")) << what;
    EXPECT_EQ(0, JointDelete("net/wan", "up", "dns", "restart")) << what;
    EXPECT_EQ(std::string::npos, cast("net/wan", nullptr).find("joint for")) << what;
  }

  // What a cast logs: its targets are pure configuration and no call of them comes to anything.
  std::string cast(const char* object, const char* event) {
    const Captured captured = capture([&] { JointCast(object, event, nullptr); });
    return captured.out + captured.err;
  }
};

TEST_F(JointFileTest, the_documented_example_is_what_is_written) {
  const mode_t former = umask(022);
  EXPECT_EQ(1, JointCreate("net/wan", "up", "dns", "restart"));
  umask(former);
  EXPECT_EQ(1, JointCreate("net/wan", "up", "net/lan", "refresh"));
  EXPECT_EQ(1, JointCreate("net/wan", "down", "dns", "stop"));
  EXPECT_EQ(kExample, file());
  EXPECT_EQ(81U, file().size());
  struct stat status;
  ASSERT_EQ(0, stat(kJointFile, &status));
  EXPECT_EQ(0640U, status.st_mode & 0777);  // 0660 less the umask
}

TEST_F(JointFileTest, cut_anywhere_it_holds_no_joints_and_the_next_one_replaces_it) {
  const std::string whole = kExample;
  for (size_t length = 0; length < whole.size(); ++length) {
    put_file(kJointFile, whole.substr(0, length));
    expect_no_joints("cut after " + std::to_string(length));
    EXPECT_EQ(1, create("lan", "refresh")) << length;
    EXPECT_EQ(kNewJoint, file());
  }
}

TEST_F(JointFileTest, one_byte_changed_never_harms_a_reader) {
  const std::string whole = kExample;
  for (size_t at = 0; at < whole.size(); ++at) {
    for (const char byte : {'\0', '"', '{', '}', '\\', ',', '.', '\xff'}) {
      std::string changed = whole;
      changed[at] = byte;
      put_file(kJointFile, changed);
      spelled(JointList(nullptr));
      spelled(JointList("net/wan"));
      cast("net/wan", nullptr);
      JointDelete("net/wan", "up", "dns", "restart");
    }
  }
  JointCreate("wan", "up", "lan", "refresh");
  EXPECT_NE(std::string::npos, listed("wan").find(R"("lan.refresh":"")"));
}

TEST_F(JointFileTest, a_top_level_that_is_no_object_starts_afresh) {
  for (const char* text : {"[1]", "\"wan\"", "7", "null", "[{\"wan\":{}}]", "wan"}) {
    put_file(kJointFile, text);
    expect_no_joints(text);
    EXPECT_EQ(1, create("lan", "refresh"));
    EXPECT_EQ(kNewJoint, file()) << text;
  }
}

TEST_F(JointFileTest, what_is_no_object_on_the_way_holds_no_joints_and_gives_way) {
  for (const char* pattern : {R"({"wan":%})", R"({"wan":{"up":%}})"}) {
    for (const char* value :
         {"7", "[]", "[{\"lan.refresh\":\"\"}]", "true", "null", "\"\"", "\"x\""}) {
      std::string text = pattern;
      text.replace(text.find('%'), 1, value);
      put_file(kJointFile, text);
      EXPECT_EQ("", cast("wan", nullptr)) << text;
      EXPECT_EQ(0, JointDelete("wan", "up", "lan", "refresh")) << text;
      EXPECT_EQ(1, create("lan", "refresh")) << text;
      EXPECT_EQ(kNewJoint, file()) << text;
    }
  }
}

TEST_F(JointFileTest, a_target_counts_whatever_its_value_and_create_puts_that_right) {
  for (const char* value : {"7", "[]", "{}", "{\"deep\":\"er\"}", "true", "null", "\"x\""}) {
    put_file(kJointFile, std::string(R"({"wan":{"up":{"lan.refresh":)") + value + "}}}");
    EXPECT_EQ(0U, cast("wan", "up").find("debug: joint for lan.refresh[wan,up]\n")) << value;
    EXPECT_EQ(1, create("lan", "refresh")) << value;
    EXPECT_EQ(kNewJoint, file()) << value;
    EXPECT_EQ(0, create("lan", "refresh"));
  }
}

TEST_F(JointFileTest, members_of_other_kinds_stay_where_they_are) {
  put_file(kJointFile, R"({"n":7,"wan":{"list":[1,{"a":null}],"up":{}}})");
  EXPECT_EQ(1, create("lan", "refresh"));
  EXPECT_EQ(R"({"n":7,"wan":{"list":[1,{"a":null}],"up":{"lan.refresh":""}}})", file());
}

TEST_F(JointFileTest, of_objects_of_one_name_the_first_counts_and_of_events_every_one) {
  put_file(kJointFile, R"({"wan":{"up":{"a.a":""},"up":{"b.b":""}},"wan":{"up":{"c.c":""}}})");
  const std::string log = cast("wan", "up");
  EXPECT_NE(std::string::npos, log.find("joint for a.a[wan,up]"));
  EXPECT_NE(std::string::npos, log.find("joint for b.b[wan,up]"));
  EXPECT_EQ(std::string::npos, log.find("joint for c.c[wan,up]"));
  EXPECT_EQ(0, JointDelete("wan", "up", "b", "b"));
}

TEST_F(JointFileTest, a_target_that_is_no_identifier_of_an_interface_is_not_called) {
  for (const char* target : {"", "lan", "lan.", ".refresh", "/.refresh", "lan:mtu.refresh", "lan=x",
                             "lan|x.refresh", " ", "lan.[1,2]"}) {
    put_file(kJointFile, std::string(R"({"wan":{"up":{")") + target + "\":\"\"}}}");
    EXPECT_EQ("", cast("wan", "up")) << target;
  }
}

TEST_F(JointFileTest, a_file_of_many_megabytes_is_read) {
  std::string text = R"({"wan":{"up":{)";
  for (int number = 0; number < 100000; ++number)
    text += "\"object" + std::to_string(number) + ".refresh\":\"\",";
  put_file(kJointFile, text + R"("lan.refresh":""},"down":{"dns.stop":""}}})");
  EXPECT_EQ(0, create("lan", "refresh"));
  EXPECT_EQ(1, JointDelete("wan", "up", "object99999", "refresh"));
  EXPECT_EQ(0U, cast("wan", "down").find("debug: joint for dns.stop[wan,down]\n"));
}

TEST_F(JointFileTest, nesting_far_deeper_than_three_levels_harms_nobody) {
  constexpr int kDepth = 100000;
  std::string text;
  for (int level = 0; level < kDepth; ++level) text += "{\"wan\":";
  put_file(kJointFile, text + "\"\"" + std::string(kDepth, '}'));
  run_on_small_stack(128, [&] {
    TalkFree(JointList("wan"));
    cast("wan", nullptr);
    EXPECT_EQ(0, JointDelete("wan", "up", "lan", "refresh"));
    EXPECT_EQ(1, create("lan", "refresh"));
  });
}

TEST_F(JointFileTest, what_is_no_file_holds_no_joints) {
  ASSERT_EQ(0, mkfifo(kJointFile, 0600));
  expect_no_joints("fifo");
  remove_tree(kJointFile);
  make_directories(kJointFile);
  expect_no_joints("folder");
  EXPECT_EQ(0, create("lan", "refresh"));
}

}  // namespace
