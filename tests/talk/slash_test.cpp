// Slash paths: a text cut at "/" into segments, and put together again.
#include "support/faults.h"
#include "talk_support.h"

namespace {

class SlashTest : public fairlead_test::DeviceTest {
 protected:
  void TearDown() override {
    if (slash_.string) SlashClear(&slash_);
    DeviceTest::TearDown();
  }

  // The segments with a "|" behind each. The record has garbage before, as a fresh one may.
  std::string split(const std::string& text) {
    text_ = text;
    memset(&slash_, 0xEE, sizeof slash_);
    const int result = SlashAnalysis(&slash_, text_.data());
    EXPECT_EQ(slash_.count > 0 ? 1 : 0, result);
    EXPECT_EQ(nullptr, slash_.string);
    std::string segments;
    for (int i = 1; i <= SlashCount(&slash_); ++i)
      segments += std::string(SlashGet(&slash_, i)) + "|";
    return segments;
  }

  static std::string numbers(int last) {
    std::string path;
    for (int i = 1; i <= last; ++i) path += "/" + std::to_string(i);
    return path;
  }

  slash_t slash_{};
  std::string text_;
};

TEST_F(SlashTest, analysis_cuts_at_slashes) {
  EXPECT_EQ("network|lan|ip|", split("network/lan/ip"));
  EXPECT_EQ("a|", split("a"));
}

TEST_F(SlashTest, analysis_takes_several_slashes_for_one) {
  for (const char* text : {"a/b", "/a//b/", "//a/b//", "a///b"})
    EXPECT_EQ("a|b|", split(text)) << text;
}

TEST_F(SlashTest, analysis_trims_the_text_but_not_its_segments) {
  EXPECT_EQ("a |b\t| c|", split("  /a /b\t/ c \t\r\n"));
  EXPECT_EQ(" a|b|", split("/ a/b"));
  EXPECT_EQ("\ta|", split(" \ta"));
}

TEST_F(SlashTest, analysis_overwrites_the_white_space_at_the_end) {
  split("a/b \t\r\n");
  EXPECT_EQ(std::string("a\0b\0\0\0\0", 7), text_);
}

TEST_F(SlashTest, analysis_writes_to_separators_and_white_space_only) {
  static const char kLiteral[] = "wan";
  EXPECT_EQ(1, SlashAnalysis(&slash_, const_cast<char*>(kLiteral)));
  EXPECT_EQ(kLiteral, SlashGet(&slash_, 1));
}

TEST_F(SlashTest, an_empty_path_has_no_segments_and_leaves_errno) {
  for (const char* text : {"", "/", "//", "   ", " / ", "\n", " \t\r\n"}) {
    for (int stale : {0, fairlead_test::kStaleErrno}) {
      errno = stale;
      EXPECT_EQ("", split(text)) << text;
      EXPECT_EQ(stale, errno);
    }
  }
}

TEST_F(SlashTest, analysis_looks_at_nothing_before_the_text) {
  char guarded[] = "  ";
  EXPECT_EQ(0, SlashAnalysis(&slash_, guarded + 2));
  EXPECT_STREQ("  ", guarded);
}

TEST_F(SlashTest, analysis_keeps_the_first_twenty_segments) {
  split(numbers(25));
  EXPECT_EQ(SLASH_MAX, SlashCount(&slash_));
  EXPECT_STREQ("20", SlashGet(&slash_, 20));
  EXPECT_STREQ("20", SlashGet(&slash_, -1));
  EXPECT_REFUSED(nullptr, SlashGet(&slash_, 21));
}

TEST_F(SlashTest, analysis_refuses_no_record_and_no_text) {
  char text[] = "a";
  EXPECT_REFUSED(0, SlashAnalysis(nullptr, text));
  EXPECT_REFUSED(0, SlashAnalysis(&slash_, nullptr));
}

TEST_F(SlashTest, count_of_no_record_is_minus_one) {
  EXPECT_EQ(0, SlashCount(&slash_));
  EXPECT_REFUSED(-1, SlashCount(nullptr));
}

TEST_F(SlashTest, get_counts_from_one_and_minus_one_is_the_last) {
  split("a/b/c");
  EXPECT_STREQ("a", SlashGet(&slash_, 1));
  EXPECT_STREQ("c", SlashGet(&slash_, 3));
  EXPECT_STREQ("c", SlashGet(&slash_, -1));
  EXPECT_EQ(text_.data(), SlashGet(&slash_, 1)) << "a segment lies in the text";
}

TEST_F(SlashTest, get_refuses_bad_indexes) {
  split("a/b/c");
  for (int index : {0, 4, -2, INT32_MAX, INT32_MIN})
    EXPECT_REFUSED(nullptr, SlashGet(&slash_, index));
  EXPECT_REFUSED(nullptr, SlashGet(nullptr, 1));
  split("");
  for (int index : {1, -1}) EXPECT_REFUSED(nullptr, SlashGet(&slash_, index));
}

TEST_F(SlashTest, string_puts_the_path_together) {
  split("//net//lan/");
  EXPECT_STREQ("net/lan", SlashString(&slash_));
}

TEST_F(SlashTest, string_is_made_once_and_kept) {
  split("net/lan");
  const char* first = SlashString(&slash_);
  slash_.segment[0] = slash_.segment[1];
  EXPECT_EQ(first, SlashString(&slash_));
  EXPECT_STREQ("net/lan", first);
}

TEST_F(SlashTest, string_cuts_at_255_characters) {
  const std::string segment(100, 'x');
  split(segment + "/" + segment + "/" + segment);
  EXPECT_EQ((segment + "/" + segment + "/" + segment).substr(0, 255), SlashString(&slash_));
}

TEST_F(SlashTest, string_cuts_a_single_long_segment) {
  for (size_t length : {254u, 255u, 256u, 1000u}) {
    split(std::string(length, 'x'));
    EXPECT_EQ(std::min<size_t>(length, 255), strlen(SlashString(&slash_))) << length;
    SlashClear(&slash_);
  }
  slash_.string = nullptr;
}

TEST_F(SlashTest, string_ends_at_a_missing_segment) {
  split("a/b/c");
  slash_.segment[1] = nullptr;
  EXPECT_STREQ("a", SlashString(&slash_));
}

TEST_F(SlashTest, string_without_segments_is_null_and_leaves_errno) {
  split("/");
  EXPECT_ERRNO_KEPT(nullptr, SlashString(&slash_));
  EXPECT_REFUSED(nullptr, SlashString(nullptr));
}

TEST_F(SlashTest, string_without_memory_is_null_and_can_be_asked_again) {
  split("a/b");
  {
    fairlead_test::Fault fault(fairlead_test::Call::kMalloc,
                               {.error = ENOMEM, .times = fairlead_test::kForever});
    EXPECT_FAILS(ENOMEM, nullptr, SlashString(&slash_));
  }
  EXPECT_STREQ("a/b", SlashString(&slash_));
}

TEST_F(SlashTest, clear_frees_the_path_and_leaves_the_pointer) {
  split("a/b");
  const char* path = SlashString(&slash_);
  SlashClear(&slash_);
  EXPECT_EQ(path, slash_.string);
  EXPECT_EQ(2, SlashCount(&slash_));
  split("c");
}

TEST_F(SlashTest, clear_of_a_record_without_a_path) {
  errno = 0;
  SlashClear(&slash_);
  EXPECT_EQ(0, errno);
  SlashClear(nullptr);
  EXPECT_EQ(EINVAL, errno);
}

}  // namespace
