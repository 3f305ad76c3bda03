/* modem.c - a command to a modem that a child plays on a pseudo-terminal. */
#include <fcntl.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "fairlead/atcmd.h"
#include "smoke.h"

/* Echoes one command and answers it. */
static void play(int modem) {
  char command[64] = "";
  size_t length = 0;
  while (length < sizeof command - 1 && !strchr(command, '\n')) {
    const ssize_t got = read(modem, command + length, sizeof command - 1 - length);
    if (got <= 0) _exit(1);
    length += (size_t)got;
  }
  static const char reply[] = "\r\n+CSQ: 20,99\r\n\r\nOK\r\n";
  const int told = write(modem, command, length) == (ssize_t)length &&
                   write(modem, reply, sizeof reply - 1) == (ssize_t)sizeof reply - 1;
  _exit(told && strcmp(command, "AT+CSQ\r\n") == 0 ? 0 : 1);
}

void smoke_modem(void) {
  const int modem = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (!CHECK(modem >= 0 && grantpt(modem) == 0 && unlockpt(modem) == 0)) return;
  atcmd_t* line = atcmd_open(ptsname(modem), O_RDWR | O_NOCTTY, 9600, NULL, NULL, ATCMD_ECHO);
  if (!CHECK(line != NULL)) return;

  const pid_t player = fork();
  if (player == 0) play(modem);
  CHECK(atcmd_send(line, "AT+CSQ", 20, NULL, 0) == 0);
  CHECK_TEXT("+CSQ: 20,99\r\n\r\nOK\r", atcmd_lastack(line));
  int status = -1;
  CHECK(waitpid(player, &status, 0) == player && status == 0);
  CHECK(atcmd_close(line) == 1);
  close(modem);
}
