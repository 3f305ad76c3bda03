/* glink.h - an intrusive doubly linked list: put, get, pop, insert, delete, each in constant time.
 *
 * An element carries a glink_t as its first member and is unlinked when both of its fields are
 * null; a zero-filled record is therefore ready for use. A list is a glink_t whose `next` names the
 * first element. Unlike in the usual form, the first element's `previous` names the last element,
 * so that the tail is one step away, and the last element's `next` is null. The list never
 * allocates, never frees, and does not own its elements. Threads: not guarded. Fork: plain memory,
 * each process has its own copy. */
#ifndef FAIRLEAD_STATE_GLINK_H
#define FAIRLEAD_STATE_GLINK_H

#include "fairlead/api.h"

FAIRLEAD_API_BEGIN

typedef struct glink {
  struct glink *next, *previous;
} glink_t;

/* Makes an element unlinked, or a list empty; what was linked to it is not touched.
 * Returns 1, or 0 with errno EINVAL when link is null. */
int GlinkInit(glink_t* link);

/* Returns 1 when the list has no element, else 0. A null list: 1 with errno EINVAL. */
int GlinkIsEmpty(const glink_t* list);

/* Appends an element after the last one.
 * Returns 1, or 0 with errno EINVAL: list or element null, or the element is not unlinked. */
int GlinkPut(glink_t* list, glink_t* element);

/* Takes the first element out and returns it unlinked; null with errno untouched when the list is
 * empty, null with errno EINVAL when it is null. */
glink_t* GlinkGet(glink_t* list);

/* The same with the last element. */
glink_t* GlinkPop(glink_t* list);

/* Inserts an element before `position`, or at the front when position is null.
 * Whether position stands in this list is not checked.
 * Returns 1, or 0 with errno EINVAL: list or element null, or the element is not unlinked. */
int GlinkInsert(glink_t* list, glink_t* element, glink_t* position);

/* Takes an element out from wherever it stands and leaves it unlinked. Whether it stands in this
 * list is not checked. Returns 1; 0 with errno untouched when the list is empty; 0 with errno
 * EINVAL: list or element null, or the element stands in no list. */
int GlinkDelete(glink_t* list, glink_t* element);

FAIRLEAD_API_END

#endif
