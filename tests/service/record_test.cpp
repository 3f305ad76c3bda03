// Records that others have written: cut, damaged, oversized, or no files at all. All readers get
// each of them.
#include <sys/stat.h>

#include <random>

#include "service/service_support.h"

namespace {

using namespace fairlead_test;

class RecordTest : public ServiceTest {
 protected:
  // What a reader says of these bytes; no reader may crash or wait.
  static std::string seen(const std::string& content) {
    put_record("wan", content);
    const std::string one = info("wan");
    const std::string all = spelled(ServiceList());
    EXPECT_EQ(one == "null" ? "{}" : "{\"wan\":" + one + "}", all);
    EXPECT_EQ(-1, pid("wan"));
    return one;
  }

  // Starts that a check makes of it; the program is missing, so each ends at once.
  static int starts(const std::string& content) {
    put_record("wan", content);
    setenv("PATH", "/tmp/none", 1);
    EXPECT_EQ(0, DaemonCheck());
    int count = 0;
    for (int end; (end = next_end()) != -1000; ++count) EXPECT_EQ(127, end);
    return count;
  }
};

TEST_F(RecordTest, an_empty_file_is_no_record) {
  EXPECT_EQ("null", seen(""));
  EXPECT_EQ(0, starts(""));
}

TEST_F(RecordTest, a_record_cut_at_any_length_is_none_or_what_is_left_of_it) {
  const std::string whole = record_of("test", "wait", "a,b");
  for (size_t length = 0; length <= whole.size(); ++length) {
    const std::string left = seen(whole.substr(0, length));
    const std::string expected = length < 72 ? "null" : R"({"status":"die","adp":"test")";
    EXPECT_EQ(0u, left.find(expected)) << length << ": " << left;
  }
  EXPECT_EQ(R"({"status":"die","adp":"test"})", seen(whole.substr(0, 72)));
  EXPECT_EQ(R"({"status":"die","adp":"test","func":"wa"})", seen(whole.substr(0, 74)));
  EXPECT_EQ(R"({"status":"die","adp":"test","func":"wait"})", seen(whole.substr(0, 136)));
}

TEST_F(RecordTest, a_check_takes_cut_records_for_what_they_say) {
  const std::string whole = record_of("test", "wait", "a,b");
  for (const size_t length : {0u, 1u, 71u, 72u}) EXPECT_EQ(0, starts(whole.substr(0, length)));
  // From here on there is an interface. A start rewrites the record.
  for (const size_t length : {73u, 76u, 136u, 139u}) EXPECT_EQ(1, starts(whole.substr(0, length)));
}

TEST_F(RecordTest, a_record_without_an_object_is_none) {
  EXPECT_EQ("null", seen(record_of("", "wait", "a")));
  EXPECT_EQ(0, starts(record_of("", "wait", "a")));
}

TEST_F(RecordTest, names_that_fill_their_room_have_no_terminator) {
  const std::string object(64, 'o'), interface(64, 'i');
  EXPECT_EQ("{\"status\":\"die\",\"adp\":\"" + object + "\",\"func\":\"" + interface +
                "\",\"parameter1\":\"p\"}",
            seen(record_of(object, interface, "p")));
}

TEST_F(RecordTest, parameters_without_a_terminator_end_with_the_file) {
  const std::string record = record_of("test", "wait", "ab");
  EXPECT_EQ(R"({"status":"die","adp":"test","func":"wait","parameter1":"ab"})",
            seen(record.substr(0, record.size() - 1)));
  EXPECT_EQ(R"({"status":"die","adp":"test","func":"wait","parameter1":"ab"})",
            seen(record + "behind the terminator"));
}

TEST_F(RecordTest, a_record_larger_than_a_program_can_be_started_with_is_none) {
  const std::string names = record_of("test", "wait").substr(0, 136);
  EXPECT_NE("null", seen(names + std::string(128 * 1024, 'x')));
  EXPECT_EQ("null", seen(names + std::string(128 * 1024 + 1, 'x')));
  // On a 32-bit machine the lower half alone would be that of a record.
  for (const off_t size : {off_t{1} << 40, (off_t{1} << 32) + 140}) {
    ASSERT_EQ(0, truncate(record_path("wan").c_str(), size));
    EXPECT_EQ("null", info("wan"));
    EXPECT_EQ(0, DaemonCheck());
  }
}

TEST_F(RecordTest, random_bytes_harm_no_reader) {
  std::mt19937 random(1);
  for (int round = 0; round < 300; ++round) {
    std::string content(random() % 400, '\0');
    for (char& c : content) c = static_cast<char>(random() % (round % 2 ? 256 : 40));
    seen(content);
    if (round % 10 == 0) starts(content);
  }
}

TEST_F(RecordTest, what_is_no_regular_file_is_no_record) {
  make_directories("/tmp/.var/service");
  const std::string path = record_path("wan");
  const auto expect_none = [&] {
    EXPECT_EQ("null", info("wan"));
    EXPECT_EQ("{}", spelled(ServiceList()));
    EXPECT_EQ(-1, pid("wan"));
    EXPECT_EQ(0, DaemonCheck());
  };
  ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
  expect_none();
  EXPECT_EQ(-1, ServiceOff("wan"));
  EXPECT_EQ(-1, ServiceReset("wan"));
  EXPECT_EQ(-1, ServiceStop("wan"));
  EXPECT_FALSE(exists(path));

  make_directories(path);
  expect_none();
  EXPECT_EQ(-1, ServiceStop("wan"));
  EXPECT_TRUE(exists(path));
  rmdir(path.c_str());

  ASSERT_EQ(0, symlink("/tmp/none", path.c_str()));
  expect_none();
}

}  // namespace
