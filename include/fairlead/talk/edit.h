/* edit.h - whole-document operations: merge, prune, copy, compare.
 *
 * They see objects, members and strings; numbers, arrays and literals, which a document that was
 * read from text may hold, are treated as each function tells. Names are looked up as everywhere:
 * the first member of a name stands for it. Depth costs no stack, and the time grows with the size
 * of the two documents. Large objects are looked up in a table that is made for the call; without
 * memory for it the result is the same, only slower. Comparing documents that repeat names in large
 * numbers, on several levels, can take longer.
 *
 * Source and rule documents are never changed. They may be the target itself, but must not lie
 * inside of it, nor it inside of them. Threads: a document belongs to one thread at a time. Fork:
 * plain memory. */
#ifndef FAIRLEAD_TALK_EDIT_H
#define FAIRLEAD_TALK_EDIT_H

#include "fairlead/api.h"
#include "fairlead/talk/json.h"

FAIRLEAD_API_BEGIN

/* Merges source into target, member by member in the order of source: a string overwrites what the
 * target's member of that name holds, an object merges into an object and replaces anything else,
 * and a name that target lacks is appended. What only target has stays. A number, array, literal or
 * missing value changes nothing, but leaves an empty object where target lacked the name.
 *
 * Returns 1 when some value was set, an equal one included, else 0; an empty object that was only
 * appended does not count. A member for which memory runs out is left as it was, counts as -1
 * (errno ENOMEM), and the merge goes on: the last result that is not 0 is returned, so that a
 * change after the loss hides it. -1 with errno EINVAL when either is no object. */
int VesselModify(vessel_t* source, vessel_t* target);

/* The same for one member's value, whatever the two names.
 * -1 with errno EINVAL when either is no string node. */
int AxpModify(axp_t* source, axp_t* target);

/* VesselModify by another name. */
int VesselAddRule(vessel_t* rule, vessel_t* target);

/* Removes from target what the rule names: a rule member that holds an object with members looks
 * inside the object of that name in target, if it is one; any other rule member removes the first
 * target member of that name, whatever both hold. Two rule members of one name remove two in turn.
 * Returns 1 when something was removed, else 0; 0 with errno EINVAL when either is no object. */
int VesselDeleteRule(vessel_t* rule, vessel_t* target);

/* Deep copies; the caller frees them with TalkFree. Members without a value and those that hold a
 * number, array or literal are left out. Lost memory gives NULL with errno ENOMEM, never a part.
 * VesselDup, AxpDup: NULL with errno EINVAL for what is no object or no member.
 * TalkDup takes an object, a member or a string; NULL with errno EINVAL for NULL, and NULL with
 * errno untouched for any other node. */
vessel_t* VesselDup(vessel_t* vessel);
axp_t* AxpDup(axp_t* member);
talk_t* TalkDup(talk_t* talk);

/* 1 when both are equal, else 0; errno is left alone. A node is equal to itself, and NULL to NULL.
 * Strings are equal byte for byte, members by name and value. Objects are equal when each member of
 * either, namesakes included, has the value of the other's first member of its name, in any order;
 * a member without a value equals a missing one. Two different nodes of any other kind are unequal,
 * and so are documents that hold them. */
int TalkEqual(const talk_t* a, const talk_t* b);

FAIRLEAD_API_END

#endif
