// printf-style texts of any length.
#include "base/formatted_text.h"

#include <string>

#include "support/device_test.h"
#include "support/faults.h"

namespace {

using fairlead::format_text;
using fairlead::OwnedText;

class FormattedTextTest : public fairlead_test::DeviceTest {};

__attribute__((format(printf, 2, 3))) OwnedText formatted(size_t* length, const char* pattern,
                                                          ...) {
  va_list arguments;
  va_start(arguments, pattern);
  OwnedText text = format_text(pattern, arguments, length);
  va_end(arguments);
  return text;
}

TEST_F(FormattedTextTest, gives_the_text_in_a_block_of_its_own) {
  EXPECT_STREQ("a-42", formatted(nullptr, "%s-%d", "a", 42).get());
  EXPECT_STREQ("", formatted(nullptr, "%s", "").get());
}

TEST_F(FormattedTextTest, has_no_limit) {
  const std::string long_text(1000000, 'x');
  EXPECT_EQ(long_text, formatted(nullptr, "%s", long_text.c_str()).get());
}

TEST_F(FormattedTextTest, tells_the_length_that_the_formatter_reports) {
  size_t length = 99;
  const OwnedText text = formatted(&length, "a%cb", 0);
  EXPECT_EQ(3u, length);
  EXPECT_EQ(std::string("a\0b", 3), std::string(text.get(), length));
}

TEST_F(FormattedTextTest, is_empty_when_the_formatter_refuses) {
  const wchar_t foreign[] = {0x20ac, 0};
  size_t length = 99;
  EXPECT_FALSE(formatted(&length, "%ls", foreign));
  EXPECT_EQ(EILSEQ, errno);
  EXPECT_EQ(99u, length);
}

TEST_F(FormattedTextTest, is_empty_without_memory) {
  fairlead_test::Fault fault(fairlead_test::Call::kMalloc, {.error = ENOMEM});
  EXPECT_FALSE(formatted(nullptr, "%d", 42));
  EXPECT_EQ(ENOMEM, errno);
}

}  // namespace
