// The registry file as docs/registry.md describes it, and what a damaged one does to its readers:
// nothing.
#include <sys/stat.h>

#include <algorithm>

#include "adp/channel_fixture.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::exists;
using fairlead_test::Fault;
using fairlead_test::file_content;
using fairlead_test::put_file;
using fairlead_test::spelled;

constexpr char kRegistry[] = "/tmp/.var/dadp.cache";
constexpr char kExample[] =
    "{\"lan\":{\"port1\":\"/prj/net/port.adp\",\"port2\":\"/prj/net/port.adp\"},"
    "\"uplink\":\"/prj/radio/lte.ash\"}";

class RegistryFileTest : public fairlead_test::ChannelTest {
 protected:
  void SetUp() override {
    ChannelTest::SetUp();
    put_file("/prj/net/port.adp", "");
    put_file("/prj/radio/lte.ash", "");
  }

  // What the registry says about an object, through the lookup: "CODE FILE".
  static std::string bound(const std::string& object) {
    char file[256] = "untouched";
    const int code = AdpPath(nullptr, object.c_str(), file, sizeof file);
    return std::to_string(code) + " " + file;
  }

  // Every reader meets the file; none may crash, and the next binding makes a good one of it.
  static void expect_no_bindings(const std::string& what) {
    EXPECT_EQ("null", spelled(DynAdpList(nullptr))) << what;
    EXPECT_EQ("null", spelled(DynAdpList("lan"))) << what;
    EXPECT_EQ("6 ", bound("lan/port1")) << what;
    EXPECT_EQ(0, DynAdpDelete("lan/port1")) << what;
  }
};

TEST_F(RegistryFileTest, the_documented_example_is_what_is_written) {
  const mode_t former = umask(022);
  EXPECT_EQ(1, DynAdpCreate("lan/port1", "net/port"));
  umask(former);
  EXPECT_EQ(1, DynAdpCreate("lan/port2", "net/port"));
  EXPECT_EQ(1, DynAdpCreate("uplink", "radio/lte"));
  EXPECT_EQ(kExample, file_content(kRegistry));
  EXPECT_EQ(95U, file_content(kRegistry).size());
  struct stat status;
  ASSERT_EQ(0, stat(kRegistry, &status));
  EXPECT_EQ(0640U, status.st_mode & 0777);  // 0660 less the umask
}

TEST_F(RegistryFileTest, the_documented_example_is_what_is_read) {
  put_file(kRegistry, kExample);
  EXPECT_EQ("1 /prj/net/port.adp", bound("lan/port1"));
  EXPECT_EQ("5 /prj/radio/lte.ash", bound("uplink"));
  EXPECT_EQ("6 ", bound("lan"));
  EXPECT_EQ("6 ", bound("uplink/more"));
}

TEST_F(RegistryFileTest, cut_anywhere_it_holds_no_bindings_and_the_next_one_replaces_it) {
  const std::string whole = kExample;
  for (size_t length = 0; length < whole.size(); ++length) {
    put_file(kRegistry, whole.substr(0, length));
    expect_no_bindings("cut after " + std::to_string(length));
    EXPECT_EQ(1, DynAdpCreate("uplink", "radio/lte"));
    EXPECT_EQ("{\"uplink\":\"/prj/radio/lte.ash\"}", file_content(kRegistry));
  }
}

TEST_F(RegistryFileTest, one_byte_changed_never_harms_a_reader) {
  const std::string whole = kExample;
  for (size_t at = 0; at < whole.size(); ++at) {
    for (const char byte : {'\0', '"', '{', '}', '\\', ',', '\xff'}) {
      std::string changed = whole;
      changed[at] = byte;
      put_file(kRegistry, changed);
      spelled(DynAdpList(nullptr));
      bound("lan/port1");
      bound("uplink");
      DynAdpDelete("lan/port2");
    }
  }
  EXPECT_EQ(1, DynAdpCreate("uplink", "radio/lte"));
  EXPECT_EQ("5 /prj/radio/lte.ash", bound("uplink"));
}

TEST_F(RegistryFileTest, a_top_level_that_is_no_object_starts_afresh) {
  for (const char* text : {"[1]", "\"lan\"", "7", "null", "[{\"lan\":\"/x.adp\"}]", "lan"}) {
    put_file(kRegistry, text);
    expect_no_bindings(text);
    EXPECT_EQ(1, DynAdpCreate("uplink", "radio/lte"));
    EXPECT_EQ("{\"uplink\":\"/prj/radio/lte.ash\"}", file_content(kRegistry)) << text;
  }
}

