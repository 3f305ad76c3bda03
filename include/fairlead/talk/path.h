/* path.h - slash paths and parameter lists: a text cut in place into pieces.
 *
 * Both records borrow the text they are given: the analysis writes terminators into it, the pieces
 * point into it, and it must outlive the record. Indexes start at 1, and -1 stands for the last
 * piece (but see ParamGetS); 0, anything below -1 and anything above the count are refused with
 * errno EINVAL. Threads: a record belongs to one thread at a time. Fork: plain memory. */
#ifndef FAIRLEAD_TALK_PATH_H
#define FAIRLEAD_TALK_PATH_H

#include <stdint.h>

#include "fairlead/api.h"
#include "fairlead/talk/json.h"

FAIRLEAD_API_BEGIN

#define SLASH_MAX 20
#define PARAM_MAX 20
/* A path such as "network/lan/ip". Zero-filled or analysed before anything else. */
typedef struct slash {
  int32_t count;
  char* segment[SLASH_MAX]; /* count of them; the others are whatever they were */
  char* string;             /* owned: what SlashString made */
} slash_t;
typedef struct param_entry {
  char* text;   /* inside the analysed text; NULL for an empty parameter */
  talk_t* talk; /* owned: what ParamGetT made */
} param_entry_t;
/* Parameters such as `a, {"x":"1"}, [1,2]`. Zero-filled before the analysis. */
typedef struct param {
  char* string; /* owned: what ParamString made */
  int32_t count;
  param_entry_t* entry[PARAM_MAX]; /* owned; NULL where memory ran out */
} param_t;

/* Splits text at "/"; several in a row count as one, at the front as none. Leading spaces and all
 * white space at the end go first, other white space stays. What follows the twentieth segment is
 * ignored. A path text that the record has made before is forgotten, not freed.
 * Returns 1 with at least one segment; 0 with errno untouched and count 0 for an empty path; 0 with
 * errno EINVAL when slash or text is NULL. */
int SlashAnalysis(slash_t* slash, char* text);

/* The number of segments, or -1 with errno EINVAL when slash is NULL. */
int SlashCount(const slash_t* slash);

/* A segment; NULL with errno EINVAL for a bad index or slash NULL. */
char* SlashGet(const slash_t* slash, int index);

/* The segments with a "/" between them, cut at 255 characters. Made at the first call and kept: the
 * record owns it until SlashClear, and later changes of the segments do not show in it.
 * NULL without segments or memory; NULL with errno EINVAL when slash is NULL. */
char* SlashString(slash_t* slash);

/* Frees what SlashString made. The record still points to it: clear it once, and then do nothing
 * with it but analyse again. NULL: errno EINVAL. */
void SlashClear(slash_t* slash);

/* Splits text at commas that stand outside of double quotes, brackets and braces (a quote has no
 * escape), and drops leading spaces, all white space at the end and the spaces after a comma. A
 * space outside of all three ends its parameter, and what follows up to the next comma is lost. The
 * twentieth parameter is the whole rest of the text, commas included. An empty parameter has no
 * text. Where memory runs out an entry is missing: it is counted and reads as empty, and
 * ParamString ends before it. Returns 1, or 0 with errno EINVAL: param or text NULL, or no text but
 * white space. */
int ParamAnalysis(param_t* param, char* text);

/* The number of parameters, or -1 with errno EINVAL when param is NULL. */
int ParamCount(const param_t* param);

/* A parameter's entry; -1 is the last one. NULL with errno EINVAL for a bad index or param NULL. */
param_entry_t* ParamGet(const param_t* param, int index);

/* A parameter's text; NULL with errno untouched when it is empty. Unlike everywhere else, -1 is the
 * parameter before the last, here and in ParamGetT; kept for callers that rely on it.
 * NULL with errno EINVAL: a bad index, -1 with a single parameter included, or param NULL. */
char* ParamGetS(const param_t* param, int index);

/* A parameter as a document: text that begins with "{" is read as an object, any other becomes a
 * string. Made at the first call and kept: the entry owns it until ParamClear.
 * NULL when the parameter is empty (errno untouched), when its text cannot be read or when memory
 * runs out; NULL with errno EINVAL for a bad index as in ParamGetS. */
talk_t* ParamGetT(param_t* param, int index);

/* The parameters with a "," between them; an empty one has nothing between its commas. Made at the
 * first call and kept: the record owns it until ParamClear.
 * NULL without parameters or memory; NULL with errno EINVAL when param is NULL. */
char* ParamString(param_t* param);

/* Frees the entries, their documents and what ParamString made. The record still points to them:
 * clear it once, and zero-fill it before it is analysed again. NULL: errno EINVAL. */
void ParamClear(param_t* param);

FAIRLEAD_API_END

#endif
