/* state.c - shared values, joints, the registry. */
#include <stdint.h>

#include "fairlead/adp.h"
#include "fairlead/config.h"
#include "fairlead/state.h"
#include "fairlead/talk.h"
#include "smoke.h"

void smoke_state(void) {
  const uint32_t beats = 0x01020304;
  gvalue_t* store = GvalueCreate("smoke");
  CHECK(GvalueSet(store, "beats", &beats, sizeof beats) == 1);
  CHECK(GvalueSize(store, "beats") == (int)sizeof beats);
  const void* shared = GvalueGet(store, "beats");
  CHECK(shared && memcmp(shared, &beats, sizeof beats) == 0);

  CHECK(DynAdpCreate("uplink", "smoke/probe") == 1);
  char file[256];
  CHECK(AdpPath(NULL, "uplink", file, sizeof file) == ADP_DYN);
  CHECK_TEXT("/prj/smoke/probe.adp", file);

  CHECK(JointCreate("smoke/plain", "up", "uplink", "echo") == 1);
  CHECK(JointCreate("smoke/plain", "up", "uplink", "echo") == 0);
  JointCast("smoke/plain", NULL, NULL);
  CHECK(JointDelete("smoke/plain", "up", "uplink", "echo") == 1);
  CHECK(DynAdpDelete("uplink") == 1);
}
