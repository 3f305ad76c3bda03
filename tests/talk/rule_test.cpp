// Rules: what a rule names is removed, what it looks inside stays.
#include "edit_support.h"
#include "support/faults.h"

namespace {

using fairlead_test::deep_document;
using fairlead_test::document;
using fairlead_test::OwnedTalk;
using fairlead_test::text_of;
using fairlead_test::wide_document;

class RuleTest : public fairlead_test::DeviceTest {
 protected:
  // The result and the text that is left; the rule must be as it was.
  static std::string prune(const std::string& rule_text, const std::string& target_text) {
    OwnedTalk rule = document(rule_text);
    OwnedTalk target = document(target_text);
    errno = fairlead_test::kStaleErrno;
    const int result = VesselDeleteRule(rule.get(), target.get());
    EXPECT_EQ(fairlead_test::kStaleErrno, errno);
    EXPECT_EQ(rule_text, text_of(rule));
    fairlead_test::names_of(target.get());
    return std::to_string(result) + " " + text_of(target);
  }
};

// The removal as its rules tell it, step by step.
int prune_step_by_step(talk_t* rule, talk_t* target) {
  int result = 0;
  for (axp_t* member = VesselEach(rule, nullptr); member; member = VesselEach(rule, member)) {
    axp_t* own = VesselFind(target, AxpGet(member));
    if (!own) continue;
    talk_t* value = AxpGetX(member);
    if (!value || !VesselCheck(value) || VesselCount(value) == 0) {
      result = VesselDelete(target, own);
    } else if (AxpGetX(own) && VesselCheck(AxpGetX(own))) {
      const int inner = prune_step_by_step(value, AxpGetX(own));
      if (inner) result = inner;
    }
  }
  return result;
}

TEST_F(RuleTest, add_rule_merges) {
  OwnedTalk target = document(R"({"a":"0"})");
  OwnedTalk rule = document(R"({"a":{"x":"1"}})");
  EXPECT_EQ(1, VesselAddRule(rule.get(), target.get()));
  EXPECT_EQ(R"({"a":{"x":"1"}})", text_of(target));
}

TEST_F(RuleTest, delete_removes_what_a_string_or_an_empty_object_names) {
  const char* target = R"({"a":"1","b":{"c":"2","d":"3"},"e":"4"})";
  EXPECT_EQ(R"(1 {"b":{"d":"3"},"e":"4"})", prune(R"({"a":"","b":{"c":""}})", target));
  EXPECT_EQ(R"(1 {"a":"1","e":"4"})", prune(R"({"b":{}})", target));
  EXPECT_EQ(R"(1 {"a":"1","e":"4"})", prune(R"({"b":"anything"})", target));
}

TEST_F(RuleTest, delete_removes_what_any_other_value_names) {
  EXPECT_EQ("1 {}", prune(R"({"a":1,"b":[],"c":null})", R"({"a":"1","b":{"x":"2"},"c":[3]})"));
}

TEST_F(RuleTest, delete_by_a_rule_member_without_a_value) {
  OwnedTalk rule = document(R"({"a":""})");
  OwnedTalk target = document(R"({"a":"1"})");
  AxpClearX(rule->child);
  EXPECT_EQ(1, VesselDeleteRule(rule.get(), target.get()));
  EXPECT_EQ("{}", text_of(target));
}

TEST_F(RuleTest, delete_ignores_what_is_not_there) {
  EXPECT_EQ(R"(0 {"a":"1"})", prune(R"({"zz":""})", R"({"a":"1"})"));
  EXPECT_EQ(R"(0 {"a":{"x":"1"}})", prune(R"({"a":{"y":""}})", R"({"a":{"x":"1"}})"));
  EXPECT_EQ(R"(0 {"a":"1"})", prune(R"({"a":{"x":""}})", R"({"a":"1"})"));
  EXPECT_EQ(R"(0 {"a":"1"})", prune("{}", R"({"a":"1"})"));
}

TEST_F(RuleTest, delete_looks_inside_of_objects_only) {
  EXPECT_EQ(R"(0 {"a":["x"]})", prune(R"({"a":{"x":""}})", R"({"a":["x"]})"));
  OwnedTalk rule = document(R"({"a":{"x":""}})");
  OwnedTalk cleared = document(R"({"a":"1"})");
  AxpClearX(cleared->child);
  EXPECT_ERRNO_KEPT(0, VesselDeleteRule(rule.get(), cleared.get()));
}

TEST_F(RuleTest, delete_leaves_an_object_that_has_become_empty) {
  EXPECT_EQ(R"(1 {"a":{}})", prune(R"({"a":{"x":""}})", R"({"a":{"x":"1"}})"));
}

TEST_F(RuleTest, each_namesake_in_a_rule_removes_one) {
  EXPECT_EQ(R"(1 {"a":"2"})", prune(R"({"a":""})", R"({"a":"1","a":"2"})"));
  EXPECT_EQ(R"(1 {"a":"3"})", prune(R"({"a":"","a":""})", R"({"a":"1","a":"2","a":"3"})"));
  EXPECT_EQ(R"(1 {"a":{"y":"2"},"b":"3"})",
            prune(R"({"a":"","a":{"x":""}})", R"({"a":"1","a":{"x":"1","y":"2"},"b":"3"})"));
}

TEST_F(RuleTest, a_result_stays_though_later_members_remove_nothing) {
  EXPECT_EQ(R"(1 {"b":{}})", prune(R"({"a":"","b":{"x":""}})", R"({"a":"1","b":{}})"));
}

TEST_F(RuleTest, delete_by_itself_leaves_the_objects) {
  OwnedTalk target = document(R"({"a":"1","b":{"c":"2","c":"3"},"a":"4"})");
  EXPECT_EQ(1, VesselDeleteRule(target.get(), target.get()));
  EXPECT_EQ(R"({"b":{}})", text_of(target));
}

TEST_F(RuleTest, what_is_no_object_is_refused) {
  OwnedTalk vessel(VesselCreate());
  OwnedTalk render(RenderCreate("x"));
  for (talk_t* other : {render.get(), static_cast<talk_t*>(nullptr)}) {
    EXPECT_REFUSED(0, VesselDeleteRule(vessel.get(), other));
    EXPECT_REFUSED(0, VesselDeleteRule(other, vessel.get()));
    EXPECT_REFUSED(-1, VesselAddRule(vessel.get(), other));
    EXPECT_REFUSED(-1, VesselAddRule(other, vessel.get()));
  }
}

TEST_F(RuleTest, random_documents_are_pruned_as_step_by_step) {
  fairlead_test::RandomDocuments random(2);
  for (int size : {1, 3, 10, 300, 700}) {
    for (int round = 0; round < (size < 100 ? 20 : 4); ++round) {
      OwnedTalk rule = random.next(size, size, size < 100 ? 3 : 1);
      OwnedTalk target = random.next(size, size / 2 + 1, size < 100 ? 3 : 1);
      OwnedTalk expected(VesselDup(target.get()));
      OwnedTalk own(VesselDup(target.get()));
      const int result = prune_step_by_step(rule.get(), expected.get());
      EXPECT_EQ(result, VesselDeleteRule(rule.get(), own.get()));
      ASSERT_EQ(text_of(expected), text_of(own)) << "size " << size << ", round " << round;
    }
  }
}

TEST_F(RuleTest, documents_that_are_alike_are_pruned_as_step_by_step) {
  fairlead_test::AlikeDocuments alike(6);
  for (int members : {2, 15, 16, 17, 18, 40, 200}) {
    for (int round = 0; round < 60; ++round) {
      const auto [rule, target] = alike.next(members, round % 2 == 0);
      OwnedTalk expected(VesselDup(target.get()));
      const int result = prune_step_by_step(rule.get(), expected.get());
      EXPECT_EQ(result, VesselDeleteRule(rule.get(), target.get()));
      ASSERT_EQ(text_of(expected), text_of(target)) << members << " members, round " << round;
    }
  }
}

TEST_F(RuleTest, a_removal_without_memory_for_an_index_is_the_same) {
  OwnedTalk rule = wide_document(500, 1000);
  OwnedTalk target = wide_document(0, 1000);
  fairlead_test::Fault fault(fairlead_test::Call::kMalloc,
                             {.error = ENOMEM, .times = fairlead_test::kForever});
  errno = 0;
  EXPECT_EQ(1, VesselDeleteRule(rule.get(), target.get()));
  EXPECT_TRUE(fault.fired()) << "an index was wanted";
  EXPECT_EQ(0, errno);
  EXPECT_EQ(500, VesselCount(target.get()));
}

TEST_F(RuleTest, depth_costs_no_stack) {
  OwnedTalk rule = deep_document(RenderCreate(""));
  OwnedTalk target = deep_document(RenderCreate("x"));
  int result = 0;
  fairlead_test::run_on_small_stack(fairlead_test::kSmallStackKib,
                                    [&] { result = VesselDeleteRule(rule.get(), target.get()); });
  EXPECT_EQ(1, result);
  EXPECT_EQ(1u, VesselCheck(fairlead_test::innermost(target))) << "the innermost member is gone";
}

TEST_F(RuleTest, time_grows_with_the_number_of_members) {
  const auto seconds = [](int members) {
    OwnedTalk rule = wide_document(members / 2, members);
    OwnedTalk target = wide_document(0, members);
    const double taken = fairlead_test::seconds_of(
        [&] { EXPECT_EQ(1, VesselDeleteRule(rule.get(), target.get())); });
    EXPECT_EQ(members / 2, VesselCount(target.get()));
    return taken;
  };
  const double few = seconds(10000);
  EXPECT_LT(seconds(100000), 50 * few + 0.5);
}

TEST_F(RuleTest, namesakes_do_not_make_it_slow) {
  OwnedTalk rule(VesselCreate());
  OwnedTalk target(VesselCreate());
  for (int i = 0; i < 100000; ++i) {
    VesselAdd(target.get(), AxpCreate(i % 2 ? "a" : std::to_string(i).c_str(), RenderCreate("x")));
    if (i % 2) VesselAdd(rule.get(), AxpCreate("a", RenderCreate("")));
  }
  const double taken =
      fairlead_test::seconds_of([&] { EXPECT_EQ(1, VesselDeleteRule(rule.get(), target.get())); });
  EXPECT_EQ(50000, VesselCount(target.get()));
  EXPECT_LT(taken, 2);
}

}  // namespace
