/* main.c - goes once through each road of the library, in plain C and without a test library: for C
 * libraries and boards that have none. Ends with a line of totals; status 0 when all checks held.
 *
 *   smoke MODULE TOOLS-FOLDER LAYOUTS-FOLDER      in an empty device root (tools/device-root) */
#include <stdlib.h>

#include "fairlead/log.h"
#include "smoke.h"

static int checks, failures;

int smoke_check(const char* file, int line, const char* condition, int holds) {
  ++checks;
  if (holds) return 1;
  ++failures;
  printf("%s:%d: does not hold: %s\n", file, line, condition);
  return 0;
}

int smoke_check_text(const char* file, int line, const char* expected, const char* actual) {
  ++checks;
  if (actual && strcmp(expected, actual) == 0) return 1;
  ++failures;
  printf("%s:%d: expected %s, got %s\n", file, line, expected, actual ? actual : "nothing");
  return 0;
}

int smoke_check_own_text(const char* file, int line, const char* expected, char* actual) {
  const int equal = smoke_check_text(file, line, expected, actual);
  free(actual);
  return equal;
}

static void put_on_path(const char* folder) {
  char path[4096];
  snprintf(path, sizeof path, "%s:%s", folder, getenv("PATH"));
  setenv("PATH", path, 1);
}

int main(int count, char** arguments) {
  if (count != 4) {
    fprintf(stderr, "usage: smoke MODULE TOOLS-FOLDER LAYOUTS-FOLDER\n");
    return 2;
  }
  GlogOpen("smoke", LOG_MODE_CONSOLE, 4);
  put_on_path(arguments[2]);
  smoke_requests(arguments[1]);
  smoke_state();
  smoke_service();
  smoke_modem();
  smoke_layout(arguments[3]);
  GlogClose();
  printf("%d checks, %d failed\n", checks, failures);
  return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
