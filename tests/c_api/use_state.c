/* use_state.c - shared values, joints and the list. */
#include <stdint.h>

#include "check.h"
#include "fairlead/state.h"
#include "fairlead/talk.h"

static gvalue_t* store; /* open until the program ends: no function closes it */

static void share_a_value(void) {
  const uint32_t level = 7;
  store = GvalueCreate("example");
  CHECK(store != NULL);
  CHECK(GvalueSet(store, "level", &level, sizeof level) == 1);
  CHECK(GvalueSize(store, "level") == (int)sizeof level);
  const uint32_t* shared = GvalueGet(store, "level");
  CHECK(shared && *shared == level);
  vessel_t* list = GvalueList(store);
  CHECK_TEXT("4", VesselGetS(list, "level"));
  TalkFree(list);
}

static void tie_an_event(void) {
  CHECK(JointCreate("example/wan", "up", "example/lan", "refresh") == 1);
  CHECK(JointCreate("example/wan", "up", "example/lan", "refresh") == 0);
  vessel_t* joints = JointList("example/wan");
  CHECK_OWN_TEXT("{\"up\":{\"example/lan.refresh\":\"\"}}", VesselString(joints));
  TalkFree(joints);
  CHECK(JointDelete("example/wan", "up", "example/lan", "refresh") == 1);
  JointCast("example/wan", NULL, NULL); /* nobody listens any more */
}

struct element {
  glink_t link;
  char name;
};

static void line_up(void) {
  glink_t list = {0};
  struct element a = {.name = 'a'}, b = {.name = 'b'};
  CHECK(GlinkPut(&list, &a.link) == 1);
  CHECK(GlinkInsert(&list, &b.link, &a.link) == 1);
  CHECK(((struct element*)GlinkGet(&list))->name == 'b');
  CHECK(GlinkDelete(&list, &a.link) == 1);
  CHECK(GlinkIsEmpty(&list) == 1);
}

void use_state(void) {
  share_a_value();
  tie_an_event();
  line_up();
}
