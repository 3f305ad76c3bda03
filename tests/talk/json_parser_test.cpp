// The parser: what a document may look like, and how each fault is told.
#include <string>
#include <utility>

#include "json_support.h"

namespace {

using fairlead_test::parse_result;
using fairlead_test::parsed;
using fairlead_test::text_of;
using fairlead_test::times;
using fairlead_test::Tree;

class JsonParserTest : public fairlead_test::DeviceTest {
 protected:
  // What json_parse_document says on the standard error stream.
  static std::string diagnostic(const std::string& text) {
    testing::internal::CaptureStderr();
    parse_result(text);
    return testing::internal::GetCapturedStderr();
  }
};

TEST_F(JsonParserTest, parse_document_builds_the_tree) {
  Tree tree = parsed(R"({"a":"b","c":[1]})");
  EXPECT_EQ(uint32_t{JSON_OBJECT}, tree->type);
  EXPECT_EQ(nullptr, tree->parent);
  const json_t* label = tree->child;
  EXPECT_EQ(uint32_t{JSON_STRING}, label->type);
  EXPECT_STREQ("a", label->text);
  EXPECT_STREQ("b", label->child->text);
  EXPECT_EQ(label->child, label->child_end);
  EXPECT_EQ(tree->child_end, label->next);
  EXPECT_EQ(uint32_t{JSON_ARRAY}, tree->child_end->child->type);
}

TEST_F(JsonParserTest, parse_document_passes_over_white_space) {
  const char* spaced = " \t\r\n{ \"a\" :\n[ 1 , true ,\t{ } ] ,\r\"b\":\"x y\" } \n\n ";
  EXPECT_EQ(R"({"a":[1,true,{}],"b":"x y"})", text_of(parsed(spaced)));
}

TEST_F(JsonParserTest, parse_document_keeps_numbers_as_written) {
  for (const char* number : {"0", "-0", "7", "-12", "0.5", "1.50e+3", "10E-2", "1e5", "120.030",
                             "123456789012345678901234567890"}) {
    const std::string text = std::string("{\"n\":") + number + "}";
    EXPECT_EQ(text, text_of(parsed(text)));
  }
}

TEST_F(JsonParserTest, parse_document_refuses_what_is_no_number) {
  for (const char* number : {"01", "-", "-a", "+1", ".5", "1.", "1.e3", "1e", "1e+", "00", "-01",
                             "0x1", "1a", "1..2", "--1", "Infinity", "NaN"})
    EXPECT_EQ(JSON_SYNTAX, parse_result(std::string("{\"n\":") + number + "}")) << number;
}

TEST_F(JsonParserTest, parse_document_keeps_strings_as_written) {
  for (const char* string : {R"()", R"(\"\\\/\b\f\n\r\t)", R"(\u00e9\uD83D\ude00\uFFff)",
                             "\xc3\xa9", "{[:,]}", "'", "\x7f"}) {
    const std::string text = std::string("{\"s\":\"") + string + "\"}";
    EXPECT_EQ(text, text_of(parsed(text)));
  }
}

// Strings are written as they are, so a text with a raw tab or line feed must come back.
TEST_F(JsonParserTest, parse_document_keeps_raw_control_bytes_in_strings) {
  for (char c = 1; c < 32; ++c) {
    const std::string text = std::string("{\"s\":\"a") + c + "b\"}";
    EXPECT_EQ(text, text_of(parsed(text))) << int{c};
  }
}

TEST_F(JsonParserTest, parse_document_refuses_unknown_escapes) {
  for (const char* string : {R"(\x)", R"(\')", R"(\a)", R"(\v)", R"(\0)", R"(\U0000)", R"(\u12)",
                             R"(\u12g4)", R"(\u)", R"(\u-123)", "\\\n"})
    EXPECT_EQ(JSON_SYNTAX, parse_result(std::string("{\"s\":\"") + string + "\"}")) << string;
}

TEST_F(JsonParserTest, parse_document_refuses_misspelt_literals) {
  for (const char* word : {"True", "tru", "truE", "falsy", "nul", "nil", "nulll", "truefalse"})
    EXPECT_EQ(JSON_SYNTAX, parse_result(std::string("{\"s\":") + word + "}")) << word;
}

TEST_F(JsonParserTest, parse_document_takes_objects_only) {
  for (const char* text : {"[", "[]", "\"a\"", "1 ", "true", "null", "}", ":", "x"})
    EXPECT_EQ(JSON_SYNTAX, parse_result(text)) << text;
}

TEST_F(JsonParserTest, parse_document_lets_an_array_end_with_a_comma_but_no_object) {
  EXPECT_EQ(R"({"a":[1,2]})", text_of(parsed(R"({"a":[1,2,]})")));
  EXPECT_EQ(JSON_SYNTAX, parse_result(R"({"a":1,})"));
  EXPECT_EQ(JSON_SYNTAX, parse_result(R"({"a":[,]})"));
  EXPECT_EQ(JSON_SYNTAX, parse_result(R"({"a":[1,,]})"));
  EXPECT_EQ(JSON_SYNTAX, parse_result(R"({,})"));
}

TEST_F(JsonParserTest, parse_document_refuses_tokens_out_of_place) {
  for (const char* text : {R"({"a")"
                           "}",
                           R"({"a",})", R"({"a":})", R"({"a":1 "b":2})", R"({"a"::1})", R"({1:2})",
                           R"({"a":1])", R"({"a":[1}})", R"({"a":[1:2]})", R"({[]})", R"({{}})",
                           R"({"a":"b":"c"})", R"({"a" "b"})", R"({"a":1,true})"})
    EXPECT_EQ(JSON_SYNTAX, parse_result(text)) << text;
}

TEST_F(JsonParserTest, parse_document_tells_a_bad_character_after_a_comma_apart) {
  for (const char* text :
       {R"({"a":1,x})", R"({"a":1, \)", R"({"a":1,'b':2})", R"({"a":1,"\x":2})", R"({"a":1,trux)"})
    EXPECT_EQ(JSON_BAD_AFTER_COMMA, parse_result(text)) << text;
  EXPECT_EQ(JSON_SYNTAX, parse_result("{x"));
  EXPECT_EQ(JSON_SYNTAX, parse_result(R"({"a":[1,x]})"));
}

TEST_F(JsonParserTest, parse_document_lets_only_white_space_follow) {
  EXPECT_EQ(JSON_DONE, parse_result("{\"a\":1} \n\r\t\n"));
  for (const char* rest : {"x", "}", "{}", ",", "\"", "\"open", "1", "tru"})
    EXPECT_EQ(JSON_SYNTAX, parse_result(std::string("{\"a\":1} ") + rest)) << rest;
}

TEST_F(JsonParserTest, parse_document_wants_more_of_every_beginning) {
  const std::string text = R"({"a":[1,-2.5e+3,{"b":true}],"c\u00e9":null,"d":{}})";
  for (size_t length = 0; length < text.size(); ++length)
    EXPECT_EQ(JSON_NEED_MORE, parse_result(text.substr(0, length))) << length;
  EXPECT_EQ(JSON_DONE, parse_result(text));
}

TEST_F(JsonParserTest, parse_document_of_white_space_only_is_a_syntax_error) {
  EXPECT_EQ(JSON_NEED_MORE, parse_result(""));
  EXPECT_EQ(JSON_SYNTAX, parse_result(" "));
  EXPECT_EQ(JSON_SYNTAX, parse_result("\n\t \r"));
}

TEST_F(JsonParserTest, parse_document_reports_the_line_of_a_misplaced_token) {
  EXPECT_EQ("JSON: state 3: defaulted at line 4\n", diagnostic("\n{\n\"a\":\n}"));
  EXPECT_EQ("JSON: state 0: defaulted at line 2\n", diagnostic("\n["));
  EXPECT_EQ("JSON: state 0: defaulted at line 3\n", diagnostic(" \n\n "));
}

TEST_F(JsonParserTest, parse_document_counts_the_line_feeds_in_strings) {
  EXPECT_EQ("JSON: state 4: defaulted at line 3\n", diagnostic("{\"a\n\":\"\n\" :"));
}

TEST_F(JsonParserTest, parse_document_reports_no_line_where_only_the_code_tells) {
  EXPECT_EQ("", diagnostic(R"({"a":1} x)"));
  EXPECT_EQ("", diagnostic(R"({"a":1,x)"));
  EXPECT_EQ("", diagnostic(R"({"a":1)"));
  EXPECT_EQ("", diagnostic(R"({"a":1})"));
}

TEST_F(JsonParserTest, parse_document_keeps_namesakes_and_order) {
  const char* text = R"({"b":1,"a":2,"b":3,"":4})";
  EXPECT_EQ(text, text_of(parsed(text)));
}

TEST_F(JsonParserTest, parse_document_aborts_on_misuse) {
  json_t* none = nullptr;
  Tree tree(json_new_object());
  json_t* taken = tree.get();
  EXPECT_ASSERTION(json_parse_document(nullptr, "{}"), "root != ((void *)0)");
  EXPECT_ASSERTION(json_parse_document(&taken, "{}"), "*root == ((void *)0)");
  EXPECT_ASSERTION(json_parse_document(&none, nullptr), "text != ((void *)0)");
}

}  // namespace
