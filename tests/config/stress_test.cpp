// Many processes on one configuration file.
#include <unistd.h>

#include <chrono>
#include <memory>
#include <vector>

#include "config_support.h"
#include "support/child.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kWriters = 20;
constexpr int kReaders = 20;

class ConfigStressTest : public fairlead_test::ConfigTest {
 protected:
  static int seconds() {
    const char* text = getenv("FAIRLEAD_STRESS_SECONDS");
    return text ? atoi(text) : 2;
  }

  // Every document a writer makes tells its own length, so that a torn one gives itself away.
  static vessel_t* make_document(int writer, int round) {
    vessel_t* document = VesselCreate();
    const std::string filler(static_cast<size_t>((writer * 997 + round * 131) % 9000),
                             static_cast<char>('a' + writer));
    VesselSetS(document, "length", std::to_string(filler.size()).c_str());
    VesselSetS(document, "filler", filler.c_str());
    return document;
  }

  static bool is_whole(vessel_t* document) {
    const char* length = VesselGetS(document, "length");
    const char* filler = VesselGetS(document, "filler");
    return length && filler && std::to_string(strlen(filler)) == length &&
           strspn(filler, std::string(1, filler[0]).c_str()) == strlen(filler);
  }

  static int write_until(Clock::time_point end, int writer) {
    for (int round = 0; Clock::now() < end; ++round) {
      vessel_t* document = make_document(writer, round);
      errno = 0;
      const int result = ConfigSet("busy", nullptr, nullptr, document);
      TalkFree(document);
      if (result != 1 && errno != EBUSY) return errno;
    }
    return 0;
  }

  static int read_until(Clock::time_point end) {
    while (Clock::now() < end) {
      errno = 0;
      vessel_t* document = ConfigGet("busy", nullptr, nullptr);
      const bool whole = document ? is_whole(document) : errno == EBUSY;
      TalkFree(document);
      if (!whole) return 1;
    }
    return 0;
  }
};

TEST_F(ConfigStressTest, no_reader_sees_a_document_that_no_writer_wrote) {
  vessel_t* first = make_document(0, 1);
  ASSERT_EQ(1, ConfigSet("busy", nullptr, nullptr, first));
  TalkFree(first);
  const auto end = Clock::now() + std::chrono::seconds(seconds());
  std::vector<std::unique_ptr<fairlead_test::Child>> children;
  for (int writer = 0; writer < kWriters; ++writer)
    children.push_back(
        std::make_unique<fairlead_test::Child>([=] { return write_until(end, writer); }));
  for (int reader = 0; reader < kReaders; ++reader)
    children.push_back(std::make_unique<fairlead_test::Child>([=] { return read_until(end); }));
  for (auto& child : children) EXPECT_EQ(0, child->wait().status);
}

}  // namespace
