// Objects: adding, replacing and removing members.
#include "support/faults.h"
#include "talk_support.h"

namespace {

using fairlead_test::Call;
using fairlead_test::document;
using fairlead_test::EachCall;
using fairlead_test::expect_unlinked;
using fairlead_test::OwnedTalk;
using fairlead_test::text_of;

class VesselEditTest : public fairlead_test::DeviceTest {
 protected:
  static constexpr const char* kText = R"({"a":"1","b":"2","c":{"d":"3"}})";
  OwnedTalk vessel_ = document(kText);
  OwnedTalk render_{RenderCreate("x")};

  vessel_t* vessel() { return vessel_.get(); }
  std::string text() { return text_of(vessel_); }
  static axp_t* make(const char* name, const char* value) {
    return AxpCreate(name, RenderCreate(value));
  }
};

TEST_F(VesselEditTest, add_appends_and_keeps_namesakes) {
  EXPECT_EQ(1, VesselAdd(vessel(), make("a", "4")));
  EXPECT_EQ(R"({"a":"1","b":"2","c":{"d":"3"},"a":"4"})", text());
  EXPECT_EQ(4, VesselCount(vessel()));
  EXPECT_STREQ("1", VesselGetS(vessel(), "a"));
}

TEST_F(VesselEditTest, add_refuses_what_is_no_member) {
  OwnedTalk other(VesselCreate());
  OwnedTalk number(json_new_number("1"));
  EXPECT_REFUSED(0, VesselAdd(vessel(), other.get()));
  EXPECT_REFUSED(0, VesselAdd(vessel(), number.get()));
  EXPECT_REFUSED(0, VesselAdd(vessel(), vessel()));
  EXPECT_REFUSED(0, VesselAdd(vessel(), nullptr));
  EXPECT_EQ(kText, text());
}

TEST_F(VesselEditTest, add_refuses_what_is_no_object) {
  OwnedTalk member(make("e", "4"));
  EXPECT_REFUSED(0, VesselAdd(nullptr, member.get()));
  EXPECT_REFUSED(0, VesselAdd(render_.get(), member.get()));
  expect_unlinked(member.get());
}

TEST_F(VesselEditTest, add_refuses_a_member_that_stands_in_an_object) {
  OwnedTalk other = document(R"({"e":"4"})");
  EXPECT_REFUSED(0, VesselAdd(vessel(), other->child));
  EXPECT_REFUSED(0, VesselAdd(vessel(), vessel()->child));
  EXPECT_EQ(kText, text());
  EXPECT_EQ(R"({"e":"4"})", text_of(other));
}

TEST_F(VesselEditTest, set_moves_the_member_to_the_end) {
  errno = 0;
  EXPECT_EQ(1, VesselSet(vessel(), make("a", "4")));
  EXPECT_EQ(R"({"b":"2","c":{"d":"3"},"a":"4"})", text());
  EXPECT_EQ(0, errno);
}

TEST_F(VesselEditTest, set_appends_a_new_name) {
  errno = 0;
  EXPECT_EQ(1, VesselSet(vessel(), make("e", "4")));
  EXPECT_EQ("a b c e ", fairlead_test::names_of(vessel()));
  EXPECT_EQ(0, errno);
}

TEST_F(VesselEditTest, set_removes_the_first_namesake_only) {
  VesselAdd(vessel(), make("a", "4"));
  EXPECT_EQ(1, VesselSet(vessel(), make("a", "5")));
  EXPECT_EQ(R"({"b":"2","c":{"d":"3"},"a":"4","a":"5"})", text());
}

TEST_F(VesselEditTest, set_refuses_what_has_no_name) {
  OwnedTalk bare(json_new_value(JSON_STRING));
  EXPECT_REFUSED(0, VesselSet(vessel(), nullptr));
  EXPECT_REFUSED(0, VesselSet(vessel(), vessel()));
  EXPECT_REFUSED(0, VesselSet(vessel(), bare.get()));
  EXPECT_EQ(kText, text());
}

TEST_F(VesselEditTest, set_refuses_what_is_no_object) {
  OwnedTalk member(make("a", "4"));
  EXPECT_REFUSED(0, VesselSet(nullptr, member.get()));
  EXPECT_REFUSED(0, VesselSet(render_.get(), member.get()));
}

TEST_F(VesselEditTest, set_refuses_a_member_that_stands_in_an_object) {
  EXPECT_REFUSED(0, VesselSet(vessel(), vessel()->child));
  EXPECT_EQ(kText, text());
}

TEST_F(VesselEditTest, set_x_replaces_in_place) {
  EXPECT_EQ(1, VesselSetX(vessel(), "a", VesselCreate()));
  EXPECT_EQ(R"({"a":{},"b":"2","c":{"d":"3"}})", text());
}

TEST_F(VesselEditTest, set_x_appends_a_new_name) {
  EXPECT_EQ(1, VesselSetX(vessel(), "e", RenderCreate("4")));
  EXPECT_EQ(R"({"a":"1","b":"2","c":{"d":"3"},"e":"4"})", text());
}

TEST_F(VesselEditTest, set_x_without_a_name_takes_the_first_member) {
  EXPECT_EQ(1, VesselSetX(vessel(), nullptr, RenderCreate("4")));
  EXPECT_STREQ("4", VesselGetS(vessel(), "a"));
}

TEST_F(VesselEditTest, set_x_refuses_a_new_member_without_a_name) {
  OwnedTalk empty(VesselCreate());
  OwnedTalk value(RenderCreate("4"));
  EXPECT_REFUSED(0, VesselSetX(empty.get(), nullptr, value.get()));
  EXPECT_REFUSED(0, VesselSetX(vessel(), "", value.get()));
  expect_unlinked(value.get());
  EXPECT_EQ(kText, text());
}

TEST_F(VesselEditTest, set_x_refuses_no_object_and_no_value) {
  OwnedTalk value(RenderCreate("4"));
  EXPECT_REFUSED(0, VesselSetX(nullptr, "a", value.get()));
  EXPECT_REFUSED(0, VesselSetX(render_.get(), "a", value.get()));
  EXPECT_REFUSED(0, VesselSetX(vessel(), "a", nullptr));
  EXPECT_EQ(kText, text());
}

TEST_F(VesselEditTest, set_x_of_a_value_that_may_not_stand_there) {
  OwnedTalk value(make("inner", "v"));
  EXPECT_REFUSED(0, VesselSetX(vessel(), "e", value.get()));
  EXPECT_EQ(kText, text());
  EXPECT_ERRNO_KEPT(0, VesselSetX(vessel(), "a", value.get()));
  EXPECT_EQ("<8>", text()) << "the old value is gone";
  expect_unlinked(value.get());
}

TEST_F(VesselEditTest, set_x_without_memory_leaves_the_value_to_the_caller) {
  OwnedTalk value(RenderCreate("4"));
  fairlead_test::Fault fault(Call::kMalloc, {.error = ENOMEM, .times = fairlead_test::kForever});
  EXPECT_REFUSED(0, VesselSetX(vessel(), "e", value.get()));
  expect_unlinked(value.get());
}

TEST_F(VesselEditTest, set_s_sets_a_string) {
  EXPECT_EQ(1, VesselSetS(vessel(), "c", "4"));
  EXPECT_EQ(1, VesselSetS(vessel(), "e", ""));
  EXPECT_EQ(1, VesselSetS(vessel(), "a", VesselGetS(vessel(), "a")));
  EXPECT_EQ(R"({"a":"1","b":"2","c":"4","e":""})", text());
}

TEST_F(VesselEditTest, set_s_refuses_no_object_and_no_text) {
  EXPECT_REFUSED(0, VesselSetS(nullptr, "a", "4"));
  EXPECT_REFUSED(0, VesselSetS(render_.get(), "a", "4"));
  EXPECT_REFUSED(0, VesselSetS(vessel(), "a", nullptr));
  EXPECT_REFUSED(0, VesselSetS(vessel(), "", "4"));
  EXPECT_EQ(kText, text());
}

TEST_F(VesselEditTest, set_s_without_memory_changes_nothing) {
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    OwnedTalk vessel = document(kText);
    const int result = each.run([&] { return VesselSetS(vessel.get(), "e", "4"); });
    EXPECT_EQ(each.fired() ? 0 : 1, result) << each.nth();
    EXPECT_EQ(each.fired() ? "a b c " : "a b c e ", fairlead_test::names_of(vessel.get()));
  }
}

