// What the headers promise to programs with threads. Under the thread sanitizer each race counts,
// whether it did harm or not.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "fairlead/fairlead.h"
#include "support/device_test.h"
#include "support/spelled.h"

namespace {

using fairlead_test::spelled;

constexpr int kThreads = 8;

class ThreadsTest : public fairlead_test::DeviceTest {
 protected:
  // Repeats an action in several threads: a second each, or as long as FAIRLEAD_STRESS_SECONDS has
  // it, or until something fails.
  static void in_threads(const std::function<void(int who, int round)>& action) {
    using Clock = std::chrono::steady_clock;
    const char* text = getenv("FAIRLEAD_STRESS_SECONDS");
    const auto end = Clock::now() + std::chrono::seconds(text ? atoi(text) : 1);
    std::vector<std::thread> threads;
    for (int who = 0; who < kThreads; ++who)
      threads.emplace_back([&, who] {
        for (int round = 0; Clock::now() < end && !HasFailure(); ++round) action(who, round);
      });
    for (std::thread& thread : threads) thread.join();
  }

  // A process that has locked each thread's file, for so many seconds.
  static pid_t lock_all_files(unsigned seconds) {
    int ready[2];
    EXPECT_EQ(0, pipe2(ready, O_CLOEXEC));
    const pid_t holder = fork();
    if (holder == 0) {
      alarm(seconds);
      for (int who = 0; who < kThreads; ++who)
        if (lock_open(("/tmp/" + name_of(who)).c_str(), O_RDWR | O_CREAT, 0660, 0) < 0) _exit(1);
      close(ready[1]);
      while (true) pause();
    }
    close(ready[1]);
    char end;
    EXPECT_EQ(0, read(ready[0], &end, 1));  // the pipe closes
    close(ready[0]);
    return holder;
  }

  static void expect_busy(int who) {
    const auto begin = std::chrono::steady_clock::now();
    errno = 0;
    EXPECT_EQ(nullptr, FileVessel(("/tmp/" + name_of(who)).c_str()));
    EXPECT_EQ(EBUSY, errno) << who;
    const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(waited.count(), 0.95) << who;
    EXPECT_LT(waited.count(), 10) << who;
  }

