/* handle.h - adapter handles, and calls that are served in the caller's process.
 *
 * A handle is made for one object path (AdpFileOpen), serves any number of calls (AdpAb...,
 * AdpIf...) and is closed (AdpFileClose). AdpSet, AdpGet, AdpCall and AdpCallList do all three.
 * Module adapters are served by what the module exports, script adapters by their script (shell.h),
 * all other objects by the configuration store (config.h).
 *
 * Object paths, and configuration paths inside an object, come as a record or as a text; the record
 * wins. Neither, for a configuration path, addresses the whole object. At most 255 characters of an
 * object path count.
 *
 * The result of a call of an interface is null (nothing to report), TALK_DONE, TALK_FAILED, or a
 * new document, which the caller frees with TalkFree. A script may answer a get or a listing with
 * TALK_DONE or TALK_FAILED as well, and a module's get with whatever it likes: compare with the two
 * before you free.
 *
 * Messages are logged under the source "adp". A call that runs out of memory logs "out of memory"
 * (level word 57), which ends the process unless the threshold filters it out; then the call fails.
 * A refused argument sets errno to EINVAL.
 *
 * Threads: one handle, one thread. The list of loaded modules and the entry points that it keeps
 * are not guarded: opens, closes and first calls must not run at the same time. Fork: a child has
 * its own copy of all of it, with the modules loaded so far. */
#ifndef FAIRLEAD_ADP_HANDLE_H
#define FAIRLEAD_ADP_HANDLE_H

#include <stdint.h>

#include "fairlead/api.h"
#include "fairlead/state/glink.h"
#include "fairlead/talk/path.h"

FAIRLEAD_API_BEGIN

/* ---- What a module exports ----
 *
 * A module is a shared object <project>/<adapter>.adp with up to four variables, named after its
 * own path; for "/prj/net/wan.adp":
 *
 *   adp_set_t net_wan__set;              without it the configuration store takes the values
 *   adp_get_t net_wan__get;              without it the configuration store gives them
 *   adp_interface_t *net_wan__if_array;  without it there are no interfaces
 *   int32_t net_wan__if_size;            the number of records in the array
 *
 * It is loaded with immediate binding and local scope, once in a process, and never unloaded. */

/* Sets the value at path (null: the whole object). A null value means delete. The value stays the
 * caller's. Returns 1 for success, anything else for failure. */
typedef int32_t (*adp_set_t)(const char* object, slash_t* path, talk_t* value);

/* Returns the value at path (null: the whole object) as a new document of the caller's, or null. */
typedef talk_t* (*adp_get_t)(const char* object, slash_t* path);

/* Serves one interface; parameters may be null. Returns null, TALK_DONE, TALK_FAILED, or a new
 * document of the caller's. */
typedef talk_t* (*adp_call_t)(const char* object, param_t* parameters);

/* One interface. A record without a name or without a function ends the array, whatever the number
 * of records says. The texts opt and intro may be null; they are listed and not interpreted. */
typedef struct adp_interface {
  const char* name;
  adp_call_t function;
  const char* opt;
  const char* intro;
} adp_interface_t;

/* ---- Records ---- */

/* A loaded module, shared by all handles on its file. Its texts are cut to their field and always
 * terminated. */
typedef struct adp_module {
  int32_t references; /* open handles; at 0 the module stays loaded all the same */
  glink_t link;
  char file[256];
  char project[64]; /* the last folder of the file's path */
  char adapter[64]; /* the file's name without what follows its last "." */
  void* library;
  adp_set_t set; /* this and what follows is looked up at first use */
  adp_get_t get;
  adp_interface_t* interface_table;
  int32_t interface_count;
} adp_module_t;

/* An open object. Its texts are cut to their field and always terminated. */
typedef struct adp {
  int32_t type;         /* an ADP_ code, see project.h */
  char name[256];       /* the object path; a text as it was given, a record joined */
  char file[256];       /* the adapter's file; empty for ADP_PURE */
  adp_module_t* module; /* for ADP_DYN and ADP_PRJ, else null */
} adp_t;

/* ---- Calls on a handle ---- */

/* Finds the adapter of an object, and loads its module unless that has happened before. Returns a
 * new handle, or null, logged at level 3 but for a failed load:
 *   "argument error"                    neither record nor text, or a record without segment
 *   "get the adp path failed"           a text without segment
 *   "cannot parse the project identify and padp identify by path(%s)"
 *                                       a bound module file not two folders deep
 *   "cannot load the file(%s)"          level word 11: with errno, ENOEXEC where no system call
 *                                       failed, as with a module for another machine */
adp_t* AdpFileOpen(slash_t* object, const char* object_text);

/* Closes a handle. Null: nothing. */
void AdpFileClose(adp_t* adp);

/* Sets the value at the path: the node, or else what StringTalk makes of value_text. Without
 * either, and when the text gives none (empty, or begins with "{" and is no object), the value is
 * null: delete; a lack of memory does not count as such. The node stays the caller's. Returns 1 for
 * success; 0 or another value for failure, 0 with errno EINVAL for a null handle. */
int32_t AdpAbSet(adp_t* adp, slash_t* path, const char* path_text, talk_t* value,
                 const char* value_text);

/* Returns the value at the path, or null. A null handle: null with errno EINVAL. */
talk_t* AdpAbGet(adp_t* adp, slash_t* path, const char* path_text);

/* Lists the interfaces of the object: for each name an object with "opt" and "intro", as far as
 * they are there. A later record of the same name takes the earlier one's place. Returns a new
 * object, empty when the module has no interfaces; what a script answers; or null:
 *   "cannot find the symblic(%s) at %s"          level 3: the module exports no array or no size
 *   "cannot list the pure config adp(%s)"        level 7
 *   without a message for an array that is null, with errno EINVAL for a null handle and ENOMEM
 *   when memory runs out */
vessel_t* AdpIfList(adp_t* adp);

/* Calls an interface by its exact name, with the parameter list, or when that is null with what
 * ParamAnalysis makes of the formatted text; a null or empty format: no parameters. Returns the
 * interface's result, or null:
 *   "cannot find the symblic(%s) at %s for %s.%s"  level 3: the module exports no array or size, or
 *                                                  a null array, or a size below 1
 *   "cannot find the interface(%s) at %s for %s"   level 3: no such interface
 *   "cannot call interface(%s) at the pure config adp(%s)"  level 7
 *   without a message for a format that the formatter refuses (errno by vsnprintf), and with errno
 *   EINVAL for a null handle or name */
talk_t* AdpIfCall(adp_t* adp, const char* name, param_t* parameters, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

/* A handle that names a module's type but holds no module fails each of the four calls with "adp
 * library member cannot be null when type is ADP_DYN/ADP_PRJ" at level 3; one of an unknown type
 * fails without a message. AdpFileOpen makes neither. */

/* ---- One call: open, call, close. Where opening fails: 0 or null. ---- */

int32_t AdpSet(slash_t* object, const char* object_text, slash_t* path, const char* path_text,
               talk_t* value, const char* value_text);
talk_t* AdpGet(slash_t* object, const char* object_text, slash_t* path, const char* path_text);

/* Logs at level 4 "cannot open the corrent adp file for %s.%s" when opening fails. */
talk_t* AdpCall(slash_t* object, const char* object_text, const char* name, param_t* parameters,
                const char* format, ...) __attribute__((format(printf, 5, 6)));
vessel_t* AdpCallList(slash_t* object, const char* object_text);

FAIRLEAD_API_END

#endif
