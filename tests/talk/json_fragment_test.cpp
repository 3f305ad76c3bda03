// Documents in pieces: cut anywhere, continued, abandoned.
#include <string>
#include <vector>

#include "json_support.h"
#include "support/capture.h"

namespace {

using fairlead_test::capture;
using fairlead_test::text_of;
using fairlead_test::times;
using fairlead_test::Tree;

// Every kind of token, every escape, white space of every kind, around and inside.
constexpr const char* kRich =
    " \r\n{ \"plain\" : \"text\",\t\"esc\\\"\\\\\\/\\b\\f\\n\\r\\t\\u00e9\\uD83d\\uDe00\":\"\","
    "\"num\":[0,-0,12,-3.25,1e5,2.5E-10,7e+1,],\n\"lit\":[true,false,null,[],{}],"
    "\"raw\":\"\xc3\xa9\ttab\nline\",\"deep\":{\"a\":{\"b\":[{\"c\":[[1]]}]}}}\n \t\r";
constexpr const char* kRichCompact =
    "{\"plain\":\"text\",\"esc\\\"\\\\\\/\\b\\f\\n\\r\\t\\u00e9\\uD83d\\uDe00\":\"\","
    "\"num\":[0,-0,12,-3.25,1e5,2.5E-10,7e+1],\"lit\":[true,false,null,[],{}],"
    "\"raw\":\"\xc3\xa9\ttab\nline\",\"deep\":{\"a\":{\"b\":[{\"c\":[[1]]}]}}}";

class JsonFragmentTest : public fairlead_test::DeviceTest {
 protected:
  JsonFragmentTest() { json_jpi_init(&info_); }
  ~JsonFragmentTest() override { json_parse_fragment(&info_, nullptr); }

  json_error feed(const std::string& piece) { return json_parse_fragment(&info_, piece.c_str()); }

  // The result of the last piece; pieces before it must want more, or be white space at the end.
  json_error feed_all(const std::vector<std::string>& pieces) {
    json_error result = JSON_NEED_MORE;
    for (const std::string& piece : pieces) result = feed(piece);
    return result;
  }

  Tree taken() {
    Tree tree(info_.cursor);
    json_jpi_init(&info_);
    return tree;
  }

