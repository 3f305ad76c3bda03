/* use_paths.c - slash paths and parameter lists, in records on the stack. */
#include "check.h"
#include "fairlead/talk.h"

static void split_a_path(void) {
  char text[] = "/net/wan/ip";
  slash_t path = {0};
  CHECK(SlashAnalysis(&path, text) == 1);
  CHECK(SlashCount(&path) == 3);
  CHECK_TEXT("wan", SlashGet(&path, 2));
  CHECK_TEXT("ip", SlashGet(&path, -1));
  CHECK_TEXT("net/wan/ip", SlashString(&path));
  SlashClear(&path);
}

static void split_parameters(void) {
  char text[] = "up,{\"a\":\"1,2\"}";
  param_t parameters = {0};
  CHECK(ParamAnalysis(&parameters, text) == 1);
  CHECK(ParamCount(&parameters) == 2);
  CHECK_TEXT("up", ParamGetS(&parameters, 1));
  CHECK_TEXT("1,2", VesselGetS(ParamGetT(&parameters, 2), "a"));
  ParamClear(&parameters);
}

void use_paths(void) {
  split_a_path();
  split_parameters();
}
