/* json.h - the JSON node tree and its text form: nodes, serializer, incremental parser.
 *
 * A document is a tree of nodes. An object's children are labels, each of which has its value as
 * its only child; an array's children are values. A node owns its text and its children: freeing it
 * frees all below it. A node that is linked into no tree belongs to whoever holds it.
 *
 * Strings hold their text as it stands between the quotes, escape sequences included: the parser
 * does not unescape and the serializer does not escape (json_escape and json_unescape do).
 *
 * Broken preconditions, such as null where a node is needed, end the process with an assertion on
 * the standard error stream; everything else, memory that runs out included, is told by the result.
 * No depth of nesting exhausts the stack, and no cost grows faster than the document.
 *
 * Nodes that are made together, by a parser, TalkDup or VesselModify, may share blocks of at most 4
 * KB each, which are freed when the last of their nodes has gone.
 *
 * Threads: no state is shared; separate trees may be used in separate threads, also what was taken
 * out of one tree. Fork: plain memory,
 * each process has its own copy. */
#ifndef FAIRLEAD_TALK_JSON_H
#define FAIRLEAD_TALK_JSON_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include "fairlead/api.h"

FAIRLEAD_API_BEGIN

enum json_kind {
  JSON_STRING = 0, /* a string value, or the label of a member */
  JSON_NUMBER = 1, /* its characters as written */
  JSON_OBJECT = 2,
  JSON_ARRAY = 3,
  JSON_TRUE = 4,
  JSON_FALSE = 5,
  JSON_NULL = 6
};

/* The results of builders, serializer and parser; 5 and 9 are not used. */
typedef enum json_error {
  JSON_DONE = 1,            /* success */
  JSON_NEED_MORE = 2,       /* the text ended inside the document */
  JSON_DONE_AT_END = 3,     /* a piece of text ended behind the complete document */
  JSON_SYNTAX = 4,          /* a token that may not stand where it stands */
  JSON_NO_MEMORY = 6,       /* memory ran out */
  JSON_BAD_AFTER_COMMA = 7, /* no token at all where a comma calls for a member's label */
  JSON_BAD_STRUCTURE = 8,   /* a node that may not stand where it was put */
  JSON_INTERNAL = 10        /* an unknown kind of node, a parse that has ended, a failing stream */
} json_error;

/* A node. Read its fields freely; change them through the functions below only. The text of a node
 * lies in the node's own block, so that it cannot be freed or replaced by hand. */
typedef struct json json_t;
struct json {
  uint32_t type;             /* json_kind */
  char* text;                /* of a string or number, else null */
  json_t *next, *previous;   /* siblings, null at the ends */
  json_t* parent;            /* null at the root */
  json_t *child, *child_end; /* the first and the last, null when there is none */
};
typedef json_t talk_t, vessel_t, axp_t,
    render_t; /* one record; the name says the role a function expects */

#define TALK_DONE ((talk_t*)1)   /* where a result may be a code instead of a document: done */
#define TALK_FAILED ((talk_t*)2) /* the same: failed */

/* A growable string: a buffer of capacity + 1 bytes, ended by a NUL behind `length` characters. */
typedef struct rcs {
  char* text;
  uint32_t length;
  uint32_t capacity;
} rcs_t;

/* Text under construction; the parser's own. */
typedef struct json_buffer {
  char* text;
  size_t length, capacity;
} json_buffer_t;

/* The state of a parse between two pieces of text. */
typedef struct json_jpi {
  json_t* cursor;      /* the root once the document is complete */
  uint32_t state;      /* the rest is the parser's own: what may come next, */
  uint32_t lexer;      /* the kind of token that is half read, */
  size_t line;         /* the line that is read, from 1, */
  json_buffer_t token; /* what the pieces before held of the token, */
  void* slab;          /* and where the next nodes go */
  size_t total;
} json_jpi_t;

/* What json_saxy_parse calls, in the order of the text; each may be null. A function returns 1 to
 * go on or 0 to end the parse. Texts are as written in the document and not ended by a NUL. */
