// The listing for people.
#include <string>

#include "fairlead/talk/node.h"
#include "fairlead/talk/text.h"
#include "support/capture.h"
#include "support/device_test.h"
#include "support/small_stack.h"

namespace {

class PrintTest : public fairlead_test::DeviceTest {
 protected:
  static std::string printed(talk_t* talk) {
    return fairlead_test::capture([&] { TalkPrint(talk); }).out;
  }

  static std::string printed_text(const char* text) {
    talk_t* talk = StringTalk(text);
    const std::string out = printed(talk);
    TalkFree(talk);
    return out;
  }
};

TEST_F(PrintTest, a_document_prints_a_line_for_each_member) {
  EXPECT_EQ(
      "{\n"
      "    \"a\":\"1\",\n"
      "    \"b\":\n"
      "    {\n"
      "        \"c\":\"2\"\n"
      "    }\n"
      "}\n",
      printed_text("{\"a\":\"1\",\"b\":{\"c\":\"2\"}}"));
}

TEST_F(PrintTest, an_object_with_a_follower_ends_with_a_comma) {
  EXPECT_EQ(
      "{\n"
      "    \"b\":\n"
      "    {\n"
      "    },\n"
      "    \"a\":\"1\"\n"
      "}\n",
      printed_text("{\"b\":{},\"a\":\"1\"}"));
}

TEST_F(PrintTest, a_string_prints_itself) { EXPECT_EQ("just so\n", printed_text("just so")); }

TEST_F(PrintTest, other_kinds_print_nothing) {
  EXPECT_EQ("{\n    \"s\":\"x\"\n}\n",
            printed_text("{\"n\":1,\"l\":[\"a\"],\"t\":true,\"s\":\"x\"}"));
}

TEST_F(PrintTest, a_member_prints_as_it_stands_in_its_object) {
  vessel_t* vessel = StringVessel("{\"a\":\"1\",\"b\":{\"c\":\"2\"},\"d\":\"3\"}");
  EXPECT_EQ("\"a\":\"1\",\n", printed(VesselFind(vessel, "a")));
  EXPECT_EQ("\"b\":\n{\n    \"c\":\"2\"\n},\n", printed(VesselFind(vessel, "b")));
  EXPECT_EQ("{\n    \"c\":\"2\"\n},\n", printed(VesselGetX(vessel, "b")));
  TalkFree(vessel);
}

TEST_F(PrintTest, a_line_is_cut_at_its_buffer) {
  talk_t* render = RenderCreate(std::string(5000, 'x').c_str());
  EXPECT_EQ(std::string(4095, 'x'), printed(render));
  TalkFree(render);
}

TEST_F(PrintTest, the_result_is_that_of_the_last_print) {
  talk_t* render = RenderCreate("12345");
  int result = 0;
  fairlead_test::capture([&] { result = TalkPrint(render); });
  EXPECT_EQ(6, result);
  TalkFree(render);
}

TEST_F(PrintTest, depth_costs_no_stack) {
  constexpr int kDepth = 2000;  // its indent alone is 16 MB
  vessel_t* top = VesselCreate();
  vessel_t* at = top;
  for (int level = 0; level < kDepth; ++level) {
    vessel_t* inner = VesselCreate();
    VesselSetX(at, "a", inner);
    at = inner;
  }
  size_t length = 0;
  fairlead_test::run_on_small_stack(64, [&] { length = printed(top).size(); });
  EXPECT_GT(length, size_t{kDepth} * kDepth * 4);
  TalkFree(top);
}

}  // namespace
