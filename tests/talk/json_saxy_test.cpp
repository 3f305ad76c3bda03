// The event parser: what it tells, in which order, and how it is stopped.
#include <string>

#include "json_support.h"
#include "support/capture.h"

namespace {

using fairlead_test::capture;
using fairlead_test::times;

// Writes down every event, and ends the parse after `left` of them.
struct Diary {
  std::string text;
  int left = 1000000;

  int note(const std::string& event) {
    text += event;
    return --left > 0;
  }
};

Diary* diary(void* context) { return static_cast<Diary*>(context); }

constexpr json_saxy_t kEvents = {
    [](void* context) { return diary(context)->note("{"); },
    [](void* context) { return diary(context)->note("}"); },
    [](void* context) { return diary(context)->note("["); },
    [](void* context) { return diary(context)->note("]"); },
    [](void* context, const char* text, size_t length) {
      return diary(context)->note(std::string(text, length) + "=");
    },
    [](void* context, uint32_t kind, const char* text, size_t length) {
      return diary(context)->note(std::to_string(kind) + "(" + std::string(text, length) + ")");
    }};

class JsonSaxyTest : public fairlead_test::DeviceTest {
 protected:
  json_error parse(const std::string& text) {
    return json_saxy_parse(text.c_str(), &kEvents, &diary_);
  }

  Diary diary_;
};

TEST_F(JsonSaxyTest, saxy_parse_tells_what_it_reads_in_order) {
  EXPECT_EQ(JSON_DONE,
            parse(R"( {"a":[1,"x\"",{}],"b":{"c":true,"d":false,"e":null},"":-1.5e+3} )"));
  EXPECT_EQ(R"({a=[1(1)0(x\"){}]b={c=4(true)d=5(false)e=6(null)}=1(-1.5e+3)})", diary_.text);
}

TEST_F(JsonSaxyTest, saxy_parse_knows_what_is_around_a_closed_container) {
  EXPECT_EQ(JSON_DONE, parse(R"({"a":[[],{"b":[{}]},[1]],"c":2})"));
  EXPECT_EQ("{a=[[]{b=[{}]}[1(1)]]c=1(2)}", diary_.text);
}

TEST_F(JsonSaxyTest, saxy_parse_is_ended_by_any_function) {
  const char* text = R"({"a":[1],"b":{}})";
  const char* told[] = {"{", "{a=", "{a=[", "{a=[1(1)", "{a=[1(1)]", "{a=[1(1)]b=", "{a=[1(1)]b={"};
  for (int stop = 1; stop <= 7; ++stop) {
    diary_ = {"", stop};
    EXPECT_EQ(JSON_DONE, parse(text));
    EXPECT_EQ(told[stop - 1], diary_.text);
  }
}

TEST_F(JsonSaxyTest, saxy_parse_passes_over_missing_functions) {
  const json_saxy_t none{};
  EXPECT_EQ(JSON_DONE, json_saxy_parse(R"({"a":[1,{"b":"c"}]})", &none, nullptr));
}

TEST_F(JsonSaxyTest, saxy_parse_tells_faults_as_the_tree_parser_does) {
  for (const char* text :
       {"", " ", "[", "{", "{\"a\":", "{\"a\":1,}", "{\"a\":1,x", "{\"a\":[1,]}", "{} x", "{} \"",
        "{\"a\":01}", "{\"a\":1]", "{\"a\":[1}", "{\"a", "}", "{\"a\":nul"})
    EXPECT_EQ(fairlead_test::parse_result(text), parse(text)) << text;
}

TEST_F(JsonSaxyTest, saxy_parse_has_told_what_stands_before_the_fault) {
  EXPECT_EQ(JSON_SYNTAX, parse(R"({"a":1,"b":]})"));
  EXPECT_EQ("{a=1(1)b=", diary_.text);
}

TEST_F(JsonSaxyTest, saxy_parse_reports_a_misplaced_token) {
  EXPECT_EQ("JSON: state 3: defaulted at line 2\n", capture([&] { parse("{\n\"a\":}"); }).err);
  EXPECT_EQ("JSON: state 0: defaulted at line 2\n", capture([&] { parse("\n"); }).err);
}

TEST_F(JsonSaxyTest, saxy_parse_follows_any_depth) {
  const std::string text = "{\"a\":" + times(1000, "[{\"b\":") + "1" + times(1000, "}]") + "}";
  EXPECT_EQ(JSON_DONE, parse(text));
  EXPECT_EQ("{a=" + times(1000, "[{b=") + "1(1)" + times(1000, "}]") + "}", diary_.text);
}

TEST_F(JsonSaxyTest, saxy_parse_aborts_on_null) {
  EXPECT_ASSERTION(json_saxy_parse(nullptr, &kEvents, nullptr), "text != ((void *)0)");
  EXPECT_ASSERTION(json_saxy_parse("{}", nullptr, nullptr), "events != ((void *)0)");
}

}  // namespace
