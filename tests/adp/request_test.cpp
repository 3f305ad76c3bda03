// Whole requests, in the caller's process and isolated: both roads give the same, but for one wart.
#include "fairlead/adp/request.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include "adp/adp_support.h"

namespace {

using fairlead_test::file_content;
using fairlead_test::put_file;
using fairlead_test::spelled;

struct Road {
  const char* name;
  int32_t (*he)(uii_t*, talk_t**);
  int32_t (*talk_he)(talk_t*, talk_t**);
};

class RequestTest : public fairlead_test::AdapterTest, public testing::WithParamInterface<Road> {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    install("probe", "net/probe");
  }

  // "STATUS ANSWER" of an identifier.
  static std::string he(const char* text) {
    uii_t* identifier = UiiCreate(text);
    talk_t* out = nullptr;
    const int32_t status = GetParam().he(identifier, &out);
    UiiFree(identifier);
    return std::to_string(status) + " " + spelled(out);
  }

  // The same of a request document; "untouched" when the answer's place was left alone.
  static std::string talk_he(const char* text) {
    talk_t* request = StringTalk(text);
    const std::string before = text_of(request);
    talk_t untouched{};
    talk_t* out = &untouched;
    const int32_t status = GetParam().talk_he(request, &out);
    EXPECT_EQ(before, text_of(request)) << "a request is only read";
    TalkFree(request);
    return std::to_string(status) + " " + (out == &untouched ? "untouched" : spelled(out));
  }

  static std::string text_of(talk_t* talk) {
    char* text = TalkString(talk);
    const std::string result = text ? text : "";
    free(text);
    return result;
  }

  static ino_t inode(const char* path) {
    struct stat status = {};
    stat(path, &status);
    return status.st_ino;
  }
};

TEST_P(RequestTest, a_read_gives_the_value_or_null) {
  put_file("/etc/config/sys.cfg", "{\"host\":{\"name\":\"box\"}}");
  EXPECT_EQ("0 {\"host\":{\"name\":\"box\"}}", he("sys"));
  EXPECT_EQ("0 box", he("sys:host/name"));
  EXPECT_EQ("0 null", he("sys:host/none"));
  EXPECT_EQ("0 null", he("none"));
}

TEST_P(RequestTest, a_set_writes_what_differs) {
  EXPECT_EQ("1 done", he("sys:host/name=box"));
  EXPECT_EQ("{\"host\":{\"name\":\"box\"}}", file_content("/etc/config/sys.cfg"));
  const ino_t before = inode("/etc/config/sys.cfg");
  EXPECT_EQ("1 done", he("sys:host/name=box"));
  EXPECT_EQ(before, inode("/etc/config/sys.cfg"));
  EXPECT_EQ("1 done", he("sys={\"a\":\"1\"}"));
  EXPECT_EQ("{\"a\":\"1\"}", file_content("/etc/config/sys.cfg"));
}

TEST_P(RequestTest, a_set_of_the_present_value_calls_no_set_function) {
  answer_with("{\"b\":\"2\",\"a\":\"1\"}");
  EXPECT_EQ("1 done", he("net/probe={\"a\":\"1\",\"b\":\"2\"}"));
  EXPECT_EQ("<missing>", sets());
}

TEST_P(RequestTest, a_refused_set_fails) {
  answer_with("old");
  EXPECT_EQ("-1 failed", he("net/probe:x=refuse"));
  EXPECT_EQ("-1 failed", he("net/probe:x=odd"));  // any other result than 1
  EXPECT_EQ("-1 failed", he("sys=a string is no configuration"));
}

TEST_P(RequestTest, a_set_without_value_deletes) {
  put_file("/etc/config/sys.cfg", "{\"a\":\"1\",\"b\":\"2\"}");
  EXPECT_EQ("1 done", he("sys:a="));
  EXPECT_EQ("{\"b\":\"2\"}", file_content("/etc/config/sys.cfg"));
  EXPECT_EQ("1 done", he("sys:a="));  // null equals what is not there
}

TEST_P(RequestTest, a_set_to_an_object_that_does_not_parse_deletes) {
  put_file("/etc/config/sys.cfg", "{\"a\":\"1\",\"b\":\"2\"}");
  EXPECT_EQ("1 done", he("sys:a={broken"));
  EXPECT_EQ("{\"b\":\"2\"}", file_content("/etc/config/sys.cfg"));
}

