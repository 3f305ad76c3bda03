/* use_log.c - the log channel, on the console. */
#include <stdio.h>
#include <unistd.h>

#include "check.h"
#include "fairlead/log.h"

void use_log(void) {
  char text[64] = "";
  fflush(stdout);
  const int saved = dup(STDERR_FILENO);
  FILE* file = freopen("/tmp/log", "w", stderr);
  CHECK(file != NULL);
  CHECK(GlogOpen("example", LOG_MODE_CONSOLE, 4) == 1);
  LogWrite(3, "example", __LINE__, "cannot find %s", "it");
  LogWrite(7, "example", __LINE__, "too small to be told");
  GlogClose();
  fflush(stderr);
  dup2(saved, STDERR_FILENO);
  close(saved);

  file = fopen("/tmp/log", "r");
  const size_t length = file ? fread(text, 1, sizeof text - 1, file) : 0;
  if (file) fclose(file);
  text[length] = '\0';
  CHECK_TEXT("error: cannot find it\n", text);
}
