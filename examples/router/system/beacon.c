/* beacon.c - the adapter of system/beacon: beats for as long as it is let, and tells how often it
 * has. Its interface "run" does not return, which makes it the call of a service:
 *
 *   ServiceStart("beacon", "system/beacon", "run", "%d", 100)     ten beats in a second
 *   he system/beacon                                              how many there were
 *
 * The daemon beats, and any other process tells: the count is a shared value. */
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "fairlead/adp.h"
#include "fairlead/state.h"
#include "fairlead/talk.h"

/* Each process opens the store once; a handle lives as long as its process. */
static gvalue_t* store(void) {
  static gvalue_t* opened;
  if (!opened) opened = GvalueCreate("beacon");
  return opened;
}

static uint32_t beats(void) {
  uint32_t count = 0;
  const void* value = store() ? GvalueGet(store(), "beats") : NULL;
  if (value) memcpy(&count, value, sizeof count);
  return count;
}

static talk_t* get(const char* object, slash_t* path) {
  (void)object;
  char text[16];
  snprintf(text, sizeof text, "%u", (unsigned)beats());
  if (path && SlashCount(path) > 0)
    return strcmp(SlashGet(path, 1), "beats") == 0 ? RenderCreate(text) : NULL;
  vessel_t* report = VesselCreate();
  if (report && VesselSetS(report, "beats", text)) return report;
  TalkFree(report);
  return NULL;
}

/* Parameter 1: milliseconds from beat to beat, 1000 without it. A signal ends it; there is nothing
 * to clean up. */
static talk_t* run(const char* object, param_t* parameters) {
  (void)object;
  const char* text = parameters ? ParamGetS(parameters, 1) : NULL;
  const int pause = text ? atoi(text) : 1000;
  if (pause < 1 || !store()) return TALK_FAILED;
  const struct timespec between = {pause / 1000, pause % 1000 * 1000000L};
  for (;;) {
    const uint32_t count = beats() + 1;
    if (!GvalueSet(store(), "beats", &count, sizeof count)) return TALK_FAILED;
    nanosleep(&between, NULL);
  }
}

static adp_interface_t interfaces[] = {
    {"run", run, "MILLISECONDS", "beats until a signal ends it"}};

adp_get_t system_beacon__get = get;
adp_interface_t* system_beacon__if_array = interfaces;
int32_t system_beacon__if_size = sizeof interfaces / sizeof interfaces[0];
