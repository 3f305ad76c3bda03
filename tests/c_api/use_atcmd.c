/* use_atcmd.c - a modem on a pseudo-terminal whose reply waits in the line already. */
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include "check.h"
#include "fairlead/atcmd.h"

static int pieces;

static int count_pieces(atcmd_t* atcmd, const char* command) {
  if (command)
    ++pieces;
  else
    atcmd->received_length = 0;
  return 0;
}

void use_atcmd(void) {
  static const char reply[] = "AT+CSQ\r\r\n+CSQ: 20,99\r\n\r\nOK\r\n";
  const int modem = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  CHECK(modem >= 0 && grantpt(modem) == 0 && unlockpt(modem) == 0);
  CHECK(serial_n2speed(9600) == B9600);
  CHECK(serial_setdtr(-1, 1) == -1);

  atcmd_t* atcmd =
      atcmd_open(ptsname(modem), O_RDWR | O_NOCTTY, 9600, NULL, count_pieces, ATCMD_ECHO);
  CHECK(atcmd != NULL);
  if (atcmd) {
    CHECK(write(modem, reply, sizeof reply - 1) == (ssize_t)(sizeof reply - 1));
    CHECK(atcmd_send(atcmd, "AT+CSQ", 5, NULL, 0) == 0);
    CHECK_TEXT("+CSQ: 20,99\r\n\r\nOK\r", atcmd_lastack(atcmd));
    CHECK(pieces > 0);
    CHECK(atcmd_close(atcmd) == 1);
  }
  close(modem);
}
