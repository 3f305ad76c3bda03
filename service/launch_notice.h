// Lets ServiceStart return when the daemon runs its program, not before.
#pragma once

#include <sys/types.h>

#include "base/descriptor.h"

namespace fairlead {

// A pipe whose write end is closed by the start of the program, or by the end, of every process on
// the way there. Without descriptors for it, the caller waits for its first child alone.
class LaunchNotice {
 public:
  LaunchNotice();

  // Said by a first child that could not fork and becomes the daemon itself: its end, which may be
  // years away, must not be waited for.
  void stay() const;

  // In the caller: waits for the launch, some seconds at most, and takes the first child's status.
  void wait(pid_t first_child);

 private:
  enum class Launch { kEnded, kStays, kUnknown };
  Launch wait_for_launch() const;

  Descriptor reader_, writer_;
};

}  // namespace fairlead
