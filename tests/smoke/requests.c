/* requests.c - whole requests: to configuration, to a module, to a script; plain and isolated. */
#include <stdlib.h>
#include <sys/stat.h>

#include "fairlead/adp.h"
#include "fairlead/config.h"
#include "fairlead/log.h"
#include "fairlead/misc.h"
#include "fairlead/talk.h"
#include "fairlead/uii.h"
#include "smoke.h"

enum { PLAIN, ISOLATED };

/* What a request gives, as text that the caller frees: its document, or its status. */
static char* ask(int road, const char* identifier) {
  talk_t* answer = NULL;
  uii_t* request = UiiCreate(identifier);
  const int status = road == PLAIN ? He(request, &answer) : SecureHe(request, &answer);
  UiiFree(request);
  char number[16];
  snprintf(number, sizeof number, "%d", status);
  if (!answer || answer == TALK_DONE || answer == TALK_FAILED) return strdup(number);
  char* text = TalkString(answer);
  TalkFree(answer);
  return text;
}

static void ask_configuration(void) {
  CHECK_OWN_TEXT("1", ask(PLAIN, "smoke/plain:net/mtu=1492"));
  CHECK_OWN_TEXT("1492", ask(PLAIN, "smoke/plain:net/mtu"));
  CHECK_OWN_TEXT("1", ask(ISOLATED, "smoke/plain:net|{\"dns\":\"9.9.9.9\"}"));
  CHECK_OWN_TEXT("{\"net\":{\"mtu\":\"1492\",\"dns\":\"9.9.9.9\"}}", ask(ISOLATED, "smoke/plain"));
  vessel_t* list = ConfigList("smoke");
  CHECK_TEXT("/etc/config/smoke/plain.cfg", VesselGetS(list, "plain"));
  TalkFree(list);
}

static void ask_a_module(void) {
  for (int road = PLAIN; road <= ISOLATED; ++road) {
    CHECK_OWN_TEXT("{\"object\":\"smoke/probe\",\"path\":\"a/b\"}", ask(road, "smoke/probe:a/b"));
    CHECK_OWN_TEXT("one,{\"two\":\"2\"}", ask(road, "smoke/probe.echo[one, {\"two\":\"2\"}]"));
    CHECK_OWN_TEXT("1", ask(road, "smoke/probe.echo"));
  }
  GlogOpen("smoke", LOG_MODE_SYSLOG, 1); /* the crash is logged as an error */
  CHECK_OWN_TEXT("0", ask(ISOLATED, "smoke/probe.crash"));
  GlogOpen("smoke", LOG_MODE_CONSOLE, 4);
  CHECK_OWN_TEXT("1", ask(ISOLATED, "smoke/probe.echo"));
}

static void ask_a_script(void) {
  for (int road = PLAIN; road <= ISOLATED; ++road) {
    CHECK_OWN_TEXT("{\"asked\":\":a/b\"}", ask(road, "smoke/script:a/b"));
    CHECK_OWN_TEXT("{\"asked\":\"tell\",\"first\":\"1\"}", ask(road, "smoke/script.tell[1,2]"));
  }
}

void smoke_requests(const char* module) {
  CHECK(mkdir("/prj/smoke", 0755) == 0);
  CHECK(file_copy(module, "/prj/smoke/probe.adp") > 0);
  CHECK(write_string(
            "/prj/smoke/script.ash", "%s",
            "#!/bin/sh\n"
            "case $interface in\n"
            ":) printf '{\"asked\":\":%s\"}' \"$config\" ;;\n"
            "*) printf '{\"asked\":\"%s\",\"first\":\"%s\"}' \"$interface\" \"$paramter1\" ;;\n"
            "esac >&$pipeid\n") > 0);
  CHECK(chmod("/prj/smoke/script.ash", 0755) == 0);
  ask_configuration();
  ask_a_module();
  ask_a_script();
}
