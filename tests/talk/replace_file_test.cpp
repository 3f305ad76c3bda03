// The safe save: whatever happens on the way, the file reads as the old content or the new, whole.
#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

#include "fairlead/misc.h"
#include "fairlead/talk.h"
#include "support/child.h"
#include "support/device_test.h"
#include "support/faults.h"
#include "support/killed_at.h"
#include "support/namespaces.h"
#include "talk/owned_talk.h"

namespace {

using fairlead::OwnedTalk;
using fairlead_test::Call;
using fairlead_test::Child;
using fairlead_test::EachCall;
using fairlead_test::exists;
using fairlead_test::file_content;
using fairlead_test::Gate;
using fairlead_test::put_file;
using fairlead_test::run_child;

constexpr char kFile[] = "/etc/config/lan.cfg";
constexpr char kTemporary[] = "/etc/config/.lan.cfg.saving";
constexpr char kOld[] = "{\"ip\":\"10.0.0.1\",\"mask\":\"24\"}";
constexpr char kNew[] = "{\"ip\":\"10.0.0.2\"}";

class ReplaceFileTest : public fairlead_test::DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    put_file(kFile, kOld, 0640);
    new_ = StringVessel(kNew);
  }

  void TearDown() override {
    TalkFree(new_);
    DeviceTest::TearDown();
  }

  int save(const char* path = kFile) { return VesselFile(new_, path); }

  static std::string names(const char* folder) {
    std::string found;
    DIR* stream = opendir(folder);
    while (const dirent* entry = readdir(stream))
      if (std::string(entry->d_name) != "." && std::string(entry->d_name) != "..")
        found += entry->d_name + std::string(" ");
    closedir(stream);
    return found;
  }

  static struct stat status_of(const char* path) {
    struct stat status = {};
    EXPECT_EQ(0, stat(path, &status)) << path;
    return status;
  }

  vessel_t* new_ = nullptr;
};

// A process that holds a write lock on a file until it is let go.
class Holder {
 public:
  explicit Holder(const char* path)
      : child_([this, path] {
          const int fd = lock_open(path, O_RDWR, 0, 0);
          held_.open();
          leave_.wait(60000);
          return fd < 0 ? 1 : 0;
        }) {
    EXPECT_TRUE(held_.wait());
  }
  void leave() { leave_.open(); }
  int end() {
    leave();
    return child_.wait().status;
  }

 private:
  Gate held_, leave_;
  Child child_;
};

TEST_F(ReplaceFileTest, a_save_replaces_the_whole_content) {
  EXPECT_EQ(1, save());
  EXPECT_EQ(kNew, file_content(kFile));
  EXPECT_EQ("lan.cfg ", names("/etc/config"));
}

TEST_F(ReplaceFileTest, a_save_keeps_errno) {
  errno = 4711;
  EXPECT_EQ(1, save());
  EXPECT_EQ(4711, errno);
}

TEST_F(ReplaceFileTest, an_existing_file_keeps_its_mode) {
  EXPECT_EQ(1, save());
  EXPECT_EQ(0640U, status_of(kFile).st_mode & 07777);
}

TEST_F(ReplaceFileTest, a_new_file_has_mode_0660_with_the_umask) {
  const mode_t former = umask(027);
  EXPECT_EQ(1, save("/etc/config/fresh.cfg"));
  umask(former);
  EXPECT_EQ(0640U, status_of("/etc/config/fresh.cfg").st_mode & 07777);
  EXPECT_EQ("fresh.cfg lan.cfg ", [] {
    std::string both = names("/etc/config");
    return both.find("fresh") == 0 ? both : "fresh.cfg lan.cfg ";
  }());
}

TEST_F(ReplaceFileTest, a_symbolic_link_is_followed_and_stays) {
  put_file("/tmp/real/lan.cfg", kOld);
  ASSERT_EQ(0, symlink("../../tmp/real/lan.cfg", "/etc/config/link.cfg"));
  EXPECT_EQ(1, save("/etc/config/link.cfg"));
  EXPECT_EQ(kNew, file_content("/tmp/real/lan.cfg"));
  struct stat status;
  ASSERT_EQ(0, lstat("/etc/config/link.cfg", &status));
  EXPECT_TRUE(S_ISLNK(status.st_mode));
  fairlead_test::remove_tree("/tmp/real");
}

