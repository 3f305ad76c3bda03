/* quiet.c - a module that makes no system call of its own, so that what is counted is the road. */
#include "fairlead/fairlead.h"

static talk_t* nod(const char* object, param_t* parameters) {
  (void)object;
  (void)parameters;
  return TALK_DONE;
}

static adp_interface_t interfaces[] = {{"nod", nod, NULL, NULL}};

adp_interface_t* net_quiet__if_array = interfaces;
int32_t net_quiet__if_size = sizeof interfaces / sizeof interfaces[0];
