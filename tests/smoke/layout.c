/* layout.c - files that other processes and other builds read: byte for byte as they always were.
 */
#include <stdint.h>
#include <stdlib.h>

#include "fairlead/misc.h"
#include "fairlead/service.h"
#include "fairlead/state.h"
#include "smoke.h"

enum { ROOM = 1024 };

/* A file's bytes in hexadecimal, 16 in a line; "" when it cannot be read or is too long. */
static void dump(const char* path, char* text) {
  unsigned char bytes[ROOM];
  text[0] = '\0';
  FILE* file = fopen(path, "re");
  if (!file) return;
  const size_t length = fread(bytes, 1, sizeof bytes, file);
  fclose(file);
  for (size_t at = 0; at < length && length < sizeof bytes; ++at)
    text += sprintf(text, "%02x%c", bytes[at], at % 16 == 15 || at + 1 == length ? '\n' : ' ');
}

static void compare(const char* made, const char* folder, const char* name) {
  static char path[4096], actual[3 * ROOM + 1], expected[3 * ROOM + 1];
  snprintf(path, sizeof path, "%s/%s", folder, name);
  FILE* file = fopen(path, "re");
  if (!CHECK(file != NULL)) return;
  expected[fread(expected, 1, sizeof expected - 1, file)] = '\0';
  fclose(file);
  dump(made, actual);
  CHECK_TEXT(expected, actual);
}

void smoke_layout(const char* folder) {
  const uint16_t probe = 1;
  const int little = *(const unsigned char*)&probe == 1;

  const uint32_t level = 7;
  gvalue_t* store = GvalueCreateDetails("layout", 2, 8, 0660);
  CHECK(GvalueSet(store, "level", &level, sizeof level) == 1);
  CHECK(GvalueSet(store, "name", "wan", 3) == 1);
  compare("/tmp/.var/gvalue/layout", folder, little ? "value-store.little" : "value-store.big");

  const int record = DaemonRegister("/tmp/.var/service/layout.spid", "net/wan", "watch", "ppp0,30");
  CHECK(record >= 0);
  compare("/tmp/.var/service/layout.spid", folder, "service-record");
  CHECK(DaemonFree(record) == 0);
  CHECK(ServiceStop("layout") == -1);
}