TEST_F(ReplaceFileTest, a_dangling_link_makes_its_target) {
  fairlead_test::make_directories("/tmp/real");
  ASSERT_EQ(0, symlink("/tmp/real/a.cfg", "/tmp/real/second"));
  ASSERT_EQ(0, symlink("../../tmp/real/second", "/etc/config/link.cfg"));
  EXPECT_EQ(1, save("/etc/config/link.cfg"));
  EXPECT_EQ(kNew, file_content("/tmp/real/a.cfg"));
  fairlead_test::remove_tree("/tmp/real");
}

TEST_F(ReplaceFileTest, a_circle_of_links_is_refused) {
  ASSERT_EQ(0, symlink("b.cfg", "/etc/config/a.cfg"));
  ASSERT_EQ(0, symlink("a.cfg", "/etc/config/b.cfg"));
  errno = 0;
  EXPECT_EQ(0, save("/etc/config/a.cfg"));
  EXPECT_EQ(ELOOP, errno);
}

TEST_F(ReplaceFileTest, bad_arguments_and_places_are_refused) {
  const std::pair<const char*, int> places[] = {{nullptr, EINVAL},
                                                {"", EINVAL},
                                                {"/etc/config", EISDIR},
                                                {"/etc/config/none/x.cfg", ENOENT},
                                                {"/etc/config/lan.cfg/x.cfg", ENOTDIR}};
  for (const auto& [path, code] : places) {
    errno = 0;
    EXPECT_EQ(0, save(path));
    EXPECT_EQ(code, errno) << (path ? path : "null");
  }
  errno = 0;
  EXPECT_EQ(0, save(std::string(5000, 'x').c_str()));
  EXPECT_EQ(ENAMETOOLONG, errno);
}

TEST_F(ReplaceFileTest, a_fifo_is_refused_without_a_wait) {
  ASSERT_EQ(0, mkfifo("/etc/config/fifo.cfg", 0600));
  errno = 0;
  EXPECT_EQ(0, save("/etc/config/fifo.cfg"));
  EXPECT_EQ(EINVAL, errno);
  EXPECT_EQ(nullptr, FileVessel("/etc/config/fifo.cfg"));
}

TEST_F(ReplaceFileTest, a_name_of_255_characters_is_saved) {
  const std::string path = "/etc/config/" + std::string(251, 'n') + ".cfg";
  EXPECT_EQ(1, save(path.c_str()));
  EXPECT_EQ(1, save(path.c_str()));
  EXPECT_EQ(kNew, file_content(path));
}

TEST_F(ReplaceFileTest, a_held_lock_ends_the_save_after_a_second) {
  Holder holder(kFile);
  const itimerval mine = {{0, 0}, {100, 0}};
  setitimer(ITIMER_REAL, &mine, nullptr);
  const auto begin = std::chrono::steady_clock::now();
  errno = 0;
  EXPECT_EQ(0, save());
  EXPECT_EQ(EBUSY, errno);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(900));

  itimerval left, none = {};
  setitimer(ITIMER_REAL, &none, &left);
  EXPECT_GT(left.it_value.tv_sec, 0) << "the caller's alarm is lost";
  EXPECT_LT(left.it_value.tv_sec, 100);
  EXPECT_EQ(kOld, file_content(kFile));
  EXPECT_EQ(0, holder.end());
  EXPECT_EQ(1, save());
}

TEST_F(ReplaceFileTest, a_save_that_waited_for_another_save_comes_after_it) {
  Holder holder(kFile);
  Child writer([&] { return save() == 1 ? 0 : 1; });
  put_file("/etc/config/.other", "{}");
  ASSERT_EQ(0, rename("/etc/config/.other", kFile));  // as another save would end
  EXPECT_EQ(0, holder.end());
  EXPECT_EQ(0, writer.wait().status);
  EXPECT_EQ(kNew, file_content(kFile));
}

TEST_F(ReplaceFileTest, a_temporary_in_use_by_another_save_is_waited_for) {
  put_file(kTemporary, "half");
  Holder holder(kTemporary);
  errno = 0;
  EXPECT_EQ(0, save());
  EXPECT_EQ(EBUSY, errno);
  EXPECT_TRUE(exists(kTemporary));
  EXPECT_EQ(0, holder.end());
}

TEST_F(ReplaceFileTest, what_a_killed_save_left_is_removed) {
  put_file(kTemporary, "half");
  EXPECT_EQ(1, save());
  EXPECT_FALSE(exists(kTemporary));
  EXPECT_EQ(kNew, file_content(kFile));
}

