// Members: a name and one value, read, replaced, taken out.
#include "support/faults.h"
#include "talk_support.h"

namespace {

using fairlead_test::Call;
using fairlead_test::document;
using fairlead_test::EachCall;
using fairlead_test::Fault;
using fairlead_test::OwnedTalk;
using fairlead_test::text_of;

class AxpTest : public fairlead_test::DeviceTest {
 protected:
  OwnedTalk vessel_ = document(R"({"s":"x","o":{"p":"q"},"n":1})");

  axp_t* member(const char* name) { return VesselFind(vessel_.get(), name); }
  std::string text() { return text_of(vessel_); }

  // A member with a value may not be the value of another member.
  static OwnedTalk refused_value() { return OwnedTalk(AxpCreate("inner", RenderCreate("v"))); }
};

TEST_F(AxpTest, create_takes_over_its_value) {
  talk_t* value = RenderCreate("1");
  OwnedTalk member(AxpCreate("a", value));
  EXPECT_STREQ("a", AxpGet(member.get()));
  EXPECT_EQ(value, AxpGetX(member.get()));
  EXPECT_EQ(1u, AxpCheck(member.get()));
}

TEST_F(AxpTest, create_refuses_no_name_an_empty_name_and_no_value) {
  OwnedTalk value(RenderCreate("1"));
  EXPECT_REFUSED(nullptr, AxpCreate(nullptr, value.get()));
  EXPECT_REFUSED(nullptr, AxpCreate("", value.get()));
  EXPECT_REFUSED(nullptr, AxpCreate("a", nullptr));
}

TEST_F(AxpTest, create_leaves_a_value_that_may_not_stand_there_to_the_caller) {
  OwnedTalk value = refused_value();
  EXPECT_ERRNO_KEPT(nullptr, AxpCreate("a", value.get()));
  fairlead_test::expect_unlinked(value.get());
  EXPECT_STREQ("v", AxpGetS(value.get()));
}

TEST_F(AxpTest, create_refuses_a_value_that_stands_elsewhere) {
  EXPECT_REFUSED(nullptr, AxpCreate("a", AxpGetX(member("o"))));
  EXPECT_EQ(R"({"s":"x","o":{"p":"q"},"n":1})", text());
}

TEST_F(AxpTest, create_without_memory_leaves_the_value_to_the_caller) {
  OwnedTalk value(RenderCreate("1"));
  Fault fault(Call::kMalloc, {.error = ENOMEM, .times = fairlead_test::kForever});
  EXPECT_FAILS(ENOMEM, nullptr, AxpCreate("a", value.get()));
  fairlead_test::expect_unlinked(value.get());
}

TEST_F(AxpTest, get_reads_the_name) {
  EXPECT_STREQ("n", AxpGet(member("n")));
  EXPECT_REFUSED(nullptr, AxpGet(nullptr));
  EXPECT_REFUSED(nullptr, AxpGet(vessel_.get()));
}

TEST_F(AxpTest, set_renames_to_a_copy) {
  for (std::string name : {"", "t", "a much longer name than before", "u"}) {
    EXPECT_EQ(1, AxpSet(vessel_->child, name.c_str()));
    EXPECT_EQ("{\"" + name + R"(":"x","o":{"p":"q"},"n":1})", text());
  }
}

TEST_F(AxpTest, set_rewrites_a_render_too) {
  EXPECT_EQ(1, AxpSet(AxpGetX(member("s")), "other"));
  EXPECT_STREQ("other", AxpGetS(member("s")));
}

TEST_F(AxpTest, set_accepts_a_part_of_the_present_name) {
  axp_t* renamed = member("s");
  AxpSet(renamed, "a long name of its own");
  EXPECT_EQ(1, AxpSet(renamed, AxpGet(renamed)));
  EXPECT_EQ(1, AxpSet(renamed, AxpGet(renamed) + 7));
  EXPECT_STREQ("name of its own", AxpGet(renamed));
}

TEST_F(AxpTest, set_refuses_other_nodes_and_no_name) {
  EXPECT_REFUSED(0, AxpSet(nullptr, "a"));
  EXPECT_REFUSED(0, AxpSet(vessel_.get(), "a"));
  EXPECT_REFUSED(0, AxpSet(AxpGetX(member("n")), "2"));
  EXPECT_REFUSED(0, AxpSet(member("s"), nullptr));
}

TEST_F(AxpTest, set_without_memory_keeps_the_name) {
  axp_t* renamed = member("s");
  Fault fault(Call::kMalloc, {.error = ENOMEM, .times = fairlead_test::kForever});
  EXPECT_FAILS(ENOMEM, 0, AxpSet(renamed, "a longer name"));
  EXPECT_STREQ("s", AxpGet(renamed));
}

TEST_F(AxpTest, get_x_gives_any_value) {
  EXPECT_EQ(uint32_t{JSON_OBJECT}, AxpGetX(member("o"))->type);
  EXPECT_EQ(uint32_t{JSON_NUMBER}, AxpGetX(member("n"))->type);
}

TEST_F(AxpTest, get_x_of_a_member_without_a_value_leaves_errno) {
  AxpClearX(member("s"));
  EXPECT_ERRNO_KEPT(nullptr, AxpGetX(member("s")));
}

TEST_F(AxpTest, get_x_refuses_other_nodes) {
  EXPECT_REFUSED(nullptr, AxpGetX(nullptr));
  EXPECT_REFUSED(nullptr, AxpGetX(vessel_.get()));
}

TEST_F(AxpTest, get_s_reads_a_string_value) { EXPECT_STREQ("x", AxpGetS(member("s"))); }

