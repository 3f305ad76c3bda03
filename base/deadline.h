// The end of a wait that may be made of several.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>
#include <ctime>

namespace fairlead {

class Deadline {
 public:
  explicit Deadline(int seconds) : seconds_(seconds) { clock_gettime(CLOCK_MONOTONIC, &begin_); }

  // 0 once it has passed; at most what an int holds, the 24 days that poll(2) can wait.
  int milliseconds_left() const {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    const int64_t passed =
        (now.tv_sec - begin_.tv_sec) * int64_t{1000} + (now.tv_nsec - begin_.tv_nsec) / 1000000;
    const int64_t left = seconds_ * int64_t{1000} - passed;
    return static_cast<int>(std::clamp(left, int64_t{0}, int64_t{INT_MAX}));
  }

  bool passed() const { return milliseconds_left() == 0; }

 private:
  int seconds_;
  timespec begin_;
};

}  // namespace fairlead
