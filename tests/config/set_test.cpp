// Writing and deleting in the configuration store.
#include <sys/stat.h>
#include <unistd.h>

#include "config_support.h"
#include "support/faults.h"
#include "support/killed_at.h"

namespace {

using fairlead_test::Call;
using fairlead_test::EachCall;
using fairlead_test::exists;
using fairlead_test::Fault;
using fairlead_test::file_content;
using fairlead_test::put_file;

constexpr char kNet[] = "/etc/config/net.cfg";
constexpr char kMarker[] = "/etc/config/version";

class ConfigSetTest : public fairlead_test::ConfigTest {};

TEST_F(ConfigSetTest, a_path_makes_file_objects_and_marker) {
  EXPECT_EQ(1, set("net", "lan/ip", "10.0.0.1"));
  EXPECT_EQ("{\"lan\":{\"ip\":\"10.0.0.1\"}}", file_content(kNet));
  EXPECT_EQ("modify", file_content(kMarker));
}

TEST_F(ConfigSetTest, an_existing_marker_stays_as_it_is) {
  put_file(kMarker, "mine", 0600);
  struct stat before, after;
  stat(kMarker, &before);
  EXPECT_EQ(1, set("net", "a", "1"));
  stat(kMarker, &after);
  EXPECT_EQ("mine", file_content(kMarker));
  EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST_F(ConfigSetTest, a_failed_set_leaves_no_marker) {
  EXPECT_EQ(0, set("net", nullptr, "no object"));
  EXPECT_FALSE(exists(kMarker));
}

TEST_F(ConfigSetTest, the_marker_has_mode_0644) {
  EXPECT_EQ(1, set("net", "a", "1"));
  struct stat status;
  ASSERT_EQ(0, stat(kMarker, &status));
  EXPECT_EQ(0644U, status.st_mode & 0777);
}

TEST_F(ConfigSetTest, the_value_stays_the_callers) {
  talk_t* value = StringTalk("{\"x\":\"1\"}");
  EXPECT_EQ(1, ConfigSet("net", nullptr, "a", value));
  EXPECT_EQ(nullptr, value->parent);
  TalkFree(value);
  EXPECT_EQ("{\"a\":{\"x\":\"1\"}}", file_content(kNet));
}

TEST_F(ConfigSetTest, members_keep_their_place_and_new_ones_go_last) {
  put_file(kNet, "{\"a\":\"1\",\"b\":\"2\"}");
  EXPECT_EQ(1, set("net", "a", "3"));
  EXPECT_EQ(1, set("net", "c", "4"));
  EXPECT_EQ("{\"a\":\"3\",\"b\":\"2\",\"c\":\"4\"}", file_content(kNet));
}

TEST_F(ConfigSetTest, a_path_below_a_string_replaces_it_by_an_object) {
  put_file(kNet, "{\"a\":\"1\"}");
  EXPECT_EQ(1, set("net", "a/b/c", "2"));
  EXPECT_EQ("{\"a\":{\"b\":{\"c\":\"2\"}}}", file_content(kNet));
}

TEST_F(ConfigSetTest, the_first_namesake_is_meant) {
  put_file(kNet, "{\"a\":\"1\",\"a\":\"2\"}");
  EXPECT_EQ(1, set("net", "a", "3"));
  EXPECT_EQ("{\"a\":\"3\",\"a\":\"2\"}", file_content(kNet));
}

TEST_F(ConfigSetTest, a_path_record_wins_over_the_text) {
  char text[] = "rec/ord";
  slash_t path;
  SlashAnalysis(&path, text);
  talk_t* value = StringTalk("1");
  EXPECT_EQ(1, ConfigSet("net", &path, "text", value));
  EXPECT_EQ("{\"rec\":{\"ord\":\"1\"}}", file_content(kNet));
  TalkFree(value);
  SlashClear(&path);
}

TEST_F(ConfigSetTest, a_path_record_without_segments_means_the_whole_file) {
  slash_t path = {};
  talk_t* value = StringTalk("{\"a\":\"1\"}");
  EXPECT_EQ(1, ConfigSet("net", &path, nullptr, value));
  EXPECT_EQ("{\"a\":\"1\"}", file_content(kNet));
  TalkFree(value);
}

TEST_F(ConfigSetTest, a_path_text_without_segments_fails_before_any_file_is_touched) {
  for (const char* path : {"", "/", " // ", "  "}) EXPECT_EQ(0, set("p/net", path, "1")) << path;
  EXPECT_FALSE(exists("/etc/config/p"));
}

TEST_F(ConfigSetTest, null_name_is_refused) {
  errno = 0;
  EXPECT_EQ(0, set(nullptr, "a", "1"));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(ConfigSetTest, a_whole_file_must_be_an_object) {
  EXPECT_EQ(0, set("net", nullptr, "string"));
  EXPECT_FALSE(exists(kNet));
  EXPECT_EQ(1, set("net", nullptr, "{\"a\":\"1\"}"));
  EXPECT_EQ("{\"a\":\"1\"}", file_content(kNet));
}

TEST_F(ConfigSetTest, a_damaged_file_is_replaced) {
  for (const char* damaged : {"", "{\"a\":", "garbage", "{\"a\":1} x", "\xff"}) {
    put_file(kNet, damaged);
    EXPECT_EQ(1, set("net", "b", "1")) << damaged;
    EXPECT_EQ("{\"b\":\"1\"}", file_content(kNet)) << damaged;
  }
}

TEST_F(ConfigSetTest, json_that_is_no_object_is_left_alone) {
  for (const char* text : {"[1,2]", "\"x\"", "7", "true", " null "}) {
    put_file(kNet, text);
    EXPECT_EQ(0, set("net", "b", "1")) << text;
    EXPECT_EQ(text, file_content(kNet));
  }
}

TEST_F(ConfigSetTest, deleting_a_member_frees_all_below_it) {
  put_file(kNet, "{\"a\":{\"b\":\"1\"},\"c\":\"2\"}");
  EXPECT_EQ(1, ConfigSet("net", nullptr, "a", nullptr));
  EXPECT_EQ("{\"c\":\"2\"}", file_content(kNet));
}

TEST_F(ConfigSetTest, deleting_what_is_missing_leaves_the_file_byte_for_byte) {
  constexpr char kText[] = " {\"a\" : {\"b\":\"1\"} } ";
  put_file(kNet, kText);
  for (const char* path : {"x", "a/x", "a/b/x", "x/y"})
    EXPECT_EQ(0, ConfigSet("net", nullptr, path, nullptr)) << path;
  EXPECT_EQ(kText, file_content(kNet));
  EXPECT_FALSE(exists(kMarker));
}

TEST_F(ConfigSetTest, deleting_the_last_file_takes_its_folder_but_never_the_root) {
  EXPECT_EQ(1, set("p/x", "a", "1"));
  EXPECT_EQ(1, set("p/y", "a", "1"));
  EXPECT_EQ(1, ConfigSet("p/x", nullptr, nullptr, nullptr));
  EXPECT_TRUE(exists("/etc/config/p"));
  put_file("/etc/config/p/.y.cfg.saving", "left by a kill");
  EXPECT_EQ(1, ConfigSet("p/y", nullptr, nullptr, nullptr));
  EXPECT_FALSE(exists("/etc/config/p"));
  EXPECT_EQ(1, set("net", "a", "1"));
  unlink(kMarker);
  Fault fault(Call::kRmdir, {.nth = 0});  // where the tests run, it would fail anyhow
  EXPECT_EQ(1, ConfigSet("net", nullptr, nullptr, nullptr));
  EXPECT_EQ(0, fault.calls());
}

TEST_F(ConfigSetTest, deleting_a_missing_file_fails) {
  errno = 0;
  EXPECT_EQ(0, ConfigSet("net", nullptr, nullptr, nullptr));
  EXPECT_EQ(ENOENT, errno);
}

TEST_F(ConfigSetTest, an_empty_folder_goes_with_a_deletion_that_finds_no_file) {
  fairlead_test::make_directories("/etc/config/p");
  errno = 0;
  EXPECT_EQ(0, ConfigSet("p/x", nullptr, nullptr, nullptr));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_FALSE(exists("/etc/config/p"));
}

TEST_F(ConfigSetTest, a_file_that_can_not_be_read_is_not_taken_for_absent) {
  ASSERT_EQ(1, set("net", "a", "1"));
  const std::string before = file_content(kNet);
  for (const Call call : {Call::kOpen, Call::kStat, Call::kRead})
    for (const int error : {EIO, EINTR, EACCES, EAGAIN, ESTALE}) {
      Fault fault(call, {.error = error});
      EXPECT_EQ(0, set("net", "b", "2")) << error;
      EXPECT_EQ(before, file_content(kNet)) << error;
    }
}

TEST_F(ConfigSetTest, folders_are_made_with_mode_0770) {
  const mode_t former = umask(0);
  EXPECT_EQ(1, set("p/x", "a", "1"));
  umask(former);
  struct stat status;
  ASSERT_EQ(0, stat("/etc/config/p", &status));
  EXPECT_EQ(0770U, status.st_mode & 0777);
}

TEST_F(ConfigSetTest, missing_parents_are_made_too) {
  EXPECT_EQ(1, set("one/two/three/x", "a", "1"));
  EXPECT_EQ("{\"a\":\"1\"}", file_content("/etc/config/one/two/three/x.cfg"));
}

TEST_F(ConfigSetTest, a_name_never_becomes_a_command) {
  for (const char* name : {"$(touch /tmp/.var/hit)/b/x", "a b;touch /tmp/.var/hit/c/x",
                           "`touch /tmp/.var/hit`/b/x", "q'\"/b/x", "new\nline/b/x", "%s%n/b/x"}) {
    EXPECT_EQ(1, set(name, "a", "1")) << name;
    EXPECT_EQ("{\"a\":\"1\"}", file_content(std::string("/etc/config/") + name + ".cfg"));
  }
  EXPECT_FALSE(exists("/tmp/.var/hit"));
}

TEST_F(ConfigSetTest, a_folder_that_cannot_be_made_fails_the_set) {
  put_file("/etc/config/p", "a file");
  EXPECT_EQ(0, set("p/x", "a", "1"));
  EXPECT_EQ(0, set("p/q r/x", "a", "1"));
}

TEST_F(ConfigSetTest, an_over_long_name_is_cut_with_its_path) {
  const std::string name(300, 'n');
  EXPECT_EQ(1, set(name.c_str(), "a", "1"));
  EXPECT_EQ("{\"a\":\"1\"}", file_content("/etc/config/" + std::string(255 - 12, 'n')));
}

TEST_F(ConfigSetTest, text_values_are_objects_or_strings) {
  EXPECT_EQ(1, ConfigSetS("net", nullptr, "a", " {\"x\":\"1\"}"));
  EXPECT_EQ(1, ConfigSetS("net", nullptr, "b", "[1]"));
  EXPECT_EQ("{\"a\":{\"x\":\"1\"},\"b\":\"[1]\"}", file_content(kNet));
}

TEST_F(ConfigSetTest, text_that_gives_no_value_deletes) {
  put_file(kNet, "{\"a\":{\"b\":\"1\",\"c\":\"2\"}}");
  EXPECT_EQ(1, ConfigSetS("net", nullptr, "a/b", "{broken"));
  EXPECT_EQ("{\"a\":{\"c\":\"2\"}}", file_content(kNet));
  EXPECT_EQ(1, ConfigSetS("net", nullptr, "a/c", nullptr));
  EXPECT_EQ("{\"a\":{}}", file_content(kNet));
}

TEST_F(ConfigSetTest, a_failed_write_leaves_the_old_content) {
  put_file(kNet, "{\"a\":\"1\"}");
  Fault fault(Call::kWrite, {.error = ENOSPC});
  errno = 0;
  EXPECT_EQ(0, set("net", "a", "2"));
  EXPECT_EQ(ENOSPC, errno);
  EXPECT_EQ("{\"a\":\"1\"}", file_content(kNet));
}

TEST_F(ConfigSetTest, killed_at_any_system_call_it_leaves_old_or_new) {
  for (int stop = 1;; ++stop) {
    put_file(kNet, "{\"a\":\"1\"}");
    const bool killed = fairlead_test::killed_at(stop, [] { set("net", "b", "2"); });
    const std::string left = file_content(kNet);
    EXPECT_TRUE(left == "{\"a\":\"1\"}" || left == "{\"a\":\"1\",\"b\":\"2\"}") << stop << left;
    if (!killed) break;
  }
}

TEST_F(ConfigSetTest, a_set_without_memory_changes_nothing) {
  for (const char* before : {"{\"a\":\"1\"}", "[1,2]", "{broken"}) {
    int failures = 0;
    for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next(); failures += each.fired()) {
      put_file(kNet, before);
      talk_t* value = StringTalk("{\"x\":\"2\"}");
      const int result = each.run([&] { return ConfigSet("net", nullptr, "a/b", value); });
      TalkFree(value);
      if (result == 1) {
        EXPECT_EQ("{\"a\":{\"b\":{\"x\":\"2\"}}}", file_content(kNet)) << each.nth();
      } else {
        EXPECT_EQ(before, file_content(kNet)) << each.nth();
      }
    }
    EXPECT_GT(failures, 4);
  }
}

TEST_F(ConfigSetTest, a_value_without_a_text_form_is_refused) {
  put_file(kNet, "{\"a\":\"1\"}");
  talk_t* number = json_new_number("7");
  EXPECT_EQ(0, ConfigSet("net", nullptr, "a", number));
  EXPECT_EQ(0, ConfigSet("net", nullptr, nullptr, number));
  TalkFree(number);
  EXPECT_EQ("{\"a\":\"1\"}", file_content(kNet));
}

TEST_F(ConfigSetTest, members_without_a_text_form_are_left_out_below_a_path_and_kept_in_a_whole) {
  talk_t* value = StringTalk("{\"a\":\"1\",\"n\":7,\"o\":{\"l\":[1]}}");
  EXPECT_EQ(1, ConfigSet("net", nullptr, "p", value));
  EXPECT_EQ("{\"p\":{\"a\":\"1\",\"o\":{}}}", file_content(kNet));
  EXPECT_EQ(1, ConfigSet("net", nullptr, nullptr, value));
  EXPECT_EQ("{\"a\":\"1\",\"n\":7,\"o\":{\"l\":[1]}}", file_content(kNet));
  TalkFree(value);
}

TEST_F(ConfigSetTest, a_file_in_the_way_of_a_folder_fails_the_set) {
  put_file("/etc/config/p q", "a file");
  ASSERT_EQ(0, symlink("nowhere", "/etc/config/r s"));
  EXPECT_EQ(0, set("p q/x", "a", "1"));
  EXPECT_EQ(0, set("r s/x", "a", "1"));
  EXPECT_EQ("a file", file_content("/etc/config/p q"));
}

}  // namespace