TEST_P(RequestTest, marks_begin_listings_for_every_kind_but_calls) {
  for (const char* text : {"?x", "?x:a", "?x:a=1", "?x|1"})
    EXPECT_EQ("0 {\"net/probe\":\"/prj/net/probe.adp\"}", he(text)) << text;
  EXPECT_EQ("0 null", he("?x.y"));  // an interface of the object "?x"
}

TEST_P(RequestTest, a_merge_writes_the_merged_object_if_it_differs) {
  put_file("/etc/config/sys.cfg", "{\"a\":\"1\",\"b\":\"1\"}");
  EXPECT_EQ("1 done", he("sys|{\"b\":\"2\"}"));
  EXPECT_EQ("{\"a\":\"1\",\"b\":\"2\"}", file_content("/etc/config/sys.cfg"));
  const ino_t before = inode("/etc/config/sys.cfg");
  EXPECT_EQ("1 done", he("sys|{\"b\":\"2\"}"));
  EXPECT_EQ(before, inode("/etc/config/sys.cfg"));
}

TEST_P(RequestTest, a_merge_of_other_kinds_writes_the_value_itself) {
  put_file("/etc/config/sys.cfg", "{\"a\":{\"x\":\"1\"}}");
  EXPECT_EQ("1 done", he("sys:a|word"));
  EXPECT_EQ("{\"a\":\"word\"}", file_content("/etc/config/sys.cfg"));
  EXPECT_EQ("1 done", he("sys:b|{\"y\":\"1\"}"));
  EXPECT_EQ("{\"a\":\"word\",\"b\":{\"y\":\"1\"}}", file_content("/etc/config/sys.cfg"));
}

TEST_P(RequestTest, a_refused_merge_fails) {
  answer_with("old");
  EXPECT_EQ("-1 failed", he("net/probe:x|refuse"));
}

// The roads differ here on purpose.
TEST_P(RequestTest, a_merge_without_value) {
  EXPECT_EQ(GetParam().he == He ? "-1 null" : "1 done", he("sys:a|"));
}

TEST_P(RequestTest, codes_from_a_get_are_no_value_to_compare_with) {
  for (const char* code : {"done", "failed"}) {
    answer_with(code);
    EXPECT_EQ(std::string("0 ") + code, he("net/probe"));
    EXPECT_EQ("1 done", he("net/probe:x=1"));
    EXPECT_EQ("1 done", he("net/probe:x|{\"a\":\"1\"}"));
  }
}

TEST_P(RequestTest, an_interface_answers) {
  EXPECT_EQ("1 done", he("net/probe.done"));
  EXPECT_EQ("-1 failed", he("net/probe.failed"));
  EXPECT_EQ("0 null", he("net/probe.nothing"));
  EXPECT_EQ("0 just so", he("net/probe.string"));
  EXPECT_EQ("0 {\"object\":\"net/probe\",\"count\":\"2\",\"list\":\"a,b\"}",
            he("net/probe.echo[a, b]"));
}

TEST_P(RequestTest, an_interface_without_name_lists_the_interfaces) {
  const std::string list = he("net/probe.");
  EXPECT_EQ(
      0U,
      list.find("0 {\"echo\":{\"opt\":\"list\",\"intro\":\"tells what it was given\"},\"done\":{"))
      << list;
  EXPECT_EQ("0 null", he("sys."));
}

TEST_P(RequestTest, three_marks_list_what_exists) {
  put_file("/etc/config/sys.cfg", "{}");
  EXPECT_EQ("0 {\"sys\":\"/etc/config/sys.cfg\"}", he(":"));
  EXPECT_EQ("0 null", he("."));
  DynAdpCreate("lan", "net/probe");
  EXPECT_EQ("0 {\"lan\":\"/prj/net/probe.adp\"}", he("."));
  EXPECT_EQ("0 {\"net/probe\":\"/prj/net/probe.adp\"}", he("?"));
}

