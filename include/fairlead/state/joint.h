/* joint.h - joints: an event of one object calls an interface of another.
 *
 * A joint ties an event of a source object to a target, an interface of some other object. Casting
 * the event calls every target with the source object, the event and the event's data. The joints
 * of the device stand in one file, "/tmp/.var/joint.cache", which all processes share and which is
 * empty after a restart; docs/events.md has its bytes, and what a cast does step by step.
 *
 * Names are compared byte for byte and may hold "/". They stand in the file as they are, so a name
 * that is empty, or that would be read back as something else (a quote or a backslash that is
 * not escaped as in JSON), makes no joint. A target is kept as one text,
 * "object.interface", of which 1023 bytes count, and 63 bytes of the interface. A target that is no
 * such identifier when it is read back (no interface, an object with one of the characters ".:=|")
 * is kept, but no cast can call it.
 *
 * A file that is missing, empty or damaged holds no joints; JointCreate replaces it. A file that
 * cannot be read (locked elsewhere for a second, no memory, no descriptor, no permission, an I/O
 * error) holds none either, but is left alone: JointCreate fails.
 *
 * errno where a change fails that had its arguments: EBUSY | ENOMEM | ENOENT no "/tmp/.var" |
 * EINVAL a name that makes no joint | otherwise that of the function that failed. A missing
 * argument leaves errno alone; nothing is logged but what a cast logs.
 *
 * Threads: one thread at a time. Fork: safe; a child that is forked while a target is called counts
 * the casts around it as its own (see JointCast). Processes: each read and each save is locked, a
 * whole change is not: of two at the same time one can be lost. */
#ifndef FAIRLEAD_STATE_JOINT_H
#define FAIRLEAD_STATE_JOINT_H

#include "fairlead/api.h"
#include "fairlead/talk/json.h"

FAIRLEAD_API_BEGIN

/* Ties the event of the object to the target's interface; a NULL event is the event "tmp".
 * Returns 1 when the joint is new and saved. 0 when it is there already (errno untouched, nothing
 * written), when object, target or interface is NULL (errno untouched), or when a step failed. */
int JointCreate(const char* object, const char* event, const char* target, const char* interface);

/* Takes a joint away; a NULL event is "tmp", a NULL interface names a target without one. Event and
 * object stay in the file, even when nothing is left in them.
 * Returns 1 when the joint was there and the file is saved without it, else 0: object or target is
 * NULL (errno untouched), there is no such joint (EINVAL, or what reading gave), or the save
 * failed. */
int JointDelete(const char* object, const char* event, const char* target, const char* interface);

/* The joints of one object, an object of events that hold their targets as members with an empty
 * string; of all objects, each under its name, for NULL. Returns a new document, which the caller
 * frees with TalkFree, or NULL with errno: EINVAL the object has no joints | what reading gave.
 * Deliberate: what stands under the object's name in a damaged file is returned whatever it is. */
talk_t* JointList(const char* object);

/* Calls the targets of the object's event, or of each of its events when that is NULL, one after
 * the other in the order they were made, in the caller's process. The file is read once, before the
 * first call: joints that a target makes or takes away count from the next cast on.
 *
 * A target is called with the parameters object, event (the name in the file) and the data's text,
 * when there is data with a text: an object's JSON text, or a string. They pass through the text
 * form of a parameter list (ParamAnalysis in path.h): an object arrives as one parameter, a string
 * that holds a comma as several, and one with a blank outside of quotes, brackets and braces ends
 * there. What the targets answer is dropped, and a target that fails stops no other one.
 *
 * Logged at level 7 before each call, from "joint":
 *   "joint for %s.%s[%s,%s,%s]"  line 57: target object, interface, object, event, data
 *   "joint for %s.%s[%s,%s]"     line 65: the same without data
 *
 * A target may cast in its turn, up to 32 casts inside each other. The one that would be the 33rd
 * calls nothing and logs at level 3 "casts of %s are nested too deep"; joints that lead back to
 * their own event are the usual cause. Until the outermost cast returns, the process then makes no
 * further nested cast, without a further message: targets that cast twice each would else double
 * the calls with every level. The outermost cast calls its remaining targets. A target that casts
 * by way of another program is not counted.
 *
 * Nothing happens for a NULL object, without joints, and when there is no memory for the data's
 * text. The data stays the caller's. */
void JointCast(const char* object, const char* event, talk_t* data);

FAIRLEAD_API_END

#endif
