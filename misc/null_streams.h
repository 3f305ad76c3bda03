// The standard streams of a child that has nobody to talk to.
#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace fairlead {

// Standard input, output and error become /dev/null; where it cannot be opened they stay. Makes
// calls only that are safe after a vfork.
inline void silence_standard_streams() {
  const int null = open("/dev/null", O_RDWR);
  if (null < 0) return;
  for (int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(null, standard);
  if (null > STDERR_FILENO) close(null);
}

}  // namespace fairlead
