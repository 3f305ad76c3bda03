/* service - starts, watches and ends services, long-running calls of interfaces:
 *
 *   service start NAME OBJECT INTERFACE [PARAMETERS]
 *   service list                     all services, as a document
 *   service info|pid NAME            one of them
 *   service check                    starts what has died
 *   service reset|off|stop NAME      ends and starts anew; forgets but lets run; ends */
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "fairlead/service.h"
#include "fairlead/talk.h"

enum { DONE, FAILED, USAGE };

static int print_and_free(vessel_t* document) {
  if (!document) return -1;
  char* text = VesselString(document);
  if (text) puts(text);
  free(text);
  TalkFree(document);
  return text ? 0 : -1;
}

static int print_pid(const char* name) {
  const pid_t pid = ServicePid("%s", name);
  if (pid > 0) printf("%d\n", (int)pid);
  return pid > 0 ? 0 : -1;
}

/* "%s": the parameters are no format. What became of the daemon is in the log, and in its pid. */
static int start(int count, char** words) {
  const int result = count == 3 ? ServiceStart(words[0], words[1], words[2], NULL)
                                : ServiceStart(words[0], words[1], words[2], "%s", words[3]);
  return result == 0 && ServicePid("%s", words[0]) < 0 ? -1 : result;
}

/* What concerns one service: 0 or -1, or 1 when there is no such command. */
static int control(const char* command, const char* name) {
  if (strcmp(command, "info") == 0) return print_and_free(ServiceInfo("%s", name));
  if (strcmp(command, "pid") == 0) return print_pid(name);
  if (strcmp(command, "reset") == 0) return ServiceReset("%s", name);
  if (strcmp(command, "off") == 0) return ServiceOff("%s", name);
  if (strcmp(command, "stop") == 0) return ServiceStop("%s", name);
  return 1;
}

int main(int argc, char** argv) {
  const char* command = argc > 1 ? argv[1] : "";
  int result = 1;
  errno = 0;
  if (argc == 2 && strcmp(command, "list") == 0) result = print_and_free(ServiceList());
  if (argc == 2 && strcmp(command, "check") == 0) result = DaemonCheck();
  if (argc == 3) result = control(command, argv[2]);
  if ((argc == 5 || argc == 6) && strcmp(command, "start") == 0) result = start(argc - 2, argv + 2);
  if (result == 0) return DONE;
  if (result == 1) {
    fprintf(stderr,
            "usage: service start NAME OBJECT INTERFACE [PARAMETERS]\n"
            "       service list|check\n"
            "       service info|pid|reset|off|stop NAME\n");
    return USAGE;
  }
  fprintf(stderr, "service: %s failed: %s\n", command, errno ? strerror(errno) : "no daemon");
  return FAILED;
}