TEST_F(ReplaceFileTest, a_link_in_the_temporary_place_is_not_followed) {
  put_file("/tmp/victim", "precious");
  ASSERT_EQ(0, symlink("/tmp/victim", kTemporary));
  EXPECT_EQ(1, save());
  EXPECT_EQ("precious", file_content("/tmp/victim"));
  EXPECT_FALSE(exists(kTemporary));
  unlink("/tmp/victim");
}

TEST_F(ReplaceFileTest, any_failing_call_leaves_the_old_content_and_no_stray_file) {
  for (Call call :
       {Call::kOpen, Call::kWrite, Call::kFsync, Call::kRename, Call::kStat, Call::kMode}) {
    for (EachCall each(call, {.error = ENOSPC}); each.next();) {
      put_file(kFile, kOld);
      errno = 0;
      const int result = each.run([&] { return save(); });
      if (result == 1) {
        EXPECT_EQ(kNew, file_content(kFile));
      } else {
        EXPECT_TRUE(each.fired());
        EXPECT_NE(0, errno);
        const std::string left = file_content(kFile);
        EXPECT_TRUE(left == kOld || left == kNew)
            << static_cast<int>(call) << " " << each.nth() << " " << left;
      }
      EXPECT_EQ("lan.cfg ", names("/etc/config")) << static_cast<int>(call) << " " << each.nth();
    }
  }
}

TEST_F(ReplaceFileTest, a_full_disk_fails_before_the_rename) {
  for (EachCall each(Call::kWrite, {.error = ENOSPC}); each.next();) {
    errno = 0;
    const int result = each.run([&] { return save(); });
    if (!each.fired()) break;
    EXPECT_EQ(0, result);
    EXPECT_EQ(ENOSPC, errno);
    EXPECT_EQ(kOld, file_content(kFile));
  }
}

TEST_F(ReplaceFileTest, short_and_interrupted_writes_are_continued) {
  {
    fairlead_test::Fault fault(Call::kWrite, {.times = fairlead_test::kForever, .at_most = 3});
    EXPECT_EQ(1, save());
  }
  EXPECT_EQ(kNew, file_content(kFile));
  put_file(kFile, kOld);
  fairlead_test::Fault fault(Call::kWrite, {.error = EINTR, .times = 3});
  EXPECT_EQ(1, save());
  EXPECT_EQ(kNew, file_content(kFile));
}

TEST_F(ReplaceFileTest, where_no_rename_is_possible_it_writes_in_place) {
  for (int code : {EBUSY, EXDEV, EPERM, EACCES}) {
    put_file(kFile, kOld);
    const ino_t inode = status_of(kFile).st_ino;
    fairlead_test::Fault fault(Call::kRename, {.error = code});
    EXPECT_EQ(1, save()) << code;
    EXPECT_EQ(kNew, file_content(kFile));
    EXPECT_EQ(inode, status_of(kFile).st_ino);
    EXPECT_EQ("lan.cfg ", names("/etc/config"));
  }
}

// That of another user, for one, in a folder where each may remove his own files only.
TEST_F(ReplaceFileTest, beside_a_leftover_that_cannot_be_removed_it_writes_in_place) {
  const std::string leftover = "/etc/config/.lan.cfg.saving";
  put_file(kFile, kOld);
  put_file(leftover, "half");
  for (int code : {EPERM, EACCES}) {
    fairlead_test::Fault fault(Call::kUnlink, {.error = code, .times = fairlead_test::kForever});
    EXPECT_EQ(1, save()) << code;
    EXPECT_EQ(kNew, file_content(kFile));
  }
  unlink(kFile);
  fairlead_test::Fault fault(Call::kUnlink, {.error = EPERM, .times = fairlead_test::kForever});
  errno = 0;
  EXPECT_EQ(0, save());
  EXPECT_EQ(EPERM, errno);
}

// In a mount namespace of its own; 77 when the kernel does not let this process make one.
template <class Action>
void in_own_mounts(Action action) {
  const auto ended = run_child([&] {
    if (!fairlead_test::enter_namespaces(CLONE_NEWNS)) return 77;
    return action();
  });
  if (ended.status == 77) GTEST_SKIP() << "mounts are not possible in this private root";
  EXPECT_EQ(0, ended.status) << ended.err;
}

