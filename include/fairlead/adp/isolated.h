/* isolated.h - requests served in a forked child, and the channel over which its answer comes back.
 *
 * The three calls do what AdpSet, AdpGet and AdpCall do, but in a child process: an adapter that
 * crashes, leaks or corrupts memory harms nobody but that child. What the adapter changes in memory
 * vanishes with the child; what it writes to files stays. An adapter that ends its child by exit(3)
 * runs no exit handler of the caller's. The caller waits without limit for a
 * child that neither answers nor ends; once a SIGCHLD has been seen, no wait lasts more than 3
 * seconds.
 *
 * Where one of them gives null, or 0, errno tells why: ECHILD a signal ended the child before it
 * had answered (a crash), EINVAL it answered nothing or an object that does not parse, otherwise
 * what socketpair, fork or memory gave.
 *
 * Logged under the source "adp", NAME being the object, or "<object>.<interface>" for a call. The
 * child logs to syslog as NAME.
 *   3  with errno: "socketpair error for AdpSecureSet( NAME )", and so for the other two
 *   3  with errno: "vfork error for AdpSecureSet( NAME )", and so for the other two; the word is
 *      older than the fork, and kept for scripts that look for it
 *   3  "NAME terminate by signal %d", or when the child had closed the channel before
 *      "AdpSecureSet( NAME ) terminate by signal %d", and so for AdpSecureGet
 *   4  "AdpSecureGet( NAME ) return wrong format data", or for a call "NAME return wrong format
 *      data": the answer has no text form
 *   4  "sigprocmask( get the original signal mask ) failed", "sigprocmask( set a new signal mask )
 *      failed", "sigprocmask( reset SIGCHLD ) failed": the call goes on
 *
 * Signals: for the length of a call SIGCHLD is blocked except inside the wait, and `signal_handler`
 * is its handler. Afterwards the caller's mask is back, and its SIGCHLD handler too, unless that
 * was the default action: then the library's empty handler stays installed (kept for programs that
 * rely on interrupted waits afterwards). When the child cannot be forked, neither is put back:
 * SIGCHLD stays blocked and the empty handler stays installed. A caller that keeps SIGCHLD blocked
 * finds it pending afterwards when it was pending before. Threads: handler and mask belong to
 * the process, so two of these calls must not run at the same time. Fork: safe in a child; it forks
 * children of its own. */
#ifndef FAIRLEAD_ADP_ISOLATED_H
#define FAIRLEAD_ADP_ISOLATED_H

#include <stdint.h>
#include <sys/select.h> /* sigset_t, also in strict C */
#include <sys/types.h>

#include "fairlead/api.h"
#include "fairlead/talk/path.h"

FAIRLEAD_API_BEGIN

/* Reads the answer of the child `pid` from `fd`, which becomes non-blocking and stays the caller's
 * to close.
 *
 * The answer ends at the end of the stream, at a read that ends with a 0 byte, at a failed wait, or
 * 3 seconds after the last bytes once the child has ended. Line ends, carriage returns and blanks
 * around it are dropped. Its first byte 0x01 means TALK_DONE and 0x02 TALK_FAILED; any other text
 * becomes a new document as by StringTalk.
 *
 * wait_mask: the signal mask inside a wait; it must let SIGCHLD through. outside_mask: the mask
 * otherwise, in force when the call returns. name: names the child in the message about its death
 * by a signal. *reaped becomes 1 when the child was seen to end and was waited for, -1 when a
 * signal killed it (logged at level 3
 * "%s terminate by signal %d"), and is left alone otherwise: the caller then waits for the child
 * itself. Any interrupted wait counts as the child's end, even one by another signal or another
 * child: *reaped is then 1 although the child may still run (kept for callers that rely on the
 * bounded wait that follows).
 *
 * Returns a new document (free it with TalkFree), TALK_DONE, TALK_FAILED, or null: nothing was
 * answered, the answer does not parse (errno EINVAL), or reading or memory failed. */
talk_t* pipe_fdtalk(int fd, const sigset_t* wait_mask, const sigset_t* outside_mask,
                    const char* name, pid_t pid, int32_t* reaped);

/* AdpSet in a child. Returns 1 when the adapter's set returned 1, else 0. Here and below no object
 * name at all is refused with errno EINVAL, and logged at level 3 as "argument error". */
int32_t AdpSecureSet(slash_t* object, const char* object_text, slash_t* path, const char* path_text,
                     talk_t* value, const char* value_text);

/* AdpGet in a child. Returns a new document or null, as AdpGet does; null also when the child died.
 */
talk_t* AdpSecureGet(slash_t* object, const char* object_text, slash_t* path,
                     const char* path_text);

/* AdpCall in a child, under the process name "<object>.<interface>". A null interface name: null at
 * once, errno EINVAL. Returns what AdpCall returns; null also when the child died. */
talk_t* AdpSecureCall(slash_t* object, const char* object_text, const char* name,
                      param_t* parameters, const char* format, ...)
    __attribute__((format(printf, 5, 6)));

FAIRLEAD_API_END

#endif
