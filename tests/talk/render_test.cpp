// Strings and the role tests: what a node is, and how it ends.
#include "support/faults.h"
#include "talk_support.h"

namespace {

using fairlead_test::Call;
using fairlead_test::document;
using fairlead_test::Fault;
using fairlead_test::OwnedTalk;
using fairlead_test::text_of;

class RenderTest : public fairlead_test::DeviceTest {
 protected:
  // Holds one member per kind of value: string, object, number, array, literal.
  OwnedTalk all_ = document(R"({"s":"x","o":{},"n":1,"a":[],"l":true})");

  const talk_t* member(const char* name) { return VesselFind(all_.get(), name); }
};

TEST_F(RenderTest, create_copies_the_text) {
  for (auto create : {RenderCreate, StringRender}) {
    std::string text = "hello";
    OwnedTalk render(create(text.c_str()));
    text = "other";
    EXPECT_STREQ("hello", RenderString(render.get()));
    EXPECT_EQ(1u, RenderCheck(render.get()));
  }
}

TEST_F(RenderTest, an_empty_text_is_a_string_too) {
  OwnedTalk render(RenderCreate(""));
  EXPECT_STREQ("", RenderString(render.get()));
}

TEST_F(RenderTest, create_refuses_no_text) {
  EXPECT_REFUSED(nullptr, RenderCreate(nullptr));
  EXPECT_REFUSED(nullptr, StringRender(nullptr));
}

TEST_F(RenderTest, create_without_memory_is_null_with_enomem) {
  Fault fault(Call::kMalloc, {.error = ENOMEM, .times = fairlead_test::kForever});
  EXPECT_FAILS(ENOMEM, nullptr, RenderCreate("x"));
  EXPECT_FAILS(ENOMEM, nullptr, VesselCreate());
}

TEST_F(RenderTest, vessel_check_is_true_for_objects_only) {
  EXPECT_ERRNO_KEPT(1u, VesselCheck(all_.get()));
  EXPECT_ERRNO_KEPT(1u, VesselCheck(member("o")->child));
  EXPECT_ERRNO_KEPT(0u, VesselCheck(member("o")));
  EXPECT_ERRNO_KEPT(0u, VesselCheck(member("a")->child));
}

TEST_F(RenderTest, axp_check_looks_at_the_value) {
  for (const char* name : {"s", "o"}) EXPECT_ERRNO_KEPT(1u, AxpCheck(member(name)));
  for (const char* name : {"n", "a", "l"}) EXPECT_ERRNO_KEPT(0u, AxpCheck(member(name)));
  EXPECT_ERRNO_KEPT(0u, AxpCheck(member("s")->child));
  EXPECT_ERRNO_KEPT(0u, AxpCheck(all_.get()));
}

TEST_F(RenderTest, a_member_without_a_value_reads_as_a_string) {
  AxpClearX(VesselFind(all_.get(), "s"));
  EXPECT_ERRNO_KEPT(0u, AxpCheck(member("s")));
  EXPECT_ERRNO_KEPT(1u, RenderCheck(member("s")));
}

TEST_F(RenderTest, render_check_is_true_for_strings_without_a_child) {
  EXPECT_ERRNO_KEPT(1u, RenderCheck(member("s")->child));
  for (const char* name : {"s", "n"}) EXPECT_ERRNO_KEPT(0u, RenderCheck(member(name)));
  for (const char* name : {"o", "n", "a", "l"})
    EXPECT_ERRNO_KEPT(0u, RenderCheck(member(name)->child));
}

TEST_F(RenderTest, no_node_has_no_role) {
  for (auto check : {VesselCheck, AxpCheck, RenderCheck}) EXPECT_REFUSED(0u, check(nullptr));
}

TEST_F(RenderTest, string_reads_any_string_node) {
  EXPECT_STREQ("s", RenderString(member("s")));
  EXPECT_STREQ("x", RenderString(member("s")->child));
  EXPECT_STREQ("n", RenderString(member("n")));
}

TEST_F(RenderTest, string_refuses_other_nodes) {
  EXPECT_REFUSED(nullptr, RenderString(nullptr));
  EXPECT_REFUSED(nullptr, RenderString(all_.get()));
  EXPECT_REFUSED(nullptr, RenderString(member("n")->child));
}

TEST_F(RenderTest, string_refuses_a_string_node_without_a_text) {
  OwnedTalk bare(json_new_value(JSON_STRING));
  EXPECT_REFUSED(nullptr, RenderString(bare.get()));
}

TEST_F(RenderTest, free_of_a_member_takes_it_out_of_its_object) {
  TalkFree(VesselFind(all_.get(), "o"));
  EXPECT_EQ("s n a l ", fairlead_test::names_of(all_.get()));
}

TEST_F(RenderTest, free_of_a_value_leaves_the_member_without_one) {
  TalkFree(VesselGetX(all_.get(), "s"));
  EXPECT_ERRNO_KEPT(nullptr, AxpGetX(member("s")));
}

TEST_F(RenderTest, free_of_nothing_does_nothing) {
  errno = fairlead_test::kStaleErrno;
  TalkFree(nullptr);
  EXPECT_EQ(fairlead_test::kStaleErrno, errno);
}

}  // namespace
