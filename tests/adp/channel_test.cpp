// The parent's side of the channel, against children that answer by hand.
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

#include "adp/channel_fixture.h"
#include "support/faults.h"

namespace {

using fairlead_test::spelled;

class PipeTest : public fairlead_test::ChannelTest {
 protected:
  // Forks a child that acts on its end, and decodes its answer; `reaped_` is the flag.
  // Of the allocations on the way number `lost` fails, 0 meaning none.
  template <class Action>
  std::string answer_of(Action action, int lost = 0) {
    int ends[2];
    EXPECT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends));
    sigset_t outside, wait, former;
    sigprocmask(SIG_SETMASK, nullptr, &former);
    outside = wait = former;
    sigaddset(&outside, SIGCHLD);
    sigprocmask(SIG_SETMASK, &outside, nullptr);
    const pid_t child = fork();
    if (child == 0) {
      close(ends[0]);
      action(ends[1]);
      _exit(0);
    }
    close(ends[1]);
    reaped_ = 0;
    talk_t* decoded;
    {
      const fairlead_test::Fault fault(fairlead_test::Call::kMalloc,
                                       {.nth = lost, .error = ENOMEM});
      decoded = pipe_fdtalk(ends[0], &wait, &outside, "the child", child, &reaped_);
    }
    const std::string answer = spelled(decoded);
    close(ends[0]);
    if (reaped_ == 0) waitpid(child, nullptr, 0);
    sigset_t after;
    sigprocmask(SIG_SETMASK, &former, &after);
    EXPECT_EQ(1, sigismember(&after, SIGCHLD)) << "the outside mask is in force afterwards";
    return answer;
  }

  static void say(int fd, const std::string& bytes) {
    (void)!write(fd, bytes.data(), bytes.size());
  }

  int32_t reaped_ = 0;
};

TEST_F(PipeTest, wire_bytes_are_decoded) {
  using namespace std::string_literals;
  const std::pair<std::string, const char*> answers[] = {
      {"\1"s, "done"},
      {"\1\0"s, "done"},
      {"\2"s, "failed"},
      {"\2\0"s, "failed"},
      {"\0"s, "null"},
      {""s, "null"},
      {"text"s, "text"},
      {"{\"a\":\"1\"}\n"s, "{\"a\":\"1\"}"},
      {" \r\n text \0\0"s, "text"},
      {"\n\1"s, "done"},
      {"\r\n \2\n"s, "failed"},
      {"text \r\n"s, "text"},
      {"\ttext\t"s, "text\t"},  // a tab at the end is none of these
      {"{\"a\":\"1\"}\r\n\0"s, "{\"a\":\"1\"}"},
  };
  for (const auto& [bytes, meaning] : answers)
    EXPECT_EQ(meaning, answer_of([&bytes = bytes](int fd) { say(fd, bytes); }));
}

TEST_F(PipeTest, a_nul_ends_the_answer_while_the_child_lives_on) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ("now", answer_of([](int fd) {
              say(fd, std::string("now\0", 4));
              usleep(300000);
            }));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

// No piece may be lost, doubled or out of place.
TEST_F(PipeTest, answers_of_any_size_arrive_whole_in_one_piece_or_byte_by_byte) {
  for (size_t size : {0u, 1u, 2u, 4094u, 4095u, 4096u, 4097u, 8191u, 8192u, 65536u, 10000000u}) {
    std::string answer;
    for (size_t at = 0; at < size; ++at) answer += static_cast<char>('a' + at % 23);
    const std::string meaning = size ? answer : "null";
    EXPECT_TRUE(meaning == answer_of([&](int fd) { say(fd, answer); })) << size;
    EXPECT_TRUE(meaning == answer_of([&](int fd) { say(fd, answer + '\0'); })) << size;
    if (size > 65536) continue;
    EXPECT_TRUE(meaning == answer_of([&](int fd) {
                  for (char c : answer) say(fd, std::string(1, c));
                }))
        << size;
  }
}

// FAIRLEAD_MANY_BYTES=10000000 is the long form.
TEST_F(PipeTest, very_many_single_bytes_are_whole) {
  const char* text = getenv("FAIRLEAD_MANY_BYTES");
  const size_t size = text ? static_cast<size_t>(atoi(text)) : 300000;
  EXPECT_EQ(size, answer_of([&](int fd) {
                    for (size_t at = 0; at < size; ++at) (void)!write(fd, "x", 1);
                  }).size());
}

