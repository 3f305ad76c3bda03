/* waiter.c - an adapter with an interface that runs for ever: /prj/lab/waiter.adp. */
#include <stdio.h>
#include <unistd.h>

#include "fairlead/adp.h"
#include "fairlead/talk.h"

/* Says so by a file when it is running. */
static talk_t* run(const char* object, param_t* parameters) {
  (void)object;
  FILE* file = fopen("/tmp/running.new", "we");
  if (!file) return TALK_FAILED;
  fprintf(file, "%s\n", ParamGetS(parameters, 1));
  if (fclose(file) != 0 || rename("/tmp/running.new", "/tmp/running") != 0) return TALK_FAILED;
  for (;;) pause();
}

static adp_interface_t interfaces[] = {{"run", run, "TEXT", "runs until a signal ends it"}};

adp_interface_t* lab_waiter__if_array = interfaces;
int32_t lab_waiter__if_size = 1;
