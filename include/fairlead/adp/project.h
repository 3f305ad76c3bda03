/* project.h - where adapters are found: the project tree, the registry of dynamic adapters, and the
 * other fixed paths of a project and of the run-time directory.
 *
 * An object is named by a path such as net/wan. Its adapter is a file: a module "/prj/net/wan.adp",
 * a script "/prj/net/wan.ash", or whatever file of the project tree the registry binds the object
 * to. An object without a file is pure configuration (config.h). The registry is the file
 * "/tmp/.var/dadp.cache"; it lasts until the device restarts and is read anew by every call
 * (docs/registry.md).
 *
 * Results: texts go to buffer[0..size). Without a buffer, or with a size below 1, each function
 * uses a buffer of 256 bytes of its own; that text lives until the next such call of the same
 * function. Documents are new and the caller's (free them with TalkFree). Failures are null, 0 or
 * -1; errno is what the failing step left. Nothing is logged.
 *
 * Threads: the own buffers are shared and not guarded. Changes of the registry (DynAdpCreate,
 * DynAdpDelete) belong to one thread at a time: file locks do not keep the threads of a process
 * apart. All the rest may be called from any thread. Two changes by two processes at the same time
 * can lose one of them; a reader always sees a whole file. Fork: safe. */
#ifndef FAIRLEAD_ADP_PROJECT_H
#define FAIRLEAD_ADP_PROJECT_H

#include <stdint.h>

#include "fairlead/api.h"
#include "fairlead/talk/path.h"

FAIRLEAD_API_BEGIN

/* Who serves an object. The gaps between the numbers are kept as they always were. */
enum {
  ADP_DYN = 1,   /* a module that the registry names */
  ADP_PRJ = 3,   /* a module of the project tree */
  ADP_SHELL = 5, /* a script, from either */
  ADP_PURE = 6   /* the configuration store */
};

/* ---- The project tree ---- */

/* Every entry of "/prj", file or folder, in the order the folder yields them, without those that
 * begin with ".": name and full path. Null when "/prj" cannot be opened, or memory runs out. */
vessel_t* ProjectList(void);

/* "/prj/<project>", cut where the buffer ends; whether it exists is not asked. A null project:
 * null. */
char* ProjectPath(const char* project, char* buffer, int size);

/* The adapters of a project, in the order the folder yields them: "<project>/<stem>" and the full
 * path of the file. The stem ends where ".adp", or else ".ash", first occurs anywhere in the name,
 * so wan.adp.old is listed as <project>/wan too (kept for tools that look for such files); of two
 * files with one stem the later one is listed, in the earlier one's place. A null project: the
 * listings of all projects in one. Null when the project's folder cannot be opened, or memory runs
 * out. */
vessel_t* ProjectAdpList(const char* project);

/* The same for configuration files, ".cfg". */
vessel_t* ProjectCfgList(const char* project);

/* The existing file "/prj/<path>.adp", or else "/prj/<path>.ash". Null when there is neither, when
 * the path is null or has no segment, or one that is "..", so that no code outside of "/prj" is
 * found, or when the name does not fit the buffer, whose content is then undefined. Whether the
 * file may be read or run is not asked. */
char* ProjectAdpPath(slash_t* path, char* buffer, int size);

/* "/prj/<project>/<formatted text>", when that exists and is no directory. Null otherwise, and when
 * project or format is null or the name does not fit the buffer. */
char* ProjectOscPath(char* buffer, int size, const char* project, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

/* ---- The run-time directory ---- */

/* The directory "/tmp/.var/<name>", or with a format the path of a file in it, cut where the buffer
 * ends. The directory exists afterwards, made with mode 0770 (less the umask) where it did not; a
 * plain file in its place is removed. "/tmp/.var" itself is never made. Null when name is null, has
 * a segment ".." (errno EINVAL), does not fit the buffer, or the directory cannot be made. What the
 * format makes is not looked at. */
char* ProjectVarPath(char* buffer, int size, const char* name, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

/* ---- The registry ---- */

/* Binds the object path to the adapter <project>/<name>, whose file must exist under "/prj". What
 * was bound to a longer path below the object, or to a path that the object's leads through, is
 * dropped: a path and its extension cannot both be bound. At most 255 characters of each text
 * count. A missing or broken registry is replaced. Returns 1 when the new registry is on disk, else
 * 0 and the registry is as it was: an argument is null or has no segment, there is no such adapter,
 * the registry cannot be read for the moment (locked for a second, no memory), the save failed, or
 * a text is not in escaped form (json.h): with a bare double quote in it all bindings would be
 * lost.
 */
int DynAdpCreate(const char* object, const char* adapter);

/* Removes the binding of the object path, or all bindings below it. Objects left empty stay in the
 * file. Returns 1 when the new registry is on disk, else 0: null, nothing bound there, or a failed
 * save. */
int DynAdpDelete(const char* object);

/* What the registry holds under one top-level member: a string (the bound file) or an object. The
 * name is not split at slashes. A null name: the whole registry. Null when there is no readable
 * registry or no such member. */
talk_t* DynAdpList(const char* name);

/* The file bound to exactly this path, cut where the buffer ends and always terminated. Null when
 * nothing is bound to it; bindings of longer and shorter paths do not count. Whether the file still
 * exists is not asked. */
char* DynAdpPath(slash_t* path, char* buffer, int size);

/* ---- Lookup ---- */

/* Who serves an object, by record, or when that is null by text (at most 255 characters of it):
 * one of the ADP_ codes, or -1 when there is no path or it has no segment, or when memory runs out
 * (errno ENOMEM), so that nobody serves in the place of an adapter. The adapter's file goes
 * to the buffer, empty for ADP_PURE; without a buffer only the code is told. The registry comes
 * before the project tree and a module before a script. A file whose path ends in the letter "h" is
 * a script. A bound file that is gone still counts: loading or running it fails later. */
int AdpPath(slash_t* path, const char* text, char* buffer, int size);

FAIRLEAD_API_END

#endif
