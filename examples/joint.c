/* joint list [OBJECT] - prints the joints of the object, or all.
 * joint create OBJECT EVENT TARGET INTERFACE - lets the event of the object call the target.
 * joint delete OBJECT EVENT TARGET INTERFACE - takes that back.
 * joint cast OBJECT EVENT [DATA] - reports the event, with data: an object in JSON, or a text. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "fairlead/log.h"
#include "fairlead/state.h"
#include "fairlead/talk.h"

static int list(const char* object) {
  talk_t* joints = JointList(object);
  char* text = TalkString(joints);
  if (text) puts(text);
  free(text);
  TalkFree(joints);
  return text ? 0 : 1;
}

static int cast(const char* object, const char* event, const char* data_text) {
  talk_t* data = data_text ? StringTalk(data_text) : NULL;
  if (data_text && !data) {
    fprintf(stderr, "joint: not an object in JSON: %s\n", data_text);
    return 2;
  }
  JointCast(object, event, data);
  TalkFree(data);
  return 0;
}

static int change(int done, char** names) {
  if (done) return 0;
  fprintf(stderr, "joint: no change: %s.%s on %s of %s\n", names[2], names[3], names[1], names[0]);
  return 1;
}

int main(int argc, char** argv) {
  const char* verb = argc > 1 ? argv[1] : "";
  char** names = argv + 2;
  GlogOpen("joint", LOG_MODE_CONSOLE, 6); /* what goes wrong in a target shows here */
  if (strcmp(verb, "list") == 0 && argc <= 3) return list(names[0]);
  if (strcmp(verb, "create") == 0 && argc == 6)
    return change(JointCreate(names[0], names[1], names[2], names[3]), names);
  if (strcmp(verb, "delete") == 0 && argc == 6)
    return change(JointDelete(names[0], names[1], names[2], names[3]), names);
  if (strcmp(verb, "cast") == 0 && (argc == 4 || argc == 5))
    return cast(names[0], names[1], names[2]);
  fprintf(stderr,
          "usage: joint list [OBJECT]\n"
          "       joint create|delete OBJECT EVENT TARGET INTERFACE\n"
          "       joint cast OBJECT EVENT [DATA]\n");
  return 2;
}
