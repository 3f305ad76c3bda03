// Letters changed in place, and the bounded copy.
#include <climits>
#include <clocale>
#include <cstring>
#include <string>

#include "fairlead/misc.h"
#include "support/device_test.h"

namespace {

using TextTest = fairlead_test::DeviceTest;

TEST_F(TextTest, string_copy_copies_and_fills_the_rest_with_zeros) {
  char buffer[] = "--------";
  EXPECT_EQ(buffer, string_copy(buffer, "abc", 6));
  EXPECT_EQ(std::string("abc\0\0\0--", 8), std::string(buffer, 8));
}

TEST_F(TextTest, string_copy_cuts_at_every_size) {
  for (int size = 1; size <= 8; ++size) {
    char buffer[] = "---------";
    EXPECT_EQ(buffer, string_copy(buffer, "abcdef", size));
    EXPECT_EQ(std::string("abcdef").substr(0, static_cast<size_t>(size - 1)), buffer);
    EXPECT_EQ('\0', buffer[size - 1]);
    EXPECT_EQ('-', buffer[size]);
  }
}

TEST_F(TextTest, string_copy_into_one_byte_gives_an_empty_text) {
  char buffer[] = "x";
  EXPECT_EQ(buffer, string_copy(buffer, "abc", 1));
  EXPECT_STREQ("", buffer);
}

TEST_F(TextTest, string_copy_reads_no_further_than_it_copies) {
  const char open_end[] = {'a', 'b', 'c'};
  char buffer[4];
  string_copy(buffer, open_end, sizeof buffer);
  EXPECT_STREQ("abc", buffer);
}

TEST_F(TextTest, string_copy_refuses_null_and_sizes_below_1) {
  char buffer[] = "x";
  const auto refused = [](char* result) {
    EXPECT_EQ(nullptr, result);
    EXPECT_EQ(EINVAL, errno);
    errno = 0;
  };
  errno = 0;
  refused(string_copy(nullptr, "abc", 4));
  refused(string_copy(buffer, nullptr, 2));
  refused(string_copy(buffer, "abc", 0));
  refused(string_copy(buffer, "abc", -1));
  refused(string_copy(buffer, "abc", INT_MIN));
  EXPECT_STREQ("x", buffer);
}

TEST_F(TextTest, lowtoupp_and_upptolow_change_the_26_letters_only) {
  for (int byte = 1; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    char upper[] = {c, '\0'}, lower[] = {c, '\0'};
    lowtoupp(upper);
    upptolow(lower);
    EXPECT_EQ(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c, upper[0]) << byte;
    EXPECT_EQ(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c, lower[0]) << byte;
  }
}

TEST_F(TextTest, lowtoupp_and_upptolow_stop_at_the_end_of_the_text) {
  char text[] = "wan 0, Lan\0wan";
  lowtoupp(text);
  EXPECT_EQ(std::string("WAN 0, LAN\0wan", 14), std::string(text, 14));
  upptolow(text);
  EXPECT_STREQ("wan 0, lan", text);
}

TEST_F(TextTest, lowtoupp_and_upptolow_refuse_null) {
  errno = 0;
  lowtoupp(nullptr);
  EXPECT_EQ(EINVAL, errno);
  errno = 0;
  upptolow(nullptr);
  EXPECT_EQ(EINVAL, errno);
}

}  // namespace
