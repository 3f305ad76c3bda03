/* shell.h - adapters written as scripts (".ash"): one run of the script for each request.
 *
 * The script is run as a child with its path as only argument, with the request in its environment:
 *
 *   variable            set       get       list      call
 *   pipeid              the number of the descriptor that takes the answer
 *   adp                 object    object    -         object
 *   interface           =         :         .         interface name
 *   config              the configuration path; removed without one       -         -
 *   value               the value's text; removed without one   -         -         -
 *   paramter_count      -         -         -         number of parameters, -1 without a list
 *   paramter0 ...       -         -         -         see ShellIfCall
 *
 * "-" means that a variable of that name in the caller's own environment reaches the script
 * unchanged. The spelling "paramter" is part of the contract. The script writes its answer to the
 * descriptor `pipeid` and closes it or ends; blanks and line ends around the answer are dropped.
 * The single byte 0x01 means done, 0x02 failed, text that begins with "{" an object, other text a
 * string, nothing null. Its exit status is not looked at. A process that the script leaves behind
 * with the descriptor open holds the caller for 3 seconds after the last bytes at most.
 *
 * Signals, threads, fork, errno: as for the isolated calls (isolated.h). A null handle, script or
 * interface name is refused with errno EINVAL.
 *
 * Logged under the source "shell"; NAME is the object, the script's path for a list, and
 * "<object>.<interface>" for a call. The child logs to syslog as NAME.
 *   3  with errno: "socketpair error for ShellAbSet( NAME )", and so for the others
 *   3  with errno: "vfork error for ShellAbSet( NAME )", and so for the others; the word is kept as
 *      in isolated.h
 *   3  with errno, by the child: "execl the %s error", with the script's path
 *   3  "NAME terminate by signal %d", under the source "adp": a signal ended the script;
 *      "ShellAbSet( NAME ) terminate by signal %d" when the channel had ended before
 *   4  as for the isolated calls: a signal mask that cannot be had or set; the call goes on */
#ifndef FAIRLEAD_ADP_SHELL_H
#define FAIRLEAD_ADP_SHELL_H

#include "fairlead/adp/handle.h"
#include "fairlead/api.h"
#include "fairlead/talk/path.h"

FAIRLEAD_API_BEGIN

/* Hands the script a value for the path (null: the whole object); a null value means delete.
 * Returns 1 when the script answered the byte 0x01, else 0; a document it answers is dropped. */
int ShellAbSet(adp_t* adp, slash_t* path, talk_t* value);

/* Asks the script for the value at the path (null: the whole object). Returns what it answered: a
 * new document (free it with TalkFree), TALK_DONE, TALK_FAILED, or null. */
talk_t* ShellAbGet(adp_t* adp, slash_t* path);

/* Asks the script at path `script` for the list of its interfaces; an object is expected. Returns
 * what it answered. */
talk_t* ShellIfList(const char* script);

/* Calls an interface of the script. Of N parameters, paramter1 to paramter<N-1> hold the first N -
 * 1; paramter0 is there and empty, and the last parameter is not handed over (kept for scripts that
 * rely on it). An empty parameter is an empty variable. Of a list without parameters, which is what
 * an identifier such as object.name makes, paramter_count says 0 and no other variable is set.
 * Returns what the script answered; null at once for a null interface name. */
talk_t* ShellIfCall(adp_t* adp, const char* name, param_t* parameters);

FAIRLEAD_API_END

#endif
