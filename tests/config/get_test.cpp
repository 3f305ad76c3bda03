// Reading from the configuration store.
#include "config_support.h"
#include "support/faults.h"
#include "talk/owned_talk.h"

namespace {

using fairlead::OwnedTalk;
using fairlead_test::Call;
using fairlead_test::EachCall;
using fairlead_test::Fault;
using fairlead_test::put_file;

class ConfigGetTest : public fairlead_test::ConfigTest {
 protected:
  void SetUp() override {
    ConfigTest::SetUp();
    put_file("/etc/config/net.cfg",
             "{\"lan\":{\"ip\":\"10.0.0.1\",\"n\":7},\"list\":[1],\"name\":\"box\"}");
  }

  static std::string text(const char* path, char* buffer = nullptr, int size = 0) {
    char* result = ConfigGetS("net", nullptr, path, buffer, size);
    return result ? result : "<null>";
  }
};

TEST_F(ConfigGetTest, a_path_gives_the_value) {
  EXPECT_EQ("10.0.0.1", get("net", "lan/ip"));
  EXPECT_EQ("{\"ip\":\"10.0.0.1\",\"n\":7}", get("net", "/lan/"));
}

TEST_F(ConfigGetTest, a_path_of_any_length_is_read) {
  for (size_t length : std::initializer_list<size_t>{126, 127, 128, 129, 4000}) {
    const std::string name(length, 'n');
    put_file("/etc/config/long.cfg", "{\"" + name + "\":\"1\"}");
    EXPECT_EQ("1", get("long", name.c_str())) << length;
    EXPECT_EQ("<null>", get("long", (name + 'n').c_str())) << length;
  }
}

TEST_F(ConfigGetTest, both_paths_null_give_the_whole_document) {
  EXPECT_EQ("{\"lan\":{\"ip\":\"10.0.0.1\",\"n\":7},\"list\":[1],\"name\":\"box\"}",
            get("net", nullptr));
}

TEST_F(ConfigGetTest, a_text_without_segments_gives_null) {
  for (const char* path : {"", "/", "  "}) EXPECT_EQ("<null>", get("net", path));
}

TEST_F(ConfigGetTest, what_is_missing_gives_null) {
  for (const char* path : {"x", "lan/x", "name/x", "list/x", "lan/ip/x"})
    EXPECT_EQ("<null>", get("net", path)) << path;
  EXPECT_EQ("<null>", get("none", nullptr));
  EXPECT_EQ("<null>", get("none", "a"));
}

TEST_F(ConfigGetTest, null_name_is_refused) {
  errno = 0;
  EXPECT_EQ("<null>", get(nullptr, nullptr));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(ConfigGetTest, the_value_is_free_standing) {
  talk_t* value = ConfigGet("net", nullptr, "lan");
  ASSERT_NE(nullptr, value);
  EXPECT_EQ(nullptr, value->parent);
  TalkFree(value);
}

TEST_F(ConfigGetTest, text_of_an_object_is_json_and_of_a_string_itself) {
  EXPECT_EQ("{\"ip\":\"10.0.0.1\",\"n\":7}", text("lan"));
  EXPECT_EQ("box", text("name"));
}

TEST_F(ConfigGetTest, other_kinds_have_no_text) {
  EXPECT_EQ("<null>", text("lan/n"));
  EXPECT_EQ("<null>", text("list"));
}

TEST_F(ConfigGetTest, text_is_cut_to_the_callers_buffer) {
  char buffer[4];
  EXPECT_EQ("10.", text("lan/ip", buffer, sizeof buffer));
  EXPECT_EQ("", text("lan/ip", buffer, 1));
  EXPECT_EQ(buffer, ConfigGetS("net", nullptr, "name", buffer, 4));
}

TEST_F(ConfigGetTest, the_last_byte_of_the_callers_buffer_is_ended_behind_a_short_text_too) {
  char buffer[] = "xxxxxxxxx";
  EXPECT_EQ("box", text("name", buffer, 8));
  EXPECT_EQ('\0', buffer[7]);
  EXPECT_EQ('x', buffer[8]);
}

TEST_F(ConfigGetTest, without_a_buffer_the_static_one_serves) {
  char buffer[4];
  char* first = ConfigGetS("net", nullptr, "name", nullptr, 100);
  EXPECT_STREQ("box", first);
  EXPECT_EQ(first, ConfigGetS("net", nullptr, "lan/ip", buffer, 0));
  EXPECT_STREQ("10.0.0.1", first);
}

TEST_F(ConfigGetTest, the_static_buffer_holds_4095_characters) {
  put_file("/etc/config/net.cfg", "{\"a\":\"" + std::string(5000, 'x') + "\"}");
  EXPECT_EQ(std::string(4095, 'x'), text("a"));
}

// A lost path must not read the whole object instead.
TEST_F(ConfigGetTest, a_long_path_without_memory_gives_null) {
  const std::string path = "lan/ip" + std::string(200, '/');
  EXPECT_EQ("10.0.0.1", get("net", path.c_str()));
  const Fault fault(Call::kMalloc, {.error = ENOMEM});
  EXPECT_EQ(nullptr, ConfigGet("net", nullptr, path.c_str()));
  EXPECT_EQ(ENOMEM, errno);
}

TEST_F(ConfigGetTest, a_get_without_memory_is_whole_or_null) {
  int failures = 0;
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next(); failures += each.fired()) {
    const OwnedTalk value(each.run([] { return ConfigGet("net", nullptr, "lan/ip"); }));
    const char* text = value ? RenderString(value.get()) : nullptr;
    EXPECT_STREQ(each.fired() ? nullptr : "10.0.0.1", text) << each.nth();
  }
  EXPECT_GT(failures, 4);
}

}  // namespace
