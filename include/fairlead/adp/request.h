/* request.h - whole requests: read a value, write it when it changes, merge, call an interface,
 * list what exists.
 *
 * He and SecureHe serve an identifier (uii.h), TalkHe and SecureTalkHe a document. The plain forms
 * work in the caller's process, the isolated ones let a child do the adapter's set, get and calls
 * (isolated.h). Each returns a status and hands back one value:
 *
 *   status   *out
 *    1       TALK_DONE: the set is done, or was not needed because the value is there already
 *    0       a document, which the caller frees, or null: data was read. A failed read is null too
 *   -1       TALK_FAILED, null, or a document, which the caller frees: failure
 *
 * An isolated merge without a value is done (1), a plain one fails (-1, null): kept for scripts
 * that rely on either. Null arguments: -1 with errno EINVAL and *out left alone. Threads: one at a
 * time. Fork: safe in a child. Nothing is logged here; the calls beneath log. */
#ifndef FAIRLEAD_ADP_REQUEST_H
#define FAIRLEAD_ADP_REQUEST_H

#include <stdint.h>

#include "fairlead/api.h"
#include "fairlead/uii.h"

FAIRLEAD_API_BEGIN

/* Serves an identifier by its form:
 *   object.            the interfaces of the object
 *   object.name[...]   the interface's answer: status 1 and -1 for TALK_DONE and TALK_FAILED, 0 for
 * nothing, an object or a string, -1 for a document of any other kind object:path=value  set,
 * unless the value is there already; without a value the path is deleted object:path|value  merge:
 * an object's members into the stored object, anything else like a set object:path        the value
 *   :  .  ?            all configurations, all registrations, all adapters of the projects
 * The identifier stays the caller's, and so does its value. */
int32_t He(uii_t* identifier, talk_t** out);
int32_t SecureHe(uii_t* identifier, talk_t** out);

/* Serves a request document, which is only read. A string is an identifier. An object has the
 * members "adp"        the object path, required "op"         absent, "", "=..." or "|...": a data
 * request; other text is the interface to call "ab"         the configuration path; absent: the
 * whole object "v"          the value to set ("op" begins with "=") or to merge (otherwise);
 * absent: read "1" to "20"  the parameters of a call, by position; missing ones before the last are
 * empty A call's document gives status 0 whatever its kind. Returns -1 and leaves *out alone when
 * the request is no string or object, its identifier does not parse, or "adp" is missing. */
int32_t TalkHe(talk_t* request, talk_t** out);
int32_t SecureTalkHe(talk_t* request, talk_t** out);

FAIRLEAD_API_END

#endif
