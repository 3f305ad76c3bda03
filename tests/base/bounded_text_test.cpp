// Text in a fixed buffer: always ended, cut where the room ends, and the cut is told.
#include "base/bounded_text.h"

#include <cerrno>
#include <string>

#include "support/device_test.h"

namespace {

using fairlead::BoundedText;
using fairlead::FixedText;

class BoundedTextTest : public fairlead_test::DeviceTest {};

TEST_F(BoundedTextTest, begins_empty) {
  char buffer[4] = "abc";
  const BoundedText text(buffer, sizeof buffer);
  EXPECT_STREQ("", text.text());
  EXPECT_EQ(0u, text.length());
  EXPECT_FALSE(text.cut());
}

TEST_F(BoundedTextTest, begins_with_a_text_of_its_own_buffer) {
  char buffer[8] = "--abc";
  BoundedText text(buffer, sizeof buffer, buffer + 2);
  EXPECT_STREQ("abc-d", text.add("-d").text());
  EXPECT_EQ(5u, text.length());
  EXPECT_FALSE(text.cut());
  const BoundedText fits(buffer, 6, buffer), cut(buffer, 5, buffer);
  EXPECT_FALSE(fits.cut());
  EXPECT_TRUE(cut.cut());
  EXPECT_STREQ("abc-", buffer);
}

TEST_F(BoundedTextTest, pieces_characters_and_formats_follow_each_other) {
  FixedText<32> text;
  text.add("path").add('/').format("%s-%03d", "unit", 7).add(std::string_view());
  EXPECT_STREQ("path/unit-007", text.text());
  EXPECT_EQ(13u, text.length());
  EXPECT_FALSE(text.cut());
}

TEST_F(BoundedTextTest, exactly_full_is_not_cut) {
  FixedText<4> added, formatted;
  EXPECT_STREQ("abc", added.add("abc").text());
  EXPECT_STREQ("abc", formatted.format("%s", "abc").text());
  EXPECT_FALSE(added.cut());
  EXPECT_FALSE(formatted.cut());
}

TEST_F(BoundedTextTest, what_does_not_fit_is_cut_and_told) {
  FixedText<4> added, formatted, single;
  EXPECT_STREQ("abc", added.add("ab").add("cd").text());
  EXPECT_STREQ("abc", formatted.add("a").format("%s", "bcd").text());
  EXPECT_STREQ("abc", single.add("abc").add('d').text());
  for (const BoundedText* text :
       {static_cast<BoundedText*>(&added), static_cast<BoundedText*>(&formatted),
        static_cast<BoundedText*>(&single)}) {
    EXPECT_TRUE(text->cut());
    EXPECT_FALSE(text->failed());
    EXPECT_EQ(3u, text->length());
  }
}

TEST_F(BoundedTextTest, stays_cut_and_takes_no_more) {
  FixedText<4> text;
  text.add("abcd").add("").format("%s", "").format("%d", 5).add("e");
  EXPECT_STREQ("abc", text.text());
  EXPECT_TRUE(text.cut());
}

TEST_F(BoundedTextTest, room_for_the_terminator_alone_takes_nothing) {
  char one = '#';
  BoundedText text(&one, 1);
  EXPECT_STREQ("", text.add("").format("%s", "").text());
  EXPECT_FALSE(text.cut());
  EXPECT_STREQ("", text.add("a").format("%s", "b").text());
  EXPECT_TRUE(text.cut());
}

TEST_F(BoundedTextTest, never_writes_beyond_its_buffer) {
  char buffer[8] = "#######";
  BoundedText text(buffer, 4);
  text.add("abcdef").format("%s", "ghijkl");
  EXPECT_EQ('#', buffer[4]);
}

TEST_F(BoundedTextTest, a_refused_argument_adds_nothing_and_is_told) {
  const wchar_t foreign[] = {0x20ac, 0};
  FixedText<32> text;
  text.add("kept").format("x%lsy", foreign);
  EXPECT_STREQ("kept", text.text());
  EXPECT_EQ(4u, text.length());
  EXPECT_TRUE(text.cut());
  EXPECT_TRUE(text.failed());
  EXPECT_EQ(EILSEQ, errno);
}

TEST_F(BoundedTextTest, a_path_has_255_characters) {
  fairlead::PathText path;
  path.add(std::string(300, 'p'));
  EXPECT_EQ(255u, path.length());
  EXPECT_EQ(std::string(255, 'p'), path.text());
}

}  // namespace
