/* service.h - services: long-running calls of adapters, started, watched and ended by name.
 *
 * A service is one interface call that runs in a daemon of its own: the request tool "he", found
 * through PATH, under the service's name, with the call's identifier as its one argument. What it
 * was started with stands in a record, "/tmp/.var/service/<name>.spid" (docs/services.md has its
 * bytes). The daemon holds an exclusive record lock (fcntl) on it for as long as it lives; no
 * process id is stored anywhere. A record whose lock is free is a dead service, which DaemonCheck
 * brings back. Somebody has to call DaemonCheck now and then.
 *
 * Names: not empty, without "/" (EINVAL), at most 232 characters (ENAMETOOLONG), so that nothing
 * outside of that folder is ever touched. A service whose name begins with "." or holds ".spid" can
 * be controlled, but is neither listed nor restarted. Functions that take a name as a format take
 * its arguments as printf does.
 *
 * A record that is shorter than 72 bytes, longer than 136 bytes and 128 KiB, without an object, or
 * no regular file counts as none; a link is not followed (ELOOP). Nothing in a record is trusted.
 *
 * A daemon may use these functions on itself: its lock is seen, and not lost. A program that opens
 * its own record by other means loses its lock when it closes it; that is how such locks work.
 *
 * Log: the source is "service". Lost memory is logged at level word 57, which ends the process.
 * Threads: single-threaded programs; the waits of ServiceStop and ServiceReset use the alarm of the
 * process, and handlers, signal mask and the caller's own alarm are put back. Fork: record locks
 * are not inherited; a child of a daemon is not the daemon. */
#ifndef FAIRLEAD_SERVICE_H
#define FAIRLEAD_SERVICE_H

#include <sys/types.h>

#include "fairlead/api.h"
#include "fairlead/talk/json.h"

FAIRLEAD_API_BEGIN

/* ---- For daemons. ServiceStart does this for the daemons it starts. ---- */

/* Makes the calling process the daemon of a record: opens or makes the file (mode 0666, less the
 * umask), locks it, and writes what the service was started with. parameters: their text, NULL for
 * none. Object and interface should have less than 64 characters: longer ones are written all the
 * same and run into the field behind them, kept for readers of such records.
 * Returns the open descriptor, which holds the lock until DaemonFree or the end of the process. It
 * is not close-on-exec: the lock survives a start of another program. Two registrations of one
 * record in one process share one lock, which ends with either.
 * -1 with errno: EINVAL path, object or interface NULL | EBUSY another process holds the lock; the
 * record stays as it was | that of the failing step; the record is empty then. */
int DaemonRegister(const char* path, const char* object, const char* interface,
                   const char* parameters);

/* Releases the lock and closes the descriptor; the record stays, its service is dead.
 * Returns 0, or -1 with errno EINVAL: fd negative. */
int DaemonFree(int fd);

/* ---- Starting and watching ---- */

/* Starts object.interface[parameters] as a daemon: parameters formatted from format, which is NULL
 * for a call without any. The daemon has a session of its own and the standard streams on
 * /dev/null. Besides those it gets its record's descriptor and no other one, whatever the caller
 * has open and inheritable. Environment, working folder, umask, signal mask and ignored signals
 * are the caller's.
 * Returns 0 once the program has been started, or could not be (waiting 5 seconds at most): only
 * the log tells whether it was. The process that ends on the way is waited for; a SIGCHLD handler
 * of the caller's runs for it. Should the second of two forks fail, the daemon stays a child of the
 * caller.
 * -1 with errno: EINVAL object or interface NULL, or a bad name | ENAMETOOLONG | that of fork.
 *
 * Logged: 3 "fork error for ServiceStart( SERVICE )" with errno. By the daemon, which then ends
 * with status 127:
 *   4  "DaemonRegister(SERVICE:OBJECT.INTERFACE) failed, may the server already start": it runs
 *      already, and that daemon is left alone
 *   3  "server( SERVICE:OBJECT.INTERFACE ) start failed", with errno: no program "he", or a format
 *      that the formatter refuses
 *   1  "out of memory"
 * By the daemon, which goes on:
 *   4  "daemon error for ServiceStart( SERVICE:OBJECT.INTERFACE )", with errno: the second fork
 *   4  "setsid error for ServiceStart( SERVICE:OBJECT.INTERFACE )", with errno
 *   4  "DaemonRegister(SERVICE:OBJECT.INTERFACE) file handler operation failed", with errno: it
 *      runs without a record, so nothing finds it or restarts it
 *   7  "start the serice( SERVICE:OBJECT.INTERFACE )"; the word is misspelt for the sake of scripts
 *      that look for it */
