// Works measured in turn, so that a change of the machine's speed meets all of them: each round
// takes one sample of each, and every other round goes backwards. What is told is the median.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace bench {

using Clock = std::chrono::steady_clock;

// Works shorter than the clock are run `calls` times for one sample, and those shorter than a call
// do themselves what they do `done` times; `before` each sample comes what is not measured.
struct Work {
  const char* name;
  void (*run)();
  void (*before)() = nullptr;
  int done = 1;
};

struct Effort {
  double seconds;  // per row, unless it takes longer to have
  int rounds;      // at least
};

inline double sample(const Work& work, int calls) {
  if (work.before) work.before();
  const auto begin = Clock::now();
  for (int call = 0; call < calls; ++call) work.run();
  return std::chrono::duration<double, std::micro>(Clock::now() - begin).count() / calls /
         work.done;
}

inline double median(std::vector<double>& samples) {
  const auto middle = samples.begin() + static_cast<long>(samples.size() / 2);
  std::nth_element(samples.begin(), middle, samples.end());
  return *middle;
}

// Measures and prints one line: NAME, then the median of each work in microseconds, then the ratio
// of the second to the first.
inline void measure(const char* row, const Work& floor, const Work& own, int calls,
                    const Effort& effort) {
  std::vector<double> floors, owns;
  sample(floor, calls);
  sample(own, calls);
  const auto begin = Clock::now();
  const auto passed = [&] {
    return std::chrono::duration<double>(Clock::now() - begin).count() > effort.seconds;
  };
  for (int round = 0; round < effort.rounds || !passed(); ++round) {
    if (round % 2) owns.push_back(sample(own, calls));
    floors.push_back(sample(floor, calls));
    if (round % 2 == 0) owns.push_back(sample(own, calls));
  }
  const double bare = median(floors), mine = median(owns);
  printf("%-28s %-44s %12.4f us   fairlead %12.4f us   ratio %8.3f   rounds %zu\n", row, floor.name,
         bare, mine, mine / bare, owns.size());
  fflush(stdout);
}

}  // namespace bench
