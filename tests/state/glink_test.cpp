// The intrusive list: what goes in comes out, in order, and a misuse is refused.
#include <cerrno>
#include <string>

#include "fairlead/state.h"
#include "support/device_test.h"

namespace {

struct Element {
  glink_t link{};
  char name = '?';
};

class GlinkTest : public fairlead_test::DeviceTest {
 protected:
  void put(const std::string& names) {
    for (char name : names) {
      elements_[name - 'a'].name = name;
      ASSERT_EQ(1, GlinkPut(&list_, &elements_[name - 'a'].link));
    }
  }

  glink_t* link(char name) { return &elements_[name - 'a'].link; }

  // The names from first to last, after checking every back link on the way.
  std::string order() {
    std::string names;
    for (glink_t* at = list_.next; at; at = at->next) {
      names += reinterpret_cast<Element*>(at)->name;
      const glink_t* back = at->next ? at->next->previous : list_.next->previous;
      EXPECT_EQ(at, back) << "back link after " << names;
    }
    return names;
  }

  glink_t list_{};
  Element elements_[26];
};

TEST_F(GlinkTest, init_makes_an_element_unlinked) {
  glink_t element{&list_, &list_};
  EXPECT_EQ(1, GlinkInit(&element));
  EXPECT_EQ(nullptr, element.next);
  EXPECT_EQ(nullptr, element.previous);
}

TEST_F(GlinkTest, init_refuses_null) {
  errno = 0;
  EXPECT_EQ(0, GlinkInit(nullptr));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(GlinkTest, is_empty_tells_the_state) {
  EXPECT_EQ(1, GlinkIsEmpty(&list_));
  put("a");
  EXPECT_EQ(0, GlinkIsEmpty(&list_));
}

TEST_F(GlinkTest, is_empty_of_null_is_true_with_einval) {
  errno = 0;
  EXPECT_EQ(1, GlinkIsEmpty(nullptr));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(GlinkTest, put_appends_and_the_first_knows_the_last) {
  put("abc");
  EXPECT_EQ("abc", order());
  EXPECT_EQ(link('c'), link('a')->previous);
}

TEST_F(GlinkTest, a_single_element_is_its_own_previous) {
  put("a");
  EXPECT_EQ(link('a'), link('a')->previous);
  EXPECT_EQ(nullptr, link('a')->next);
}

TEST_F(GlinkTest, put_refuses_an_element_twice) {
  put("a");
  errno = 0;
  EXPECT_EQ(0, GlinkPut(&list_, link('a')));
  EXPECT_EQ(EINVAL, errno);
  EXPECT_EQ("a", order());
}

TEST_F(GlinkTest, put_refuses_null) {
  for (auto [list, element] :
       {std::pair<glink_t*, glink_t*>{nullptr, link('a')}, {&list_, nullptr}}) {
    errno = 0;
    EXPECT_EQ(0, GlinkPut(list, element));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(GlinkTest, get_takes_first_in_first_out) {
  put("abc");
  EXPECT_EQ(link('a'), GlinkGet(&list_));
  EXPECT_EQ("bc", order());
  EXPECT_EQ(nullptr, link('a')->next);
  EXPECT_EQ(nullptr, link('a')->previous);
}

TEST_F(GlinkTest, pop_takes_last_in_first_out) {
  put("abc");
  EXPECT_EQ(link('c'), GlinkPop(&list_));
  EXPECT_EQ(link('b'), GlinkPop(&list_));
  EXPECT_EQ("a", order());
}

TEST_F(GlinkTest, get_and_pop_empty_a_list_of_one) {
  for (auto take : {GlinkGet, GlinkPop}) {
    put("a");
    EXPECT_EQ(link('a'), take(&list_));
    EXPECT_EQ(1, GlinkIsEmpty(&list_));
    EXPECT_EQ(nullptr, link('a')->previous);
  }
}

TEST_F(GlinkTest, get_and_pop_of_an_empty_list_leave_errno) {
  for (auto take : {GlinkGet, GlinkPop}) {
    errno = 0;
    EXPECT_EQ(nullptr, take(&list_));
    EXPECT_EQ(0, errno);
    EXPECT_EQ(nullptr, take(nullptr));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(GlinkTest, insert_without_position_goes_to_the_front) {
  put("bc");
  elements_[0].name = 'a';
  EXPECT_EQ(1, GlinkInsert(&list_, link('a'), nullptr));
  EXPECT_EQ("abc", order());
}

TEST_F(GlinkTest, insert_goes_before_its_position) {
  put("ac");
  elements_[1].name = 'b';
  EXPECT_EQ(1, GlinkInsert(&list_, link('b'), link('c')));
  EXPECT_EQ("abc", order());
  elements_[25].name = 'z';
  EXPECT_EQ(1, GlinkInsert(&list_, link('z'), link('a')));
  EXPECT_EQ("zabc", order());
}

TEST_F(GlinkTest, insert_into_an_empty_list) {
  elements_[0].name = 'a';
  EXPECT_EQ(1, GlinkInsert(&list_, link('a'), nullptr));
  EXPECT_EQ("a", order());
}

TEST_F(GlinkTest, insert_refuses_null_and_linked_elements) {
  put("a");
  for (auto [list, element] : {std::pair<glink_t*, glink_t*>{nullptr, link('b')},
                               {&list_, nullptr},
                               {&list_, link('a')}}) {
    errno = 0;
    EXPECT_EQ(0, GlinkInsert(list, element, nullptr));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(GlinkTest, delete_takes_an_element_from_anywhere) {
  put("abcd");
  EXPECT_EQ(1, GlinkDelete(&list_, link('b')));
  EXPECT_EQ("acd", order());
  EXPECT_EQ(1, GlinkDelete(&list_, link('a')));
  EXPECT_EQ("cd", order());
  EXPECT_EQ(1, GlinkDelete(&list_, link('d')));
  EXPECT_EQ("c", order());
  EXPECT_EQ(1, GlinkDelete(&list_, link('c')));
  EXPECT_EQ(1, GlinkIsEmpty(&list_));
}

TEST_F(GlinkTest, pop_after_deleting_the_last_gives_the_middle) {
  put("abc");
  EXPECT_EQ(1, GlinkDelete(&list_, link('c')));
  EXPECT_EQ(link('b'), GlinkPop(&list_));
}

TEST_F(GlinkTest, delete_refuses_null_and_unlinked_elements) {
  for (auto [list, element] : {std::pair<glink_t*, glink_t*>{nullptr, link('a')},
                               {&list_, nullptr},
                               {&list_, link('a')}}) {
    errno = 0;
    EXPECT_EQ(0, GlinkDelete(list, element));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(GlinkTest, delete_from_an_empty_list_leaves_errno) {
  glink_t other{};
  put("a");
  errno = 0;
  EXPECT_EQ(0, GlinkDelete(&other, link('a')));
  EXPECT_EQ(0, errno);
  GlinkPop(&list_);
}

}  // namespace
