// Compact text made readable, and readable text made compact.
#include <string>

#include "json_support.h"

namespace {

using fairlead_test::take;

class JsonFormatTest : public fairlead_test::DeviceTest {
 protected:
  static std::string formatted(const std::string& text) {
    return take(json_format_string(text.c_str()));
  }

  static std::string stripped(std::string text) {
    json_strip_white_spaces(text.data());
    return text.c_str();
  }
};

TEST_F(JsonFormatTest, format_string_gives_each_member_a_line) {
  EXPECT_EQ("{\n\t\"a\": 1,\n\t\"b\": {\n\t\t\"c\": \"d\"\n\t}\n}",
            formatted(R"({"a":1,"b":{"c":"d"}})"));
}

TEST_F(JsonFormatTest, format_string_breaks_arrays_at_their_commas_only) {
  EXPECT_EQ("{\n\t\"a\": [1,\n\t2]\n}", formatted(R"({"a":[1,2]})"));
  EXPECT_EQ("[]", formatted("[]"));
  EXPECT_EQ("{\n\t\n}", formatted("{}"));
}

TEST_F(JsonFormatTest, format_string_drops_white_space_outside_strings) {
  EXPECT_EQ("{\n\t\"a b\t\": 1\n}", formatted(" {\r\n \"a b\t\" : 1 }\n"));
}

TEST_F(JsonFormatTest, format_string_copies_strings_as_they_are) {
  EXPECT_EQ(R"("{:,}\\")", formatted(R"("{:,}\\")"));
  EXPECT_EQ("\"a\\\"b:\": 1", formatted(R"("a\"b:":1)"));
}

TEST_F(JsonFormatTest, format_string_runs_on_behind_an_escaped_quote_at_the_end_of_a_string) {
  EXPECT_EQ(R"("a\"":1,"b":2)", formatted(R"("a\"":1,"b":2)"));
  EXPECT_EQ(R"("a\"":1,": 2)", formatted(R"("a\"":1,":2)"));
}

TEST_F(JsonFormatTest, format_string_ends_with_the_text_wherever_that_is) {
  EXPECT_EQ("\"a", formatted("\"a"));
  EXPECT_EQ("\"a\\", formatted("\"a\\"));
  EXPECT_EQ("\"a\\\"", formatted("\"a\\\""));
  EXPECT_EQ("", formatted(""));
}

TEST_F(JsonFormatTest, format_string_closes_more_than_was_open_without_tabs) {
  EXPECT_EQ("\n}\n}", formatted("}}"));
}

TEST_F(JsonFormatTest, strip_white_spaces_undoes_format_string) {
  const char* text = R"({"a":[1,2],"b":{"c":"d e"},"f\\n":{}})";
  EXPECT_EQ(text, stripped(formatted(text)));
}

TEST_F(JsonFormatTest, strip_white_spaces_keeps_those_in_strings) {
  EXPECT_EQ("{\"a b\t\r\n\":1}", stripped(" {\t\"a b\t\r\n\" :\r\n1 } "));
  EXPECT_EQ(R"({"say \" now ":1})", stripped(R"({ "say \" now " : 1 })"));
}

TEST_F(JsonFormatTest, strip_white_spaces_takes_no_quote_behind_a_backslash_for_an_end) {
  EXPECT_EQ(R"("a\\" : 1,"b")", stripped(R"("a\\" : 1," b ")"));
}

TEST_F(JsonFormatTest, both_abort_on_null) {
  EXPECT_ASSERTION(json_format_string(nullptr), "text != ((void *)0)");
  EXPECT_ASSERTION(json_strip_white_spaces(nullptr), "text != ((void *)0)");
}

}  // namespace
