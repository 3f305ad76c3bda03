// Comparing: the same members with the same values, in any order.
#include "edit_support.h"
#include "support/faults.h"

namespace {

using fairlead_test::deep_document;
using fairlead_test::document;
using fairlead_test::OwnedTalk;
using fairlead_test::wide_document;

class EqualTest : public fairlead_test::DeviceTest {
 protected:
  // Whichever way round, the answer is the same, and errno stays.
  static bool equal(const talk_t* a, const talk_t* b) {
    errno = fairlead_test::kStaleErrno;
    const int result = TalkEqual(a, b);
    EXPECT_EQ(result, TalkEqual(b, a));
    EXPECT_EQ(fairlead_test::kStaleErrno, errno);
    return result == 1;
  }
  static bool equal(const std::string& a, const std::string& b) {
    return equal(document(a).get(), document(b).get());
  }
};

// The comparison as its rules tell it, step by step.
bool equal_step_by_step(talk_t* a, talk_t* b);

bool covers_step_by_step(talk_t* a, talk_t* b) {
  for (axp_t* member = VesselEach(a, nullptr); member; member = VesselEach(a, member))
    if (!equal_step_by_step(AxpGetX(member), VesselGetX(b, AxpGet(member)))) return false;
  return true;
}

bool equal_step_by_step(talk_t* a, talk_t* b) {
  if (a == b) return true;
  if (VesselCheck(a))
    return VesselCheck(b) && covers_step_by_step(a, b) && covers_step_by_step(b, a);
  if (AxpCheck(a))
    return b && b->type == JSON_STRING && strcmp(AxpGet(a), AxpGet(b)) == 0 &&
           equal_step_by_step(AxpGetX(a), AxpGetX(b));
  return RenderCheck(a) && RenderCheck(b) && strcmp(RenderString(a), RenderString(b)) == 0;
}

TEST_F(EqualTest, order_does_not_matter) {
  EXPECT_TRUE(equal(R"({"a":"1","b":"2"})", R"({"b":"2","a":"1"})"));
  EXPECT_TRUE(equal(R"({"a":{"x":"1","y":{}},"b":"2"})", R"({"b":"2","a":{"y":{},"x":"1"}})"));
  EXPECT_TRUE(equal("{}", "{}"));
}

TEST_F(EqualTest, members_and_values_do) {
  EXPECT_FALSE(equal(R"({"a":"1"})", R"({"a":"1","b":"2"})"));
  EXPECT_FALSE(equal(R"({"a":"1"})", R"({"a":"2"})"));
  EXPECT_FALSE(equal(R"({"a":"1"})", R"({"b":"1"})"));
  EXPECT_FALSE(equal(R"({"a":{}})", "{}"));
  EXPECT_FALSE(equal(R"({"a":"1"})", R"({"a":{"a":"1"}})"));
  EXPECT_FALSE(equal(R"({"o":{"a":"1"},"b":"2"})", R"({"o":{"a":"3"},"b":"2"})"));
}

TEST_F(EqualTest, strings_are_equal_byte_for_byte) {
  OwnedTalk x(RenderCreate("x")), same(RenderCreate("x")), other(RenderCreate("X"));
  OwnedTalk vessel(VesselCreate());
  EXPECT_TRUE(equal(x.get(), same.get()));
  EXPECT_FALSE(equal(x.get(), other.get()));
  EXPECT_FALSE(equal(x.get(), vessel.get()));
}

TEST_F(EqualTest, a_member_is_equal_by_name_and_value) {
  OwnedTalk member(AxpCreate("a", document(R"({"x":"1"})").release()));
  for (auto [text, result] : {std::pair{R"({"a":{"x":"1"}})", true},
                              {R"({"b":{"x":"1"}})", false},
                              {R"({"a":{"x":"2"}})", false},
                              {R"({"a":"1"})", false},
                              {R"({"a":1})", false}})
    EXPECT_EQ(result, equal(member.get(), document(text)->child)) << text;
}

TEST_F(EqualTest, a_member_is_never_equal_to_a_node_of_another_role) {
  OwnedTalk member(AxpCreate("a", RenderCreate("a")));
  OwnedTalk render(RenderCreate("a"));
  OwnedTalk array(json_new_array());
  for (const talk_t* other : {render.get(), array.get(), static_cast<talk_t*>(nullptr)})
    EXPECT_FALSE(equal(member.get(), other));
}

TEST_F(EqualTest, a_node_is_equal_to_itself_whatever_it_holds) {
  OwnedTalk vessel = document(R"({"n":1,"a":[true]})");
  EXPECT_TRUE(equal(vessel.get(), vessel.get()));
  EXPECT_TRUE(equal(vessel->child, vessel->child));
  EXPECT_TRUE(equal(vessel->child->child, vessel->child->child));
  EXPECT_TRUE(equal(static_cast<talk_t*>(nullptr), nullptr));
}

TEST_F(EqualTest, values_without_a_role_make_documents_unequal) {
  for (const char* text : {R"({"n":1})", R"({"n":[]})", R"({"n":true})", R"({"o":{"n":null}})"})
    EXPECT_FALSE(equal(text, text)) << text;
}

TEST_F(EqualTest, nothing_is_unequal_to_a_node) {
  OwnedTalk vessel(VesselCreate());
  EXPECT_FALSE(equal(vessel.get(), nullptr));
}

TEST_F(EqualTest, every_namesake_is_compared_with_the_first_of_the_other_side) {
  EXPECT_TRUE(equal(R"({"a":"1","a":"1"})", R"({"a":"1"})"));
  EXPECT_FALSE(equal(R"({"a":"1","a":"2"})", R"({"a":"1"})"));
  EXPECT_FALSE(equal(R"({"a":"1","a":"2"})", R"({"a":"1","a":"2"})"));
  EXPECT_TRUE(equal(R"({"a":{"x":"1"},"b":"2","a":{"x":"1"}})", R"({"b":"2","a":{"x":"1"}})"));
  EXPECT_FALSE(equal(R"({"a":{"x":"1"},"b":"2","a":{}})", R"({"b":"2","a":{"x":"1"}})"));
}

TEST_F(EqualTest, many_namesakes_with_objects_are_compared_one_by_one) {
  const std::string one = R"({"a":{"x":"1"}})";
  EXPECT_TRUE(equal(one, R"({"a":{"x":"1"},"a":{"x":"1"},"a":{"x":"1"},"a":{"x":"1"}})"));
  EXPECT_FALSE(equal(one, R"({"a":{"x":"1"},"a":{"x":"1"},"a":{"x":"1"},"a":{"x":"2"}})"));
  EXPECT_FALSE(equal(one, R"({"a":{"x":"1"},"a":{"x":"1"},"a":{"x":"1"},"b":{"x":"1"}})"));
}

TEST_F(EqualTest, a_member_without_a_value_equals_a_missing_one) {
  OwnedTalk cleared = document(R"({"a":"1","b":"2"})");
  VesselClearX(cleared.get(), "b");
  EXPECT_TRUE(equal(cleared.get(), document(R"({"a":"1"})").get()));
  EXPECT_FALSE(equal(cleared.get(), document(R"({"a":"1","b":"2"})").get()));
  OwnedTalk other = document(R"({"b":"2","a":"1"})");
  VesselClearX(other.get(), "b");
  EXPECT_TRUE(equal(cleared.get(), other.get()));
}

TEST_F(EqualTest, inner_documents_are_compared_in_their_own_bounds) {
  OwnedTalk a = document(R"({"x":{"p":{"q":"1"}},"y":"1"})");
  OwnedTalk b = document(R"({"x":{"p":{"q":"1"}},"z":"2"})");
  EXPECT_TRUE(equal(VesselGetX(a.get(), "x"), VesselGetX(b.get(), "x")));
  EXPECT_FALSE(equal(a.get(), b.get()));
}

TEST_F(EqualTest, random_documents_compare_as_step_by_step) {
  fairlead_test::RandomDocuments random(3);
  int found_equal = 0;
  for (int size : {1, 2, 3, 4, 40}) {
    for (int round = 0; round < 400; ++round) {
      OwnedTalk a = random.next(size, 3, 2);
      OwnedTalk b = random.next(size, 3, 2);
      OwnedTalk merged(VesselDup(a.get()));
      VesselModify(b.get(), merged.get());
      VesselModify(merged.get(), b.get());
      for (auto [left, right] : {std::pair{a.get(), b.get()}, {merged.get(), b.get()}}) {
        const bool expected = equal_step_by_step(left, right);
        found_equal += expected;
        ASSERT_EQ(expected, equal(left, right))
            << fairlead_test::text_of(left) << " " << fairlead_test::text_of(right);
      }
    }
  }
  EXPECT_LT(100, found_equal) << "both answers must have been met";
}

// Where the members come in the same order, the comparison takes shorter ways.
TEST_F(EqualTest, documents_that_are_alike_compare_as_step_by_step) {
  fairlead_test::AlikeDocuments alike(4);
  int found_equal = 0, found_unequal = 0;
  for (int members : {2, 15, 16, 17, 18, 40, 200}) {
    for (int round = 0; round < 60; ++round) {
      const auto [a, b] = alike.next(members, round % 2 == 0);
      const bool expected = equal_step_by_step(a.get(), b.get());
      ++(expected ? found_equal : found_unequal);
      ASSERT_EQ(expected, equal(a.get(), b.get()))
          << fairlead_test::text_of(a) << " " << fairlead_test::text_of(b);
    }
  }
  EXPECT_LT(50, found_equal);
  EXPECT_LT(50, found_unequal);
}

// Below some depth the comparison remembers less of the order that it has met.
TEST_F(EqualTest, members_around_a_deep_document_are_compared_at_every_level) {
  const auto nested = [](size_t levels, size_t odd, const std::string& before,
                         const std::string& after) {
    std::string text = "{}";
    for (size_t level = 0; level < levels; ++level)
      text = level == odd ? "{" + before + "\"in\":" + text + after + "}"
                          : "{\"p\":\"1\",\"in\":" + text + ",\"q\":\"2\"}";
    return text;
  };
  const std::string plain = nested(70, 70, "", "");
  for (size_t odd = 0; odd < 70; ++odd) {
    EXPECT_TRUE(equal(plain, nested(70, odd, R"("q":"2","p":"1",)", ""))) << odd;
    EXPECT_TRUE(equal(plain, nested(70, odd, R"("p":"1",)", R"(,"q":"2")"))) << odd;
    EXPECT_FALSE(equal(plain, nested(70, odd, R"("p":"1",)", R"(,"q":"3")"))) << odd;
    EXPECT_FALSE(equal(plain, nested(70, odd, R"("p":"1",)", R"(,"q":"2","r":"3")"))) << odd;
    EXPECT_FALSE(equal(plain, nested(70, odd, R"("p":"1",)", ""))) << odd;
    EXPECT_FALSE(equal(plain, nested(70, odd, R"("p":"1",)", R"(,"q":"2","p":"3")"))) << odd;
  }
}

TEST_F(EqualTest, large_documents_compare_in_any_order) {
  OwnedTalk a = wide_document(0, 2000);
  OwnedTalk b = wide_document(1000, 1000);
  for (int i = 0; i < 1000; ++i) VesselSetS(b.get(), std::to_string(i).c_str(), "x");
  EXPECT_TRUE(equal(a.get(), b.get()));
  VesselAdd(b.get(), AxpCreate("500", RenderCreate("x")));
  EXPECT_TRUE(equal(a.get(), b.get())) << "a namesake with the same value";
  VesselAdd(b.get(), AxpCreate("700", RenderCreate("y")));
  EXPECT_FALSE(equal(a.get(), b.get())) << "and one with another";
}

TEST_F(EqualTest, a_comparison_without_memory_for_an_index_is_the_same) {
  OwnedTalk a = wide_document(0, 1000);
  VesselAdd(a.get(), VesselSplit(a.get(), a->child));  // the names do not ascend any more
  OwnedTalk b(VesselDup(a.get()));
  VesselAdd(b.get(), VesselSplit(b.get(), b->child));
  fairlead_test::Fault fault(fairlead_test::Call::kMalloc,
                             {.error = ENOMEM, .times = fairlead_test::kForever});
  EXPECT_TRUE(equal(a.get(), b.get()));
  EXPECT_TRUE(fault.fired()) << "an index was wanted";
}

TEST_F(EqualTest, depth_costs_no_stack) {
  OwnedTalk a = deep_document(RenderCreate("x"));
  OwnedTalk b = deep_document(RenderCreate("x"));
  fairlead_test::run_on_small_stack(fairlead_test::kSmallStackKib, [&] {
    EXPECT_EQ(1, TalkEqual(a.get(), b.get()));
    AxpSet(fairlead_test::innermost(b), "y");
    EXPECT_EQ(0, TalkEqual(a.get(), b.get()));
  });
}

TEST_F(EqualTest, time_does_not_double_with_each_level) {
  OwnedTalk a = deep_document(RenderCreate("x"), 1000);
  OwnedTalk b = deep_document(RenderCreate("x"), 1000);
  EXPECT_LT(fairlead_test::seconds_of([&] { EXPECT_TRUE(equal(a.get(), b.get())); }), 1);
}

TEST_F(EqualTest, time_grows_with_the_number_of_members) {
  const auto seconds = [](int members) {
    OwnedTalk a = wide_document(0, members);
    OwnedTalk b(VesselDup(a.get()));
    return fairlead_test::seconds_of([&] { EXPECT_EQ(1, TalkEqual(a.get(), b.get())); });
  };
  const double few = seconds(10000);
  EXPECT_LT(seconds(100000), 50 * few + 0.5);
}

}  // namespace
