/* log.h - the log channel: one way in which a program and the library report, to syslog, to the
 * standard streams, or both.
 *
 * The mode says where messages go, the threshold which are written. Both are 32-bit words in the
 * default value store (state/gvalue.h) under the names "log_mode" and "log_level", read anew at
 * every message: a change there takes effect in every process at its next message. A program can
 * choose its own instead. While neither says anything, the mode is syslog only (0x200) and the
 * threshold 6.
 *
 * Threads: LogWrite may be called from any thread once the channel is set up; GlogOpen and
 * GlogClose belong before threads start. Fork: a child goes on with the channel of its parent. */
#ifndef FAIRLEAD_LOG_H
#define FAIRLEAD_LOG_H

#include <stdint.h>

#include "fairlead/api.h"

FAIRLEAD_API_BEGIN

/* The level word of LogWrite. Bits 0 to 2 are the severity, in a numbering of its own:
 *   number           0        1      2      3      4      5       6     7
 *   name             unknown  emerg  alert  error  warn   notice  info  debug
 *   syslog priority  debug    emerg  alert  err    warn.  notice  info  debug
 * When any bit from 8 up is set, the word without its low 8 bits is the mode for this one message.
 * Bits 6 and 7 are ignored. */
#define LOG_ERRNO 0x08u /* append errno, as it was when LogWrite was entered, and its text */
#define LOG_NOMEM 0x10u /* write a line "out of memory" before the message */
#define LOG_EXIT 0x20u  /* then end the process by exit(-1) */

/* The mode word; its other bits mean nothing. */
#define LOG_MODE_SYSLOG 0x200u  /* to syslog */
#define LOG_MODE_CONSOLE 0x400u /* to standard error; plain info and debug to standard output */
#define LOG_MODE_WHERE 0x1000u  /* append process id, source file and line */

/* Opens the channel, or changes it: `ident` is the name under which syslog shows the messages.
 * A mode or level of 0 is not given: a word given by an earlier call stays, otherwise the one in
 * the store counts. Syslog is opened, with the facility daemon, only when the mode goes to syslog;
 * otherwise it keeps the ident it was last opened with for messages that bring their own mode.
 * Returns 1; 0 with errno EINVAL: ident NULL, nothing is changed; 0 with errno ENOMEM: the channel
 * has lost its earlier ident and is otherwise as before. */
int GlogOpen(const char* ident, uint32_t mode, uint32_t level);

/* Closes the channel: the settings are those of the store again. May be called twice. */
void GlogClose(void);

/* Writes one message of the given severity. `file` and `line` say where it comes from: the bare
 * name of the source, at most 200 characters of it count. The formatted message is cut at 4094
 * characters. May be called before GlogOpen; syslog then shows its own choice of a name.
 *
 * The line reads MESSAGE, or MESSAGE(err:NUMBER/TEXT) with LOG_ERRNO, followed by {PID/FILE/LINE}
 * when the mode says where; on the console the name of the severity and ": " stand before it. It
 * goes to standard output when the severity is 6 or 7 and LOG_ERRNO is not set. The line that
 * LOG_NOMEM adds has the severity alert in syslog. Failures to write are ignored.
 *
 * A severity above the threshold (a larger number) writes nothing at all. Deliberate: such a
 * message does not end the process either, whatever LOG_EXIT says. It makes no system call and
 * allocates nothing once both settings are known.
 *
 * errno is afterwards as it was before, but ENOMEM when a message with LOG_NOMEM was written to the
 * console. */
void LogWrite(uint32_t word, const char* file, int line, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

FAIRLEAD_API_END

#endif
