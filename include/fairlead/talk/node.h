/* node.h - talk nodes: objects (Vessel), members (Axp) and strings (Render).
 *
 * Every value that crosses the library is a talk document, a tree of the nodes of json.h in three
 * roles: a Vessel is an object and holds members in order; an Axp is a member, a string node whose
 * text is its name and whose only child is its value, a Render or a Vessel; a Render is a string
 * without a child. Numbers, arrays and literals in a document that was read from text have no role:
 * they are kept, freed and written as they stand, but not copied, and never equal to another.
 *
 * Members stand in the order in which they were added. Names are not unique: every look-up takes
 * the first member whose name is equal byte for byte.
 *
 * Ownership: a node that stands in no tree belongs to whoever holds it, who gives it to TalkFree or
 * links it into a tree. Linking (VesselAdd, VesselSet, VesselSetX, AxpCreate, AxpSetX) hands it to
 * the tree; only free-standing nodes can be linked, and a document must not be linked below itself,
 * which is not checked. A refused node stays the caller's. Detaching (VesselSplit, VesselCut,
 * VesselCutX, AxpCutX) hands it back. Names and strings that are passed in are copied; those that
 * are handed out belong to their node and live until it is freed or set anew.
 *
 * Failures: 0 or NULL. Where nothing else is said, a refused argument, which a missing or
 * wrong-kind node or text always is, sets errno to EINVAL, lost memory to ENOMEM, and the tree is
 * as it was. Threads: a document belongs to one thread at a time. Fork: plain memory, each process
 * has its own copy. */
#ifndef FAIRLEAD_TALK_NODE_H
#define FAIRLEAD_TALK_NODE_H

#include <stdint.h>

#include "fairlead/api.h"
#include "fairlead/talk/json.h"

FAIRLEAD_API_BEGIN

/* ---- Making and freeing ---- */

/* A new object without members. */
vessel_t* VesselCreate(void);

/* A new string holding a copy of text; two names of one function. */
render_t* RenderCreate(const char* text);
render_t* StringRender(const char* text);

/* A new member of this name that takes over value. The name must not be empty.
 * Where value may not stand under a member (a string that has a child): NULL, errno untouched. */
axp_t* AxpCreate(const char* name, talk_t* value);

/* Frees a node and all below it, however deep, taking it out of its tree first. NULL: nothing. */
void TalkFree(talk_t* talk);

/* ---- Roles: 1 or 0. NULL: 0 with errno EINVAL; any other node leaves errno alone. ---- */

/* An object. */
uint32_t VesselCheck(const talk_t* talk);

/* A string node whose child is a string or an object. */
uint32_t AxpCheck(const talk_t* talk);

/* A string node without a child. */
uint32_t RenderCheck(const talk_t* talk);

/* ---- Walking an object ---- */

/* The member after previous, or the first one when previous is NULL. The end of the list gives NULL
 * with errno untouched, and so does an empty vessel, whatever previous is.
 * EINVAL: no vessel, or previous is not a member of it. */
axp_t* VesselEach(vessel_t* vessel, axp_t* previous);

/* The same backwards: the member before next, or the last one when next is NULL. */
axp_t* VesselTurn(vessel_t* vessel, axp_t* next);

/* The number of members, namesakes counted each; 0 with errno EINVAL when it is no vessel. */
int VesselCount(vessel_t* vessel);

/* ---- Finding: always the first member of the name; a NULL name finds the first member. ---- */

/* The member; NULL with errno untouched when there is none. Two names of one function. */
axp_t* VesselFind(vessel_t* vessel, const char* name);
axp_t* VesselGet(vessel_t* vessel, const char* name);

/* The member's value as by AxpGetX, or its string as by AxpGetS. EINVAL also when there is no such
 * member. */
talk_t* VesselGetX(vessel_t* vessel, const char* name);
const char* VesselGetS(vessel_t* vessel, const char* name);

/* ---- Adding, replacing, removing. 1 on success, else 0; NULL where a node is the result. ---- */

/* Appends a member; namesakes stay and come before it. */
int VesselAdd(vessel_t* vessel, axp_t* member);

/* Frees the first member of the same name, if any, and appends this one: it does not take the place
 * of the old one, it goes to the end. */
int VesselSet(vessel_t* vessel, axp_t* member);

/* Replaces the value of the member of this name in its place, or appends a new member.
 * Where value may not stand under a member: 0; a member that was found has lost its old value then,
 * with errno untouched. EINVAL also when no new member can be made, for lack of memory included. */
int VesselSetX(vessel_t* vessel, const char* name, talk_t* value);

/* The same with a new string holding a copy of text. */
int VesselSetS(vessel_t* vessel, const char* name, const char* text);

/* Takes a member out and hands it to the caller. EINVAL also when it is not a member of vessel. */
axp_t* VesselSplit(vessel_t* vessel, axp_t* member);

/* Takes a member out and frees it, as VesselSplit. */
int VesselDelete(vessel_t* vessel, axp_t* member);

/* VesselSplit and VesselDelete of the first member of a name; later namesakes stay.
 * EINVAL also when there is none. */
axp_t* VesselCut(vessel_t* vessel, const char* name);
int VesselClear(vessel_t* vessel, const char* name);

/* AxpClearX and AxpCutX of the first member of a name; the member stays, without a value.
 * EINVAL also when there is none. */
int VesselClearX(vessel_t* vessel, const char* name);
talk_t* VesselCutX(vessel_t* vessel, const char* name);

/* ---- Members and strings ---- */

/* The text of a string node: a string's characters, or a member's name. Two names of one function.
 * NULL with errno EINVAL for any other node, and for a string node without a text. */
const char* RenderString(const talk_t* talk);
const char* AxpGet(const axp_t* member);

/* Renames a member to a copy of name, which may be empty here. A string node of any role is
 * accepted, so that this also rewrites the text of a Render. */
int AxpSet(axp_t* member, const char* name);

/* The value; NULL with errno untouched when the member has none. */
talk_t* AxpGetX(const axp_t* member);

/* The value's text when the value is a Render; NULL with errno untouched when it is anything else.
 * EINVAL also when there is no value. */
const char* AxpGetS(const axp_t* member);

/* Frees the value, if any, and links another one in its place. Where value may not stand under a
 * member: 0 with errno untouched, and the old value is gone all the same. */
int AxpSetX(axp_t* member, talk_t* value);

/* The same with a new string holding a copy of text, which may be the member's present string. */
int AxpSetS(axp_t* member, const char* text);

/* Frees the value; the member stays without one, and its document has no text form until it is
 * given another. Without a value: 0 with errno untouched. */
int AxpClearX(axp_t* member);

/* Takes the value out and hands it to the caller; the member stays. EINVAL also without a value. */
talk_t* AxpCutX(axp_t* member);

FAIRLEAD_API_END

#endif
