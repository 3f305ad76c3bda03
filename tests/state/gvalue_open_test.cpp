// Opening a store: the first process makes it, all others join, a broken one goes.
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <memory>

#include "gvalue_support.h"
#include "support/child.h"
#include "support/faults.h"

namespace {

using namespace fairlead_test;
using std::string;

class GvalueOpenTest : public GvalueTest {
 protected:
  static mode_t mode_of(const string& path) {
    struct stat status = {};
    stat(path.c_str(), &status);
    return status.st_mode & 07777;
  }

  // Opens what stands there, which must fail, and tells the errno.
  int refusal(const char* name = "store") {
    errno = 0;
    EXPECT_EQ(nullptr, open(name));
    return errno;
  }

  // Puts a file there that must be refused and removed.
  void expect_broken(const string& content, const string& what) {
    put_file(store_path("store"), content);
    EXPECT_EQ(ENOENT, refusal()) << what;
    EXPECT_FALSE(exists(store_path("store"))) << what;
  }
};

TEST_F(GvalueOpenTest, create_writes_the_header_and_the_whole_length) {
  const mode_t umask_before = umask(0);
  gvalue_t* store = track(GvalueCreate("store"));
  umask(umask_before);
  ASSERT_NE(nullptr, store);
  EXPECT_EQ(empty_store(), file_content(store_path("store")));
  EXPECT_EQ(32828u, file_content(store_path("store")).size());
  EXPECT_EQ(0660u, mode_of(store_path("store")));
}

TEST_F(GvalueOpenTest, create_makes_the_folder) {
  const mode_t umask_before = umask(0);
  open();
  umask(umask_before);
  EXPECT_EQ(0770u, mode_of("/tmp/.var/gvalue"));
}

TEST_F(GvalueOpenTest, details_choose_capacity_size_and_mode) {
  const mode_t umask_before = umask(0);
  track(GvalueCreateDetails("store", 3, 50, 0600));
  umask(umask_before);
  const string content = file_content(store_path("store"));
  EXPECT_EQ(words({kMagic, 3, 28, 0, 50, 244, 0}), content.substr(0, 28));
  EXPECT_EQ(294u, content.size());
  EXPECT_EQ(0600u, mode_of(store_path("store")));
}

TEST_F(GvalueOpenTest, the_data_size_follows_the_capacity) {
  for (int none : {0, -1, INT32_MIN}) {
    open("store", 5, none);
    EXPECT_EQ(empty_store(5), file_content(store_path("store")));
    unlink(store_path("store").c_str());
  }
}

TEST_F(GvalueOpenTest, the_handle_has_descriptor_mapping_and_path) {
  gvalue_t* store = open();
  EXPECT_EQ(store_path("store"), store->path);
  EXPECT_EQ(FD_CLOEXEC, fcntl(store->fd, F_GETFD));
  EXPECT_EQ(0, memcmp(store->address, empty_store().data(), 32828));
}

TEST_F(GvalueOpenTest, a_null_name_is_refused) {
  errno = 0;
  EXPECT_EQ(nullptr, GvalueCreateDetails(nullptr, 1, 1, 0660));
  EXPECT_EQ(EINVAL, errno);
  errno = 0;
  EXPECT_EQ(nullptr, GvalueCreate(nullptr));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(GvalueOpenTest, an_existing_store_keeps_its_content_and_size) {
  set(open("store", 7), "name", "value");
  gvalue_t* again = open("store", 50, 1000);
  EXPECT_EQ("value", get(again, "name"));
  EXPECT_EQ(empty_store(7).size(), file_content(store_path("store")).size());
}

TEST_F(GvalueOpenTest, double_percent_signs_in_the_name_become_one) {
  EXPECT_EQ(store_path("100%"), open("100%%")->path);
  EXPECT_EQ(store_path("%s%n%"), open("%s%n%")->path);
  EXPECT_TRUE(exists(store_path("%s%n%")));
}

TEST_F(GvalueOpenTest, a_path_is_cut_at_255_characters) {
  const string name(300, 'n');
  EXPECT_EQ((store_path(name)).substr(0, 255), open(name.c_str())->path);
}

TEST_F(GvalueOpenTest, without_the_run_time_root_it_fails) {
  remove_tree("/tmp/.var");
  EXPECT_EQ(ENOENT, refusal());
  EXPECT_FALSE(exists("/tmp/.var"));
}

TEST_F(GvalueOpenTest, a_store_too_large_for_its_offsets_is_refused) {
  for (auto [capacity, size] :
       {std::pair{INT32_MAX, 0}, {1, INT32_MAX}, {1 << 23, 0}, {30000000, 1}}) {
    errno = 0;
    EXPECT_EQ(nullptr, open("store", capacity, size));
    EXPECT_EQ(EFBIG, errno);
    EXPECT_FALSE(exists(store_path("store")));
  }
}

// ---- Broken stores ----

TEST_F(GvalueOpenTest, a_wrong_magic_removes_the_file_and_the_next_open_makes_a_fresh_one) {
  string content = empty_store();
  content[1] ^= 1;
  expect_broken(content, "magic");
  ASSERT_NE(nullptr, open());
  EXPECT_EQ(empty_store(), file_content(store_path("store")));
}

TEST_F(GvalueOpenTest, a_store_cut_anywhere_is_broken) {
  const string whole = empty_store(2);
  for (size_t length = 0; length < whole.size(); length += length < 180 ? 1 : 53)
    expect_broken(whole.substr(0, length), std::to_string(length));
  put_file(store_path("store"), whole);
  EXPECT_NE(nullptr, open());
}

TEST_F(GvalueOpenTest, a_header_that_contradicts_itself_or_the_file_is_broken) {
  const uint32_t odd[] = {1,          27,         29,         0x7FFFFFFF, 0x80000000,
                          0x38E38E39, 0xFFFFFFFF, 0xFFFFFFE4, 59652323};
  for (int field = kMagicField; field <= kDataUsed; ++field) {
    for (uint32_t value : odd) {
      if ((field == kCount || field == kDataUsed) && value < 30) continue;
      string content = empty_store(30);
      memcpy(&content[static_cast<size_t>(field) * 4], &value, 4);
      if (field == kDataSize && value < 30) continue;
      expect_broken(content, std::to_string(field) + " " + std::to_string(value));
    }
  }
}

TEST_F(GvalueOpenTest, products_that_overflow_32_bits_are_seen) {
  // 59652324 records of 72 bytes are 32 bytes more than 4 GiB.
  string content = empty_store(2);
  memcpy(&content[0], words({kMagic, 59652324, 28, 5, 100, 60, 0}).data(), 28);
  expect_broken(content, "capacity");
  memcpy(&content[0], words({kMagic, 2, 28, 0, 0xFFFFFFFF, 172, 0}).data(), 28);
  expect_broken(content, "data size");
}

TEST_F(GvalueOpenTest, bytes_behind_the_store_are_no_harm) {
  put_file(store_path("store"), empty_store(2) + "more");
  EXPECT_EQ(1, set(open(), "name", "value"));
}

TEST_F(GvalueOpenTest, what_is_no_regular_file_is_broken) {
  make_directories("/tmp/.var/gvalue");
  mkfifo(store_path("store").c_str(), 0600);
  EXPECT_EQ(ENOENT, refusal());
  EXPECT_FALSE(exists(store_path("store")));

  make_directories(store_path("folder"));
  EXPECT_EQ(ENOENT, refusal("folder"));
  EXPECT_TRUE(exists(store_path("folder")));
}

TEST_F(GvalueOpenTest, a_link_to_nowhere_is_enoent) {
  make_directories("/tmp/.var/gvalue");
  ASSERT_EQ(0, symlink("/nowhere/store", store_path("store").c_str()));
  EXPECT_EQ(ENOENT, refusal());
}

// ---- Failing steps ----

class GvalueStepTest : public GvalueOpenTest {
 protected:
  // The system calls of a kind are counted from the opening of the store's file.
  void expect_removed_when_failing(Call call) {
    const int nth = call == Call::kStat ? 2 : 1;
    Fault fault(call, {.nth = nth, .error = EUCLEAN});
    EXPECT_EQ(EUCLEAN, refusal());
    EXPECT_TRUE(fault.fired());
    fault.disarm();
    EXPECT_FALSE(exists(store_path("store"))) << static_cast<int>(call);
  }
};

TEST_F(GvalueStepTest, every_failing_step_of_making_removes_the_file_and_keeps_errno) {
  for (Call call : {Call::kFlock, Call::kStat, Call::kTruncate, Call::kMmap, Call::kMalloc}) {
    open("other");  // the folder is there: no step of it is met
    expect_removed_when_failing(call);
  }
}

TEST_F(GvalueStepTest, every_failing_step_of_joining_removes_the_store_as_well) {
  for (Call call : {Call::kStat, Call::kMmap, Call::kMalloc}) {
    open();
    expect_removed_when_failing(call);
  }
}

TEST_F(GvalueOpenTest, a_refused_open_leaves_the_store_alone) {
  open();
  Fault fault(Call::kOpen, {.error = EMFILE, .times = kForever});
  EXPECT_EQ(EMFILE, refusal());
  fault.disarm();
  EXPECT_EQ(empty_store(), file_content(store_path("store")));
}

TEST_F(GvalueOpenTest, an_interrupted_lock_is_tried_again) {
  Fault fault(Call::kFlock, {.error = EINTR, .times = 3});
  EXPECT_NE(nullptr, open());
  EXPECT_TRUE(fault.fired());
}

// As root, or as the root of a user namespace of its own; false where neither is allowed.
bool mount_small_file_system(const char* folder) {
  const string uid = std::to_string(getuid()), gid = std::to_string(getgid());
  if (unshare(CLONE_NEWNS) != 0) {
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    put_file("/proc/self/setgroups", "deny");
    put_file("/proc/self/uid_map", "0 " + uid + " 1");
    put_file("/proc/self/gid_map", "0 " + gid + " 1");
  }
  return mount("none", folder, "tmpfs", 0, "size=16k") == 0;
}

// Without pages behind it, the first write to the mapping would end the process.
TEST_F(GvalueOpenTest, on_a_full_file_system_the_open_fails) {
  constexpr int kNoMount = 77;
  const Ended ended = run_child([&] {
    if (!mount_small_file_system("/tmp/.var")) return kNoMount;
    EXPECT_EQ(ENOSPC, refusal());
    EXPECT_FALSE(exists(store_path("store")));
    return 0;
  });
  if (ended.status == kNoMount) GTEST_SKIP() << "no file system can be mounted here";
  EXPECT_EQ(0, ended.status);
}

// ---- Several processes ----

TEST_F(GvalueOpenTest, an_empty_file_left_by_a_dead_maker_is_removed) {
  put_file(store_path("store"), "");
  EXPECT_EQ(ENOENT, refusal());
  EXPECT_NE(nullptr, open());
}

TEST_F(GvalueOpenTest, a_store_that_is_just_being_made_is_waited_for) {
  for (const string& begun : {string(), string(32828, '\0')}) {
    put_file(store_path("store"), begun);
    Gate locked;
    Child maker([&] {
      const int fd = ::open(store_path("store").c_str(), O_RDWR);
      const fairlead::FileLock lock(fd, fairlead::FileLock::Interrupted::kFails);
      locked.open();
      usleep(50000);
      return pwrite(fd, empty_store().data(), 32828, 0) == 32828 ? 0 : 1;
    });
    ASSERT_TRUE(locked.wait());
    EXPECT_NE(nullptr, open());
    EXPECT_EQ(0, maker.wait().status);
  }
}

TEST_F(GvalueOpenTest, a_maker_that_lost_its_file_joins_the_next_one) {
  Child maker([] {
    Fault fault(Call::kFlock, {.signal = SIGSTOP});  // the file is there, empty and not locked
    gvalue_t* store = GvalueCreate("store");
    return store && set(store, "late", "value") == 1 ? 0 : 1;
  });
  ASSERT_EQ(maker.pid(), waitpid(maker.pid(), nullptr, WUNTRACED));
  EXPECT_EQ(ENOENT, refusal());  // it cannot be told from a dead one
  gvalue_t* store = open();
  maker.send(SIGCONT);
  EXPECT_EQ(0, maker.wait().status);
  EXPECT_EQ("value", get(store, "late"));
}

TEST_F(GvalueOpenTest, processes_that_start_at_once_share_one_store) {
  constexpr int kProcesses = 6;
  for (int round = 0; round < 20; ++round) {
    const string name = "round" + std::to_string(round);
    Gate start;
    std::vector<std::unique_ptr<Child>> children;
    children.reserve(kProcesses);
    for (int i = 0; i < kProcesses; ++i)
      children.push_back(std::make_unique<Child>([&, i] {
        start.wait();
        start.open();  // the next one
        gvalue_t* store = GvalueCreate(name.c_str());
        if (!store) store = GvalueCreate(name.c_str());  // its maker was stopped for too long
        return store && set(store, std::to_string(i), "value") == 1 ? 0 : 1;
      }));
    start.open();
    for (auto& child : children) EXPECT_EQ(0, child->wait().status);
    gvalue_t* store = open(name.c_str());
    for (int i = 0; i < kProcesses; ++i) EXPECT_EQ("value", get(store, std::to_string(i)));
  }
}

TEST_F(GvalueOpenTest, a_maker_killed_at_any_point_leaves_nothing_that_lasts) {
  for (int nth = 1;; ++nth) {
    const Ended maker = run_child([nth] {
      Fault fault(Call::kAny, {.nth = nth, .signal = SIGKILL});
      GvalueCreate("store");
    });
    gvalue_t* store = open();
    if (!store) store = open();
    ASSERT_NE(nullptr, store) << nth;
    EXPECT_EQ(1, set(store, "name", "value"));
    unlink(store_path("store").c_str());
    if (maker.signal == 0) break;
    ASSERT_LT(nth, 50);
  }
}

}  // namespace
