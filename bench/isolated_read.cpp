// An isolated read beside its floor: a bare fork with a socket pair and an answer of 200 bytes.
// Both in turn, so that a change of the machine's speed meets both; the ratio is of medians.
//
// usage: tools/device-root build/.../bench/isolated_read [ROUNDS]
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fairlead/fairlead.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kAnswerSize = 200;

void bare_fork() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) abort();
  const pid_t child = fork();
  if (child == 0) {
    char answer[kAnswerSize];
    memset(answer, 'x', sizeof answer);
    if (write(ends[1], answer, sizeof answer) < 0) _exit(1);
    _exit(0);
  }
  close(ends[1]);
  char buffer[4096];
  while (read(ends[0], buffer, sizeof buffer) > 0) continue;
  close(ends[0]);
  waitpid(child, nullptr, 0);
}

void isolated_read() {
  talk_t* answer = AdpSecureGet(nullptr, "bench", nullptr, nullptr);
  if (!answer) abort();
  TalkFree(answer);
}

double microseconds(void (*work)()) {
  const auto begin = Clock::now();
  work();
  return std::chrono::duration<double, std::micro>(Clock::now() - begin).count();
}

double median(std::vector<double>& times) {
  std::nth_element(times.begin(), times.begin() + static_cast<long>(times.size() / 2), times.end());
  return times[times.size() / 2];
}

}  // namespace

int main(int count, char** arguments) {
  const int rounds = count > 1 ? atoi(arguments[1]) : 2000;
  talk_t* value = StringTalk(("{\"text\":\"" + std::string(kAnswerSize - 11, 'x') + "\"}").c_str());
  signal(SIGCHLD, SIG_DFL);
  if (ConfigSet("bench", nullptr, nullptr, value) != 1) {
    fprintf(stderr, "isolated_read: runs in a private device root only: tools/device-root\n");
    return 1;
  }
  TalkFree(value);
  std::vector<double> floor, isolated;
  for (int round = 0; round < rounds; ++round) {
    floor.push_back(microseconds(bare_fork));
    isolated.push_back(microseconds(isolated_read));
  }
  printf("bare fork and answer: %.1f us, isolated read: %.1f us, ratio %.2f\n", median(floor),
         median(isolated), median(isolated) / median(floor));
  return 0;
}
