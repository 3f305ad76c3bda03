// Configuration, registry, joints and values of one user, at the hands of another.
#include "users/users_support.h"

namespace {

using namespace fairlead_test;

class StoresTest : public UsersTest {};

TEST_F(StoresTest, of_another_user_that_are_closed_are_neither_read_nor_changed) {
  for (const Operation& operation : operations()) {
    if (!writes(operation) || strcmp(operation.name, "write a small file") == 0) continue;
    empty_root();
    operation.arrange();
    change_all(0660, 0770);
    const std::string files = listing(), before = state_of(operation);
    const auto ended = as_user([&] {
      errno = 0;
      EXPECT_NE(1, operation.act()) << operation.name;
      EXPECT_TRUE(errno == EACCES || operation.asks_child) << operation.name << ": " << errno;
      return 0;
    });
    EXPECT_EQ(0, ended.status) << operation.name << ended.signal << ended.err;
    EXPECT_EQ(before, state_of(operation)) << operation.name;
    EXPECT_EQ(files, listing()) << operation.name;
  }
}

TEST_F(StoresTest, of_another_user_that_may_be_read_are_read_and_stay) {
  for (const Operation& operation : operations()) {
    empty_root();
    operation.arrange();
    if (strcmp(operation.name, "write a small file") == 0) put_file("/tmp/small", "old");
    change_all(0644, 0755);
    const std::string files = listing(), before = state_of(operation);
    const auto ended = as_user([&] {
      EXPECT_EQ(before, operation.state()) << operation.name;
      EXPECT_EQ(!writes(operation), operation.act() == 1) << operation.name << strerror(errno);
      return 0;
    });
    EXPECT_EQ(0, ended.status) << operation.name << ended.signal << ended.err;
    EXPECT_EQ(before, state_of(operation)) << operation.name;
    EXPECT_EQ(files, listing()) << operation.name;
  }
}

// A member of the team may write the files and make others beside them, but give none away.
TEST_F(StoresTest, shared_by_a_group_are_changed_and_keep_their_owner) {
  for (const Operation& operation : operations()) {
    const Expected expected(operation);
    empty_root();
    operation.arrange();
    if (strcmp(operation.name, "write a small file") == 0) put_file("/tmp/small", "old");
    change_all(0664, 02775, 0, kTeam);
    const std::string file = "/etc/config/wan.cfg";
    const bool there = exists(file);
    EXPECT_EQ(kDone, user_does(operation, kTeam).status) << operation.name;
    EXPECT_EQ(expected.after, state_of(operation)) << operation.name;
    EXPECT_EQ(expected.files, listing()) << operation.name;
    if (there && exists(file)) {
      EXPECT_EQ(0u, status_of(file).st_uid) << operation.name;
      EXPECT_EQ(kTeam, status_of(file).st_gid) << operation.name;
      EXPECT_EQ(0664u, status_of(file).st_mode & 07777) << operation.name;
    }
  }
}

// In such folders nobody may replace or remove what is another's.
TEST_F(StoresTest, in_folders_where_each_keeps_his_own_hold_the_old_or_the_new) {
  for (const Operation& operation : operations()) {
    const Expected expected(operation);
    empty_root();
    operation.arrange();
    change_all(0666, 01777);
    const Ended ended = user_does(operation);
    EXPECT_EQ(0, ended.signal) << operation.name;
    EXPECT_EQ(ended.status == kDone ? expected.after : expected.before, state_of(operation))
        << operation.name;
  }
}

// What a save of another user left there when it was killed can not be removed.
TEST_F(StoresTest, beside_which_a_killed_save_of_another_user_left_a_file_are_written_in_place) {
  put_file("/etc/config/wan.cfg", "{\"mtu\":\"1500\"}", 0666);
  put_file("/etc/config/.wan.cfg.saving", "{\"mt", 0666);
  chmod("/etc/config", 01777);
  const auto ended = as_user([] {
    EXPECT_EQ(1, ConfigSetS("wan", nullptr, "mtu", "1492"));
    return 0;
  });
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_EQ("{\"mtu\":\"1492\"}", file_content("/etc/config/wan.cfg"));
}

TEST_F(StoresTest, of_values_of_another_user_are_read_where_that_is_allowed_and_stay_in_any_case) {
  const int value = 7;
  ASSERT_EQ(0, run_child([&] {
                 return GvalueSet(GvalueCreate("levels"), "net", &value, sizeof value) - 1;
               }).status);
  const std::string store = "/tmp/.var/gvalue/levels", content = file_content(store);
  for (const mode_t mode : {mode_t{0644}, mode_t{0600}, mode_t{0222}}) {
    chmod(store.c_str(), mode);
    chmod("/tmp/.var/gvalue", 0777);  // it could remove the file
    const auto ended = as_user([&] {
      gvalue_t* const levels = GvalueCreate("levels");
      EXPECT_EQ(mode == 0644, levels != nullptr);
      if (!levels) return errno == EACCES ? 0 : 2;
      const auto* found = static_cast<const int*>(GvalueGet(levels, "net"));
      EXPECT_TRUE(found && *found == value);
      EXPECT_EQ(0, GvalueSet(levels, "net", &value, sizeof value));
      EXPECT_EQ(EACCES, errno);
      return 0;
    });
    EXPECT_EQ(0, ended.status) << std::oct << mode;
    chmod(store.c_str(), 0660);
    EXPECT_EQ(content, file_content(store)) << std::oct << mode;
  }
}

TEST_F(StoresTest, of_values_that_are_broken_and_anothers_are_refused) {
  put_file("/tmp/.var/gvalue/levels", "noise that is no store at all, long enough", 0666);
  chmod("/tmp/.var/gvalue", 01777);
  const auto ended = as_user([] {
    EXPECT_EQ(nullptr, GvalueCreate("levels"));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(nullptr, GvalueGet(GvalueCreate("levels"), "net"));
    return 0;
  });
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_TRUE(exists("/tmp/.var/gvalue/levels"));
}

}  // namespace
