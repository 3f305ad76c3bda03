// Where identifier records come from, and how they go.
#include <cerrno>
#include <cstdint>
#include <string>
#include <vector>

#include "fairlead/log.h"
#include "fairlead/state.h"
#include "support/child.h"
#include "support/device_test.h"
#include "support/faults.h"
#include "uii/uii_text.h"

namespace {

using fairlead::OwnedUii;
using fairlead_test::Call;
using fairlead_test::EachCall;
using fairlead_test::Fault;
using fairlead_test::pieces;

class UiiCreateTest : public fairlead_test::DeviceTest {};

template <class Call>
void expect_einval(Call call) {
  errno = 0;
  EXPECT_EQ(nullptr, call());
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(UiiCreateTest, create_keeps_a_copy_of_the_text) {
  char text[] = " wan.up";
  const auto uii = fairlead_test::uii(text);
  text[1] = '?';
  EXPECT_STREQ(" wan.up", UiiString(uii.get()));
  EXPECT_EQ("1 wan|up|-|-|-", pieces(uii.get()));
}

TEST_F(UiiCreateTest, create_refuses_null_empty_and_no_object) {
  for (const char* text : {static_cast<const char*>(nullptr), "", " ", "/"})
    expect_einval([&] { return UiiCreate(text); });
}

TEST_F(UiiCreateTest, build_joins_in_order) {
  const char* const texts[] = {"net", "/wan", ":", "mtu", "=1500"};
  EXPECT_EQ("3 net/wan|-|-|mtu|1500", pieces(OwnedUii(UiiBuild(5, texts)).get()));
  EXPECT_EQ("2 net/wan|-|-|-|-", pieces(OwnedUii(UiiBuild(3, texts)).get()));
}

TEST_F(UiiCreateTest, build_stops_at_the_first_null) {
  const char* const texts[] = {"net", "", "/wan", nullptr, ":mtu"};
  EXPECT_EQ("0 net/wan|-|-|-|-", pieces(OwnedUii(UiiBuild(5, texts)).get()));
}

TEST_F(UiiCreateTest, build_refuses_nothing) {
  const char* const texts[] = {"", "", nullptr, "wan"};
  expect_einval([&] { return UiiBuild(0, texts + 3); });
  expect_einval([&] { return UiiBuild(-1, texts + 3); });
  expect_einval([] { return UiiBuild(1, nullptr); });
  expect_einval([&] { return UiiBuild(4, texts); });
  const char* const no_object[] = {"/", "."};
  expect_einval([&] { return UiiBuild(2, no_object); });
}

TEST_F(UiiCreateTest, format_fills_in_its_arguments) {
  const OwnedUii uii(UiiFormat("%s/%s:mtu=%d%%%c", "net", "wan", 1500, '!'));
  EXPECT_EQ("3 net/wan|-|-|mtu|1500%!", pieces(uii.get()));
}

TEST_F(UiiCreateTest, format_has_no_length_limit) {
  const std::string value(5000, 'v');
  const OwnedUii uii(UiiFormat("a:b=%s%0300d%*d", value.c_str(), 7, 200, 8));
  EXPECT_EQ(5500u, std::string(UiiValueString(uii.get())).size());
}

TEST_F(UiiCreateTest, format_refuses_null_and_what_comes_out_empty) {
  const char* no_format = nullptr;
  expect_einval([&] { return UiiFormat(no_format, 0); });
  expect_einval([] { return UiiFormat("%s", ""); });
  expect_einval([] { return UiiFormat("/%s", "/"); });
}

TEST_F(UiiCreateTest, format_that_printf_refuses_gives_null) {
  errno = 0;
  EXPECT_EQ(nullptr, UiiFormat("a%lc", static_cast<wint_t>(0x7fffffff)));
  EXPECT_EQ(EILSEQ, errno);
}

TEST_F(UiiCreateTest, free_of_null_sets_einval) {
  errno = 0;
  UiiFree(nullptr);
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(UiiCreateTest, free_releases_all_that_was_asked_for) {
  uii_t* uii = UiiCreate("net/wan:dns={\"first\":\"::1\"}");
  ASSERT_NE(nullptr, UiiValueTalk(uii));
  ASSERT_NE(nullptr, UiiObjectString(uii));
  ASSERT_NE(nullptr, UiiConfigString(uii));
  errno = 0;
  UiiFree(uii);
  EXPECT_EQ(0, errno);
}

// Every allocation of a way to make a record. In children: the log keeps its value store open.
using Make = uii_t* (*)();
constexpr Make kWays[] = {
    [] { return UiiCreate("net/wan:mtu=1500"); },
    [] {
      const char* const texts[] = {"net", "/wan"};
      return UiiBuild(2, texts);
    },
    [] { return UiiFormat("%s/wan", "net"); },
};

TEST_F(UiiCreateTest, without_memory_the_process_ends_with_a_report) {
  for (Make make : kWays)
    for (int nth = 1; nth <= 3; ++nth) {
      const auto ended = fairlead_test::run_child([&] {
        GlogOpen("test", LOG_MODE_CONSOLE | LOG_MODE_WHERE, 6);
        Fault fault(Call::kMalloc, {.nth = nth, .error = ENOMEM});
        make();
      });
      EXPECT_EQ(255, ended.status);
      EXPECT_EQ(0u, ended.err.find("emerg: out of memory{")) << ended.err;
      EXPECT_NE(std::string::npos, ended.err.find("/uii/")) << ended.err;
    }
}

TEST_F(UiiCreateTest, without_memory_and_log_it_fails_with_enomem) {
  const auto ended = fairlead_test::run_child([] {
    const uint32_t silence = 0;
    ASSERT_EQ(1, GvalueSet(nullptr, "log_level", &silence, sizeof silence));
    for (Make make : kWays)
      for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
        const OwnedUii made(each.run(make));
        EXPECT_EQ(each.fired(), !made) << each.nth();
        if (each.fired()) {
          EXPECT_EQ(ENOMEM, errno);
        }
      }
  });
  EXPECT_EQ(0, ended.status) << ended.err;
}

// The same text again and again: together they are longer by 11 than size_t can tell, where it has
// 32 bits.
#if SIZE_MAX == UINT32_MAX
TEST_F(UiiCreateTest, build_of_more_than_there_is_memory_for_fails_with_enomem) {
  const std::string part(1 << 20, 'a');
  std::vector<const char*> texts(1 << 12, part.c_str());
  texts.push_back("net/wan:mtu");
  const auto ended = fairlead_test::run_child([&texts] {
    const uint32_t silence = 0;
    ASSERT_EQ(1, GvalueSet(nullptr, "log_level", &silence, sizeof silence));
    errno = 0;
    EXPECT_EQ(nullptr, UiiBuild(static_cast<int>(texts.size()), texts.data()));
    EXPECT_EQ(ENOMEM, errno);
  });
  EXPECT_EQ(0, ended.status) << ended.signal << ended.err;
}
#endif

}  // namespace
