/* process.h - signal handlers, commands, process names, and lock files.
 *
 * Threads: for single-threaded programs. Handlers, signal mask and the process' one alarm
 * (ITIMER_REAL) change while a command runs and while a lock is waited for; all are put back before
 * the call returns, handlers with their flags. A caller's own alarm does not fire while the library
 * needs the alarm; it is then armed with what remains, and fires at once if it ran out meanwhile.
 * Locks may be waited for in any thread: only the first one of a process uses the alarm for it,
 * others ask for the lock every few milliseconds.
 * Fork: record locks belong to the process that took them; a child has none of its parent's.
 * Nothing here logs. */
#ifndef FAIRLEAD_MISC_PROCESS_H
#define FAIRLEAD_MISC_PROCESS_H

#include <fcntl.h>
#include <signal.h>
#include <sys/types.h>
#include <unistd.h>

#include "fairlead/api.h"

FAIRLEAD_API_BEGIN

/* What a signal does: a function, SIG_DFL or SIG_IGN. */
typedef void (*signal_function_t)(int);

/* Installs a handler so that a slow system call it interrupts fails with EINTR and is not begun
 * anew; no other signal is blocked while it runs. Every time-out of the library rests on that.
 * Returns the handler before, or SIG_ERR with errno EINVAL: no such signal, or one that can't be
 * caught. */
signal_function_t signal_register(int signal_number, signal_function_t handler);

/* A handler that does nothing, so that its only effect is to interrupt a blocking system call. */
void signal_handler(int signal_number);

/* Runs a command line (printf-style, cut at 4095 characters) in the shell and waits for its end.
 * SIGINT and SIGQUIT are ignored meanwhile, by the command too; SIGCHLD has its default action.
 * Returns what system(3) returns, a wait status for the macros of <sys/wait.h>, with its errno; -1
 * with errno EINVAL when the format is null or empty, -1 when the text can't be formatted. */
int system_string(const char* format, ...) __attribute__((format(printf, 1, 2)));

/* Runs a command (printf-style, cut at 4095 characters) without a shell and waits for its end.
 * The text is split at blanks and tabs; quotes mean nothing and are passed as they stand. The first
 * 20 words are passed, the others dropped. The first word, cut to 255 characters, is looked up in
 * PATH; argument zero is the word uncut.
 * seconds: a command that runs longer is killed (SIGKILL); 0 or below: no limit.
 * quiet: not 0: its standard input, output and error are /dev/null.
 * It starts with the caller's signal mask, and with what the caller ignores ignored. While it runs,
 * SIGINT and SIGQUIT are ignored by the caller, SIGCHLD has its default action, and SIGALRM is not
 * blocked.
 * Returns the exit code 0 to 255 with errno 0; 127 when there is no word or the program can't be
 * started; -1 with errno 0 when a signal ended the command; -1 with errno ETIMEDOUT when it was
 * killed. A wait that fails, as when a handler of the caller's has reaped the child, sends it
 * SIGTERM and returns 0 with errno from the wait: kept for callers that rely on it, so look at
 * errno. -1 with errno EINVAL when the format is null or empty, -1 when the text can't be
 * formatted, or with errno from vfork. */
int system_call(int seconds, int quiet, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/* Both do nothing; programs that were built against them must find them. */
void init_proc_title(void);
void set_proc_title(void);

/* Sets the name the kernel shows for this process; it keeps the first 15 characters.
 * Returns 0, or -1 with errno EINVAL: name null. */
int set_proc_name(const char* name);

/* Copies that name to a buffer of at least 16 bytes, ended with NUL.
 * Returns 0, or -1 with errno EINVAL: buffer null. */
int get_proc_name(char* buffer);

/* A record lock is named by these five: the descriptor; type 1 for a write lock (needs a descriptor
 * open for writing), any other for a read lock (open for reading); start, counted from the
 * beginning of the file (whence 0), the position (1) or the end (2); length in bytes, 0 for all
 * that follows. 0, 0, 0 is the whole file.
 * The kernel drops all locks a process has on a file when the process closes any descriptor of that
 * file, one from another open included. */

/* Returns the process that holds a lock in the way of this one, or -1: there is none (the caller's
 * own locks are never in the way), or the question failed. */
pid_t lockfd_get(int fd, int type, int start, int whence, int length);

/* Takes a lock; one the process has is replaced.
 * seconds: 0: no wait. Below 0: waits without limit. Above 0: waits that long at most. When the
 * lock is free, handlers, mask and alarm stay untouched.
 * Returns 1 when it was taken, else 0. With seconds 0, errno is the system's, EAGAIN or EACCES when
 * the lock is held elsewhere; in all other cases EBUSY, whatever the reason: the time is over, a
 * handler that does not restart calls interrupted the wait, the wait would never end (two processes
 * that wait for each other), or fd is no such descriptor. */
int lockfd_set(int fd, int type, int start, int whence, int length, int seconds);

/* Does not release the lock. What it does, and has always done, is to clear the close-on-exec flag
 * of the descriptor; type, start, whence and length mean nothing. The lock ends when the descriptor
 * is closed. Kept because daemons hold their lock for life, past this call.
 * Returns 1, or 0 with errno EBADF. */
int lockfd_free(int fd, int type, int start, int whence, int length);

/* Opens a file as open(2) does, close-on-exec, and locks all of it: with a read lock when flags say
 * read-only, else with a write lock. `seconds` as in lockfd_set. flags and mode go to open(2) as
 * they are: O_TRUNC empties the file before the lock is granted, and a FIFO waits for its other
 * end unless O_NONBLOCK is there.
 * Returns the descriptor, which lock_close closes; -1 with errno EINVAL when the path is null or
 * empty, or with errno from open(2), or as lockfd_set leaves it: EBUSY when another process kept
 * the lock too long (EAGAIN or EACCES with seconds 0). */
int lock_open(const char* path, int flags, mode_t mode, int seconds);

/* Closes a descriptor, which ends its lock. Returns 0; -1 with errno EINVAL when fd is negative.
 * A descriptor that is not open gives 0 too, with errno EBADF. */
int lock_close(int fd);

/* Makes reads and writes of a descriptor return at once (fd_nonblock), or wait (fd_block).
 * Returns 1, or 0 with errno: EINVAL fd negative | EBADF not open. */
int fd_nonblock(int fd);
int fd_block(int fd);

FAIRLEAD_API_END

#endif