  static std::string name_of(int who) { return "number" + std::to_string(who); }
};

// ---- talk: a document belongs to one thread at a time ----

TEST_F(ThreadsTest, each_have_documents_of_their_own) {
  in_threads([](int who, int round) {
    talk_t* document = StringTalk(R"({"net":{"mtu":"1500","dns":{"first":"9.9.9.9"}},"up":"yes"})");
    ASSERT_NE(nullptr, document);
    VesselSetS(document, name_of(who).c_str(), std::to_string(round).c_str());
    VesselSetS(VesselGetX(document, "net"), "mtu", "1492");
    talk_t* change = StringTalk(R"({"up":"no","new":{"a":"b"}})");
    EXPECT_GT(VesselModify(change, document), 0);
    talk_t* same = TalkDup(document);
    EXPECT_TRUE(TalkEqual(document, same));
    EXPECT_EQ("{\"net\":{\"mtu\":\"1492\",\"dns\":{\"first\":\"9.9.9.9\"}},\"up\":\"no\",\"" +
                  name_of(who) + "\":\"" + std::to_string(round) + "\",\"new\":{\"a\":\"b\"}}",
              spelled(same));
    TalkFree(change);
    TalkFree(document);
  });
}

// Made here, freed there: a document may be handed on.
TEST_F(ThreadsTest, hand_documents_on) {
  in_threads([](int, int) {
    talk_t* document = StringTalk(R"({"net":{"mtu":"1500","dns":{"first":"9.9.9.9"}}})");
    talk_t* copy = TalkDup(document);
    std::thread([=] {
      VesselSetS(document, "up", "yes");
      TalkFree(document);
    }).join();
    EXPECT_EQ(R"({"net":{"mtu":"1500","dns":{"first":"9.9.9.9"}}})", spelled(copy));
  });
}

TEST_F(ThreadsTest, save_and_read_files_of_their_own) {
  in_threads([](int who, int round) {
    const std::string path = "/tmp/" + name_of(who);
    talk_t* document = StringTalk("{}");
    VesselSetS(document, "round", std::to_string(round).c_str());
    EXPECT_EQ(1, VesselFile(document, path.c_str())) << strerror(errno);
    TalkFree(document);
    EXPECT_EQ("{\"round\":\"" + std::to_string(round) + "\"}", spelled(FileVessel(path.c_str())));
  });
}

// Only one alarm can be set in a process, and it wakes the first thread. In a process of its own:
// the thread sanitizer leaves a mask of its own in a handler that was put back.
TEST_F(ThreadsTest, wait_for_locks_no_longer_than_one_thread_does) {
  const pid_t holder = lock_all_files(20);
  const pid_t child = fork();
  if (child == 0) {
    std::vector<std::thread> threads;
    for (int who = 1; who < kThreads; ++who) threads.emplace_back(expect_busy, who);
    expect_busy(0);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0u, alarm(0));
    EXPECT_EQ(SIG_DFL, signal(SIGALRM, SIG_DFL));
    _exit(HasFailure() ? 1 : 0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(0, status);
  kill(holder, SIGKILL);
  waitpid(holder, nullptr, 0);
}

TEST_F(ThreadsTest, take_a_lock_as_soon_as_it_is_free) {
  const pid_t holder = lock_all_files(20);
  int fd = -1;
  std::thread waiting([&fd] { fd = lock_open(("/tmp/" + name_of(1)).c_str(), O_RDWR, 0, 15); });
  usleep(100000);
  kill(holder, SIGKILL);
  waiting.join();
  EXPECT_GE(fd, 0);
  lock_close(fd);
  waitpid(holder, nullptr, 0);
}

TEST_F(ThreadsTest, share_encoders) {
  in_threads([](int who, int) {
    const std::string text = name_of(who) + " with blanks & signs";
    char* encoded = base64_encode(text.c_str());
    char* decoded = base64_decode(encoded);
    EXPECT_EQ(text, decoded);
    free(decoded);
    free(encoded);
    md5_t digest;
    unsigned char sum[16], again[16];
    for (unsigned char* result : {sum, again}) {
      md5_init(&digest);
      md5_update(&digest, text.data(), static_cast<unsigned>(text.size()));
      md5_final(&digest, result);
    }
    EXPECT_EQ(0, memcmp(sum, again, sizeof sum));
  });
}

TEST_F(ThreadsTest, take_identifiers_apart) {
  in_threads([](int who, int) {
    const std::string identifier = "net/" + name_of(who) + ".refresh[now]";
    uii_t* parts = UiiCreate(identifier.c_str());
    ASSERT_NE(nullptr, parts);
    EXPECT_EQ("net/" + name_of(who), std::string(UiiObjectString(parts)));
    EXPECT_STREQ("refresh", UiiInterface(parts));
    UiiFree(parts);
    char text[256];
    UiiAssembly("net", "refresh", name_of(who).c_str(), text, sizeof text);
    EXPECT_EQ("net.refresh[" + name_of(who) + "]", text);
  });
}

// ---- adp: paths into buffers of the caller's, and the registry ----

TEST_F(ThreadsTest, look_for_adapters) {
  fairlead_test::put_file("/prj/net/port.adp", "");
  ASSERT_EQ(1, DynAdpCreate("uplink", "net/port"));
  in_threads([](int, int) {
    char path[256];
    EXPECT_EQ(ADP_DYN, AdpPath(nullptr, "uplink", path, sizeof path));
    EXPECT_STREQ("/prj/net/port.adp", path);
    EXPECT_NE(nullptr, ProjectVarPath(path, sizeof path, "folder", "%s", "file"));
    EXPECT_STREQ("/tmp/.var/folder/file", path);
    TalkFree(ProjectAdpList(nullptr));
  });
}

// One of them at a time; the others may read it meanwhile.
TEST_F(ThreadsTest, read_the_registry_while_one_changes_it) {
  fairlead_test::put_file("/prj/net/port.adp", "");
  ASSERT_EQ(1, DynAdpCreate("kept", "net/port"));
  in_threads([](int who, int round) {
    if (who == 0) {
      EXPECT_EQ(1, round % 2 == 0 ? DynAdpCreate("moved", "net/port") : DynAdpDelete("moved"));
      return;
    }
    talk_t* list = DynAdpList(nullptr);
    EXPECT_STREQ("/prj/net/port.adp", VesselGetS(list, "kept")) << round;
    TalkFree(list);
  });
}

// ---- log: from any thread, once the channel is set up ----

TEST_F(ThreadsTest, log_through_one_channel) {
  const int error = dup(STDERR_FILENO);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  ASSERT_EQ(1, GlogOpen("test", LOG_MODE_CONSOLE, 7));
  dup2(nowhere, STDERR_FILENO);
  in_threads([](int who, int round) { LogWrite(3, "test", 1, "thread %d, %d", who, round); });
  dup2(error, STDERR_FILENO);
  GlogClose();
  close(nowhere);
  close(error);
}

// Its threshold is looked for in the default store at every message, as long as it is not there.
TEST_F(ThreadsTest, log_by_the_words_of_the_store) {
  ASSERT_EQ(1, GlogOpen("test", LOG_MODE_CONSOLE, 0));
  in_threads([](int who, int round) { LogWrite(7, "test", 1, "thread %d, %d", who, round); });
  GlogClose();
}

// Whichever thread is the first to open the store.
TEST_F(ThreadsTest, log_while_the_store_becomes_possible) {
  ASSERT_EQ(0, rmdir("/tmp/.var"));
  ASSERT_EQ(1, GlogOpen("test", LOG_MODE_CONSOLE, 0));
  in_threads([](int who, int round) {
    if (who == 0 && round == 20) mkdir("/tmp/.var", 0770);
    LogWrite(7, "test", 1, "thread %d, %d", who, round);
  });
  GlogClose();
}

}  // namespace
