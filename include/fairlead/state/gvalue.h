/* gvalue.h - named values that all processes share: what one sets, the others see at once.
 *
 * A store is a file in "/tmp/.var/gvalue" that every process maps; docs/value-store.md has each
 * byte of it. Values are bytes of any kind under names of which 64 characters count. Names and
 * value space are never given back. The store named "default", which NULL stands for, is opened by
 * the first call that needs it; when that fails, the call fails with the errno of the open, and the
 * next one tries again. It holds the log settings (log.h).
 *
 * The file is not trusted: a store whose numbers contradict each other or its size is removed when
 * it is opened, and reads as absent when it changes later. A store that was removed meanwhile goes
 * on in the processes that have mapped it. The one thing that cannot be fended off is a foreign
 * program that cuts the file short: reading a page that is gone ends the process by SIGBUS.
 *
 * Threads: one thread at a time, but for what LogWrite reads (log.h). Fork: a child goes on with
 * its parent's handles; both may set. Processes: setting is serialised by a lock; reading takes
 * none, so a value that is being set can be seen half old and half new. */
#ifndef FAIRLEAD_STATE_GVALUE_H
#define FAIRLEAD_STATE_GVALUE_H

#include <sys/types.h>

#include "fairlead/api.h"
#include "fairlead/talk/json.h"

FAIRLEAD_API_BEGIN

/* A handle. It and its mapping live until the process ends; there is no function that closes it. */
typedef struct gvalue {
  int fd;        /* the store file, locked by flock while a value is set */
  void* address; /* the shared mapping of the whole file */
  char path[256];
} gvalue_t;

/* Opens the store of this name, or makes it with room for `capacity` values of `data_size` bytes
 * together and the permissions `mode` (less the umask). A capacity below 1 is 100, a data_size
 * below 1 is 256 bytes per value; the whole file is reserved at once. A store that exists already
 * keeps its size, and is opened for reading only where writing is not permitted. Processes that
 * open at the same time share one store. In the name "%%" stands for one percent sign, as in a
 * format without arguments; the path is cut at 255 characters.
 *
 * Returns a new handle, or NULL with errno: EINVAL name NULL, or with a segment ".." | ENOENT no
 * "/tmp/.var", or what is there is no store | EFBIG larger than 2 GiB | ENOSPC no room for the file
 * | ENOMEM | what open, fstat, flock, ftruncate or mmap gave. Deliberate: every failure after the
 * file was opened removes it, even when it existed before and other processes use it; the next open
 * makes a fresh one. */
gvalue_t* GvalueCreateDetails(const char* name, int capacity, int data_size, mode_t mode);

/* The same with capacity and size as by 0, and mode 0660. */
gvalue_t* GvalueCreate(const char* name);

/* Copies `size` bytes into the store under this name.
 * Deliberate: a value that is not larger than the one before takes its place, the rest of which is
 * cleared; size and address stay as they were, so that addresses handed out remain valid. A larger
 * value gets new space; addresses handed out before then show the old bytes for ever. Space is
 * handed out without gaps: a value is aligned only when all sizes before it were. A size of 0
 * clears the value that is there, or makes an empty one.
 *
 * Returns 1, or 0 with errno: EINVAL name or value NULL, size negative | ENOMEM no room for another
 * name, or the free space does not exceed size | EACCES the store is open for reading only |
 * ENOENT the file is no store any more | what flock or the record lock gave, EINTR included. */
int GvalueSet(gvalue_t* gvalue, const char* name, const void* value, int size);

/* The address of the value inside the mapping, for reading it again and again without a call: a
 * change by GvalueSet, of any process, shows there. Its bytes need not be aligned (use memcpy) and
 * must not be written. Makes no system call once the store is open.
 * NULL with errno: EINVAL name NULL | ENOENT no such value. */
void* GvalueGet(gvalue_t* gvalue, const char* name);

/* The size of the value in bytes: that of the largest it ever had. -1 with errno as GvalueGet. */
int GvalueSize(gvalue_t* gvalue, const char* name);

/* A new document with one member per value, the newest name first: its name, and its size in
 * decimal digits. A value with an empty name is left out. The caller frees it with TalkFree.
 * NULL with errno untouched when the store has no values; NULL with ENOMEM. */
vessel_t* GvalueList(gvalue_t* gvalue);

FAIRLEAD_API_END

#endif
