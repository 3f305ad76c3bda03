/* lamp.c - the adapter of hall/lamp. Reads and writes are left to the configuration store; the
 * interface "toggle" turns the lamp on or off and tells what it is now. */
#include <string.h>

#include "fairlead/adp.h"
#include "fairlead/config.h"
#include "fairlead/talk.h"

static talk_t* toggle(const char* object, param_t* parameters) {
  char state[8];
  (void)parameters;
  if (!ConfigGetS(object, NULL, "state", state, sizeof state)) return TALK_FAILED;
  const char* next = strcmp(state, "on") == 0 ? "off" : "on";
  return ConfigSetS(object, NULL, "state", next) ? RenderCreate(next) : TALK_FAILED;
}

static adp_interface_t interfaces[] = {{"toggle", toggle, "", "turns the lamp on or off"}};

adp_interface_t* hall_lamp__if_array = interfaces;
int32_t hall_lamp__if_size = 1;
