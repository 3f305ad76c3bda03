/* clock.h - the time of day and the time since boot, as text.
 *
 * Threads: one thread at a time for time_getting, which runs a command and so changes the signal
 * state as process.h says. Fork: nothing is kept. Nothing here logs.
 * Each function answers in the caller's buffer, cut to size - 1 characters, and returns it. A null
 * buffer or a size below 1 is refused: null with errno EINVAL. */
#ifndef FAIRLEAD_MISC_CLOCK_H
#define FAIRLEAD_MISC_CLOCK_H

#include "fairlead/api.h"

FAIRLEAD_API_BEGIN

/* The local time as "hours:minutes:seconds:month:day:year", such as "07:05:09:12:31:2026", for
 * which size must be 21 at least: a smaller buffer loses one character more than it has to.
 * The command date(1) writes it to /tmp/.now, which is rewritten by each call and stays. A link or
 * any other thing that is no plain file is removed first; who can put one there in that very moment
 * is not kept from it.
 * Null when the command fails or is missing (errno stays), or when the file can't be read back,
 * with errno as read_string leaves it. */
char* time_getting(char* buffer, int size);

/* The time since boot in whole seconds, modulo 2 to the power of 32. livetime_getting splits it
 * into "hours:minutes:seconds:days", such as "01:01:01:1" for 90061 seconds. Null with errno as
 * read_string leaves it when /proc/uptime can't be read; null with errno unchanged when it holds no
 * ".". */
char* uptime_getting(char* buffer, int size);
char* livetime_getting(char* buffer, int size);

/* The same, counted from an earlier answer of uptime_getting. A start that lies ahead wraps around:
 * one second ahead is 4294967295 seconds ago. Text that is no number counts as 0.
 * Null also with errno EINVAL: start null. */
char* uptime_count(const char* start, char* buffer, int size);
char* livetime_count(const char* start, char* buffer, int size);

FAIRLEAD_API_END

#endif
