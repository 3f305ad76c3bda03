// Many processes at the same work, for as long as wanted.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

#include "support/child.h"

namespace fairlead_test {

// How long such tests go on; FAIRLEAD_STRESS_SECONDS has it.
inline int stress_seconds() {
  const char* text = getenv("FAIRLEAD_STRESS_SECONDS");
  return text ? atoi(text) : 2;
}

// Processes that repeat an action until their time is over, or an expectation of theirs fails; on
// a busy machine the last may begin when the first have ended. One that waits for ever is killed
// half a minute later, which fails the test.
class Crowd {
 public:
  using Action = std::function<void(int who, int round)>;

  explicit Crowd(int seconds = stress_seconds()) : seconds_(seconds) {}

  // So many processes more, the first of them being number 0.
  void add(int count, const Action& action) {
    for (int who = 0; who < count; ++who)
      members_.push_back(std::make_unique<Child>([this, who, &action] {
        const auto end = Clock::now() + std::chrono::seconds(seconds_);
        int round = 0;
        do {
          action(who, round++);
        } while (Clock::now() < end && !testing::Test::HasFailure());
        return 0;
      }));
  }

  void wait() {
    const Child watch([this] {
      sleep(static_cast<unsigned>(seconds_) + 30);
      for (const auto& member : members_) member->send(SIGKILL);
      return 0;
    });
    for (const auto& member : members_) {
      const Ended ended = member->wait();
      EXPECT_EQ(0, ended.signal) << "it waited for ever, or crashed";
      EXPECT_EQ(0, ended.status);
    }
    members_.clear();
  }

 private:
  using Clock = std::chrono::steady_clock;

  const int seconds_;
  std::vector<std::unique_ptr<Child>> members_;
};

}  // namespace fairlead_test
