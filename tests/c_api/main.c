/* main.c - a program in plain C that uses each family of the library once, the way an application
 * does. */
#include <stdlib.h>

#include "check.h"

int failures = 0;

void check_text(const char* file, int line, const char* expected, const char* actual) {
  if (actual && strcmp(expected, actual) == 0) return;
  fprintf(stderr, "%s:%d: expected %s, got %s\n", file, line, expected, actual ? actual : "null");
  ++failures;
}

void check_own_text(const char* file, int line, const char* expected, char* actual) {
  check_text(file, line, expected, actual);
  free(actual);
}

int main(int count, char** arguments) {
  if (count != 2) {
    fprintf(stderr, "usage: c_program ADAPTER-MODULE\n");
    return 2;
  }
  use_json();
  use_talk();
  use_paths();
  use_uii();
  use_config();
  use_service();
  use_state();
  use_misc();
  use_log();
  use_atcmd();
  use_adp(arguments[1]);
  return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
