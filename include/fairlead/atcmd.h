/* atcmd.h - text commands to a modem or radio module on a serial line, and their replies.
 *
 * A device is opened, which locks it and makes its line raw; commands are sent one by one, each
 * until its reply is complete; then it is closed, which puts the line back as it was. No call
 * blocks for ever: while one runs, the signals that tell of a hang-up, a time-out or an end are
 * caught, and make it fail instead of the process. Handlers, signal mask and a pending alarm of the
 * caller's are afterwards as they were before.
 *
 * Threads: one operation at a time in a process, whatever the handle. Deliberate: a process keeps
 * one copy of line settings, those found by its latest atcmd_open; with two devices open at once,
 * both get that copy when they are closed.
 * Fork: a child must not use its parent's handle; the device stays locked for the parent.
 * Messages go to the log channel (log.h) under the source name "atcmd": each caught signal and each
 * failed call as an error, the rest for debugging. */
#ifndef FAIRLEAD_ATCMD_H
#define FAIRLEAD_ATCMD_H

#include <signal.h>
#include <stdint.h>
#include <sys/select.h>
#include <termios.h>

#include "fairlead/api.h"

FAIRLEAD_API_BEGIN

/* Flags of an exchange. */
#define ATCMD_TRACE 2u /* log the command and everything received, as debug messages */
#define ATCMD_ECHO 4u  /* the device echoes commands: the reply is what follows the echo */

typedef struct atcmd atcmd_t;

/* Told what happens to the receive buffer. With a null command, the buffer is no longer needed:
 * before a command is sent, and after a complete exchange. With the command, something was added to
 * it. The result is ignored.
 * The default one empties the buffer when the command is null, and does nothing otherwise. */
typedef int (*atcmd_notify_t)(atcmd_t* atcmd, const char* command);

/* Decides whether what was received completes the exchange: 0 positive, 5 negative; -1 or -2 to
 * give up; any other result to go on reading. command, expect and flags are those of atcmd_send.
 * Neither callback may call atcmd_open, atcmd_send or atcmd_close.
 *
 * The default parser compares pieces of text, not lines, wherever they stand in the reply:
 *   - with ATCMD_ECHO, nothing counts before the echo has arrived as a whole;
 *   - the reply is positive when it holds `expect`, "OK" when that is null, and the line ends; an
 *     empty `expect` is never found;
 *   - otherwise it is negative when it holds "ERROR" and that line ends.
 * The last acknowledgement is then the reply up to that line, without its LF but with the CR before
 * it, and without the NULs that a bad line brings. Deliberate, and relied upon by existing
 * programs: an information line that contains the letters OK completes the exchange early; a
 * command that contains "ATD" is complete, with the last acknowledgement "OK", at the first piece
 * of text in which the echo is there and neither of the two is.
 * Without a command, expect null or empty: anything received is positive, and lost; but a line
 * with "ERROR" in it is negative, and kept. Else the exchange lasts until the line with `expect` in
 * it has ended. */
typedef int (*atcmd_parser_t)(atcmd_t* atcmd, const char* command, const char* expect,
                              uint32_t flags);

/* What atcmd_open makes and atcmd_close frees. Callbacks read and change the receive buffer. */
struct atcmd {
  int fd;                          /* the device, -1 when not open */
  int received_length;             /* bytes in the receive buffer, at most 1023 */
  char receive_buffer[1024];       /* what was received; a NUL stands behind it */
  char last_acknowledgement[1024]; /* what atcmd_lastack gives */
  uint32_t default_flags;
  atcmd_notify_t notify;
  atcmd_parser_t parser;
  sigset_t open_mask;  /* blocked while the device is opened or closed */
  sigset_t send_mask;  /* blocked during an exchange */
  sigset_t saved_mask; /* the caller's, while an operation runs */
};

/* Opens a device, locks it against other processes and makes its line raw: eight bits, no parity,
 * one stop bit, hardware flow control, modem lines ignored. DTR is off for one second meanwhile, so
 * the call takes that long at least.
 * flags: those of open(2), as they are; a device whose carrier is off needs O_NONBLOCK, and a
 * program that leads a session O_NOCTTY.
 * speed: bits per second; 0, or one that serial_n2speed does not know, leaves the speed alone.
 * Deliberate, for the devices that are run this way: speeds from 57600 on, asked for or found, come
 * out as the low speed that shares their code, 57600 as 50 and 115200 as 75 bits per second. Who
 * needs such a speed sets it on `fd` afterwards.
 * parser, notify: null for the default one. default_flags: 0 for ATCMD_TRACE | ATCMD_ECHO.
 * SIGHUP, SIGALRM, SIGTERM, SIGINT, SIGQUIT and SIGPIPE are caught; after 5 seconds SIGALRM comes.
 * A line whose settings can't be read or set is used as it is.
 * Returns the handle, which atcmd_close releases, or null with errno: EINVAL path null or empty |
 * EINTR a signal was caught; the line is then as it was before | EBUSY another process has kept
 * the device locked for one second | those of open(2). A lack of memory is logged and ends the
 * process (ENOMEM where the log threshold filters that message). */
atcmd_t* atcmd_open(const char* path, int flags, int speed, atcmd_parser_t parser,
                    atcmd_notify_t notify, uint32_t default_flags);

/* Sends a command, followed by CR LF, and reads until the parser is content.
 * command: cut, its end included, at 1023 characters. Null or empty: nothing is sent, for waiting
 * for a line that comes unasked.
 * seconds: how long to wait each time nothing arrives; below 0 is refused (-1, EINVAL). expect:
 * handed to the parser. flags: 0 for those of the handle.
 * SIGHUP, SIGALRM and SIGTERM are caught and end the exchange, a caller's alarm that runs out
 * included. Writing the command may take 10 seconds.
 * Returns:
 *    0  positive;
 *    1  end of file: the line was hung up;
 *    4  nothing arrived in time; what came before stays in the receive buffer;
 *    5  negative; or the reply does not fit into 1023 bytes; or part of the command only was sent;
 *   -1  with errno: EINTR a signal was caught, whatever else happened | from the call that failed;
 *   -2  with errno EINVAL: handle null or not open. The parser may give it too.
 * After 1, 4, and 5 other than from the parser, what lay in the line unread is dropped. */
int atcmd_send(atcmd_t* atcmd, const char* command, int seconds, const char* expect,
               uint32_t flags);

/* Returns the text of the last complete reply, "" before the first. It belongs to the handle and
 * lives until its next exchange. Null with errno EINVAL: handle null. */
const char* atcmd_lastack(atcmd_t* atcmd);

/* Puts the line settings back, closes the device, which ends its lock, and frees the handle,
 * whatever the result. The signals of atcmd_open are caught; after 5 seconds SIGALRM comes.
 * Returns 1; 0 with errno EINTR when a signal was caught, 0 with errno EINVAL when the handle is
 * null. */
int atcmd_close(atcmd_t* atcmd);

/* Returns the code B50 to B921600 of a speed in bits per second; 0 when speed is 0, or is none of
 * the usual ones, which is logged. */
speed_t serial_n2speed(int speed);

/* Raises the DTR line of a serial device, or drops it when `on` is 0.
 * Returns 0, or -1 with errno from ioctl(2): EBADF | ENOTTY no such line, as on a pseudo-terminal.
 */
int serial_setdtr(int fd, int on);

FAIRLEAD_API_END

#endif