TEST_P(RequestTest, null_arguments_are_refused) {
  talk_t* out = nullptr;
  uii_t* identifier = UiiCreate("sys");
  talk_t* request = StringTalk("sys");
  errno = 0;
  EXPECT_EQ(-1, GetParam().he(nullptr, &out));
  EXPECT_EQ(EINVAL, errno);
  EXPECT_EQ(-1, GetParam().he(identifier, nullptr));
  EXPECT_EQ(-1, GetParam().talk_he(nullptr, &out));
  EXPECT_EQ(-1, GetParam().talk_he(request, nullptr));
  UiiFree(identifier);
  TalkFree(request);
}

TEST_P(RequestTest, a_string_request_is_an_identifier) {
  EXPECT_EQ("1 done", talk_he("sys:a=1"));
  EXPECT_EQ("0 1", talk_he("sys:a"));
  EXPECT_EQ("0 {\"sys\":\"/etc/config/sys.cfg\"}", talk_he(":"));
  EXPECT_EQ("-1 untouched", talk_he("//"));
}

TEST_P(RequestTest, a_request_without_object_is_unusable) {
  for (const char* text : {"{}", "{\"op\":\"=\"}", "{\"adp\":{}}", "{\"adp\":1}", "{\"adp\":[]}"})
    EXPECT_EQ("-1 untouched", talk_he(text)) << text;
}

TEST_P(RequestTest, a_data_request_reads_sets_or_merges) {
  EXPECT_EQ("1 done", talk_he("{\"adp\":\"sys\",\"op\":\"=\",\"ab\":\"a/b\",\"v\":\"1\"}"));
  EXPECT_EQ("0 1", talk_he("{\"adp\":\"sys\",\"ab\":\"a/b\"}"));
  EXPECT_EQ("0 {\"a\":{\"b\":\"1\"}}", talk_he("{\"adp\":\"sys\",\"op\":\"\"}"));
  EXPECT_EQ("1 done", talk_he("{\"adp\":\"sys\",\"op\":\"|\",\"v\":{\"c\":\"2\"}}"));
  EXPECT_EQ("{\"a\":{\"b\":\"1\"},\"c\":\"2\"}", file_content("/etc/config/sys.cfg"));
  EXPECT_EQ(
      "1 done",
      talk_he("{\"adp\":\"sys\",\"v\":{\"d\":\"3\"}}"));  // a value without operator is merged
  EXPECT_EQ("{\"a\":{\"b\":\"1\"},\"c\":\"2\",\"d\":\"3\"}", file_content("/etc/config/sys.cfg"));
  EXPECT_EQ("-1 failed", talk_he("{\"adp\":\"sys\",\"op\":\"=\",\"v\":\"a string\"}"));
}

TEST_P(RequestTest, operators_are_told_by_their_first_character) {
  EXPECT_EQ("1 done", talk_he("{\"adp\":\"sys\",\"op\":\"=x\",\"ab\":\"a\",\"v\":\"1\"}"));
  EXPECT_EQ("1 done", talk_he("{\"adp\":\"sys\",\"op\":\"|x\",\"ab\":\"b\",\"v\":\"2\"}"));
  EXPECT_EQ("{\"a\":\"1\",\"b\":\"2\"}", file_content("/etc/config/sys.cfg"));
}

TEST_P(RequestTest, an_equal_set_by_document_calls_no_set_function) {
  answer_with("{\"a\":\"1\"}");
  EXPECT_EQ("1 done", talk_he("{\"adp\":\"net/probe\",\"op\":\"=\",\"v\":{\"a\":\"1\"}}"));
  EXPECT_EQ("1 done", talk_he("{\"adp\":\"net/probe\",\"op\":\"|\",\"v\":{\"a\":\"1\"}}"));
  EXPECT_EQ("<missing>", sets());
}

TEST_P(RequestTest, a_call_by_document_answers) {
  EXPECT_EQ("1 done", talk_he("{\"adp\":\"net/probe\",\"op\":\"done\"}"));
  EXPECT_EQ("-1 failed", talk_he("{\"adp\":\"net/probe\",\"op\":\"failed\"}"));
  EXPECT_EQ("0 null", talk_he("{\"adp\":\"net/probe\",\"op\":\"nothing\"}"));
  EXPECT_EQ("0 just so", talk_he("{\"adp\":\"net/probe\",\"op\":\"string\"}"));
}