TEST_F(VesselEditTest, split_hands_the_member_out) {
  OwnedTalk member(VesselSplit(vessel(), VesselFind(vessel(), "b")));
  expect_unlinked(member.get());
  EXPECT_STREQ("2", AxpGetS(member.get()));
  EXPECT_EQ("a c ", fairlead_test::names_of(vessel()));
}

TEST_F(VesselEditTest, split_and_delete_refuse_a_member_of_another_object) {
  talk_t* inner = VesselGetX(vessel(), "c");
  for (axp_t* stranger : {inner->child, render_.get(), static_cast<axp_t*>(nullptr)}) {
    EXPECT_REFUSED(nullptr, VesselSplit(vessel(), stranger));
    EXPECT_REFUSED(0, VesselDelete(vessel(), stranger));
  }
  EXPECT_EQ(kText, text());
}

TEST_F(VesselEditTest, split_and_delete_refuse_what_is_no_object) {
  axp_t* member = vessel()->child;
  for (vessel_t* stranger : {static_cast<vessel_t*>(nullptr), render_.get(), member}) {
    EXPECT_REFUSED(nullptr, VesselSplit(stranger, member->child));
    EXPECT_REFUSED(0, VesselDelete(stranger, member->child));
  }
}

TEST_F(VesselEditTest, delete_frees_the_member) {
  EXPECT_EQ(1, VesselDelete(vessel(), VesselFind(vessel(), "c")));
  EXPECT_EQ(R"({"a":"1","b":"2"})", text());
}

