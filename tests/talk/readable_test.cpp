// Documents that are read back as they are written, and those that are not.
#include "fairlead/config.h"
#include "fairlead/talk.h"
#include "support/device_test.h"
#include "talk_support.h"

namespace {

using fairlead_test::file_content;
using fairlead_test::OwnedTalk;

constexpr char kFile[] = "/etc/config/lan.cfg";

// By the doors that use the check: the store refuses, and leaves the file as it was.
class ReadableTest : public fairlead_test::DeviceTest {
 protected:
  static bool stored(talk_t* document) {
    fairlead_test::put_file(kFile, "{\"a\":\"1\"}");
    errno = 0;
    if (ConfigSet("lan", nullptr, nullptr, document) == 1) return true;
    EXPECT_EQ(EINVAL, errno);
    EXPECT_EQ("{\"a\":\"1\"}", file_content(kFile));
    return false;
  }

  static bool text_stored(const char* text) {
    const OwnedTalk document(VesselCreate());
    EXPECT_EQ(1, VesselSetS(document.get(), "name", text));
    return stored(document.get());
  }

  static bool number_stored(const char* text) {
    const OwnedTalk document(VesselCreate());
    EXPECT_EQ(1, VesselSetX(document.get(), "n", json_new_number(text)));
    const bool result = stored(document.get());
    EXPECT_TRUE(!result || OwnedTalk(FileVessel(kFile))) << text;
    return result;
  }
};

TEST_F(ReadableTest, texts_in_escaped_form_are_stored) {
  for (const char* text :
       {"", "plain", "a b", R"(\"quoted\")", R"(\\)", R"(\/\b\f\n\r\t)", R"(\u00e9)",
        R"(\ud83d\ude00)", R"(\\\")", "a\tb", "\xc3\xa9", "\x7f\xff", "{[,:]}"})
    EXPECT_TRUE(text_stored(text)) << text;
}

TEST_F(ReadableTest, texts_in_another_form_are_refused) {
  for (const char* text : {R"(")", R"(a"b)", R"(\)", R"(\\\)", R"(\x)", R"(\u12)", R"(\u12g4)",
                           R"(\\")", R"(x","admin":"yes)"})
    EXPECT_FALSE(text_stored(text)) << text;
}

TEST_F(ReadableTest, names_and_every_depth_are_looked_at) {
  const OwnedTalk bad_name(VesselCreate());
  ASSERT_EQ(1, VesselSetS(bad_name.get(), "a\"b", "text"));
  EXPECT_FALSE(stored(bad_name.get()));

  OwnedTalk nested(VesselCreate());
  ASSERT_EQ(1, VesselSetS(nested.get(), "deep", "a\"b"));
  for (int level = 0; level < 20000; ++level) {
    OwnedTalk outer(VesselCreate());
    ASSERT_EQ(1, VesselSetX(outer.get(), "in", nested.get()));
    (void)nested.release();
    nested = std::move(outer);
  }
  EXPECT_FALSE(stored(nested.get()));
}

TEST_F(ReadableTest, documents_that_were_read_are_stored_again) {
  for (const char* text : {"{}", R"({"a":"1","b":{"c":"\"x\""},"d":{}})",
                           R"({"a":[1,-2.5e+3,{"b":null}],"c":true,"d":false,"e":"\u0000"})"}) {
    const OwnedTalk document(StringVessel(text));
    ASSERT_TRUE(document) << text;
    EXPECT_TRUE(stored(document.get())) << text;
    EXPECT_EQ(text, file_content(kFile));
  }
}

TEST_F(ReadableTest, numbers_that_are_none_are_refused) {
  for (const char* text : {"1,\"x\":2", "one", "1}", "", "-", "1-2", "01", "-01", "+1", ".5", "1.",
                           "1.e5", "1e", "1e+", "1e5.5", "--1", "0x10", "1 ", " 1"})
    EXPECT_FALSE(number_stored(text)) << text;
}

TEST_F(ReadableTest, numbers_are_stored_as_they_are) {
  for (const char* text :
       {"0", "-0", "10", "-12", "0.50", "1.25", "1e5", "1E-05", "0e0", "-1.5e+10"})
    EXPECT_TRUE(number_stored(text)) << text;
}

TEST_F(ReadableTest, members_with_a_second_value_are_refused) {
  const OwnedTalk document(VesselCreate());
  ASSERT_EQ(1, VesselSetS(document.get(), "name", "text"));
  ASSERT_EQ(JSON_DONE, json_insert_child(VesselFind(document.get(), "name"), json_new_string("x")));
  EXPECT_FALSE(stored(document.get()));
}

}  // namespace
