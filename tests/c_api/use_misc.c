/* use_misc.c - small files, lock files and commands. */
#include <fcntl.h>

#include "check.h"
#include "fairlead/misc.h"

void use_misc(void) {
  char text[16];
  CHECK(write_string("/tmp/small", "%d items", 3) > 0);
  CHECK_TEXT("3 items", read_string("/tmp/small", text, sizeof text));
  CHECK(file_copy("/tmp/small", "/tmp/copy") == 7);
  CHECK(file_cmp("/tmp/small", "/tmp/copy") == 0);

  const int lock = lock_open("/tmp/lock", O_RDWR | O_CREAT, 0600, 1);
  CHECK(lock >= 0);
  CHECK(lock_close(lock) == 0);

  CHECK(system_string("exit %d", 3) == 3 << 8);
}
