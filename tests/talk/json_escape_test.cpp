// Escaping and unescaping.
#include <cstring>
#include <string>

#include "json_support.h"

namespace {

using fairlead_test::take;

class JsonEscapeTest : public fairlead_test::DeviceTest {
 protected:
  static std::string escaped(const std::string& text) { return take(json_escape(text.c_str())); }

  // From a block of exactly its size, so that the sanitizer sees a step too far.
  static std::string unescaped(const std::string& text) {
    char* exact = strdup(text.c_str());
    char* result = json_unescape(exact);
    free(exact);
    return take(result);
  }
};

TEST_F(JsonEscapeTest, escape_puts_a_backslash_before_what_needs_one) {
  EXPECT_EQ(R"(a\\b\"c\/d)", escaped("a\\b\"c/d"));
  EXPECT_EQ(R"(\b\f\n\r\t)", escaped("\b\f\n\r\t"));
  EXPECT_EQ("", escaped(""));
}

TEST_F(JsonEscapeTest, escape_writes_other_control_bytes_as_four_digits) {
  EXPECT_EQ(R"(\u0001)", escaped("\x01"));
  EXPECT_EQ(R"(\u000b\u001f)", escaped("\x0b\x1f"));
}

TEST_F(JsonEscapeTest, escape_copies_everything_else) {
  EXPECT_EQ("\x20\x7f\xc3\xa9\xff'", escaped("\x20\x7f\xc3\xa9\xff'"));
}

TEST_F(JsonEscapeTest, unescape_undoes_escape_for_every_byte) {
  std::string all;
  for (int byte = 1; byte < 256; ++byte) all += static_cast<char>(byte);
  EXPECT_EQ(all, unescaped(escaped(all)));
}

TEST_F(JsonEscapeTest, unescape_replaces_the_short_sequences) {
  EXPECT_EQ("\"\\/\b\f\n\r\t", unescaped(R"(\"\\\/\b\f\n\r\t)"));
  EXPECT_EQ("plain", unescaped("plain"));
  EXPECT_EQ("", unescaped(""));
}

TEST_F(JsonEscapeTest, unescape_writes_utf8) {
  EXPECT_EQ("A\x7f", unescaped(R"(\u0041\u007f)"));
  EXPECT_EQ("\xc2\x80\xc3\xa9\xdf\xbf", unescaped(R"(\u0080\u00e9\u07FF)"));
  EXPECT_EQ("\xe0\xa0\x80\xe2\x82\xac\xef\xbf\xbf", unescaped(R"(\u0800\u20AC\uffff)"));
}

TEST_F(JsonEscapeTest, unescape_joins_a_surrogate_pair) {
  EXPECT_EQ("\xf0\x9f\x98\x80!", unescaped(R"(\ud83d\ude00!)"));
  EXPECT_EQ("\xf0\x90\x80\x80", unescaped(R"(\uD800\uDC00)"));
  EXPECT_EQ("\xf4\x8f\xbf\xbf", unescaped(R"(\uDBFF\uDFFF)"));
}

TEST_F(JsonEscapeTest, unescape_takes_whatever_follows_a_high_surrogate_for_the_low_one) {
  EXPECT_EQ("\xf0\x9f\x98\x80.", unescaped(R"(\ud83d--de00.)"));
}

TEST_F(JsonEscapeTest, unescape_writes_a_lone_low_surrogate_as_three_bytes) {
  EXPECT_EQ("\xed\xb8\x80", unescaped(R"(\ude00)"));
}

TEST_F(JsonEscapeTest, unescape_ends_the_text_at_a_nul_character) {
  EXPECT_EQ("a", unescaped(R"(a\u0000b)"));
}

TEST_F(JsonEscapeTest, unescape_counts_a_sequence_cut_short_as_far_as_it_goes) {
  EXPECT_EQ("a", unescaped(R"(a\u)"));
  EXPECT_EQ("\x04", unescaped(R"(\u4)"));
  EXPECT_EQ("A", unescaped(R"(\u41)"));
  EXPECT_EQ("\xd0\x9f", unescaped(R"(\u41f)"));
  for (size_t length = 6; length < 12; ++length)
    EXPECT_EQ(4u, unescaped(std::string(R"(\ud83d\ude00)").substr(0, length)).size()) << length;
}

TEST_F(JsonEscapeTest, unescape_reads_digits_as_far_as_they_are_any) {
  EXPECT_EQ("\x01z", unescaped(R"(\u1-22z)"));
  EXPECT_EQ(std::string("\xff") + "z", unescaped(R"(\u-001z)"));
}

TEST_F(JsonEscapeTest, unescape_aborts_on_an_unknown_sequence) {
  EXPECT_ASSERTION(json_unescape("\\x"), "0");
  EXPECT_ASSERTION(json_unescape("abc\\"), "0");
  EXPECT_ASSERTION(json_unescape(nullptr), "text");
}

TEST_F(JsonEscapeTest, escape_aborts_on_null) {
  EXPECT_ASSERTION(json_escape(nullptr), "text != ((void *)0)");
}

}  // namespace
