/* status.c - a stand-in for the status of a router, for the test bench: its uptime never changes,
 * and it crashes on demand. Bound over system/status it answers in its place, as long as the
 * binding stands. */
#include <stdlib.h>

#include "fairlead/adp.h"
#include "fairlead/talk.h"

static talk_t* uptime(const char* object, param_t* parameters) {
  (void)object;
  (void)parameters;
  return RenderCreate("86400");
}

static talk_t* crash(const char* object, param_t* parameters) {
  (void)object;
  (void)parameters;
  abort();
}

static adp_interface_t interfaces[] = {
    {"uptime", uptime, "", "always one day"},
    {"crash", crash, "", "ends the process that serves the request"},
};

adp_interface_t* bench_status__if_array = interfaces;
int32_t bench_status__if_size = sizeof interfaces / sizeof interfaces[0];
