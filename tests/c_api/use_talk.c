/* use_talk.c - talk documents: set, get, walk, copy, merge, compare, text and files. */
#include <stdlib.h>

#include "check.h"
#include "fairlead/talk.h"

static void set_and_get(void) {
  vessel_t* wan = VesselCreate();
  CHECK(VesselSetS(wan, "ip", "10.0.0.1") == 1);
  CHECK(VesselSetX(wan, "state", RenderCreate("up")) == 1);
  CHECK(VesselAdd(wan, AxpCreate("mtu", RenderCreate("1500"))) == 1);
  CHECK_TEXT("10.0.0.1", VesselGetS(wan, "ip"));
  CHECK_TEXT("up", RenderString(VesselGetX(wan, "state")));
  CHECK(VesselCount(wan) == 3);
  CHECK_OWN_TEXT("{\"ip\":\"10.0.0.1\",\"state\":\"up\",\"mtu\":\"1500\"}", VesselString(wan));
  TalkFree(wan);
}

static void walk(void) {
  vessel_t* vessel = StringVessel("{\"a\":\"1\",\"b\":\"2\"}");
  char names[3] = "";
  axp_t* member = NULL;
  int count = 0;
  while (count < 2 && (member = VesselEach(vessel, member)) != NULL)
    names[count++] = AxpGet(member)[0];
  CHECK_TEXT("ab", names);
  TalkFree(vessel);
}

static void copy_merge_compare(void) {
  vessel_t* stored = StringVessel("{\"a\":\"1\"}");
  vessel_t* change = StringVessel("{\"b\":{\"c\":\"2\"}}");
  vessel_t* before = VesselDup(stored);
  CHECK(TalkEqual(stored, before));
  CHECK(VesselModify(change, stored) > 0);
  CHECK(!TalkEqual(stored, before));
  CHECK_OWN_TEXT("{\"a\":\"1\",\"b\":{\"c\":\"2\"}}", TalkString(stored));
  TalkFree(before);
  TalkFree(change);
  TalkFree(stored);
}

static void keep_in_a_file(void) {
  vessel_t* vessel = StringVessel("{\"a\":\"1\"}");
  CHECK(VesselFile(vessel, "/tmp/document") == 1);
  TalkFree(vessel);
  vessel = FileVessel("/tmp/document");
  CHECK_TEXT("1", VesselGetS(vessel, "a"));
  TalkFree(vessel);
}

void use_talk(void) {
  set_and_get();
  walk();
  copy_merge_compare();
  keep_in_a_file();
}
