/* service.c - a daemon is started, killed, brought back and ended. */
#include <signal.h>
#include <time.h>
#include <unistd.h>

#include "fairlead/service.h"
#include "fairlead/talk.h"
#include "smoke.h"

/* 1 when within 20 seconds the service runs, or, for `wanted` 0, runs no more. */
static int becomes(int wanted) {
  for (int tries = 0; tries < 2000; ++tries) {
    if ((ServicePid("smoke") > 0) == wanted) return 1;
    nanosleep(&(struct timespec){0, 10000000}, NULL);
  }
  return 0;
}

void smoke_service(void) {
  CHECK(ServiceStart("smoke", "smoke/probe", "run", "%s,%d", "fast", 20) == 0);
  CHECK(becomes(1));
  const pid_t first = ServicePid("smoke");
  vessel_t* info = ServiceInfo("smoke");
  CHECK_TEXT("live", VesselGetS(info, "status"));
  CHECK_TEXT("smoke/probe", VesselGetS(info, "adp"));
  CHECK_TEXT("20", VesselGetS(info, "parameter2"));
  TalkFree(info);

  CHECK(first > 0 && kill(first, SIGKILL) == 0);
  CHECK(becomes(0));
  CHECK(DaemonCheck() == 0);
  CHECK(becomes(1));
  CHECK(ServicePid("smoke") != first);
  CHECK(ServiceStop("smoke") == 0);
  CHECK(ServicePid("smoke") == -1);
}
