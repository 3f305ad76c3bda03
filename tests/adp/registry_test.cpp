// Bindings made at run time, and the way from a path to its adapter.
#include <unistd.h>

#include "adp/adp_support.h"

namespace {

using fairlead_test::exists;
using fairlead_test::file_content;
using fairlead_test::put_file;
using fairlead_test::spelled;

constexpr char kRegistry[] = "/tmp/.var/dadp.cache";

class RegistryTest : public fairlead_test::AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    put_file("/prj/net/port.adp", "");
    put_file("/prj/led/red.ash", "");
  }

  // The code and file of an object path.
  static std::string looked_up(const char* text) {
    char file[256] = "unset";
    const int code = AdpPath(nullptr, text, file, sizeof file);
    return std::to_string(code) + " " + (code < 0 ? "" : file);
  }

  static std::string bound(const char* text) {
    char copy[256], buffer[256];
    slash_t path{};
    snprintf(copy, sizeof copy, "%s", text);
    SlashAnalysis(&path, copy);
    const char* file = DynAdpPath(&path, buffer, sizeof buffer);
    SlashClear(&path);
    return file ? file : "null";
  }
};

TEST_F(RegistryTest, a_binding_is_stored_as_nested_members) {
  EXPECT_EQ(1, DynAdpCreate("lan/port1", "net/port"));
  EXPECT_EQ("{\"lan\":{\"port1\":\"/prj/net/port.adp\"}}", file_content(kRegistry));
  EXPECT_EQ(1, DynAdpCreate("lan/port2", "led/red"));
  EXPECT_EQ("{\"lan\":{\"port1\":\"/prj/net/port.adp\",\"port2\":\"/prj/led/red.ash\"}}",
            file_content(kRegistry));
}

TEST_F(RegistryTest, a_binding_needs_an_existing_adapter) {
  for (const char* adapter : {"net/none", "", "/", "net"})
    EXPECT_EQ(0, DynAdpCreate("lan", adapter)) << adapter;
  EXPECT_EQ(0, DynAdpCreate("", "net/port"));
  EXPECT_EQ(0, DynAdpCreate(nullptr, "net/port"));
  EXPECT_EQ(0, DynAdpCreate("lan", nullptr));
  EXPECT_FALSE(exists(kRegistry));
}

TEST_F(RegistryTest, only_exact_paths_are_bound) {
  DynAdpCreate("a/b/c", "net/port");
  EXPECT_EQ("/prj/net/port.adp", bound("a/b/c"));
  EXPECT_EQ("null", bound("a/b"));
  EXPECT_EQ("null", bound("a/b/c/d"));
  EXPECT_EQ("6 ", looked_up("a/b"));
  EXPECT_EQ("6 ", looked_up("a/b/c/d"));
}

TEST_F(RegistryTest, a_binding_and_its_extension_replace_each_other) {
  DynAdpCreate("a/b/c", "net/port");
  EXPECT_EQ(1, DynAdpCreate("a/b", "net/port"));
  EXPECT_EQ("null", bound("a/b/c"));
  EXPECT_EQ(1, DynAdpCreate("a/b/c", "net/port"));
  EXPECT_EQ("null", bound("a/b"));
  EXPECT_EQ("/prj/net/port.adp", bound("a/b/c"));
}

TEST_F(RegistryTest, delete_removes_a_binding_or_a_branch) {
  DynAdpCreate("a/b", "net/port");
  DynAdpCreate("a/c", "net/port");
  EXPECT_EQ(0, DynAdpDelete("a/x"));
  EXPECT_EQ(0, DynAdpDelete("a/b/x"));
  EXPECT_EQ(1, DynAdpDelete("a/b"));
  EXPECT_EQ("{\"a\":{\"c\":\"/prj/net/port.adp\"}}", file_content(kRegistry));
  EXPECT_EQ(1, DynAdpDelete("a"));
  EXPECT_EQ("{}", file_content(kRegistry));
  EXPECT_EQ(0, DynAdpDelete(nullptr));
  EXPECT_EQ(0, DynAdpDelete(""));
}

TEST_F(RegistryTest, objects_left_empty_stay) {
  DynAdpCreate("a/b", "net/port");
  EXPECT_EQ(1, DynAdpDelete("a/b"));
  EXPECT_EQ("{\"a\":{}}", file_content(kRegistry));
}