TEST_F(RegistryFileTest, members_of_other_kinds_are_not_bound_and_give_way) {
  for (const char* value : {"7", "[]", "[\"/x.adp\"]", "true", "null", "{}"}) {
    put_file(kRegistry, std::string("{\"lan\":") + value + "}");
    EXPECT_EQ("6 ", bound("lan")) << value;
    EXPECT_EQ("6 ", bound("lan/port1")) << value;
    EXPECT_EQ(1, DynAdpCreate("lan/port1", "net/port")) << value;
    EXPECT_EQ("1 /prj/net/port.adp", bound("lan/port1")) << value;
  }
}

TEST_F(RegistryFileTest, of_namesakes_the_first_counts) {
  put_file(kRegistry, "{\"lan\":\"/prj/a/b.adp\",\"lan\":\"/prj/c/d.ash\"}");
  EXPECT_EQ("1 /prj/a/b.adp", bound("lan"));
  EXPECT_EQ(1, DynAdpDelete("lan"));
  EXPECT_EQ("5 /prj/c/d.ash", bound("lan"));
}

TEST_F(RegistryFileTest, a_path_of_twenty_segments_is_bound_and_later_ones_do_not_count) {
  std::string object = "1";
  for (int segment = 2; segment <= 20; ++segment) object += "/" + std::to_string(segment);
  EXPECT_EQ(1, DynAdpCreate((object + "/21").c_str(), "net/port"));
  EXPECT_EQ("1 /prj/net/port.adp", bound(object));
  EXPECT_EQ(1, DynAdpDelete(object.c_str()));
  EXPECT_EQ("6 ", bound(object));
}

TEST_F(RegistryFileTest, an_over_long_bound_file_is_cut_and_terminated) {
  put_file(kRegistry, "{\"lan\":\"/" + std::string(1000, 'x') + "\"}");
  EXPECT_EQ("1 /" + std::string(254, 'x'), bound("lan"));
  const std::string log = logged([] { EXPECT_EQ(nullptr, AdpFileOpen(nullptr, "lan")); });
  EXPECT_EQ("error: cannot parse the project identify and padp identify by path(/" +
                std::string(254, 'x') + ")\n",
            log);
}

TEST_F(RegistryFileTest, an_empty_bound_file_cannot_be_opened) {
  put_file(kRegistry, "{\"lan\":\"\"}");
  EXPECT_EQ("1 ", bound("lan"));
  const std::string log = logged([] { EXPECT_EQ(nullptr, AdpFileOpen(nullptr, "lan")); });
  EXPECT_EQ("error: cannot parse the project identify and padp identify by path()\n", log);
}

TEST_F(RegistryFileTest, a_registry_of_many_megabytes_is_read) {
  std::string text = "{";
  for (int number = 0; number < 100000; ++number)
    text += "\"object" + std::to_string(number) + "\":\"/prj/net/port.adp\",";
  put_file(kRegistry, text + "\"lan\":{\"port1\":\"/prj/radio/lte.ash\"}}");
  EXPECT_EQ("1 /prj/net/port.adp", bound("object99999"));
  EXPECT_EQ("5 /prj/radio/lte.ash", bound("lan/port1"));
}

TEST_F(RegistryFileTest, nesting_far_deeper_than_any_path_harms_nobody) {
  constexpr int kDepth = 100000;
  std::string text;
  for (int level = 0; level < kDepth; ++level) text += "{\"a\":";
  put_file(kRegistry, text + "\"x\"" + std::string(kDepth, '}'));
  EXPECT_EQ("6 ", bound("a/a/a"));
  EXPECT_EQ(1, DynAdpCreate("a", "net/port"));
  EXPECT_EQ("{\"a\":\"/prj/net/port.adp\"}", file_content(kRegistry));
}

TEST_F(RegistryFileTest, what_is_no_file_holds_no_bindings) {
  ASSERT_EQ(0, mkfifo(kRegistry, 0600));
  expect_no_bindings("fifo");
  fairlead_test::remove_tree(kRegistry);
  fairlead_test::make_directories(kRegistry);
  expect_no_bindings("folder");
  EXPECT_EQ(0, DynAdpCreate("uplink", "radio/lte"));
}

TEST_F(RegistryFileTest, one_that_can_not_be_read_is_not_taken_for_absent) {
  put_file(kRegistry, kExample);
  for (const Call call : {Call::kStat, Call::kRead})
    for (const int error : {EIO, EINTR, EAGAIN}) {
      Fault fault(call, {.error = error});
      EXPECT_EQ(0, DynAdpCreate("uplink", "net/port")) << error;
      EXPECT_EQ(kExample, file_content(kRegistry)) << error;
    }
}

TEST_F(RegistryFileTest, it_is_not_made_without_the_run_time_root) {
  fairlead_test::remove_tree("/tmp/.var");
  EXPECT_EQ(0, DynAdpCreate("uplink", "radio/lte"));
  EXPECT_FALSE(exists("/tmp/.var"));
}

}  // namespace