int ServiceStart(const char* service, const char* object, const char* interface, const char* format,
                 ...) __attribute__((format(printf, 4, 5)));

/* Restarts every dead service, in alphabetical order, and logs at level 7
 * "server( SERVICE ) abnormal terminate". Deliberate: stored parameters are taken for a format
 * again, so "%%" becomes "%"; nothing else in them means anything. A service whose record has no
 * interface is logged but not started.
 * Returns 0, whatever became of the starts; -1 with errno when the folder cannot be read. */
int DaemonCheck(void);

/* ---- Control ---- */

/* Ends a service and removes its record. The daemon gets SIGTERM, after 2 seconds another one,
 * after 3 more SIGKILL; each wait is over when the daemon is. After SIGKILL the kernel has 2
 * seconds to end it. A daemon that calls this for itself gets one SIGTERM and is not waited for.
 * A record that a daemon holds even then, such as one that was started meanwhile, is not removed.
 * Returns 0 when a daemon was found and signalled. -1 with errno: ENOENT no record | ESRCH no
 * daemon, the record is removed | EPERM the daemon must not be signalled by the caller; the record
 * is empty then, so that it is not restarted, but still there | EINVAL, ENAMETOOLONG a bad name. */
int ServiceStop(const char* format, ...) __attribute__((format(printf, 1, 2)));

/* Ends the daemon in the same way, keeps the record and calls DaemonCheck, which starts the service
 * anew, and any other dead one. A daemon that calls this for itself gets one SIGTERM; the next
 * check starts it anew. Returns as ServiceStop: -1 with ESRCH for a dead service that is restarted
 * all the same. Without a record nothing is checked. */
int ServiceReset(const char* format, ...) __attribute__((format(printf, 1, 2)));

/* Empties the record: the service is no longer restarted, nor described, and a running daemon is
 * left alone. ServiceStop still ends it. Returns 0, or -1 with errno: EINVAL, ENAMETOOLONG a bad
 * name | ENOENT no record | that of open.
 */
int ServiceOff(const char* format, ...) __attribute__((format(printf, 1, 2)));

/* ---- Looking ---- */

/* The process id of the daemon, or -1: none, no record, or a bad name. */
pid_t ServicePid(const char* format, ...) __attribute__((format(printf, 1, 2)));

/* A new document, which the caller frees with TalkFree:
 *   "status"     "live", or "die"
 *   "pid"        of a live one, in decimal
 *   "adp"        the object
 *   "func"       the interface; not there when the record has none
 *   "parameter1" and so on: the parameters, split as by ParamAnalysis, as strings or objects; one
 *                that is empty, or begins like an object and is none, is left out
 * NULL with errno: ENOENT no record, or none that counts | EINVAL, ENAMETOOLONG a bad name | that
 * of open. */
vessel_t* ServiceInfo(const char* format, ...) __attribute__((format(printf, 1, 2)));

/* A new document with such a document for every service, by name, in alphabetical order; services
 * without one are left out. Empty when the folder cannot be read. NULL with errno ENOMEM. */
vessel_t* ServiceList(void);

FAIRLEAD_API_END

#endif