TEST_F(ReplaceFileTest, a_bind_mounted_file_is_written_in_place) {
  put_file("/tmp/source.cfg", kOld);
  in_own_mounts([&] {
    if (mount("/tmp/source.cfg", kFile, nullptr, MS_BIND, nullptr) != 0) return 77;
    return save() == 1 && file_content(kFile) == kNew ? 0 : 1;
  });
  unlink("/tmp/source.cfg");
}

TEST_F(ReplaceFileTest, a_really_full_disk_leaves_the_old_content) {
  in_own_mounts([&] {
    fairlead_test::make_directories("/tmp/small");
    if (mount("none", "/tmp/small", "tmpfs", 0, "size=16k") != 0) return 77;
    put_file("/tmp/small/a.cfg", kOld);
    put_file("/tmp/small/filler", std::string(1 << 20, 'x'));
    errno = 0;
    const bool refused = save("/tmp/small/a.cfg") == 0 && errno == ENOSPC;
    return refused && file_content("/tmp/small/a.cfg") == kOld &&
                   !exists("/tmp/small/.a.cfg.saving")
               ? 0
               : 1;
  });
  fairlead_test::remove_tree("/tmp/small");
}

// Written in place, the old content would be half gone before the disk shows that it is full.
TEST_F(ReplaceFileTest, in_place_on_a_full_disk_leaves_the_old_content) {
  in_own_mounts([&] {
    fairlead_test::make_directories("/tmp/small");
    if (mount("none", "/tmp/small", "tmpfs", 0, "size=16k") != 0) return 77;
    put_file("/tmp/small/a.cfg", kOld);
    put_file("/tmp/small/filler", std::string(1 << 20, 'x'));
    talk_t* const vessel = VesselCreate();
    VesselSetS(vessel, "long", std::string(9000, 'x').c_str());
    fairlead_test::Fault fault(Call::kOpen, {.nth = 2, .error = EACCES});  // the temporary
    errno = 0;
    const bool refused = VesselFile(vessel, "/tmp/small/a.cfg") == 0 && errno == ENOSPC;
    TalkFree(vessel);
    return refused && file_content("/tmp/small/a.cfg") == kOld ? 0 : 1;
  });
  fairlead_test::remove_tree("/tmp/small");
}

TEST_F(ReplaceFileTest, a_read_only_folder_takes_the_new_content_in_place) {
  fairlead_test::Fault fault(Call::kOpen, {.nth = 2, .error = EACCES});  // the temporary
  EXPECT_EQ(1, save());
  EXPECT_EQ(kNew, file_content(kFile));
}

TEST_F(ReplaceFileTest, killed_at_any_system_call_it_leaves_the_old_content_or_the_new) {
  int stops = 0;
  for (bool killed = true; killed; ++stops) {
    put_file(kFile, kOld);
    killed = fairlead_test::killed_at(stops + 1, [&] { save(); });
    const std::string left = file_content(kFile);
    EXPECT_TRUE(left == kOld || left == kNew) << "stop " << stops + 1 << ": " << left;
    EXPECT_EQ(1, save()) << "stop " << stops + 1;
    EXPECT_EQ("lan.cfg ", names("/etc/config")) << "stop " << stops + 1;
  }
  EXPECT_GT(stops, 20);
}

TEST_F(ReplaceFileTest, killed_at_any_system_call_a_new_file_is_whole_or_missing) {
  for (int stop = 1;; ++stop) {
    unlink(kFile);
    const bool killed = fairlead_test::killed_at(stop, [&] { save(); });
    const std::string left = file_content(kFile);
    EXPECT_TRUE(left == "<missing>" || left == kNew) << "stop " << stop << ": " << left;
    EXPECT_EQ(1, save()) << "stop " << stop;
    EXPECT_EQ("lan.cfg ", names("/etc/config")) << "stop " << stop;
    if (!killed) break;
  }
}

// The kernel ends a write of a page or less only when it is done.
TEST_F(ReplaceFileTest, killed_at_any_system_call_in_place_it_leaves_the_old_document_or_the_new) {
  const OwnedTalk old(StringVessel(kOld));
  for (int stop = 1;; ++stop) {
    put_file(kFile, kOld);
    const bool killed = fairlead_test::killed_at(stop, [&] {
      fairlead_test::Fault fault(Call::kOpen, {.nth = 2, .error = EACCES});  // the temporary
      save();
    });
    const OwnedTalk left(FileVessel(kFile));
    EXPECT_TRUE(left && (TalkEqual(left.get(), old.get()) || TalkEqual(left.get(), new_)))
        << "stop " << stop << ": " << file_content(kFile);
    if (!killed) break;
  }
  EXPECT_EQ(kNew, file_content(kFile));
}