typedef struct json_saxy {
  int (*object_begin)(void* context);
  int (*object_end)(void* context);
  int (*array_begin)(void* context);
  int (*array_end)(void* context);
  int (*label)(void* context, const char* text, size_t length);
  /* `kind` is JSON_STRING, JSON_NUMBER, JSON_TRUE, JSON_FALSE or JSON_NULL. */
  int (*value)(void* context, uint32_t kind, const char* text, size_t length);
} json_saxy_t;

/* Growable string. */

/* Makes an empty string with room for `length` characters; null when memory runs out. To be
 * released with rcs_free or rcs_unwrap. */
rcs_t* rcs_create(uint32_t length);

/* Gives the buffer room for exactly `length` characters and writes a NUL at that place; text that
 * is longer is cut. Returns 1. When memory runs out returns 0, and the record is gone; the buffer
 * is not, and only a caller that has kept its address can free it. */
int rcs_resize(rcs_t* rcs, uint32_t length);

/* Appends a character. A full buffer is first resized by 5. Returns 1, or 0 as rcs_resize. */
int rcs_catc(rcs_t* pre, char c);

/* Appends the first n bytes of `pos`, which must not lie in this string. A buffer that is too small
 * is first resized to 5 more than needed. Returns 1, or 0 as rcs_resize. */
int rcs_catcs(rcs_t* pre, const char* pos, uint32_t n);

/* Frees the record and returns its text, shrunk to its length, which the caller frees. */
char* rcs_unwrap(rcs_t* rcs);

/* Frees text and record and sets the caller's pointer to null; a null record does nothing. */
void rcs_free(rcs_t** rcs);

uint32_t rcs_length(const rcs_t* rcs);

/* Making nodes. Each returns a new unlinked node, to be released with json_free_value, or null when
 * memory runs out. */

/* A node of any kind without text; the kind is not checked. */
json_t* json_new_value(uint32_t kind);
/* Nodes with a copy of `text`, which for a string is in its escaped form. */
json_t* json_new_string(const char* text);
json_t* json_new_number(const char* text);
json_t* json_new_object(void);
json_t* json_new_array(void);
json_t* json_new_true(void);
json_t* json_new_false(void);
json_t* json_new_null(void);

/* Linking. */

/* Makes `child`, which must be unlinked, the last child of `parent`. An object takes strings, as
 * labels; a label (a string) or an array takes values: objects, arrays, and of the others those
 * without children. Whether a label has a value already is not checked.
 * Returns JSON_DONE, or JSON_BAD_STRUCTURE, when both are as they were. */
json_error json_insert_child(json_t* parent, json_t* child);

/* Appends a member made of a copy of `text_label` and of `value`, which must be unlinked. Returns
 * JSON_DONE; JSON_NO_MEMORY or JSON_BAD_STRUCTURE: nothing changed, the value is the caller's. */
json_error json_insert_pair_into_object(json_t* parent, const char* text_label, json_t* value);

/* Unlinks a child, which is the caller's from then on.
 * Returns 1, or 0 with errno EINVAL: a null argument, or child is no child of parent. */
int json_detach_child(json_t* parent, json_t* child);

/* Frees the node and all below it and sets the caller's pointer to null. A node that is still in a
 * tree is taken out of it first; the pointer may be the tree's own, which then is what this makes
 * of it: json_free_value(&array->child) removes the first element. */
void json_free_value(json_t** value);

/* The first label of an object with exactly this text, or null. */
json_t* json_find_first_label(const json_t* object, const char* text_label);

/* Writing. */

/* Sets *text to the tree as compact text, without any white space, children in their order; the
 * caller frees it. A string without a parent counts as a label, so a lone string can't be written.
 * Returns JSON_DONE; with *text untouched: JSON_BAD_STRUCTURE a label without value, or a string
 * or number without text | JSON_INTERNAL an unknown kind | JSON_NO_MEMORY. */
json_error json_tree_to_string(json_t* root, char** text);

