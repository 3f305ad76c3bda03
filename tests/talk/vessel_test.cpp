// Objects: walking members in both directions, counting them, finding them by name.
#include "talk_support.h"

namespace {

using fairlead_test::document;
using fairlead_test::OwnedTalk;

class VesselTest : public fairlead_test::DeviceTest {
 protected:
  OwnedTalk vessel_ = document(R"({"a":"1","b":{"c":"2"},"n":3,"a":"4"})");
  OwnedTalk empty_{VesselCreate()};
  OwnedTalk render_{RenderCreate("x")};

  vessel_t* vessel() { return vessel_.get(); }
};

using Walk = axp_t* (*)(vessel_t*, axp_t*);

TEST_F(VesselTest, create_makes_an_object_without_members) {
  EXPECT_EQ(1u, VesselCheck(empty_.get()));
  EXPECT_EQ(0, VesselCount(empty_.get()));
}

TEST_F(VesselTest, each_walks_forward) {
  std::string names;
  for (axp_t* at = VesselEach(vessel(), nullptr); at; at = VesselEach(vessel(), at))
    names += AxpGet(at);
  EXPECT_EQ("abna", names);
}

TEST_F(VesselTest, turn_walks_backwards) {
  std::string names;
  for (axp_t* at = VesselTurn(vessel(), nullptr); at; at = VesselTurn(vessel(), at))
    names += AxpGet(at);
  EXPECT_EQ("anba", names);
}

TEST_F(VesselTest, the_end_of_a_walk_leaves_errno) {
  EXPECT_ERRNO_KEPT(nullptr, VesselEach(vessel(), vessel()->child_end));
  EXPECT_ERRNO_KEPT(nullptr, VesselTurn(vessel(), vessel()->child));
}

TEST_F(VesselTest, a_walk_over_an_empty_object_ends_at_once_wherever_it_stands) {
  for (Walk walk : {VesselEach, VesselTurn}) {
    EXPECT_ERRNO_KEPT(nullptr, walk(empty_.get(), nullptr));
    EXPECT_ERRNO_KEPT(nullptr, walk(empty_.get(), vessel()->child));
  }
}

TEST_F(VesselTest, a_walk_refuses_a_position_elsewhere) {
  talk_t* inner = VesselGetX(vessel(), "b");
  for (Walk walk : {VesselEach, VesselTurn}) {
    EXPECT_REFUSED(nullptr, walk(vessel(), inner->child));
    EXPECT_REFUSED(nullptr, walk(inner, vessel()->child));
    EXPECT_REFUSED(nullptr, walk(vessel(), render_.get()));
  }
}

TEST_F(VesselTest, a_walk_refuses_what_is_no_object) {
  for (Walk walk : {VesselEach, VesselTurn}) {
    EXPECT_REFUSED(nullptr, walk(nullptr, nullptr));
    EXPECT_REFUSED(nullptr, walk(render_.get(), nullptr));
    EXPECT_REFUSED(nullptr, walk(vessel()->child, nullptr));
  }
}

TEST_F(VesselTest, count_counts_every_member) { EXPECT_ERRNO_KEPT(4, VesselCount(vessel())); }

TEST_F(VesselTest, count_of_an_empty_object_leaves_errno) {
  EXPECT_ERRNO_KEPT(0, VesselCount(empty_.get()));
}

TEST_F(VesselTest, count_refuses_what_is_no_object) {
  EXPECT_REFUSED(0, VesselCount(nullptr));
  EXPECT_REFUSED(0, VesselCount(render_.get()));
}

TEST_F(VesselTest, find_takes_the_first_of_the_name) {
  for (auto find : {VesselFind, VesselGet}) {
    EXPECT_EQ(vessel()->child, find(vessel(), "a"));
    EXPECT_STREQ("n", AxpGet(find(vessel(), "n")));
  }
}

TEST_F(VesselTest, find_compares_byte_for_byte) {
  for (const char* name : {"A", "", "a ", "aa", "zz"})
    EXPECT_ERRNO_KEPT(nullptr, VesselFind(vessel(), name));
}

TEST_F(VesselTest, find_without_a_name_takes_the_first_member) {
  EXPECT_EQ(vessel()->child, VesselFind(vessel(), nullptr));
  EXPECT_ERRNO_KEPT(nullptr, VesselFind(empty_.get(), nullptr));
}

TEST_F(VesselTest, find_finds_an_empty_name) {
  OwnedTalk nameless = document(R"({"a":"1","":"2"})");
  EXPECT_STREQ("2", VesselGetS(nameless.get(), ""));
}

TEST_F(VesselTest, find_passes_over_nodes_without_a_name) {
  talk_t* bare = json_new_value(JSON_STRING);
  ASSERT_EQ(1, VesselAdd(empty_.get(), bare));
  VesselSetS(empty_.get(), "a", "1");
  EXPECT_EQ(bare->next, VesselFind(empty_.get(), nullptr));
  EXPECT_EQ(bare->next, VesselFind(empty_.get(), "a"));
}

TEST_F(VesselTest, find_refuses_what_is_no_object) {
  for (auto find : {VesselFind, VesselGet}) {
    EXPECT_REFUSED(nullptr, find(nullptr, "a"));
    EXPECT_REFUSED(nullptr, find(render_.get(), "a"));
  }
}

TEST_F(VesselTest, get_x_gives_the_value) {
  EXPECT_EQ(vessel()->child->child, VesselGetX(vessel(), "a"));
  EXPECT_EQ(uint32_t{JSON_NUMBER}, VesselGetX(vessel(), "n")->type);
}

TEST_F(VesselTest, get_x_refuses_a_missing_member) {
  EXPECT_REFUSED(nullptr, VesselGetX(vessel(), "zz"));
  EXPECT_REFUSED(nullptr, VesselGetX(nullptr, "a"));
  EXPECT_REFUSED(nullptr, VesselGetX(render_.get(), "a"));
}

TEST_F(VesselTest, get_x_of_a_member_without_a_value_leaves_errno) {
  VesselClearX(vessel(), "b");
  EXPECT_ERRNO_KEPT(nullptr, VesselGetX(vessel(), "b"));
}

TEST_F(VesselTest, get_s_gives_the_string) { EXPECT_STREQ("1", VesselGetS(vessel(), "a")); }

TEST_F(VesselTest, get_s_of_any_other_value_is_null_and_leaves_errno) {
  EXPECT_ERRNO_KEPT(nullptr, VesselGetS(vessel(), "b"));
  EXPECT_ERRNO_KEPT(nullptr, VesselGetS(vessel(), "n"));
}

TEST_F(VesselTest, get_s_refuses_a_missing_member_or_value) {
  EXPECT_REFUSED(nullptr, VesselGetS(vessel(), "zz"));
  EXPECT_REFUSED(nullptr, VesselGetS(nullptr, "a"));
  VesselClearX(vessel(), "b");
  EXPECT_REFUSED(nullptr, VesselGetS(vessel(), "b"));
}

}  // namespace
