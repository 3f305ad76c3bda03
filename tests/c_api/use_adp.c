/* use_adp.c - requests to an adapter module written in C. */
#include <stdlib.h>
#include <sys/stat.h>

#include "check.h"
#include "fairlead/adp.h"
#include "fairlead/misc.h"
#include "fairlead/talk.h"
#include "fairlead/uii.h"

static void ask_the_adapter(void) {
  talk_t* answer = AdpGet(NULL, "example/wan", NULL, "a/b");
  CHECK_TEXT("a/b", VesselGetS(answer, "path"));
  TalkFree(answer);

  CHECK(AdpSet(NULL, "example/wan", NULL, NULL, NULL, "text") == 1);

  answer = AdpCall(NULL, "example/wan", "echo", NULL, "%s", "hello");
  CHECK_TEXT("hello", RenderString(answer));
  TalkFree(answer);
  CHECK(AdpCall(NULL, "example/wan", "echo", NULL, NULL) == TALK_DONE);

  vessel_t* list = AdpCallList(NULL, "example/wan");
  CHECK_TEXT("gives its parameter back", VesselGetS(VesselGetX(list, "echo"), "intro"));
  TalkFree(list);
}

static void make_whole_requests(void) {
  talk_t* answer = NULL;
  uii_t* request = UiiCreate("example/wan.echo[hello]");
  CHECK(He(request, &answer) == 0);
  CHECK_TEXT("hello", RenderString(answer));
  TalkFree(answer);
  UiiFree(request);

  vessel_t* document = StringVessel("{\"adp\":\"example/wan\",\"op\":\"echo\",\"1\":\"hello\"}");
  answer = NULL;
  CHECK(TalkHe(document, &answer) == 0);
  CHECK_TEXT("hello", RenderString(answer));
  TalkFree(answer);
  TalkFree(document);
}

void use_adp(const char* module) {
  CHECK(mkdir("/prj/example", 0755) == 0);
  CHECK(file_copy(module, "/prj/example/wan.adp") > 0);

  vessel_t* adapters = ProjectAdpList("example");
  CHECK_TEXT("/prj/example/wan.adp", VesselGetS(adapters, "example/wan"));
  TalkFree(adapters);

  ask_the_adapter();
  make_whole_requests();
}
