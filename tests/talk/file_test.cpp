// Documents in files.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "fairlead/talk.h"
#include "support/device_test.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using fairlead_test::EachCall;
using fairlead_test::file_content;
using fairlead_test::put_file;

constexpr char kFile[] = "/tmp/.var/a.json";

class FileTest : public fairlead_test::DeviceTest {
 protected:
  static std::string read() {
    vessel_t* vessel = FileVessel(kFile);
    char* text = vessel ? VesselString(vessel) : nullptr;
    const std::string result = text ? text : "<null>";
    free(text);
    TalkFree(vessel);
    return result;
  }
};

TEST_F(FileTest, what_was_saved_reads_back) {
  vessel_t* vessel = StringVessel("{\"a\":{\"b\":\"c\"},\"n\":[1,2]}");
  EXPECT_EQ(1, VesselFile(vessel, kFile));
  EXPECT_EQ("{\"a\":{\"b\":\"c\"},\"n\":[1,2]}", file_content(kFile));  // no line end
  EXPECT_EQ("{\"a\":{\"b\":\"c\"},\"n\":[1,2]}", read());
  TalkFree(vessel);
}

TEST_F(FileTest, an_empty_object_is_two_bytes) {
  vessel_t* vessel = VesselCreate();
  EXPECT_EQ(1, VesselFile(vessel, kFile));
  EXPECT_EQ("{}", file_content(kFile));
  TalkFree(vessel);
}

TEST_F(FileTest, what_is_no_object_is_not_saved) {
  talk_t* render = RenderCreate("x");
  for (talk_t* talk : {static_cast<talk_t*>(nullptr), render}) {
    errno = 0;
    EXPECT_EQ(0, VesselFile(talk, kFile));
    EXPECT_EQ(EINVAL, errno);
  }
  EXPECT_EQ("<missing>", file_content(kFile));
  TalkFree(render);
}

TEST_F(FileTest, errno_stays_when_a_lock_was_waited_for) {
  put_file(kFile, "{\"a\":\"b\"}");
  fairlead_test::Fault held(Call::kFcntl, {.error = EAGAIN});
  errno = ENOTTY;
  EXPECT_EQ("{\"a\":\"b\"}", read());
  EXPECT_EQ(ENOTTY, errno);
  EXPECT_TRUE(held.fired());
}

TEST_F(FileTest, a_missing_file_gives_null_with_enoent) {
  errno = 0;
  EXPECT_EQ(nullptr, FileVessel(kFile));
  EXPECT_EQ(ENOENT, errno);
}

TEST_F(FileTest, null_and_empty_paths_give_einval) {
  for (const char* path : {static_cast<const char*>(nullptr), ""}) {
    errno = 0;
    EXPECT_EQ(nullptr, FileVessel(path));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(FileTest, an_empty_file_gives_null_with_einval) {
  put_file(kFile, "");
  errno = 0;
  EXPECT_EQ(nullptr, FileVessel(kFile));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(FileTest, bad_text_gives_null_with_einval) {
  for (const std::string& text :
       {std::string("{"), std::string("[1]"), std::string("\0{}", 3), std::string("\xff\xfe")}) {
    put_file(kFile, text);
    errno = 0;
    EXPECT_EQ("<null>", read());
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(FileTest, reading_keeps_errno) {
  put_file(kFile, " {\"a\":\"b\"} \n");
  errno = 4711;
  vessel_t* vessel = FileVessel(kFile);
  EXPECT_EQ(4711, errno);
  TalkFree(vessel);
}

TEST_F(FileTest, a_folder_is_no_document) {
  errno = 0;
  EXPECT_EQ(nullptr, FileVessel("/tmp/.var"));
  EXPECT_NE(0, errno);
}

TEST_F(FileTest, each_failing_step_of_a_read_gives_its_errno) {
  put_file(kFile, "{\"a\":\"b\"}");
  const std::pair<Call, int> steps[] = {
      {Call::kOpen, EMFILE}, {Call::kStat, EIO}, {Call::kRead, EIO}};
  for (const auto& [call, code] : steps) {
    fairlead_test::Fault fault(call, {.error = code});
    errno = 0;
    EXPECT_EQ(nullptr, FileVessel(kFile));
    EXPECT_EQ(code, errno);
  }
}

TEST_F(FileTest, a_lack_of_memory_gives_null_and_keeps_the_file) {
  put_file(kFile, "{\"a\":\"b\"}");
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next();) {
    vessel_t* vessel = each.run([] { return FileVessel(kFile); });
    EXPECT_EQ(each.fired(), vessel == nullptr) << each.nth();
    TalkFree(vessel);
  }
  EXPECT_EQ("{\"a\":\"b\"}", file_content(kFile));
}

}  // namespace
