/* target.c - a module whose interfaces are targets of joints: they note what they were called with,
 * answer in every way a target can, and cast or edit joints in their turn. */
#include <sys/wait.h>
#include <unistd.h>

#include "fairlead/fairlead.h"

/* A line "OBJECT.INTERFACE COUNT LIST" in "/tmp/.var/heard". */
static void note(const char* object, const char* interface, param_t* parameters) {
  append_string("/tmp/.var/heard", "%s.%s %d %s\n", object, interface, ParamCount(parameters),
                ParamString(parameters));
}

static talk_t* hear(const char* object, param_t* parameters) {
  note(object, "hear", parameters);
  return TALK_DONE;
}

static talk_t* refuse(const char* object, param_t* parameters) {
  note(object, "refuse", parameters);
  return TALK_FAILED;
}

static talk_t* nothing(const char* object, param_t* parameters) {
  note(object, "nothing", parameters);
  return NULL;
}

static talk_t* answer(const char* object, param_t* parameters) {
  note(object, "answer", parameters);
  return VesselCreate();
}

static talk_t* string(const char* object, param_t* parameters) {
  note(object, "string", parameters);
  return RenderCreate("just so");
}

/* Reports the same event of this object. */
static talk_t* pass(const char* object, param_t* parameters) {
  note(object, "pass", parameters);
  JointCast(object, ParamGetS(parameters, 2), NULL);
  return TALK_DONE;
}

/* Takes "lan.hear" away from the event and puts "late.hear" there. */
static talk_t* edit(const char* object, param_t* parameters) {
  const char* source = ParamGetS(parameters, 1);
  const char* event = ParamGetS(parameters, 2);
  note(object, "edit", parameters);
  if (!JointDelete(source, event, "lan", "hear")) return TALK_FAILED;
  return JointCreate(source, event, "late", "hear") ? TALK_DONE : TALK_FAILED;
}

/* Reports the event of the object "daemon" from a child. */
static talk_t* away(const char* object, param_t* parameters) {
  (void)object;
  const pid_t child = fork();
  if (child == 0) {
    JointCast("daemon", ParamGetS(parameters, 2), NULL);
    _exit(0);
  }
  return waitpid(child, NULL, 0) == child ? TALK_DONE : TALK_FAILED;
}

static adp_interface_t interfaces[] = {
    {"hear", hear, NULL, NULL},       {"refuse", refuse, NULL, NULL},
    {"nothing", nothing, NULL, NULL}, {"answer", answer, NULL, NULL},
    {"string", string, NULL, NULL},   {"pass", pass, NULL, NULL},
    {"edit", edit, NULL, NULL},       {"away", away, NULL, NULL},
};

adp_interface_t* net_target__if_array = interfaces;
int32_t net_target__if_size = sizeof interfaces / sizeof interfaces[0];
