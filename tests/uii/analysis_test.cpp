// The eight forms of an identifier, and the texts that are refused.
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "fairlead/state.h"
#include "support/child.h"
#include "support/device_test.h"
#include "support/faults.h"
#include "uii/uii_text.h"

namespace {

using fairlead_test::Call;
using fairlead_test::EachCall;
using fairlead_test::pieces;

class UiiAnalysisTest : public fairlead_test::DeviceTest {};

TEST_F(UiiAnalysisTest, an_object_alone) {
  EXPECT_EQ("0 wan|-|-|-|-", pieces("wan"));
  EXPECT_EQ("0 net/wan/0|-|-|-|-", pieces("/net//wan/0/"));
}

TEST_F(UiiAnalysisTest, an_interface) { EXPECT_EQ("1 wan|restart|-|-|-", pieces("wan.restart")); }

TEST_F(UiiAnalysisTest, an_interface_with_parameters) {
  EXPECT_EQ("1 wan|dial|ppp0,30|-|-", pieces("wan.dial[ppp0, 30]"));
}

TEST_F(UiiAnalysisTest, a_configuration_path) {
  EXPECT_EQ("2 wifi/2g|-|-|key/index|-", pieces("wifi/2g:key/index"));
}

TEST_F(UiiAnalysisTest, a_value_for_a_path) {
  EXPECT_EQ("3 wifi/2g|-|-|ssid|home net", pieces("wifi/2g:ssid=home net"));
}

TEST_F(UiiAnalysisTest, a_value_to_merge_into_a_path) {
  EXPECT_EQ("4 wifi|-|-|key|{\"a\":\"b\"}", pieces("wifi:key|{\"a\":\"b\"}"));
}

TEST_F(UiiAnalysisTest, a_value_for_the_object) {
  EXPECT_EQ("3 wan|-|-|-|{\"a\":\"b\"}", pieces("wan={\"a\":\"b\"}"));
  EXPECT_EQ("4 wan|-|-|-|{\"a\":\"b\"}", pieces("wan|{\"a\":\"b\"}"));
}

TEST_F(UiiAnalysisTest, the_first_marker_decides) {
  EXPECT_EQ("1 a|b:c=d|-|-|-", pieces("a.b:c=d"));
  EXPECT_EQ("2 a|-|-|b.c|-", pieces("a:b.c"));
  EXPECT_EQ("3 a|-|-|-|b.c:d|e", pieces("a=b.c:d|e"));
  EXPECT_EQ("4 a|-|-|-|b=c", pieces("a|b=c"));
}

TEST_F(UiiAnalysisTest, a_marker_in_the_first_place_decides_nothing) {
  for (const char* text : {".hidden", ":x", "=x", "|x", ".", ":", ".a.b:c=d"})
    EXPECT_EQ("0 " + std::string(text) + "|-|-|-|-", pieces(text));
  EXPECT_EQ("0 .hidden|-|-|-|-", pieces("  .hidden"));
}

TEST_F(UiiAnalysisTest, leading_blanks_are_ignored) {
  EXPECT_EQ("1 wan|up|-|-|-", pieces(" \t\r\nwan.up"));
}

TEST_F(UiiAnalysisTest, blanks_at_the_end_of_an_object_go_and_of_an_interface_stay) {
  EXPECT_EQ("0 wan|-|-|-|-", pieces("wan \n"));
  EXPECT_EQ("2 wan|-|-|mtu|-", pieces("wan :mtu \n"));
  EXPECT_EQ("1 wan|up |-|-|-", pieces("wan .up "));
}

TEST_F(UiiAnalysisTest, an_empty_interface_keeps_the_kind) {
  EXPECT_EQ("1 wan|-|-|-|-", pieces("wan."));
  EXPECT_EQ("1 wan|-|a,b|-|-", pieces("wan.[a,b]"));
}

TEST_F(UiiAnalysisTest, an_empty_parameter_list_is_none) {
  for (const char* text : {"wan.up[", "wan.up[]", "wan.up[ ] ]\n"})
    EXPECT_EQ("1 wan|up|-|-|-", pieces(text));
}

TEST_F(UiiAnalysisTest, the_end_of_a_parameter_list_loses_blanks_and_brackets) {
  EXPECT_EQ("1 wan|dial|a,b|-|-", pieces("wan.dial[a,b ] ]\r\n"));
  EXPECT_EQ("1 wan|dial|a,b|-|-", pieces("wan.dial[a,b"));
  EXPECT_EQ("1 wan|dial|[1,2|-|-", pieces("wan.dial[[1,2]]"));
  EXPECT_EQ("1 wan|dial|[1,2],x|-|-", pieces("wan.dial[[1,2],x]"));
}

TEST_F(UiiAnalysisTest, commas_inside_a_document_do_not_split) {
  const auto uii = fairlead_test::uii("wan.dial[{\"a\":\"1\",\"b\":\"2\"},\"x,y\"]");
  ASSERT_EQ(2, UiiParamCount(uii.get()));
  EXPECT_STREQ("{\"a\":\"1\",\"b\":\"2\"}", UiiParamGetS(uii.get(), 1));
  EXPECT_STREQ("\"x,y\"", UiiParamGetS(uii.get(), 2));
}

TEST_F(UiiAnalysisTest, the_last_operator_ends_the_path) {
  EXPECT_EQ("3 wifi|-|-|a=b|c", pieces("wifi:a=b=c"));
  EXPECT_EQ("4 wifi|-|-|a=b|c", pieces("wifi:a=b|c"));
  EXPECT_EQ("3 wifi|-|-|a|b|c", pieces("wifi:a|b=c"));
}

TEST_F(UiiAnalysisTest, an_empty_value_keeps_the_kind) {
  EXPECT_EQ("3 wifi|-|-|ssid|-", pieces("wifi:ssid="));
  EXPECT_EQ("4 wifi|-|-|ssid|-", pieces("wifi:ssid| \t"));
  EXPECT_EQ("3 wifi|-|-|-|-", pieces("wifi="));
}

TEST_F(UiiAnalysisTest, an_empty_path_is_none) {
  EXPECT_EQ("2 wifi|-|-|-|-", pieces("wifi:"));
  EXPECT_EQ("2 wifi|-|-|-|-", pieces("wifi:/"));
  EXPECT_EQ("3 wifi|-|-|-|x", pieces("wifi:=x"));
}

TEST_F(UiiAnalysisTest, blanks_around_a_value_go) {
  EXPECT_EQ("3 wifi|-|-|ssid|home net", pieces("wifi:ssid= \thome net\r\n"));
}

TEST_F(UiiAnalysisTest, paths_and_parameters_end_at_twenty) {
  std::string object, list;
  for (int i = 1; i <= 25; ++i) {
    object += (i > 1 ? "/" : "") + std::to_string(i);
    list += (i > 1 ? "," : "") + std::to_string(i);
  }
  const auto uii = fairlead_test::uii((object + ".f[" + list + "]").c_str());
  EXPECT_EQ(20, UiiObjectCount(uii.get()));
  EXPECT_EQ(20, UiiParamCount(uii.get()));
  EXPECT_STREQ("20,21,22,23,24,25", UiiParamGetS(uii.get(), 20));
}

TEST_F(UiiAnalysisTest, a_long_text_is_taken_whole) {
  const std::string value(100000, 'v');
  EXPECT_EQ("3 a|-|-|b|" + value, pieces(("a:b=" + value).c_str()));
}

TEST_F(UiiAnalysisTest, a_text_without_object_is_refused) {
  for (const char* text : {"", "  \t\r\n", "/", " // ", "/.up", "//:a=b"}) {
    errno = 0;
    EXPECT_EQ("null", pieces(text)) << '"' << text << '"';
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(UiiAnalysisTest, a_record_without_text_is_refused) {
  uii_t record{};
  char nothing[] = "";
  for (char* text : {static_cast<char*>(nullptr), nothing}) {
    record.text = text;
    errno = 0;
    EXPECT_EQ(0, UiiAnalysis(&record));
    EXPECT_EQ(EINVAL, errno);
  }
  errno = 0;
  EXPECT_EQ(0, UiiAnalysis(nullptr));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(UiiAnalysisTest, a_callers_own_record_is_filled_and_its_text_kept) {
  auto* record = static_cast<uii_t*>(calloc(1, sizeof(uii_t)));
  record->text = strdup("wan.dial[ppp0, 30]");
  EXPECT_EQ(1, UiiAnalysis(record));
  EXPECT_EQ("1 wan|dial|ppp0,30|-|-", pieces(record));
  EXPECT_STREQ("wan.dial[ppp0, 30]", record->text);
  UiiFree(record);
}

TEST_F(UiiAnalysisTest, a_record_can_be_analysed_again) {
  auto uii = fairlead_test::uii("wan.dial[{\"a\":\"b\"}]");
  ASSERT_NE(nullptr, UiiParamGetT(uii.get(), 1));
  UiiObjectString(uii.get());
  free(uii->text);
  uii->text = strdup("lan:mtu=1500");
  EXPECT_EQ(1, UiiAnalysis(uii.get()));
  EXPECT_EQ("3 lan|-|-|mtu|1500", pieces(uii.get()));
}

// A call that lost a parameter would be another call.
TEST_F(UiiAnalysisTest, without_memory_for_a_parameter_there_is_no_record) {
  const auto ended = fairlead_test::run_child([] {
    const uint32_t silence = 0;
    ASSERT_EQ(1, GvalueSet(nullptr, "log_level", &silence, sizeof silence));
    int failures = 0;
    for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next(); failures += each.fired()) {
      const fairlead::OwnedUii record(static_cast<uii_t*>(calloc(1, sizeof(uii_t))));
      record->text = strdup("wan.dial[a,b,c]");
      const int result = each.run([&] { return UiiAnalysis(record.get()); });
      const int error = errno;
      EXPECT_EQ(each.fired() ? 0 : 1, result) << each.nth();
      if (each.fired()) {
        EXPECT_EQ(ENOMEM, error) << each.nth();
      }
    }
    EXPECT_EQ(4, failures);  // the copy of the text and three parameters
  });
  EXPECT_EQ(0, ended.status) << ended.err;
}

}  // namespace