TEST_F(RegistryTest, delete_without_a_registry_fails) {
  EXPECT_EQ(0, DynAdpDelete("a"));
  EXPECT_FALSE(exists(kRegistry));
}

TEST_F(RegistryTest, list_gives_all_or_one_member) {
  EXPECT_EQ(nullptr, DynAdpList(nullptr));
  DynAdpCreate("a/b", "net/port");
  DynAdpCreate("c", "net/port");
  EXPECT_EQ("{\"a\":{\"b\":\"/prj/net/port.adp\"},\"c\":\"/prj/net/port.adp\"}",
            spelled(DynAdpList(nullptr)));
  EXPECT_EQ("{\"b\":\"/prj/net/port.adp\"}", spelled(DynAdpList("a")));
  EXPECT_EQ("/prj/net/port.adp", spelled(DynAdpList("c")));
  EXPECT_EQ(nullptr, DynAdpList("a/b"));
}

TEST_F(RegistryTest, a_registry_that_cannot_be_read_counts_as_empty) {
  const std::string whole = "{\"a\":{\"b\":\"/prj/net/port.adp\"}}";
  for (size_t length = 0; length < whole.size(); ++length) {
    put_file(kRegistry, whole.substr(0, length));
    EXPECT_EQ("null", bound("a/b")) << length;
  }
  for (const char* text : {"[1]", "\"x\"", "\xff\xfe", "{\"a\":1}", "{\"a\":[]}"}) {
    put_file(kRegistry, text);
    EXPECT_EQ("null", bound("a")) << text;
  }
  put_file(kRegistry, "{\"a\":");
  EXPECT_EQ(1, DynAdpCreate("x", "net/port"));
  EXPECT_EQ("{\"x\":\"/prj/net/port.adp\"}", file_content(kRegistry));
}

TEST_F(RegistryTest, a_registered_path_is_cut_and_ended_in_a_small_buffer) {
  DynAdpCreate("a", "net/port");
  char text[] = "a", buffer[9] = "xxxxxxxx";
  slash_t path{};
  SlashAnalysis(&path, text);
  EXPECT_STREQ("/prj/net", DynAdpPath(&path, buffer, sizeof buffer));
  EXPECT_EQ(nullptr, DynAdpPath(nullptr, buffer, sizeof buffer));
}

TEST_F(RegistryTest, lookup_tells_the_kind_of_adapter) {
  EXPECT_EQ("3 /prj/net/port.adp", looked_up("net/port"));
  EXPECT_EQ("5 /prj/led/red.ash", looked_up("/led//red/"));
  EXPECT_EQ("6 ", looked_up("net/none"));
}

TEST_F(RegistryTest, lookup_needs_a_segment) {
  for (const char* text : {"", "/", "   "}) EXPECT_EQ("-1 ", looked_up(text));
  EXPECT_EQ(-1, AdpPath(nullptr, nullptr, nullptr, 0));
  slash_t empty{};
  EXPECT_EQ(-1, AdpPath(&empty, "net/port", nullptr, 0));
}

TEST_F(RegistryTest, a_registration_overrides_the_project) {
  put_file("/prj/alt/other.adp", "");
  DynAdpCreate("net/port", "alt/other");
  EXPECT_EQ("1 /prj/alt/other.adp", looked_up("net/port"));
  DynAdpCreate("net/port", "led/red");
  EXPECT_EQ("5 /prj/led/red.ash", looked_up("net/port"));
}

TEST_F(RegistryTest, the_last_letter_of_a_bound_path_alone_tells_a_script) {
  put_file(kRegistry, R"({"a":"/opt/led.sh","b":"/opt/graph","c":"/opt/led.ash.old","d":"h"})");
  EXPECT_EQ("5 /opt/led.sh", looked_up("a"));
  EXPECT_EQ("5 /opt/graph", looked_up("b"));
  EXPECT_EQ("1 /opt/led.ash.old", looked_up("c"));
  EXPECT_EQ("5 h", looked_up("d"));
}

TEST_F(RegistryTest, a_stale_registration_still_counts) {
  DynAdpCreate("x", "net/port");
  unlink("/prj/net/port.adp");
  EXPECT_EQ("1 /prj/net/port.adp", looked_up("x"));
}

}  // namespace