TEST_P(RequestTest, parameters_stand_at_their_numbers) {
  EXPECT_EQ("0 {\"object\":\"net/probe\",\"count\":\"5\",\"list\":\",x,,,{}\"}",
            talk_he("{\"adp\":\"net/probe\",\"op\":\"echo\",\"5\":{},\"2\":\"x\"}"));
  EXPECT_EQ("0 {\"object\":\"net/probe\",\"count\":\"0\"}",
            talk_he("{\"adp\":\"net/probe\",\"op\":\"echo\",\"21\":\"x\"}"));
  // What has no text is empty, and counts.
  EXPECT_EQ("0 {\"object\":\"net/probe\",\"count\":\"4\",\"list\":\",a,,\"}",
            talk_he("{\"adp\":\"net/probe\",\"op\":\"echo\",\"1\":7,\"2\":\"a\",\"3\":[1],"
                    "\"4\":null}"));
}

INSTANTIATE_TEST_SUITE_P(Roads, RequestTest,
                         testing::Values(Road{"in_process", He, TalkHe},
                                         Road{"isolated", SecureHe, SecureTalkHe}),
                         [](const auto& instance) { return std::string(instance.param.name); });

class SecureRequestTest : public fairlead_test::AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    install("probe", "net/probe");
  }

  // The answer to an identifier, asked for by SecureHe or as a document by SecureTalkHe.
  static std::string answer(const char* text, bool as_document) {
    talk_t* out = nullptr;
    if (as_document) {
      talk_t* request = StringTalk(text);
      SecureTalkHe(request, &out);
      TalkFree(request);
    } else {
      uii_t* identifier = UiiCreate(text);
      SecureHe(identifier, &out);
      UiiFree(identifier);
    }
    return spelled(out);
  }
};

TEST_F(SecureRequestTest, a_crashing_adapter_costs_the_request_and_not_its_caller) {
  answer_with("crash");
  logged([] {
    EXPECT_EQ("null", answer("net/probe", false));
    EXPECT_EQ("null", answer("net/probe.misbehave[segv]", false));
    EXPECT_EQ("null", answer("net/probe", true));
    EXPECT_EQ("null", answer("{\"adp\":\"net/probe\"}", true));
    EXPECT_EQ("null", answer("{\"adp\":\"net/probe\",\"op\":\"misbehave\",\"1\":\"segv\"}", true));
  });
}

// The module counts its sets in memory, and what a child counts is lost with it.
TEST_F(SecureRequestTest, sets_are_made_by_a_child_and_listings_by_the_caller) {
  EXPECT_EQ(0U, answer("net/probe.", false).find("{\"echo\":"));
  adp_t* adp = AdpFileOpen(nullptr, "net/probe");
  ASSERT_NE(nullptr, adp);
  EXPECT_EQ(1, adp->module->references);
  const int* made_here = static_cast<int*>(dlsym(adp->module->library, "probe_sets"));
  const int before = *made_here;
  EXPECT_EQ("done", answer("net/probe:x=1", false));
  EXPECT_EQ("done", answer("net/probe:x|1", false));
  EXPECT_EQ("done", answer("{\"adp\":\"net/probe\",\"op\":\"=\",\"v\":\"1\"}", true));
  EXPECT_EQ("done", answer("{\"adp\":\"net/probe\",\"op\":\"|\",\"v\":\"1\"}", true));
  EXPECT_EQ(before, *made_here);
  EXPECT_EQ("net/probe|x|1\nnet/probe|x|1\nnet/probe|-|1\nnet/probe|-|1\n", sets());
  AdpFileClose(adp);
}

class PlainRequestTest : public fairlead_test::AdapterTest {};

// A kind that no text can tell survives in the caller's process only.
TEST_F(PlainRequestTest, an_array_fails_by_identifier_and_passes_by_document) {
  install("probe", "net/probe");
  uii_t* identifier = UiiCreate("net/probe.array");
  talk_t* request = StringTalk("{\"adp\":\"net/probe\",\"op\":\"array\"}");
  talk_t* out = nullptr;
  EXPECT_EQ(-1, He(identifier, &out));
  ASSERT_NE(nullptr, out);
  EXPECT_EQ(uint32_t{JSON_ARRAY}, out->type);
  TalkFree(out);
  EXPECT_EQ(0, TalkHe(request, &out));
  EXPECT_EQ(uint32_t{JSON_ARRAY}, out->type);
  TalkFree(out);
  TalkFree(request);
  UiiFree(identifier);
}

}  // namespace
