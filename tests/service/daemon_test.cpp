// Records made by daemons: their bytes, their lock, and what a failure leaves.
#include <sys/stat.h>

#include "service/service_support.h"
#include "support/child.h"
#include "support/eventually.h"
#include "support/faults.h"
#include "support/killed_at.h"

namespace {

using namespace fairlead_test;

class DaemonTest : public ServiceTest {
 protected:
  void SetUp() override {
    ServiceTest::SetUp();
    make_directories("/tmp/.var/service");
  }

  static int enter(const char* parameters = nullptr) {
    return DaemonRegister(path().c_str(), "net/wan", "run", parameters);
  }

  static std::string path() { return record_path("wan"); }
  static std::string content() { return file_content(path()); }
};

TEST_F(DaemonTest, register_writes_each_text_at_its_offset) {
  const int fd = enter("ppp0, 30");
  EXPECT_EQ(record_of("net/wan", "run", "ppp0, 30"), content());
  EXPECT_EQ(0, DaemonFree(fd));
  EXPECT_EQ(record_of("net/wan", "run", "ppp0, 30"), content());
}

TEST_F(DaemonTest, register_without_parameters_ends_the_record_with_one_zero) {
  for (const char* none : {static_cast<const char*>(nullptr), ""}) {
    const int fd = enter(none);
    EXPECT_EQ(137u, content().size());
    EXPECT_EQ(record_of("net/wan", "run"), content());
    DaemonFree(fd);
  }
}

TEST_F(DaemonTest, register_replaces_what_a_longer_record_held) {
  put_record("wan", std::string(4000, 'x'));
  DaemonFree(enter("new"));
  EXPECT_EQ(record_of("net/wan", "run", "new"), content());
}

TEST_F(DaemonTest, register_lets_long_names_run_into_the_next_field) {
  const std::string object(70, 'o'), interface(80, 'i');
  DaemonFree(DaemonRegister(path().c_str(), object.c_str(), interface.c_str(), "p"));
  EXPECT_EQ(std::string(8, '\0') + std::string(64, 'o') + std::string(64, 'i') + "p" +
                std::string(1, '\0') + std::string(14, 'i') + std::string(1, '\0'),
            content());
}

TEST_F(DaemonTest, register_makes_the_file_for_everyone_but_for_the_umask) {
  const mode_t former = umask(0);
  DaemonFree(enter());
  umask(former);
  struct stat status;
  ASSERT_EQ(0, stat(path().c_str(), &status));
  EXPECT_EQ(0666u, status.st_mode & 07777u);
}

TEST_F(DaemonTest, register_gives_a_descriptor_that_programs_inherit) {
  const int fd = enter();
  EXPECT_EQ(0, fcntl(fd, F_GETFD));
  EXPECT_EQ(O_RDWR, fcntl(fd, F_GETFL) & O_ACCMODE);
  DaemonFree(fd);
}

TEST_F(DaemonTest, register_keeps_the_record_off_closed_standard_streams) {
  const Ended ended = run_child([] {
    for (int fd : {0, 1, 2}) close(fd);
    const int fd = enter("ppp0");
    EXPECT_GT(fd, 2);
    EXPECT_EQ(0, fcntl(fd, F_GETFD));
    EXPECT_EQ(-1, write(1, "printed", 7));
    EXPECT_EQ(record_of("net/wan", "run", "ppp0"), content());
    return 3;
  });
  EXPECT_EQ(3, ended.status);
}

TEST_F(DaemonTest, the_lock_lasts_until_it_is_freed) {
  Gate held, free, freed;
  Child daemon([&] {
    const int fd = enter();
    held.open();
    free.wait();
    EXPECT_EQ(0, DaemonFree(fd));
    freed.open();
    return pause();
  });
  ASSERT_TRUE(held.wait());
  EXPECT_EQ(daemon.pid(), pid("wan"));
  free.open();
  ASSERT_TRUE(freed.wait());
  EXPECT_EQ(-1, pid("wan"));
}

TEST_F(DaemonTest, the_lock_survives_a_start_of_another_program) {
  Gate held;
  Child daemon([&] {
    enter();
    fcntl(2, F_SETFD, 0);
    held.open();
    execlp("he", "wan", "test.wait", static_cast<char*>(nullptr));
    return 126;
  });
  ASSERT_TRUE(held.wait());
  const std::string comm = "/proc/" + std::to_string(daemon.pid()) + "/comm";
  ASSERT_TRUE(eventually([&] { return file_content(comm) == "he\n"; }));
  EXPECT_EQ(daemon.pid(), pid("wan"));
}

TEST_F(DaemonTest, register_leaves_a_record_alone_that_another_process_holds) {
  Gate held;
  Child daemon([&] {
    enter("first");
    held.open();
    return pause();
  });
  ASSERT_TRUE(held.wait());
  errno = 0;
  EXPECT_EQ(-1, enter("second"));
  EXPECT_EQ(EBUSY, errno);
  EXPECT_EQ(record_of("net/wan", "run", "first"), content());
  EXPECT_EQ(daemon.pid(), pid("wan"));
}

TEST_F(DaemonTest, register_refuses_missing_arguments) {
  const auto refused = [](const char* path, const char* object, const char* interface) {
    errno = 0;
    return DaemonRegister(path, object, interface, "") == -1 && errno == EINVAL;
  };
  EXPECT_TRUE(refused(nullptr, "o", "i"));
  EXPECT_TRUE(refused(path().c_str(), nullptr, "i"));
  EXPECT_TRUE(refused(path().c_str(), "o", nullptr));
  EXPECT_FALSE(exists(path()));
}

TEST_F(DaemonTest, register_tells_why_a_file_cannot_be_opened) {
  EXPECT_EQ(-1, DaemonRegister("/tmp/none/wan.spid", "o", "i", nullptr));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_EQ(-1, DaemonRegister("/tmp", "o", "i", nullptr));
  EXPECT_EQ(EISDIR, errno);
}

TEST_F(DaemonTest, free_refuses_a_negative_descriptor) {
  errno = 0;
  EXPECT_EQ(-1, DaemonFree(-1));
  EXPECT_EQ(EINVAL, errno);
}

TEST_F(DaemonTest, a_failed_registration_tells_the_error_and_leaves_no_service) {
  const std::pair<Call, int> faults[] = {{Call::kOpen, EMFILE},
                                         {Call::kFcntl, ENOLCK},
                                         {Call::kTruncate, EIO},
                                         {Call::kWrite, ENOSPC}};
  for (const auto& [call, error] : faults) {
    int failures = 0;
    for (EachCall each(call, {.error = error}); each.next(); failures += each.fired()) {
      errno = 0;
      const int fd = each.run([&] { return enter("ppp0"); });
      EXPECT_EQ(each.fired() ? error : 0, fd < 0 ? errno : 0);
      EXPECT_EQ(each.fired(), info("wan") == "null");
      EXPECT_TRUE(!each.fired() || content() == "" || content() == "<missing>");
      if (fd >= 0) DaemonFree(fd);
      unlink(path().c_str());
    }
    EXPECT_GT(failures, 0);
  }
}

TEST_F(DaemonTest, register_goes_on_after_interrupted_and_short_writes) {
  for (EachCall each(Call::kWrite, {.error = EINTR}); each.next();) {
    DaemonFree(each.run([&] { return enter("ppp0"); }));
    EXPECT_EQ(record_of("net/wan", "run", "ppp0"), content()) << each.nth();
  }
  Fault fault(Call::kWrite, {.times = kForever, .at_most = 1});
  DaemonFree(enter("ppp0"));
  EXPECT_EQ(record_of("net/wan", "run", "ppp0"), content());
}

TEST_F(DaemonTest, a_daemon_killed_at_any_point_leaves_a_whole_record_or_none) {
  const std::string whole =
      R"({"status":"die","adp":"net/wan","func":"run","parameter1":"a","parameter2":"b"})";
  int none = 0, stop = 0;
  for (; killed_at(stop, [] { enter("a,b"); }); ++stop) {
    const std::string seen = info("wan");
    none += seen == "null";
    EXPECT_TRUE(seen == "null" || seen == whole) << seen << " at stop " << stop;
    unlink(path().c_str());
  }
  EXPECT_GT(none, 0);
  EXPECT_LT(none, stop);
}

// A stop that removes the record just after it was opened must not leave a daemon without one.
TEST_F(DaemonTest, register_takes_a_new_file_when_the_old_one_is_removed_meanwhile) {
  signal_register(SIGUSR1, [](int) { unlink("/tmp/.var/service/wan.spid"); });
  Fault fault(Call::kFcntl, {.nth = 2, .signal = SIGUSR1});
  const int fd = enter();
  EXPECT_TRUE(fault.fired());
  struct stat held, named;
  ASSERT_EQ(0, fstat(fd, &held));
  ASSERT_EQ(0, stat(path().c_str(), &named));
  EXPECT_EQ(held.st_ino, named.st_ino);
  DaemonFree(fd);
  signal_register(SIGUSR1, SIG_DFL);
}

}  // namespace
