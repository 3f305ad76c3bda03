/* adapter.c - an adapter module in plain C, installed as "/prj/example/wan.adp": its names begin
 * with project and adapter, and each is a variable. */
#include <stdlib.h>

#include "fairlead/adp.h"
#include "fairlead/talk.h"

static talk_t* get(const char* object, slash_t* path) {
  vessel_t* answer = VesselCreate();
  VesselSetS(answer, "object", object);
  VesselSetS(answer, "path", path ? SlashString(path) : "all");
  return answer;
}

static int32_t set(const char* object, slash_t* path, talk_t* value) {
  (void)object;
  (void)path;
  return RenderString(value) != NULL;
}

static talk_t* echo(const char* object, param_t* parameters) {
  (void)object;
  return parameters ? RenderCreate(ParamGetS(parameters, 1)) : TALK_DONE;
}

static adp_interface_t interfaces[] = {{"echo", echo, "text", "gives its parameter back"}};

#define EXPORTED __attribute__((visibility("default")))
EXPORTED extern adp_get_t const example_wan__get;
EXPORTED extern adp_set_t const example_wan__set;
EXPORTED extern adp_interface_t* const example_wan__if_array;
EXPORTED extern int32_t const example_wan__if_size;

adp_get_t const example_wan__get = get;
adp_set_t const example_wan__set = set;
adp_interface_t* const example_wan__if_array = interfaces;
int32_t const example_wan__if_size = sizeof interfaces / sizeof interfaces[0];
