/* ask_modem DEVICE COMMAND... - sends commands to a modem, such as AT+CSQ, and prints each reply.
 * Ends with status 0 when the modem accepted them all, and with 1 at the first one it refused or
 * did not answer. */
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <string.h>

#include "fairlead/atcmd.h"

enum { kSeconds = 5 }; /* without a byte from the modem */

/* The lines of a reply end with CR LF, as a terminal would not like them. */
static void print_reply(const char* text) {
  for (; *text; ++text)
    if (*text != '\r') putchar(*text);
  putchar('\n');
}

static const char* reason(int result) {
  switch (result) {
    case 1:
      return "the line was hung up";
    case 4:
      return "no answer";
    case 5:
      return "refused";
    default:
      return strerror(errno);
  }
}

static int ask(atcmd_t* modem, const char* command) {
  const int result = atcmd_send(modem, command, kSeconds, NULL, 0);
  if (result == 0 || result == 5) print_reply(atcmd_lastack(modem));
  if (result == 0) return 1;
  fflush(stdout);
  fprintf(stderr, "ask_modem: %s: %s\n", command, reason(result));
  return 0;
}

int main(int argc, char** argv) {
  if (argc < 3) {
    fprintf(stderr, "usage: ask_modem DEVICE COMMAND...\n");
    return 2;
  }
  atcmd_t* modem = atcmd_open(argv[1], O_RDWR | O_NOCTTY | O_NONBLOCK, 0, NULL, NULL, ATCMD_ECHO);
  if (!modem) {
    fprintf(stderr, "ask_modem: %s: %s\n", argv[1], strerror(errno));
    return 1;
  }
  int accepted = 1;
  for (int i = 2; i < argc && accepted; ++i) accepted = ask(modem, argv[i]);
  atcmd_close(modem);
  return accepted ? 0 : 1;
}
