/* uii.h - interface identifiers: one line of text that names a request.
 *
 *   net/wan                      the object alone                              UII_OBJECT
 *   net/wan.restart              an interface of the object                    UII_CALL
 *   net/wan.dial[ppp0, 30]       an interface with parameters                  UII_CALL
 *   net/wan:dns/first            read a configuration path inside the object   UII_READ
 *   net/wan:mtu=1492             give the path a value                         UII_SET
 *   net/wan:dns|{"first":"::1"}  merge a value into what the path holds        UII_MERGE
 *   net/wan={"mtu":"1500"}       a value for the whole object                  UII_SET
 *   net/wan|{"mtu":"1500"}       the same, merged                              UII_MERGE
 *
 * Leading blanks (space, tab, line feed, carriage return) are ignored. The first of the characters
 * ".:=|" decides the form, and what stands before it is the object path, a slash path. Such a
 * character in the very first place decides nothing: the whole text is then the object path, so
 * that "." and ":" can name listings.
 *
 * What may surprise:
 * - After ":", the last "=" or "|" of the text ends the configuration path. A value given to a path
 *   can therefore hold neither, while the path can: "a:b=c=d" gives the path "b=c" the value "d".
 * - Every blank and "]" at the end of a parameter list is dropped before the list is split, so a
 *   list that ends with a JSON array loses that array's bracket: "a.b[[1,2]]" passes "[1,2".
 * - Blanks around a value are dropped, those at the end of an interface name are not.
 *
 * Threads: one record, one thread; UiiAssembly without a buffer shares one among all callers.
 * Fork: plain memory, each process has its own copy. */
#ifndef FAIRLEAD_UII_H
#define FAIRLEAD_UII_H

#include <stdint.h>

#include "fairlead/api.h"
#include "fairlead/talk/path.h"

FAIRLEAD_API_BEGIN

enum { UII_OBJECT = 0, UII_CALL = 1, UII_READ = 2, UII_SET = 3, UII_MERGE = 4 };

typedef struct uii {
  char* text;        /* the whole identifier */
  char* work;        /* a copy of it, cut into the pieces below */
  int32_t kind;      /* UII_OBJECT to UII_MERGE */
  slash_t object;    /* the object path */
  char* interface;   /* the interface name, or null; inside work */
  param_t parameter; /* the parameters; none: a count of 0 */
  slash_t config;    /* the configuration path; none: a count of 0 */
  char* value;       /* the value text, or null; inside work */
  talk_t* talk;      /* the value as a document, made on first request; owned by the record */
} uii_t;

/* Parses an identifier. Content is not judged beyond the object path, which needs a segment.
 * Returns a new record, released with UiiFree, or null with errno: EINVAL the text is null, blank
 * or names no object | ENOMEM no memory (logged as "out of memory" with the level word of an
 * allocation failure, which ends the process unless the log threshold is 0). */
uii_t* UiiCreate(const char* text);

/* The same from up to `count` texts joined in their order; a null among them ends the row.
 * Also EINVAL: count below 1, text null, nothing to join. */
uii_t* UiiBuild(int count, const char* const* text);

/* The same from a printf-style format. Also EINVAL: format null. A format that printf refuses gives
 * null with its errno. */
uii_t* UiiFormat(const char* format, ...) __attribute__((format(printf, 1, 2)));

/* Parses uii->text into the other fields, for records that a caller fills himself. They must be
 * zero, or come from an earlier analysis of this record, whose pieces are released first. The text
 * is not changed. Returns 1, or 0 with errno as for UiiCreate. To be released with UiiFree, after a
 * failure too, the record and its text must come from malloc. */
int UiiAnalysis(uii_t* uii);

/* Releases a record and everything it owns, its value document included. EINVAL: uii null. */
void UiiFree(uii_t* uii);

/* Writes an identifier: the object, then "." and the interface when there is one (its first 63
 * characters), then the parameters in brackets when both are there. Parameters without an interface
 * are dropped. Every piece is cut where the buffer ends. A null buffer or a size below 1 selects a
 * static buffer of 4096 bytes, valid until the next such call. The object may stand in the buffer
 * already; interface and parameters must not.
 * Returns the buffer, or null with errno EINVAL when object is null. */
char* UiiAssembly(const char* object, const char* interface, const char* parameter, char* buffer,
                  int size);

/* The accessors never copy: what they return belongs to the record and lives as long as it does.
 * All of them refuse a null record with errno EINVAL, the counts with -1, the others with null.
 * Indexes start at 1. */

/* The whole identifier as it was given. */
const char* UiiString(uii_t* uii);

