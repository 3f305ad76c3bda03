// What is skipped in front of a text.
#include "base/ascii.h"

#include "support/device_test.h"

namespace {

using fairlead::skip;
using fairlead::skip_white_space;

using AsciiTest = fairlead_test::DeviceTest;

TEST_F(AsciiTest, skip_white_space_stops_at_the_first_other_character_and_at_the_end) {
  EXPECT_STREQ("a b ", skip_white_space(" \t\r\n a b "));
  EXPECT_STREQ("\v", skip_white_space(" \v"));
  EXPECT_STREQ("", skip_white_space("  \n"));
  EXPECT_STREQ("", skip_white_space(""));
}

TEST_F(AsciiTest, skip_stops_behind_all_of_one_character) {
  EXPECT_STREQ("a//", skip("//a//", '/'));
  EXPECT_STREQ(" /", skip(" /", '/'));
  EXPECT_STREQ("", skip("///", '/'));
}

}  // namespace
