/* request.h - whole requests: read a value, write it when it changes, merge, call an interface,
 * list what exists.
 *
 * He and SecureHe serve an identifier (uii.h), TalkHe and SecureTalkHe a document. The plain forms
 * work in the caller's process, the Secure forms let a child do the adapter's set, get and calls
 * (isolated.h). Each returns a status and hands back one value:
 *
 *   status   *out
 *    1       TALK_DONE: the set is done, or was not needed because the value is there already
 *    0       a document, which the caller frees, or null: data was read. A failed read is null too
 *   -1       TALK_FAILED, null, or a document, which the caller frees: failure
 *
 * An adapter that answers a read or a listing of its interfaces with TALK_DONE or TALK_FAILED is
 * passed on as it is, with status 0: compare with the two before you free.
 *
 * Null arguments: -1 with errno EINVAL and *out left alone. Nothing is logged here; the calls
 * beneath log. Threads: one at a time in a process, as for the calls beneath. Fork: safe in a
 * child. */
#ifndef FAIRLEAD_ADP_REQUEST_H
#define FAIRLEAD_ADP_REQUEST_H

#include <stdint.h>

#include "fairlead/api.h"
#include "fairlead/uii.h"

FAIRLEAD_API_BEGIN

/* Serves an identifier by its form:
 *
 *   object.             the interfaces of the object; status 0
 *   object.name[...]    the interface's result: TALK_DONE with status 1, TALK_FAILED with -1,
 *                       nothing with 0, a document with 0 when it is an object or a string and with
 *                       -1 when it is anything else
 *   object:path=value   set, unless the value is there already. Without a value, and with one that
 *                       begins with "{" and is no object, the path is deleted
 *   object:path|value   merge: an object goes member by member into an object that is there;
 *                       anything else is set. Nothing is written when nothing changes, nor when
 *                       the store has the object and cannot read it for the moment (-1)
 *   object:path         the value; status 0
 *   :  .  ?             (as first character of the object; not for calls) all configurations, all
 *                       registrations, the adapters of all projects; status 0
 *
 * A merge without a value fails (-1, null) in He and is done (1, TALK_DONE) in SecureHe: kept for
 * device software that relies on either. The listings are made in the caller's process by both.
 * Without ":path" the whole object is meant. The identifier stays the caller's, and so does its
 * value. */
int32_t He(uii_t* identifier, talk_t** out);
int32_t SecureHe(uii_t* identifier, talk_t** out);

/* Serves a request document, which is only read. A string is an identifier. An object has members:
 *
 *   "adp"        the object path; required
 *   "op"         absent, empty, or beginning with "=" or "|": a data request; any other text: the
 *                name of the interface to call
 *   "ab"         the configuration path; absent: the whole object
 *   "v"          the value to set when "op" begins with "=", to merge otherwise; absent: read
 *   "1" to "20"  the parameters of a call, by position, strings as they are and objects as their
 *                text. Positions without a member before the last one that is there are empty, and
 *                so are numbers, arrays and literals
 *
 * A call's document has status 0 whatever its kind. Returns -1 and leaves *out alone when the
 * request is neither, its identifier does not parse, "adp" is missing, or a parameter cannot be
 * put into text (lost memory, an object with a member without a value). */
int32_t TalkHe(talk_t* request, talk_t** out);
int32_t SecureTalkHe(talk_t* request, talk_t** out);

FAIRLEAD_API_END

#endif
