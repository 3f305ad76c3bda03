// An identifier as a request document.
#include <cerrno>

#include "fairlead/talk/edit.h"
#include "support/device_test.h"
#include "support/faults.h"
#include "talk/talk_support.h"
#include "uii/uii_text.h"

namespace {

using fairlead::OwnedTalk;
using fairlead_test::Call;
using fairlead_test::EachCall;
using fairlead_test::text_of;
using fairlead_test::uii;

class UiiTalkTest : public fairlead_test::DeviceTest {
 protected:
  static std::string request(const char* identifier) {
    return text_of(OwnedTalk(UiiTalk(uii(identifier).get())));
  }
};

TEST_F(UiiTalkTest, an_object_alone_is_its_path) {
  EXPECT_EQ("{\"adp\":\"net/wan\"}", request(" net//wan/ "));
  EXPECT_EQ("{\"adp\":\":\"}", request(":"));
}

TEST_F(UiiTalkTest, a_read_has_the_configuration_path_and_no_operator) {
  EXPECT_EQ("{\"adp\":\"net/wan\",\"ab\":\"dns/first\"}", request("net/wan:dns/first"));
  EXPECT_EQ("{\"adp\":\"net/wan\"}", request("net/wan:"));
}

TEST_F(UiiTalkTest, a_set_and_a_merge_have_operator_and_value) {
  EXPECT_EQ("{\"adp\":\"net\",\"ab\":\"mtu\",\"op\":\"=\",\"v\":\"1492\"}",
            request("net:mtu=1492"));
  EXPECT_EQ("{\"adp\":\"net\",\"ab\":\"dns\",\"op\":\"|\",\"v\":{\"first\":\"1\"}}",
            request("net:dns|{\"first\":\"1\"}"));
  EXPECT_EQ("{\"adp\":\"net\",\"op\":\"=\",\"v\":\"fast\"}", request("net=fast"));
}

TEST_F(UiiTalkTest, without_a_value_there_is_none) {
  EXPECT_EQ("{\"adp\":\"net\",\"ab\":\"mtu\",\"op\":\"=\"}", request("net:mtu="));
  EXPECT_EQ("{\"adp\":\"net\",\"op\":\"|\"}", request("net|"));
  EXPECT_EQ("{\"adp\":\"net\",\"op\":\"=\"}", request("net={broken"));
}

TEST_F(UiiTalkTest, a_call_has_the_interface_and_its_parameters_from_the_last_to_the_first) {
  EXPECT_EQ("{\"adp\":\"net/wan\",\"fn\":\"restart\"}", request("net/wan.restart"));
  EXPECT_EQ("{\"adp\":\"net/wan\",\"fn\":\"restart\",\"2\":\"y\",\"1\":\"x\"}",
            request("net/wan.restart[x, y]"));
  EXPECT_EQ("{\"adp\":\"a\",\"fn\":\"b\",\"2\":{\"c\":\"d\"},\"1\":\"[1,2]\"}",
            request("a.b[[1,2],{\"c\":\"d\"}]"));
}

TEST_F(UiiTalkTest, an_empty_or_broken_parameter_adds_nothing) {
  EXPECT_EQ("{\"adp\":\"a\",\"fn\":\"b\",\"3\":\"z\",\"1\":\"x\"}", request("a.b[x,,z]"));
  EXPECT_EQ("{\"adp\":\"a\",\"fn\":\"b\",\"1\":\"x\"}", request("a.b[x,{broken]"));
}

// A call without a name has no interface, and so no parameters either.
TEST_F(UiiTalkTest, a_call_without_a_name_is_the_object) {
  EXPECT_EQ("{\"adp\":\"a\"}", request("a."));
  EXPECT_EQ("{\"adp\":\"a\"}", request("a.[x]"));
}

TEST_F(UiiTalkTest, values_and_parameters_are_copies) {
  const auto set = uii("net=fast");
  OwnedTalk request(UiiTalk(set.get()));
  EXPECT_NE(UiiValueTalk(set.get()), VesselGetX(request.get(), "v"));
  request.reset();
  EXPECT_STREQ("fast", RenderString(UiiValueTalk(set.get())));
}

TEST_F(UiiTalkTest, null_and_unparsed_records_are_refused) {
  EXPECT_REFUSED(nullptr, UiiTalk(nullptr));
  uii_t unparsed = {};
  EXPECT_REFUSED(nullptr, UiiTalk(&unparsed));
}

TEST_F(UiiTalkTest, an_errno_from_before_means_nothing) {
  errno = ENOMEM;
  EXPECT_EQ("{\"adp\":\"net\",\"op\":\"=\"}", request("net="));
  const auto call = uii("a.b[x,,z]");
  errno = ENOMEM;
  EXPECT_NE(nullptr, OwnedTalk(UiiTalk(call.get())));
}

TEST_F(UiiTalkTest, a_request_made_leaves_errno_alone) {
  for (const char* identifier : {"net", "net=", "net:mtu=1492", "net={broken", "a.b[x,,z]"}) {
    const auto record = uii(identifier);
    errno = ERANGE;
    const OwnedTalk request(UiiTalk(record.get()));
    EXPECT_EQ(ERANGE, errno) << identifier;
    EXPECT_NE(nullptr, request) << identifier;
  }
}

// A request with a part missing would ask for something else: without "v" a set deletes.
TEST_F(UiiTalkTest, without_memory_there_is_no_request) {
  for (const char* identifier :
       {"net", "net:a/b", "net:a={\"b\":\"c\"}", "net|text", "net.call[x,{\"y\":\"z\"},,w]"}) {
    const std::string whole = request(identifier);
    int failures = 0;
    for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next(); failures += each.fired()) {
      const auto record = uii(identifier);
      const OwnedTalk talk(each.run([&] { return UiiTalk(record.get()); }));
      const int error = errno;
      if (!each.fired()) {
        EXPECT_EQ(whole, text_of(talk));
        continue;
      }
      EXPECT_EQ(nullptr, talk.get()) << identifier << each.nth();
      EXPECT_EQ(ENOMEM, error) << identifier << each.nth();
    }
    EXPECT_GE(failures, 3) << identifier;
  }
}

}  // namespace
