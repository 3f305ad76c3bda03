// The pieces of a record: never copied, refused for a null record.
#include <cerrno>
#include <cstring>

#include "fairlead/talk/node.h"
#include "support/device_test.h"
#include "uii/uii_text.h"

namespace {

using fairlead_test::uii;

class UiiAccessTest : public fairlead_test::DeviceTest {};

TEST_F(UiiAccessTest, the_object_path_by_segments) {
  const auto wan = uii("net/wan/0");
  EXPECT_EQ(3, UiiObjectCount(wan.get()));
  EXPECT_STREQ("net", UiiObject(wan.get(), 1));
  EXPECT_STREQ("0", UiiObject(wan.get(), -1));
  EXPECT_STREQ("net/wan/0", UiiObjectString(wan.get()));
  EXPECT_EQ(UiiObjectString(wan.get()), UiiObjectString(wan.get()));
}

TEST_F(UiiAccessTest, the_configuration_path_by_segments) {
  const auto wan = uii("wan:dns/first");
  EXPECT_EQ(2, UiiConfigCount(wan.get()));
  EXPECT_STREQ("dns", UiiConfig(wan.get(), 1));
  EXPECT_STREQ("first", UiiConfig(wan.get(), -1));
  EXPECT_STREQ("dns/first", UiiConfigString(wan.get()));
}

TEST_F(UiiAccessTest, segments_that_are_not_there_are_refused) {
  const auto wan = uii("net/wan:mtu");
  for (int index : {0, 3, -2}) {
    errno = 0;
    EXPECT_EQ(nullptr, UiiObject(wan.get(), index));
    EXPECT_EQ(EINVAL, errno);
    errno = 0;
    EXPECT_EQ(nullptr, UiiConfig(wan.get(), index));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(UiiAccessTest, pieces_that_are_not_there_are_null) {
  const auto wan = uii("wan");
  errno = 0;
  EXPECT_EQ(0, UiiConfigCount(wan.get()));
  EXPECT_EQ(nullptr, UiiConfigString(wan.get()));
  EXPECT_EQ(nullptr, UiiInterface(wan.get()));
  EXPECT_EQ(nullptr, UiiValueString(wan.get()));
  EXPECT_EQ(nullptr, *UiiValue(wan.get()));
  EXPECT_EQ(0, UiiParamCount(wan.get()));
  EXPECT_EQ(nullptr, UiiParamString(wan.get()));
  EXPECT_EQ(0, errno);
}

TEST_F(UiiAccessTest, value_is_the_address_of_the_field) {
  const auto wan = uii("wan:mtu=1500");
  EXPECT_EQ(&wan->value, UiiValue(wan.get()));
  EXPECT_STREQ("1500", *UiiValue(wan.get()));
  EXPECT_EQ(*UiiValue(wan.get()), UiiValueString(wan.get()));
}

TEST_F(UiiAccessTest, value_talk_is_made_once_and_kept) {
  const auto wan = uii("wan:dns={\"first\":\"::1\"}");
  talk_t* value = UiiValueTalk(wan.get());
  EXPECT_STREQ("::1", VesselGetS(value, "first"));
  EXPECT_EQ(value, UiiValueTalk(wan.get()));
}

TEST_F(UiiAccessTest, value_talk_of_plain_text_is_a_string_leaf) {
  EXPECT_STREQ("1500", RenderString(UiiValueTalk(uii("wan:mtu=1500").get())));
}

TEST_F(UiiAccessTest, value_talk_of_nothing_or_of_a_broken_object_is_null) {
  for (const char* text : {"wan:mtu=", "wan:mtu", "wan:mtu={\"a\":[}"}) {
    const auto wan = uii(text);
    errno = 0;
    EXPECT_EQ(nullptr, UiiValueTalk(wan.get()));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(UiiAccessTest, parameters_by_index) {
  const auto dial = uii("wan.dial[ppp0, {\"retry\":\"3\"}, x]");
  EXPECT_EQ(&dial->parameter, UiiParameter(dial.get()));
  EXPECT_EQ(3, UiiParamCount(dial.get()));
  EXPECT_STREQ("ppp0", UiiParamGetS(dial.get(), 1));
  EXPECT_STREQ("3", VesselGetS(UiiParamGetT(dial.get(), 2), "retry"));
  EXPECT_STREQ("x", UiiParamGet(dial.get(), 3)->text);
  EXPECT_STREQ("ppp0,{\"retry\":\"3\"},x", UiiParamString(dial.get()));
}

TEST_F(UiiAccessTest, minus_one_is_the_last_entry_but_the_text_before_it) {
  const auto dial = uii("wan.dial[1,2,3]");
  EXPECT_STREQ("3", UiiParamGet(dial.get(), -1)->text);
  EXPECT_STREQ("2", UiiParamGetS(dial.get(), -1));
  EXPECT_STREQ("2", RenderString(UiiParamGetT(dial.get(), -1)));
}

TEST_F(UiiAccessTest, parameters_that_are_not_there_are_refused) {
  const auto dial = uii("wan.dial[1]");
  for (int index : {0, 2, -2}) {
    errno = 0;
    EXPECT_EQ(nullptr, UiiParamGet(dial.get(), index));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(UiiAccessTest, counts_refuse_null_with_minus_one) {
  for (auto count : {UiiObjectCount, UiiConfigCount, UiiParamCount}) {
    errno = 0;
    EXPECT_EQ(-1, count(nullptr));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(UiiAccessTest, texts_refuse_null) {
  for (auto text : {UiiString, UiiObjectString, UiiConfigString, UiiValueString, UiiInterface,
                    UiiParamString}) {
    errno = 0;
    EXPECT_EQ(nullptr, text(nullptr));
    EXPECT_EQ(EINVAL, errno);
  }
  for (auto text : {UiiObject, UiiConfig, UiiParamGetS}) {
    errno = 0;
    EXPECT_EQ(nullptr, text(nullptr, 1));
    EXPECT_EQ(EINVAL, errno);
  }
}

template <class Function, class... Index>
void expect_null_refused(Function function, Index... index) {
  errno = 0;
  EXPECT_EQ(nullptr, function(nullptr, index...));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(UiiAccessTest, records_and_documents_refuse_null) {
  expect_null_refused(UiiValue);
  expect_null_refused(UiiValueTalk);
  expect_null_refused(UiiParameter);
  expect_null_refused(UiiParamGet, 1);
  expect_null_refused(UiiParamGetT, 1);
}

}  // namespace
