// Power cuts: whatever a disk makes of the writes that were not synced, the store reads as the old
// or the new, and as the new once the call has said so.
#include <algorithm>

#include "faults/disk.h"
#include "faults/faults_fixture.h"

namespace {

using namespace fairlead_test;

constexpr char kRoot[] = "/etc/config";

class PowerCutTest : public FaultsTest, public testing::WithParamInterface<size_t> {
 protected:
  void SetUp() override {
    FaultsTest::SetUp();
    if (!can_trace()) GTEST_SKIP() << "processes can't be traced here";
  }

  const Operation& operation() const { return operations()[GetParam()]; }

  std::vector<DiskEvent> recorded() {
    DiskLog log(kRoot);
    const Traced seen = run_traced(
        {.watch = [&log](const CallMade& call) { log.watch(call); }},
        [this] {
          if (operation().act() != 1) _exit(kRefused);
        },
        [] { return kDone; });
    EXPECT_EQ(kDone, seen.ended.status);
    return log.events();
  }
};

TEST_P(PowerCutTest, leaves_the_old_or_the_new) {
  const Expected expected(operation());
  empty_root();
  operation().arrange();
  const Disk before = Disk::read(kRoot);
  const std::vector<DiskEvent> events = recorded();
  size_t last = events.size();  // the mark of a changed configuration is not part of the change
  while (last > 0 && events[last - 1].path.rfind("/etc/config/version", 0) == 0) --last;
  EXPECT_TRUE(std::any_of(events.begin(), events.end(), [](const DiskEvent& event) {
    return event.kind == DiskEvent::kSyncFolder;
  })) << "nothing was put on disk";

  for (size_t count = 0; count <= last; ++count) {
    for (const Disk& disk : after_a_cut(before, events, count)) {
      disk.write(kRoot);
      expect_old_or_new(operation(), expected, count == last,
                        "after " + std::to_string(count) + " of " + std::to_string(last));
    }
  }
}

std::vector<size_t> changes_of_the_configuration() {
  std::vector<size_t> found;
  for (size_t i = 0; i < operations().size(); ++i)
    if (operations()[i].on_disk) found.push_back(i);
  return found;
}

INSTANTIATE_TEST_SUITE_P(Every, PowerCutTest, testing::ValuesIn(changes_of_the_configuration()),
                         [](const testing::TestParamInfo<size_t>& parameter) {
                           return test_name(operations()[parameter.param]);
                         });

}  // namespace
