/* chatter [SECONDS] - a program that logs a debug line ten times a second, to show how the log
 * threshold of a running program is changed. Ends by itself, after 10 seconds if not told. */
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "fairlead/log.h"

int main(int argc, char** argv) {
  const int rounds = 10 * (argc > 1 ? atoi(argv[1]) : 10);
  const struct timespec pause = {0, 100 * 1000 * 1000};

  setvbuf(stdout, NULL, _IOLBF, 0); /* debug lines go to standard output, and must not wait there */
  if (!GlogOpen("chatter", LOG_MODE_CONSOLE, 0)) {
    fprintf(stderr, "chatter: the log could not be opened\n");
    return 1;
  }
  LogWrite(5, "chatter", __LINE__, "ready");
  for (int round = 1; round <= rounds; ++round) {
    LogWrite(7, "chatter", __LINE__, "still here");
    nanosleep(&pause, NULL);
  }
  GlogClose();
  return 0;
}
