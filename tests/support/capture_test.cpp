// Captured output: all of it, in its stream, and the streams are as before afterwards.
#include "support/capture.h"

#include "support/device_test.h"

namespace {

using fairlead_test::capture;
using fairlead_test::Captured;

class CaptureTest : public fairlead_test::DeviceTest {};

TEST_F(CaptureTest, both_streams_are_kept_apart) {
  const Captured written = capture([] {
    printf("to out\n");
    fprintf(stderr, "to err\n");
  });
  EXPECT_EQ("to out\n", written.out);
  EXPECT_EQ("to err\n", written.err);
}

TEST_F(CaptureTest, what_was_buffered_before_is_not_captured) {
  const Captured outer = capture([] {
    printf("before ");
    const Captured inner = capture([] { printf("inside"); });
    EXPECT_EQ("inside", inner.out);
    printf("after");
  });
  EXPECT_EQ("before after", outer.out);
}

TEST_F(CaptureTest, more_than_a_pipe_holds_is_captured) {
  const std::string many(300000, 'x');
  EXPECT_EQ(many, capture([&] { fputs(many.c_str(), stdout); }).out);
}

TEST_F(CaptureTest, output_of_processes_is_captured) {
  EXPECT_EQ("hello\n", capture([] { EXPECT_EQ(0, system("echo hello")); }).out);
}

}  // namespace