  json_jpi_t info_;
};

TEST_F(JsonFragmentTest, jpi_init_clears_the_record) {
  json_jpi_t info;
  EXPECT_EQ(1, json_jpi_init(&info));
  EXPECT_EQ(nullptr, info.cursor);
  EXPECT_EQ(1u, info.line);
  EXPECT_ASSERTION(json_jpi_init(nullptr), "jpi != ((void *)0)");
}

TEST_F(JsonFragmentTest, parse_fragment_tells_when_the_document_is_complete) {
  EXPECT_EQ(JSON_NEED_MORE, feed("{\"a\":"));
  EXPECT_EQ(JSON_NEED_MORE, feed("1"));
  EXPECT_EQ(JSON_DONE_AT_END, feed("2}"));
  EXPECT_EQ(JSON_DONE_AT_END, feed(" \n"));
  EXPECT_EQ(JSON_DONE_AT_END, feed(""));
  EXPECT_EQ(JSON_DONE, json_parse_fragment(&info_, nullptr));
  EXPECT_EQ("{\"a\":12}", text_of(taken()));
}

TEST_F(JsonFragmentTest, parse_fragment_reads_the_same_wherever_it_is_cut) {
  const std::string text = kRich;
  for (size_t cut = 0; cut <= text.size(); ++cut) {
    ASSERT_EQ(JSON_DONE_AT_END, feed_all({text.substr(0, cut), text.substr(cut)})) << cut;
    ASSERT_EQ(kRichCompact, text_of(taken())) << cut;
  }
}

TEST_F(JsonFragmentTest, parse_fragment_reads_byte_by_byte) {
  json_error result = JSON_NEED_MORE;
  for (const char* at = kRich; *at; ++at) {
    ASSERT_EQ(JSON_NEED_MORE, result == JSON_DONE_AT_END ? JSON_NEED_MORE : result);
    result = feed(std::string(1, *at));
  }
  EXPECT_EQ(JSON_DONE_AT_END, result);
  EXPECT_EQ(kRichCompact, text_of(taken()));
}

TEST_F(JsonFragmentTest, parse_fragment_passes_over_empty_pieces) {
  EXPECT_EQ(JSON_DONE_AT_END, feed_all({"", "{\"a", "", "b\"", "", ":", "", "tr", "", "ue}", ""}));
  EXPECT_EQ("{\"ab\":true}", text_of(taken()));
}

TEST_F(JsonFragmentTest, parse_fragment_finds_the_same_fault_wherever_it_is_cut) {
  for (const char* faulty : {"{\"a\":01}", "{\"a\":\"\\u12x4\"}", "{\"a\":tru}", "{\"a\":1.}",
                             "{\"a\":-}", "{\"a\":1,}", "{\"a\":1}}", "{\"a\" \"b\"}"}) {
    const std::string text = faulty;
    for (size_t cut = 0; cut <= text.size(); ++cut) {
      ASSERT_EQ(JSON_SYNTAX,
                feed(text.substr(0, cut)) == JSON_SYNTAX ? JSON_SYNTAX : feed(text.substr(cut)))
          << text << " cut at " << cut;
      json_jpi_init(&info_);
    }
  }
}

TEST_F(JsonFragmentTest, parse_fragment_counts_lines_over_all_pieces) {
  const std::string err = capture([&] { feed_all({"\n", "{\"a\n", "b\"\n", ":\n", "]"}); }).err;
  EXPECT_EQ("JSON: state 3: defaulted at line 5\n", err);
}

TEST_F(JsonFragmentTest, parse_fragment_after_a_failure_holds_nothing_and_goes_no_further) {
  EXPECT_EQ(JSON_SYNTAX, feed("{\"a\":[1,{\"b\":]"));
  EXPECT_EQ(nullptr, info_.cursor);
  EXPECT_EQ(JSON_INTERNAL, feed("{}"));
  json_jpi_init(&info_);
  EXPECT_EQ(JSON_DONE_AT_END, feed("{}"));
  taken();
}

TEST_F(JsonFragmentTest, parse_fragment_refuses_a_token_behind_the_document) {
  for (const char* rest : {"x", "{", "\"half a string", "12", "nul"}) {
    EXPECT_EQ(JSON_DONE_AT_END, feed("{\"a\":[1]}"));
    EXPECT_EQ(JSON_SYNTAX, feed(rest)) << rest;
    EXPECT_EQ(nullptr, info_.cursor);
    json_jpi_init(&info_);
  }
}

// The sanitizers see what would be left behind.
TEST_F(JsonFragmentTest, parse_fragment_with_null_abandons_the_parse) {
  for (const char* begun : {"", " ", "{", "{\"ha", "{\"a\":[{\"b\":12", "{\"a\":[tr"}) {
    EXPECT_EQ(JSON_NEED_MORE, feed(begun));
    EXPECT_EQ(JSON_INTERNAL, json_parse_fragment(&info_, nullptr));
    EXPECT_EQ(nullptr, info_.cursor);
    EXPECT_EQ(JSON_INTERNAL, feed("{}"));
    json_jpi_init(&info_);
  }
}

TEST_F(JsonFragmentTest, parse_fragment_in_an_unknown_state_is_internal) {
  info_.state = 99;
  EXPECT_EQ(JSON_INTERNAL, feed("{}"));
}

TEST_F(JsonFragmentTest, lexer_in_an_impossible_state_reports_it_and_fails) {
  info_.lexer = 99;
  json_error result = JSON_DONE;
  const std::string err = capture([&] { result = feed("{}"); }).err;
  EXPECT_EQ(JSON_SYNTAX, result);
  EXPECT_EQ("JSON: *state missing: 99\nJSON: state 0: defaulted at line 1\n", err);
}

TEST_F(JsonFragmentTest, parse_fragment_aborts_when_the_cursor_was_tampered_with) {
  EXPECT_ASSERTION(json_parse_fragment(nullptr, "{"), "info != ((void *)0)");
  const auto with_kind = [&](const char* begun, uint32_t kind) {
    feed(begun);
    info_.cursor->type = kind;
    feed(" ");
  };
  EXPECT_ASSERTION(with_kind("{", JSON_ARRAY), "info->cursor->type == JSON_OBJECT");
  EXPECT_ASSERTION(with_kind("{\"a\"", JSON_OBJECT), "info->cursor->type == JSON_STRING");
  EXPECT_ASSERTION(with_kind("{\"a\":[", JSON_OBJECT), "info->cursor->type == JSON_ARRAY");
}

TEST_F(JsonFragmentTest, parse_fragment_continues_long_tokens) {
  std::string expected = "{\"";
  EXPECT_EQ(JSON_NEED_MORE, feed("{\""));
  for (int i = 0; i < 1000; ++i) {
    const std::string piece = "piece " + std::to_string(i) + "\\n";
    ASSERT_EQ(JSON_NEED_MORE, feed(piece));
    expected += piece;
  }
  EXPECT_EQ(JSON_DONE_AT_END, feed("\":1}"));
  EXPECT_EQ(expected + "\":1}", text_of(taken()));
}

}  // namespace