/* The number of segments of the object path, and of the configuration path (0: there is none). */
int UiiObjectCount(uii_t* uii);
int UiiConfigCount(uii_t* uii);

/* Segment `index` of a path, -1 for the last; null with errno EINVAL when there is no such one. */
const char* UiiObject(uii_t* uii, int index);
const char* UiiConfig(uii_t* uii, int index);

/* A path as text, without needless slashes and at most 255 characters of it; null without a
 * configuration path. */
const char* UiiObjectString(uii_t* uii);
const char* UiiConfigString(uii_t* uii);

/* The address of the record's value field. */
char** UiiValue(uii_t* uii);

/* The value as text, or null with errno untouched when there is none. */
const char* UiiValueString(uii_t* uii);

/* The value as a document: an object when it begins with "{", else a string leaf. Made on the first
 * request and the same one afterwards. Null with errno EINVAL when there is no value or it does not
 * parse: callers that must tell the two apart ask UiiValueString. */
talk_t* UiiValueTalk(uii_t* uii);

/* The interface name, or null with errno untouched when there is none. */
const char* UiiInterface(uii_t* uii);

/* The parameter list; never null for a record, its count is 0 without parameters. */
param_t* UiiParameter(uii_t* uii);
int UiiParamCount(uii_t* uii);

/* One parameter: its entry, as a document, as text. The index follows the list functions of
 * path.h, their asymmetry included: -1 is the last one for the entry, and the one before the last
 * for the document and the text. Null with errno EINVAL when there is no such parameter. */
param_entry_t* UiiParamGet(uii_t* uii, int index);
talk_t* UiiParamGetT(uii_t* uii, int index);
const char* UiiParamGetS(uii_t* uii, int index);

/* The parameters as text, with commas between them; null without parameters. */
const char* UiiParamString(uii_t* uii);

/* The identifier as a small request document: "adp" the object path; with an interface "fn" its
 * name and the parameters under their numbers, from the highest down to "1" (an empty one adds
 * nothing); without one "ab" the configuration path when there is one, and for a value "op" ("=" or
 * "|") and "v" the value when there is one. Values and parameters are copied.
 * Returns a new document (free it with TalkFree), or null with errno: EINVAL uii null or without an
 * object path | ENOMEM: a request with a part missing would ask for something else. */
vessel_t* UiiTalk(uii_t* uii);

/* The family below works on a node at a slash path inside a document in memory. The path is a
 * record, or, when that is null, a printf-style format whose text is cut at 255 characters; the
 * first member of a name counts. errno: EINVAL the document is null or no object, or a segment is
 * missing on the way | that of printf for a format it refuses, which addresses nothing | ENOMEM.
 * Not for two threads at a time on one document. */

/* Puts `value` at the path, making members and objects on the way and replacing what is no object
 * there; the value itself becomes part of the document. A null value removes the member at the
 * path. Returns 1, or 0 with the document as it was and the value still the caller's: the path has
 * no segment or is missing (EINVAL), the member to remove is not there, memory ran out, or the
 * value cannot stand there: it is a member, or part of a document already (of this one too). */
int TalkUiiSet(talk_t* document, talk_t* value, slash_t* path, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

/* The same with a value made from text as by StringTalk: an object or a string. A null text, or
 * object text that does not parse, is refused (0). In the formatted path "%%" becomes "%" once more
 * (kept for callers that double their percent signs). */
int TalkUiiSetS(talk_t* document, const char* value, slash_t* path, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

/* Returns the node at the path, which stays the document's; the document itself when the path is
 * empty or missing; null when the document is no object or there is nothing at the path. */
talk_t* TalkUiiGet(talk_t* document, slash_t* path, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/* The node at the path as text: an object's JSON text or a string, cut to fit, in buffer[0..size),
 * or in a static buffer of 4096 bytes, good until the next such call, when buffer is null or size
 * below 1. The buffer's last byte is set to NUL, however short the text. Null when there is
 * nothing, or another kind of node, at the path, or both path arguments are null (EINVAL). In the
 * formatted path "%%" becomes "%" once more. */
char* TalkUiiGetS(talk_t* document, char* buffer, int size, slash_t* path, const char* format, ...)
    __attribute__((format(printf, 5, 6)));

/* Detaches the value at the path and hands it to the caller (free it with TalkFree); its member
 * stays in the document without a value, and such a document has no text form until a value is set
 * again. An empty or missing path gives the document itself, nothing detached. Null when there is
 * nothing at the path. */
talk_t* TalkUiiCut(talk_t* document, slash_t* path, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

FAIRLEAD_API_END

#endif