// Urgent bytes are no part of the answer, and must not keep the wait awake for ever.
TEST_F(PipeTest, an_urgent_byte_ends_with_the_child) {
  const std::string answer = answer_of([](int fd) {
    send(fd, "!", 1, MSG_OOB);
    usleep(100000);
    say(fd, "late");
  });
  EXPECT_TRUE(answer == "late" || answer == "null") << answer;
}

TEST_F(PipeTest, a_flood_is_kept) {
  constexpr size_t kSize = 50 << 20;
  EXPECT_EQ(kSize, answer_of([](int fd) {
                     const std::string piece(1 << 20, 'x');
                     for (int i = 0; i < 50; ++i) say(fd, piece);
                   }).size());
}

TEST_F(PipeTest, a_death_by_signal_is_logged_and_told) {
  // Another process holds the channel, so that the death comes first.
  const std::string log = logged([&] {
    EXPECT_EQ("half", answer_of([](int fd) {
                say(fd, "half");
                if (fork() == 0) {
                  usleep(1500000);
                  _exit(0);
                }
                raise(SIGKILL);
              }));
  });
  EXPECT_EQ(-1, reaped_);
  EXPECT_EQ("error: the child terminate by signal 9\n", log);
}

TEST_F(PipeTest, a_normal_end_with_the_channel_held_drains_for_three_seconds) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ("early", answer_of([](int fd) {
              say(fd, "early");
              if (fork() == 0) {
                sleep(6);
                _exit(0);
              }
            }));
  EXPECT_EQ(1, reaped_);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(2900));
}

// Any interruption counts as the child's end: the answer so far is used, although the child goes
// on.
TEST_F(PipeTest, another_childs_end_begins_the_drain) {
  const pid_t other = fork();
  if (other == 0) {
    usleep(200000);
    _exit(0);
  }
  pid_t slow = 0;
  EXPECT_EQ("early", answer_of([&](int fd) {
              say(fd, "early");
              sleep(5);
            }));
  EXPECT_EQ(1, reaped_);
  while ((slow = wait(nullptr)) > 0) continue;  // both are ours to collect
}

TEST_F(PipeTest, a_child_seen_to_end_only_by_its_stream_is_left_to_the_caller) {
  EXPECT_EQ("x", answer_of([](int fd) {
              say(fd, "x");
              close(fd);
              usleep(200000);
            }));
  EXPECT_EQ(0, reaped_);
}

TEST_F(PipeTest, a_bad_descriptor_gives_null) {
  sigset_t mask;
  sigprocmask(SIG_SETMASK, nullptr, &mask);
  int32_t reaped = 0;
  EXPECT_EQ(nullptr, pipe_fdtalk(-1, &mask, &mask, "x", 0, &reaped));
}

TEST_F(PipeTest, an_interrupted_read_is_repeated_and_a_failed_one_gives_null) {
  for (int error : {EINTR, EIO}) {
    fairlead_test::Fault fault(fairlead_test::Call::kRead, {.error = error});
    EXPECT_EQ(error == EINTR ? "x" : "null", answer_of([](int fd) { say(fd, "x"); }));
    EXPECT_EQ(0, reaped_);
  }
}

TEST_F(PipeTest, a_failed_wait_ends_the_answer_with_what_was_read) {
  fairlead_test::Fault fault(fairlead_test::Call::kSelect, {.nth = 2, .error = ENOMEM});
  EXPECT_EQ("early", answer_of([](int fd) {
              say(fd, "early");
              usleep(100000);
              say(fd, "late");
            }));
}

// Without news of the child there is no drain: the answer is waited for.
TEST_F(PipeTest, the_wait_goes_on_when_the_child_cannot_be_asked_for) {
  fairlead_test::Fault fault(fairlead_test::Call::kWaitpid, {.error = ECHILD});
  EXPECT_EQ("early, late", answer_of([](int fd) {
              say(fd, "early");
              kill(getppid(), SIGCHLD);
              usleep(100000);
              say(fd, ", late");
            }));
  EXPECT_EQ(0, reaped_);
}

TEST_F(PipeTest, lost_memory_gives_null) {
  for (int nth : {1, 2}) {  // the buffer, and its growth
    const std::string answer(5000, 'x');
    EXPECT_EQ("null", answer_of([&](int fd) { say(fd, answer); }, nth)) << nth;
  }
}

}  // namespace
