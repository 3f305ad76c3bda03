// The model of a disk: it must find the faults that it is there to find.
#include "faults/disk.h"

#include <gtest/gtest.h>

#include "support/device_test.h"

namespace {

using namespace fairlead_test;

class DiskTest : public DeviceTest {
 protected:
  static Disk holding(const std::string& content) { return {{{"/etc/config/a", content}}, {}}; }

  // What a reader may find in a file after a cut at the end of these events; "" when it is missing.
  static std::set<std::string> found(const std::vector<DiskEvent>& events) {
    std::set<std::string> contents;
    for (const Disk& disk : after_a_cut(holding("old"), events, events.size())) {
      const auto file = disk.files.find("/etc/config/a");
      contents.insert(file == disk.files.end() ? "missing" : file->second);
    }
    return contents;
  }
};

const DiskEvent kMade = {DiskEvent::kMake, "/etc/config/.a", "#1"};
const DiskEvent kWritten = {DiskEvent::kWrite, "#1", "", 0, "next"};
const DiskEvent kSynced = {DiskEvent::kSync, "#1", ""};
const DiskEvent kRenamed = {DiskEvent::kRename, "/etc/config/.a", "/etc/config/a"};
const DiskEvent kFolderSynced = {DiskEvent::kSyncFolder, "/etc/config", ""};

TEST_F(DiskTest, a_synced_rename_of_a_synced_file_is_the_new_content) {
  EXPECT_EQ((std::set<std::string>{"next"}),
            found({kMade, kWritten, kSynced, kRenamed, kFolderSynced}));
}

TEST_F(DiskTest, a_rename_that_was_not_synced_is_old_or_new) {
  EXPECT_EQ((std::set<std::string>{"next", "old"}), found({kMade, kWritten, kSynced, kRenamed}));
}

TEST_F(DiskTest, a_rename_before_its_content_can_be_torn) {
  const std::set<std::string> torn = {"", "ne", "next", std::string(4, '\0')};
  EXPECT_EQ(torn, found({kMade, kWritten, kRenamed, kFolderSynced}));
}

TEST_F(DiskTest, a_file_written_in_place_can_be_torn) {
  const DiskEvent cut = {DiskEvent::kTruncate, "/etc/config/a", "", 0};
  const DiskEvent written = {DiskEvent::kWrite, "/etc/config/a", "", 0, "next"};
  EXPECT_TRUE(found({cut, written}).count("")) << "empty";
  EXPECT_TRUE(found({cut, written}).count("ned") || found({cut, written}).count("ne"));
}

TEST_F(DiskTest, a_file_in_a_folder_that_was_not_synced_can_be_missing) {
  const std::vector<DiskEvent> events = {{DiskEvent::kMakeFolder, "/etc/config/f", ""},
                                         {DiskEvent::kMake, "/etc/config/f/b", "#1"},
                                         kWritten,
                                         kSynced,
                                         {DiskEvent::kSyncFolder, "/etc/config/f", ""}};
  bool missing = false, whole = false;
  for (const Disk& disk : after_a_cut({}, events, events.size())) {
    missing = missing || disk.files.empty();
    whole = whole || disk.files.count("/etc/config/f/b");
  }
  EXPECT_TRUE(missing);
  EXPECT_TRUE(whole);
}

TEST_F(DiskTest, a_removal_that_was_not_synced_can_be_undone) {
  const DiskEvent removed = {DiskEvent::kRemove, "/etc/config/a", ""};
  EXPECT_EQ((std::set<std::string>{"missing", "old"}), found({removed}));
  EXPECT_EQ((std::set<std::string>{"missing"}), found({removed, kFolderSynced}));
}

}  // namespace
