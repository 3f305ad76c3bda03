/* clock.c - an adapter in C: the machine's clock as the object board/clock.
 *
 * Build:    cc -shared -fPIC -o clock.adp clock.c $(pkg-config --cflags --libs fairlead)
 * Install:  cp clock.adp /prj/board/
 * Ask:      he board/clock      he board/clock:uptime      he 'board/clock.format[%H:%M]' */
#include <stdio.h>
#include <string.h>
#include <time.h>

#include "fairlead/fairlead.h"

/* The whole object, or one member when the request names it. The caller frees what this returns. */
static talk_t* get(const char* object, slash_t* path) {
  (void)object;
  char uptime[32] = "";
  struct timespec now;
  if (clock_gettime(CLOCK_BOOTTIME, &now) == 0)
    snprintf(uptime, sizeof uptime, "%lld", (long long)now.tv_sec);

  if (path && SlashCount(path) > 0) {
    if (SlashCount(path) == 1 && strcmp(SlashGet(path, 1), "uptime") == 0)
      return RenderCreate(uptime);
    return NULL; /* nothing there */
  }
  vessel_t* answer = VesselCreate();
  if (answer) VesselSetS(answer, "uptime", uptime);
  return answer;
}

/* format[PATTERN]: the local time by a strftime pattern. */
static talk_t* format(const char* object, param_t* parameters) {
  (void)object;
  const char* pattern = parameters && ParamCount(parameters) > 0 ? ParamGetS(parameters, 1) : NULL;
  char text[128];
  time_t now = time(NULL);
  struct tm local;
  if (!pattern || !localtime_r(&now, &local) || strftime(text, sizeof text, pattern, &local) == 0)
    return TALK_FAILED;
  return RenderCreate(text);
}

/* Lists the interfaces. The names begin with project and adapter: /prj/board/clock.adp offers
 * board_clock__... */
static adp_interface_t interfaces[] = {
    {"format", format, "pattern", "the local time by a strftime pattern"},
};

adp_get_t board_clock__get = get;
adp_interface_t* board_clock__if_array = interfaces;
int32_t board_clock__if_size = sizeof interfaces / sizeof interfaces[0];
/* No board_clock__set: a set goes to the configuration store. */