/* Writes the same text to a stream. Returns as json_tree_to_string, and JSON_INTERNAL as well when
 * the stream fails; what was written until then stays written. */
json_error json_stream_output(FILE* file, json_t* root);

/* Prints one line per node on the standard output stream, for developers: its kind and text,
 * indented by two spaces per level, down to level 40. The second form starts at `level`. */
void json_render_tree(json_t* root);
void json_render_tree_indented(json_t* root, int level);

/* Reading. A document is one object, with any white space around it. Tokens are those of RFC 8259,
 * with two deliberate differences: an array may end with a comma before its "]", and strings may
 * hold raw control characters, because the serializer writes them as they are. A label may occur
 * more than once: all are kept, in order.
 *
 * A token out of place is reported as "JSON: state %d: defaulted at line %zd" on the standard error
 * stream, except behind the complete document and with JSON_BAD_AFTER_COMMA. */

/* Sets *root, which must be null, to the tree of a whole text. Returns JSON_DONE; with *root
 * untouched and all memory freed: JSON_NEED_MORE the text ends inside the document, or is empty |
 * JSON_SYNTAX | JSON_BAD_AFTER_COMMA | JSON_NO_MEMORY. A text of white space is JSON_SYNTAX. */
json_error json_parse_document(json_t** root, const char* text);

/* Makes a record ready for the first piece of a document; what it held is not freed. Returns 1. */
int json_jpi_init(json_jpi_t* jpi);

/* Reads the next piece of a document, which may be cut anywhere, inside a token as well. Returns
 *   JSON_NEED_MORE    the document is not complete: the record owns what was read so far;
 *   JSON_DONE_AT_END  it is: info->cursor is the root, and is the caller's once no further piece is
 *                     given (further white space gives this result again);
 *   any other         a failure: all that was read is freed, the cursor is null, and every further
 *                     piece gives JSON_INTERNAL until json_jpi_init.
 * A null text says that no more will come: JSON_DONE for a complete document, else JSON_INTERNAL,
 * when all that was read is freed. That is also how a parse is abandoned. */
json_error json_parse_fragment(json_jpi_t* info, const char* text);

/* Reads a stream to its end, in pieces of a line or 1023 bytes, and sets *document, which must be
 * null, to its tree. In a line with a NUL byte, what follows that byte is not read. Returns as
 * json_parse_document, but JSON_INTERNAL when the stream ends inside the document or is empty;
 * after a failure the stream stands behind the piece that failed. */
json_error json_stream_parse(FILE* file, json_t** document);

/* Reads a whole text without building a tree: calls `events` with `context` for what it reads. The
 * memory needed is one bit per level of nesting. Returns JSON_DONE when the document is complete or
 * a function ended the parse; else as json_parse_document: the functions have then been called for
 * what stands before the fault. They may call anything, this function included. */
json_error json_saxy_parse(const char* text, const json_saxy_t* events, void* context);

/* Texts. Each returns a new text that the caller frees, or null when memory runs out. */

/* The text with \ " / and control characters escaped, the latter as \b \f \n \r \t or \u00xx. Bytes
 * from 128 on are copied. */
char* json_escape(const char* text);

/* The text with its escape sequences replaced, \uXXXX by UTF-8. Whatever stands six characters
 * behind the backslash of a high surrogate is taken for the low one, unchecked; \u0000 ends the
 * text for its reader. A sequence that the end of the text cuts short counts as far as it goes.
 * A backslash before any other character, or at the end, is a broken precondition. */
char* json_unescape(const char* text);

/* Compact text on several lines: one tab per open brace, a space behind ":"; brackets start no
 * line. In a string, the character behind an escaped double quote is copied unexamined, so a string
 * that ends in one runs on to the next quote; kept for scripts that rely on the output as it is. */
char* json_format_string(const char* text);

/* Removes white space outside strings, in place. A double quote behind a backslash never ends a
 * string, even where that backslash is itself escaped. */
void json_strip_white_spaces(char* text);

FAIRLEAD_API_END

#endif
