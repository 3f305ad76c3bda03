/* probe.c - the module of smoke/probe: answers, crashes, and runs as a service. */
#include <stdlib.h>
#include <unistd.h>

#include "fairlead/adp.h"
#include "fairlead/talk.h"

static talk_t* get(const char* object, slash_t* path) {
  vessel_t* answer = VesselCreate();
  VesselSetS(answer, "object", object);
  VesselSetS(answer, "path", path ? SlashString(path) : "all");
  return answer;
}

static talk_t* echo(const char* object, param_t* parameters) {
  (void)object;
  return ParamCount(parameters) > 0 ? RenderCreate(ParamString(parameters)) : TALK_DONE;
}

static talk_t* crash(const char* object, param_t* parameters) {
  (void)object, (void)parameters;
  abort();
}

/* The call of a service. */
static __attribute__((noreturn)) talk_t* run(const char* object, param_t* parameters) {
  (void)object, (void)parameters;
  for (;;) pause();
}

static adp_interface_t interfaces[] = {
    {"echo", echo, NULL, NULL}, {"crash", crash, NULL, NULL}, {"run", run, NULL, NULL}};

adp_get_t smoke_probe__get = get;
adp_interface_t* smoke_probe__if_array = interfaces;
int32_t smoke_probe__if_size = sizeof interfaces / sizeof interfaces[0];
