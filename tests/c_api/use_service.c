/* use_service.c - services: one that is registered by hand, looked at, switched off, stopped. */
#include <unistd.h>

#include "check.h"
#include "fairlead/service.h"
#include "fairlead/talk.h"

static void own_record(void) {
  int fd = DaemonRegister("/tmp/.var/service/own.spid", "net/wan", "watch", "ppp0");
  CHECK(fd >= 0);
  CHECK(ServicePid("%s", "own") == getpid());
  vessel_t* status = ServiceInfo("own");
  CHECK_TEXT("live", VesselGetS(status, "status"));
  CHECK_TEXT("ppp0", VesselGetS(status, "parameter1"));
  TalkFree(status);
  CHECK(DaemonFree(fd) == 0);
}

void use_service(void) {
  CHECK(DaemonCheck() == 0);
  own_record();
  vessel_t* list = ServiceList();
  CHECK_TEXT("die", VesselGetS(VesselGetX(list, "own"), "status"));
  TalkFree(list);
  CHECK(ServiceOff("own") == 0);
  CHECK(ServiceInfo("own") == NULL);
  CHECK(ServiceReset("own") == -1);
  CHECK(ServiceStop("own") == -1);
  CHECK(ServiceStart("own", "net/wan", NULL, NULL) == -1);
}
