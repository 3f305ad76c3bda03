// Documents as text: what is accepted, what it becomes, and how it reads back.
#include "fairlead/talk/text.h"

#include <cerrno>
#include <cstdlib>

#include "fairlead/talk/node.h"
#include "support/device_test.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::EachCall;

class TextTest : public fairlead_test::DeviceTest {
 protected:
  static std::string owned(char* text) {
    const std::string result = text ? text : "<null>";
    free(text);
    return result;
  }

  // The document as text, which goes with it.
  static std::string spelled(talk_t* talk) {
    const std::string result = talk ? owned(TalkString(talk)) : "<null>";
    TalkFree(talk);
    return result;
  }
};

TEST_F(TextTest, string_vessel_reads_an_object_among_white_space) {
  EXPECT_EQ("{\"a\":\"b\"}", spelled(StringVessel("  {\"a\":\"b\"}  ")));
  EXPECT_EQ("{\"a\":{}}", spelled(StringVessel("\t\r\n{ \"a\" : { } }\n")));
}

TEST_F(TextTest, string_vessel_refuses_everything_else) {
  for (const char* text :
       {"", " \t\r\n", "[1]", "\"a\"", "1", "{", "{\"a\":", "{\"a\":1} x", "{\"a\":1,}"}) {
    errno = 0;
    EXPECT_EQ(nullptr, StringVessel(text)) << text;
    EXPECT_EQ(EINVAL, errno) << text;
  }
  errno = 0;
  EXPECT_EQ(nullptr, StringVessel(nullptr));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(TextTest, string_talk_keeps_any_other_text_as_a_string) {
  EXPECT_EQ("hello world", spelled(StringTalk("hello world")));
  EXPECT_EQ("\"x\"", spelled(StringTalk(" \"x\"")));
  EXPECT_EQ("[1,2] \n", spelled(StringTalk("\r\n[1,2] \n")));
}

TEST_F(TextTest, string_talk_reads_text_that_begins_with_a_brace_as_an_object) {
  talk_t* talk = StringTalk(" {\"a\":\"1\"} ");
  EXPECT_EQ(1U, VesselCheck(talk));
  TalkFree(talk);
  errno = 0;
  EXPECT_EQ(nullptr, StringTalk("{broken"));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(TextTest, string_talk_refuses_nothing) {
  for (const char* text : {static_cast<const char*>(nullptr), "", " \t\r\n"}) {
    errno = 0;
    EXPECT_EQ(nullptr, StringTalk(text));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(TextTest, vessel_string_is_compact) {
  vessel_t* vessel = StringVessel("{ \"a\" : \"1\", \"b\" : { \"c\" : \"2\" } }");
  EXPECT_EQ("{\"a\":\"1\",\"b\":{\"c\":\"2\"}}", owned(VesselString(vessel)));
  TalkFree(vessel);
}

TEST_F(TextTest, vessel_string_refuses_what_is_no_object_and_members_without_value) {
  talk_t* render = RenderCreate("x");
  vessel_t* vessel = StringVessel("{\"a\":\"1\"}");
  VesselClearX(vessel, "a");
  for (talk_t* talk : {static_cast<talk_t*>(nullptr), render, vessel}) {
    errno = 0;
    EXPECT_EQ(nullptr, VesselString(talk));
    EXPECT_EQ(EINVAL, errno);
  }
  TalkFree(render);
  TalkFree(vessel);
}

TEST_F(TextTest, talk_string_of_a_member_is_its_name) {
  vessel_t* vessel = StringVessel("{\"name\":\"value\"}");
  EXPECT_EQ("name", owned(TalkString(VesselFind(vessel, "name"))));
  TalkFree(vessel);
}

TEST_F(TextTest, talk_string_refuses_other_kinds) {
  for (uint32_t kind : {JSON_NUMBER, JSON_ARRAY, JSON_TRUE, JSON_FALSE, JSON_NULL}) {
    json_t* node = json_new_value(kind);
    errno = 0;
    EXPECT_EQ(nullptr, TalkString(node)) << kind;
    EXPECT_EQ(EINVAL, errno) << kind;
    json_free_value(&node);
  }
  EXPECT_EQ(nullptr, TalkString(nullptr));
}

TEST_F(TextTest, a_lack_of_memory_gives_null_and_loses_nothing) {
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    const std::string text = each.run([] {
      talk_t* talk = StringTalk("{\"a\":{\"b\":\"c\"}}");
      char* back = talk ? TalkString(talk) : nullptr;
      TalkFree(talk);
      const std::string text_or_null = back ? back : "null";
      free(back);
      return text_or_null;
    });
    // Trimming the result to its size may fail without a loss.
    EXPECT_TRUE(text == "{\"a\":{\"b\":\"c\"}}" || (each.fired() && text == "null"))
        << each.nth() << text;
  }
}

}  // namespace
