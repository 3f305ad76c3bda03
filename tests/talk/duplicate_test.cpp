// Deep copies: all of them or none.
#include "edit_support.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::deep_document;
using fairlead_test::document;
using fairlead_test::EachCall;
using fairlead_test::OwnedTalk;
using fairlead_test::text_of;

class DuplicateTest : public fairlead_test::DeviceTest {
 protected:
  static std::string copy_of(const std::string& text) {
    OwnedTalk vessel = document(text);
    OwnedTalk copy(VesselDup(vessel.get()));
    EXPECT_EQ(text, text_of(vessel));
    fairlead_test::expect_unlinked(copy.get());
    vessel.reset();
    return text_of(copy);
  }
};

TEST_F(DuplicateTest, vessel_dup_copies_all_in_order) {
  for (const char* text : {"{}", R"({"b":"1","a":{"c":{},"d":"2"},"b":"","":"3","z":{"y":{}}})"})
    EXPECT_EQ(text, copy_of(text));
}

TEST_F(DuplicateTest, vessel_dup_leaves_out_what_has_no_role) {
  EXPECT_EQ(R"({"a":"1","o":{},"z":"2"})",
            copy_of(R"({"a":"1","n":1,"o":{"l":true,"x":[{"k":"v"}]},"z":"2"})"));
}

TEST_F(DuplicateTest, vessel_dup_leaves_out_members_without_a_value) {
  OwnedTalk vessel = document(R"({"a":"1","b":"2"})");
  AxpClearX(vessel->child);
  OwnedTalk copy(VesselDup(vessel.get()));
  EXPECT_EQ(R"({"b":"2"})", text_of(copy));
}

TEST_F(DuplicateTest, vessel_dup_leaves_out_what_has_no_text) {
  OwnedTalk vessel = document(R"({"a":"1","b":"2"})");
  AxpSetX(vessel->child, json_new_value(JSON_STRING));
  VesselAdd(vessel.get(), json_new_value(JSON_STRING));
  OwnedTalk copy(VesselDup(vessel.get()));
  EXPECT_EQ(R"({"b":"2"})", text_of(copy));
  EXPECT_REFUSED(nullptr, AxpDup(vessel->child));
}

TEST_F(DuplicateTest, vessel_dup_of_an_inner_object_stays_inside_of_it) {
  OwnedTalk vessel = document(R"({"a":{"b":{"c":"1"}},"d":"2"})");
  OwnedTalk copy(VesselDup(VesselGetX(vessel.get(), "a")));
  EXPECT_EQ(R"({"b":{"c":"1"}})", text_of(copy));
}

TEST_F(DuplicateTest, vessel_dup_refuses_what_is_no_object) {
  OwnedTalk render(RenderCreate("x"));
  EXPECT_REFUSED(nullptr, VesselDup(render.get()));
  EXPECT_REFUSED(nullptr, VesselDup(nullptr));
}

TEST_F(DuplicateTest, axp_dup_copies_name_and_value) {
  OwnedTalk vessel = document(R"({"a":"1","b":{"c":"2"}})");
  OwnedTalk first(AxpDup(VesselFind(vessel.get(), "a")));
  OwnedTalk second(AxpDup(VesselFind(vessel.get(), "b")));
  fairlead_test::expect_unlinked(first.get());
  EXPECT_STREQ("a", AxpGet(first.get()));
  EXPECT_STREQ("1", AxpGetS(first.get()));
  EXPECT_STREQ("b", AxpGet(second.get()));
  EXPECT_EQ(R"({"c":"2"})", text_of(AxpGetX(second.get())));
}

TEST_F(DuplicateTest, axp_dup_refuses_what_is_no_member) {
  OwnedTalk vessel = document(R"({"n":1,"r":"x"})");
  EXPECT_REFUSED(nullptr, AxpDup(nullptr));
  EXPECT_REFUSED(nullptr, AxpDup(vessel.get()));
  EXPECT_REFUSED(nullptr, AxpDup(VesselFind(vessel.get(), "n")));
  EXPECT_REFUSED(nullptr, AxpDup(VesselGetX(vessel.get(), "r")));
}

TEST_F(DuplicateTest, talk_dup_copies_every_role) {
  OwnedTalk vessel = document(R"({"a":{"b":"1"}})");
  for (talk_t* talk : {vessel.get(), vessel->child, vessel->child->child->child->child}) {
    OwnedTalk copy(TalkDup(talk));
    EXPECT_NE(talk, copy.get());
    EXPECT_EQ(1, TalkEqual(talk, copy.get()));
    fairlead_test::expect_unlinked(copy.get());
  }
}

TEST_F(DuplicateTest, talk_dup_of_any_other_node_is_null_and_leaves_errno) {
  OwnedTalk vessel = document(R"({"n":1})");
  EXPECT_ERRNO_KEPT(nullptr, TalkDup(vessel->child));
  EXPECT_ERRNO_KEPT(nullptr, TalkDup(vessel->child->child));
  EXPECT_REFUSED(nullptr, TalkDup(nullptr));
}

TEST_F(DuplicateTest, lost_memory_gives_no_copy_rather_than_a_part) {
  OwnedTalk vessel = document(R"({"a":"1","b":{"c":"2","d":{}}})");
  for (talk_t* talk : {vessel.get(), vessel->child_end, vessel->child->child}) {
    for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
      errno = 0;
      OwnedTalk copy(each.run([&] { return TalkDup(talk); }));
      EXPECT_EQ(each.fired(), copy == nullptr);
      EXPECT_EQ(each.fired() ? ENOMEM : 0, errno);
    }
  }
}

TEST_F(DuplicateTest, depth_costs_no_stack) {
  OwnedTalk deep = deep_document(RenderCreate("x"));
  OwnedTalk vessel, member;
  fairlead_test::run_on_small_stack(fairlead_test::kSmallStackKib, [&] {
    vessel.reset(VesselDup(deep.get()));
    EXPECT_EQ(1, TalkEqual(deep.get(), vessel.get()));
    vessel.reset();
    member.reset(AxpDup(deep->child));
    EXPECT_EQ(1, TalkEqual(deep->child, member.get()));
    member.reset(TalkDup(deep.get()));
  });
  EXPECT_STREQ("x", RenderString(fairlead_test::innermost(member)));
}

}  // namespace
