// The request tool and its descriptors: requests from files, answers that cannot be written.
#include <fcntl.h>

#include "tools/he_program.h"

namespace {

using fairlead_test::Ended;
using fairlead_test::HeTest;
using fairlead_test::put_file;

class HeStreamsTest : public HeTest {
 protected:
  static Ended request(const std::string& document) {
    put_file("/tmp/request", document);
    return he({"-r", "/tmp/request"});
  }

  static void replace(int fd, const char* path, int flags) {
    const int opened = open(path, flags);
    dup2(opened, fd);
    close(opened);
  }
};

TEST_F(HeStreamsTest, a_request_document_can_be_an_identifier) {
  expect(request("net/wan:mtu\n"), 0, "1500\n", "");
  expect(request("/"), 2, "", "he: '/': no object is named there\ntry 'he --help'\n");
}

TEST_F(HeStreamsTest, a_request_document_reads) {
  expect(request(R"({"adp":"net/wan","ab":"dns/first"})"), 0, "::1\n", "");
  expect(request(R"({"adp":"net/wan","ab":"dns/third"})"), 3, "",
         "he: nothing at net/wan:dns/third\n");
  expect(request(R"({"adp":"net/lan"})"), 3, "", "he: nothing at net/lan\n");
}

TEST_F(HeStreamsTest, a_request_document_writes_and_merges) {
  expect(request(R"({"adp":"net/wan","op":"=","ab":"dns/first","v":"::2"})"), 0, "", "");
  expect(request(R"({"adp":"net/wan","op":"|","v":{"metric":"5"}})"), 0, "", "");
  EXPECT_EQ(R"({"mtu":"1500","dns":{"first":"::2"},"metric":"5"})", wan());
}

TEST_F(HeStreamsTest, a_request_document_calls) {
  install_answers();
  expect(request(R"({"adp":"lab/answers","op":"echo","1":"a, b"})"), 0, "a, b\n", "");
  expect(request(R"({"adp":"lab/answers","op":"count","2":"b","5":"e"})"), 0, "5\n", "");
  expect(request(R"({"adp":"lab/answers","op":"array"})"), 0, "[\"a\",1]\n", "");
  expect(request(R"({"adp":"lab/answers","op":"failed"})"), 1, "",
         "he: lab/answers.failed: the call failed\n");
  expect(request(R"({"adp":"lab/answers","op":"reboot"})"), 3, "",
         "he: lab/answers.reboot: lab/answers has no interface 'reboot'\n");
}

TEST_F(HeStreamsTest, a_request_comes_from_standard_input) {
  put_file("/tmp/request", R"({"adp":"net/wan","ab":"mtu"})");
  const auto ended = he({"-r", "-"}, [] { replace(0, "/tmp/request", O_RDONLY); });
  expect(ended, 0, "1500\n", "");
}

TEST_F(HeStreamsTest, a_request_that_cannot_be_read_is_a_failure) {
  expect(he({"-r", "/tmp/none"}), 1, "", "he: /tmp/none: No such file or directory\n");
  expect(he({"-r", "/tmp"}), 1, "", "he: /tmp: Is a directory\n");
  expect(he({"-q", "-r", "/tmp/none"}), 1, "", "");
  expect(he({"-r", "-"}, [] { close(0); }), 1, "", "he: -: Bad file descriptor\n");
}

TEST_F(HeStreamsTest, a_request_that_is_none_is_a_usage_error) {
  for (const char* document : {"", " \n", "\x01", "\x02"})
    expect(request(document), 2, "",
           "he: '/tmp/request': there is no request document in it\ntry 'he --help'\n");
  expect(request(R"({"op":"="})"), 2, "",
         "he: '/tmp/request': the request has no text member \"adp\"\ntry 'he --help'\n");
  EXPECT_EQ(2, request(R"({"adp":"net/wan")").status);
}

TEST_F(HeStreamsTest, an_answer_that_cannot_be_written_is_a_failure) {
  expect(he({"net/wan"}, [] { replace(1, "/dev/full", O_WRONLY); }), 1, "",
         "he: standard output: No space left on device\n");
  expect(he({"--help"}, [] { replace(1, "/dev/full", O_WRONLY); }), 1, "",
         "he: standard output: No space left on device\n");
}

TEST_F(HeStreamsTest, a_closed_output_is_a_failure_only_when_it_is_needed) {
  expect(he({"net/wan"}, [] { close(1); }), 1, "", "he: standard output: Bad file descriptor\n");
  expect(he({"net/wan:mtu=1492"}, [] { close(1); }), 0, "", "");
  expect(he({"-q", "net/wan"}, [] { close(1); }), 0, "", "");
}

TEST_F(HeStreamsTest, closed_descriptors_never_receive_the_answer) {
  const auto ended = he({"net/wan:mtu=1492"}, [] { close(0), close(1), close(2); });
  EXPECT_EQ(0, ended.status);
  EXPECT_EQ(R"({"mtu":"1492","dns":{"first":"::1"}})", wan());
  EXPECT_EQ(1, he({"net/wan"}, [] { close(0), close(1), close(2); }).status);
  EXPECT_EQ(R"({"mtu":"1492","dns":{"first":"::1"}})", wan());
}

TEST_F(HeStreamsTest, inherited_descriptors_stay_open) {
  install_answers();
  expect(he({"lab/answers.is_open[9]"}, [] { dup2(2, 9); }), 0, "", "");
  EXPECT_EQ(1, he({"lab/answers.is_open[9]"}).status);
}

}  // namespace
