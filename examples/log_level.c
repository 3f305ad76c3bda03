/* log_level LEVEL - sets the log threshold of every program that uses the library, at once: 1 lets
 * only emergencies through, 3 errors too, 6 is usual, 7 lets debug lines through. */
#include <errno.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "fairlead/state.h"

int main(int argc, char** argv) {
  if (argc != 2 || strlen(argv[1]) != 1 || argv[1][0] < '1' || argv[1][0] > '7') {
    fprintf(stderr, "usage: log_level 1-7\n");
    return 2;
  }
  const uint32_t level = (uint32_t)(argv[1][0] - '0'); /* the log channel reads four bytes */
  if (GvalueSet(NULL, "log_level", &level, sizeof level)) return 0;
  fprintf(stderr, "log_level: the value store refused it: %s\n", strerror(errno));
  return 1;
}
