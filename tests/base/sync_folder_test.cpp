// Folders put on disk.
#include "base/sync_folder.h"

#include "support/device_test.h"
#include "support/faults.h"

namespace {

using fairlead::sync_folder;
using fairlead_test::Call;
using fairlead_test::Fault;

class SyncFolderTest : public fairlead_test::DeviceTest {};

TEST_F(SyncFolderTest, syncs_a_folder_once) {
  Fault counted(Call::kFsync, {.nth = 0});
  EXPECT_TRUE(sync_folder("/tmp"));
  EXPECT_EQ(1, counted.calls());
}

TEST_F(SyncFolderTest, takes_a_file_system_without_a_way_to_sync_for_synced) {
  Fault fault(Call::kFsync, {.error = EINVAL});
  EXPECT_TRUE(sync_folder("/tmp"));
}

TEST_F(SyncFolderTest, tells_every_other_failure) {
  EXPECT_FALSE(sync_folder("/tmp/missing"));
  EXPECT_EQ(ENOENT, errno);
  fairlead_test::put_file("/tmp/file", "");
  EXPECT_FALSE(sync_folder("/tmp/file"));
  EXPECT_EQ(ENOTDIR, errno);
  Fault fault(Call::kFsync, {.error = EIO});
  EXPECT_FALSE(sync_folder("/tmp"));
  EXPECT_EQ(EIO, errno);
}

}  // namespace