TEST_F(AxpTest, get_s_of_any_other_value_is_null_and_leaves_errno) {
  EXPECT_ERRNO_KEPT(nullptr, AxpGetS(member("o")));
  EXPECT_ERRNO_KEPT(nullptr, AxpGetS(member("n")));
}

TEST_F(AxpTest, get_s_refuses_other_nodes_and_a_member_without_a_value) {
  EXPECT_REFUSED(nullptr, AxpGetS(nullptr));
  EXPECT_REFUSED(nullptr, AxpGetS(vessel_.get()));
  AxpClearX(member("s"));
  EXPECT_REFUSED(nullptr, AxpGetS(member("s")));
}

TEST_F(AxpTest, set_x_replaces_the_value) {
  EXPECT_EQ(1, AxpSetX(member("o"), RenderCreate("1")));
  EXPECT_EQ(1, AxpSetX(member("s"), VesselCreate()));
  EXPECT_EQ(R"({"s":{},"o":"1","n":1})", text());
}

TEST_F(AxpTest, set_x_gives_a_cleared_member_a_value_again) {
  AxpClearX(member("s"));
  EXPECT_EQ(1, AxpSetX(member("s"), RenderCreate("1")));
  EXPECT_EQ(R"({"s":"1","o":{"p":"q"},"n":1})", text());
}

TEST_F(AxpTest, set_x_that_is_refused_has_freed_the_old_value_already) {
  OwnedTalk value = refused_value();
  EXPECT_ERRNO_KEPT(0, AxpSetX(member("s"), value.get()));
  EXPECT_ERRNO_KEPT(nullptr, AxpGetX(member("s")));
  fairlead_test::expect_unlinked(value.get());
}

TEST_F(AxpTest, set_x_refuses_other_nodes_and_no_value) {
  OwnedTalk value(RenderCreate("1"));
  EXPECT_REFUSED(0, AxpSetX(nullptr, value.get()));
  EXPECT_REFUSED(0, AxpSetX(vessel_.get(), value.get()));
  EXPECT_REFUSED(0, AxpSetX(member("s"), nullptr));
  EXPECT_STREQ("x", AxpGetS(member("s")));
}

TEST_F(AxpTest, set_x_refuses_a_value_that_stands_elsewhere_or_in_itself) {
  EXPECT_REFUSED(0, AxpSetX(member("s"), AxpGetX(member("o"))));
  EXPECT_REFUSED(0, AxpSetX(member("s"), AxpGetX(member("s"))));
  OwnedTalk alone(AxpCreate("a", RenderCreate("1")));
  EXPECT_REFUSED(0, AxpSetX(alone.get(), alone.get()));
  EXPECT_STREQ("1", AxpGetS(alone.get()));
  EXPECT_EQ(R"({"s":"x","o":{"p":"q"},"n":1})", text());
}

TEST_F(AxpTest, set_s_replaces_the_value_by_a_string) {
  EXPECT_EQ(1, AxpSetS(member("o"), "1"));
  EXPECT_STREQ("1", AxpGetS(member("o")));
}

TEST_F(AxpTest, set_s_accepts_the_present_string) {
  EXPECT_EQ(1, AxpSetS(member("s"), AxpGetS(member("s"))));
  EXPECT_STREQ("x", AxpGetS(member("s")));
}

TEST_F(AxpTest, set_s_refuses_other_nodes_and_no_text) {
  EXPECT_REFUSED(0, AxpSetS(nullptr, "1"));
  EXPECT_REFUSED(0, AxpSetS(vessel_.get(), "1"));
  EXPECT_REFUSED(0, AxpSetS(member("s"), nullptr));
  EXPECT_STREQ("x", AxpGetS(member("s")));
}

TEST_F(AxpTest, set_s_without_memory_keeps_the_value) {
  Fault fault(Call::kMalloc, {.error = ENOMEM, .times = fairlead_test::kForever});
  EXPECT_FAILS(ENOMEM, 0, AxpSetS(member("s"), "1"));
  EXPECT_STREQ("x", AxpGetS(member("s")));
}

TEST_F(AxpTest, clear_x_frees_the_value_and_keeps_the_member) {
  EXPECT_EQ(1, AxpClearX(member("o")));
  EXPECT_EQ("s o n ", fairlead_test::names_of(vessel_.get()));
  EXPECT_EQ("<8>", text());
}

TEST_F(AxpTest, clear_x_without_a_value_leaves_errno) {
  AxpClearX(member("o"));
  EXPECT_ERRNO_KEPT(0, AxpClearX(member("o")));
}

TEST_F(AxpTest, clear_x_refuses_other_nodes) {
  EXPECT_REFUSED(0, AxpClearX(nullptr));
  EXPECT_REFUSED(0, AxpClearX(vessel_.get()));
}

TEST_F(AxpTest, cut_x_hands_the_value_out) {
  OwnedTalk value(AxpCutX(member("o")));
  fairlead_test::expect_unlinked(value.get());
  EXPECT_EQ(R"({"p":"q"})", text_of(value));
  EXPECT_ERRNO_KEPT(nullptr, AxpGetX(member("o")));
}

TEST_F(AxpTest, cut_x_refuses_a_member_without_a_value_and_other_nodes) {
  AxpClearX(member("s"));
  EXPECT_REFUSED(nullptr, AxpCutX(member("s")));
  EXPECT_REFUSED(nullptr, AxpCutX(nullptr));
  EXPECT_REFUSED(nullptr, AxpCutX(vessel_.get()));
}

}  // namespace
