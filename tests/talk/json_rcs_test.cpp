// The growable string: always terminated, with the growth that callers rely on.
#include <string>

#include "json_support.h"

namespace {

using fairlead_test::take;

class RcsTest : public fairlead_test::DeviceTest {
 protected:
  void TearDown() override {
    rcs_free(&rcs_);
    DeviceTest::TearDown();
  }

  rcs_t* rcs_ = rcs_create(4);
};

TEST_F(RcsTest, create_gives_an_empty_text_with_room) {
  EXPECT_STREQ("", rcs_->text);
  EXPECT_EQ(0u, rcs_length(rcs_));
  EXPECT_EQ(4u, rcs_->capacity);
}

TEST_F(RcsTest, create_without_room_still_holds_the_terminator) {
  rcs_t* none = rcs_create(0);
  EXPECT_STREQ("", none->text);
  EXPECT_EQ(1, rcs_catc(none, 'x'));
  EXPECT_STREQ("x", none->text);
  EXPECT_EQ(5u, none->capacity);
  rcs_free(&none);
}

TEST_F(RcsTest, catc_fills_the_room_before_it_grows) {
  for (char c : {'a', 'b', 'c', 'd'}) EXPECT_EQ(1, rcs_catc(rcs_, c));
  EXPECT_EQ(4u, rcs_->capacity);
  EXPECT_EQ(1, rcs_catc(rcs_, 'e'));
  EXPECT_EQ(9u, rcs_->capacity);
  EXPECT_STREQ("abcde", rcs_->text);
  EXPECT_EQ(5u, rcs_length(rcs_));
}

TEST_F(RcsTest, catcs_grows_by_five_beyond_the_need) {
  EXPECT_EQ(1, rcs_catcs(rcs_, "abcd", 4));
  EXPECT_EQ(4u, rcs_->capacity);
  EXPECT_EQ(1, rcs_catcs(rcs_, "efghij", 6));
  EXPECT_EQ(15u, rcs_->capacity);
  EXPECT_STREQ("abcdefghij", rcs_->text);
}

TEST_F(RcsTest, catcs_takes_only_the_first_bytes) {
  EXPECT_EQ(1, rcs_catcs(rcs_, "abcdef", 2));
  EXPECT_EQ(1, rcs_catcs(rcs_, "zz", 0));
  EXPECT_STREQ("ab", rcs_->text);
}

TEST_F(RcsTest, resize_changes_the_room_and_terminates_at_its_end) {
  rcs_catcs(rcs_, "ab", 2);
  EXPECT_EQ(1, rcs_resize(rcs_, 20));
  EXPECT_EQ(20u, rcs_->capacity);
  EXPECT_EQ('\0', rcs_->text[20]);
  EXPECT_STREQ("ab", rcs_->text);
  EXPECT_EQ(2u, rcs_length(rcs_));
}

TEST_F(RcsTest, resize_below_the_length_cuts_the_text) {
  rcs_catcs(rcs_, "abcdef", 6);
  EXPECT_EQ(1, rcs_resize(rcs_, 3));
  EXPECT_STREQ("abc", rcs_->text);
  EXPECT_EQ(3u, rcs_length(rcs_));
  EXPECT_EQ(1, rcs_catc(rcs_, 'x'));
  EXPECT_STREQ("abcx", rcs_->text);
}

TEST_F(RcsTest, unwrap_hands_out_the_text) {
  rcs_catcs(rcs_, "abc", 3);
  EXPECT_EQ("abc", take(rcs_unwrap(rcs_)));
  rcs_ = nullptr;
}

TEST_F(RcsTest, free_clears_the_pointer_and_ignores_null) {
  rcs_free(&rcs_);
  EXPECT_EQ(nullptr, rcs_);
  rcs_free(&rcs_);
  EXPECT_EQ(nullptr, rcs_);
}

TEST_F(RcsTest, null_is_a_broken_precondition) {
  EXPECT_ASSERTION(rcs_free(nullptr), "rcs != ((void *)0)");
  EXPECT_ASSERTION(rcs_resize(nullptr, 1), "rcs != ((void *)0)");
  EXPECT_ASSERTION(rcs_unwrap(nullptr), "rcs != ((void *)0)");
  EXPECT_ASSERTION(rcs_length(nullptr), "rcs != ((void *)0)");
  EXPECT_ASSERTION(rcs_catc(nullptr, 'c'), "pre != ((void *)0)");
  EXPECT_ASSERTION(rcs_catcs(nullptr, "c", 1), "pre != ((void *)0)");
  EXPECT_ASSERTION(rcs_catcs(rcs_, nullptr, 1), "pos != ((void *)0)");
}

}  // namespace