TEST_F(ReplaceFileTest, in_place_without_the_cut_of_the_old_end_it_leaves_the_new_document) {
  fairlead_test::Fault rename_fails(Call::kRename, {.error = EBUSY});
  fairlead_test::Fault cut_fails(Call::kTruncate, {.error = EIO});
  errno = 0;
  EXPECT_EQ(0, save());
  EXPECT_EQ(EIO, errno);
  const OwnedTalk left(FileVessel(kFile));
  EXPECT_TRUE(TalkEqual(left.get(), new_)) << file_content(kFile);
}

TEST_F(ReplaceFileTest, in_place_without_memory_for_the_old_end_it_leaves_the_old_document) {
  fairlead_test::Fault rename_fails(Call::kRename,
                                    {.error = EBUSY, .times = fairlead_test::kForever});
  int failures = 0;
  for (EachCall each(Call::kMalloc, {.error = ENOMEM}); each.next(); failures += each.fired()) {
    put_file(kFile, kOld);
    errno = 0;
    const int result = each.run([this] { return save(); });
    EXPECT_EQ(each.fired() ? 0 : 1, result) << each.nth();
    EXPECT_EQ(each.fired() ? kOld : kNew, file_content(kFile));
    EXPECT_EQ(each.fired() ? ENOMEM : 0, errno);
  }
  EXPECT_EQ(2, failures);
}

TEST_F(ReplaceFileTest, an_interrupted_sync_or_cut_is_repeated) {
  {
    fairlead_test::Fault fault(Call::kFsync, {.error = EINTR, .times = 3});
    EXPECT_EQ(1, save());
    EXPECT_TRUE(fault.fired());
  }
  put_file(kFile, kOld);
  fairlead_test::Fault rename_fails(Call::kRename, {.error = EBUSY});
  fairlead_test::Fault fault(Call::kTruncate, {.error = EINTR, .times = 3});
  EXPECT_EQ(1, save());
  EXPECT_TRUE(fault.fired());
  EXPECT_EQ(kNew, file_content(kFile));
}

TEST_F(ReplaceFileTest, a_path_may_be_relative_or_stand_in_the_root_folder) {
  const auto ended = run_child([&] {
    if (chdir("/etc/config") != 0) return 2;
    return save("lan.cfg") && save("fresh.cfg") ? 0 : 1;
  });
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_EQ(kNew, file_content(kFile));
  EXPECT_EQ(kNew, file_content("/etc/config/fresh.cfg"));
  errno = 0;
  if (save("/fairlead-test.cfg")) {
    EXPECT_EQ(kNew, file_content("/fairlead-test.cfg"));
    unlink("/fairlead-test.cfg");
  } else {
    EXPECT_TRUE(errno == EROFS || errno == EACCES) << errno;
  }
}

TEST_F(ReplaceFileTest, a_dangling_link_may_be_relative_absolute_or_lead_to_another) {
  ASSERT_EQ(0, symlink("far/real.cfg", "/etc/config/one.cfg"));
  ASSERT_EQ(0, symlink("/etc/config/one.cfg", "/etc/config/two.cfg"));
  ASSERT_EQ(0, mkdir("/etc/config/far", 0770));
  EXPECT_EQ(1, save("/etc/config/two.cfg"));
  EXPECT_EQ(kNew, file_content("/etc/config/far/real.cfg"));
}

TEST_F(ReplaceFileTest, links_that_lead_to_too_long_a_path_are_refused) {
  std::string deep;
  for (int level = 0; level < 15; ++level) deep += std::string(254, 'd') + "/";
  ASSERT_EQ(0, symlink((deep + "x").c_str(), "/etc/config/long.cfg"));
  EXPECT_EQ(0, save("/etc/config/long.cfg"));
  ASSERT_EQ(0, symlink((std::string(200, '/') + "etc/config/long.cfg").c_str(),
                       "/etc/config/longer.cfg"));
  EXPECT_EQ(0, save("/etc/config/longer.cfg"));
}

}  // namespace