TEST_F(VesselEditTest, cut_hands_the_first_of_the_name_out) {
  VesselAdd(vessel(), make("a", "4"));
  OwnedTalk member(VesselCut(vessel(), "a"));
  expect_unlinked(member.get());
  EXPECT_STREQ("1", AxpGetS(member.get()));
  EXPECT_STREQ("4", VesselGetS(vessel(), "a"));
}

TEST_F(VesselEditTest, clear_removes_the_first_of_the_name_only) {
  VesselAdd(vessel(), make("a", "4"));
  EXPECT_EQ(1, VesselClear(vessel(), "a"));
  EXPECT_EQ(R"({"b":"2","c":{"d":"3"},"a":"4"})", text());
}

TEST_F(VesselEditTest, clear_x_leaves_the_member_without_a_value) {
  EXPECT_EQ(1, VesselClearX(vessel(), "b"));
  EXPECT_EQ("a b c ", fairlead_test::names_of(vessel()));
  EXPECT_EQ("<8>", text());
  EXPECT_ERRNO_KEPT(0, VesselClearX(vessel(), "b"));
}

TEST_F(VesselEditTest, cut_x_hands_the_value_out_and_keeps_the_member) {
  OwnedTalk value(VesselCutX(vessel(), "c"));
  expect_unlinked(value.get());
  EXPECT_EQ(R"({"d":"3"})", text_of(value));
  EXPECT_EQ("a b c ", fairlead_test::names_of(vessel()));
  EXPECT_REFUSED(nullptr, VesselCutX(vessel(), "c"));
}

TEST_F(VesselEditTest, removing_by_name_refuses_a_missing_name_or_object) {
  for (vessel_t* where : {vessel(), render_.get(), static_cast<vessel_t*>(nullptr)}) {
    EXPECT_REFUSED(nullptr, VesselCut(where, "zz"));
    EXPECT_REFUSED(0, VesselClear(where, "zz"));
    EXPECT_REFUSED(0, VesselClearX(where, "zz"));
    EXPECT_REFUSED(nullptr, VesselCutX(where, "zz"));
  }
  EXPECT_EQ(kText, text());
}

}  // namespace
