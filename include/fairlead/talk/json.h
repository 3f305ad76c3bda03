/* json.h - the JSON node tree and its text form. */
#ifndef FAIRLEAD_TALK_JSON_H
#define FAIRLEAD_TALK_JSON_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include "fairlead/api.h"

FAIRLEAD_API_BEGIN

enum json_kind {
  JSON_STRING = 0,
  JSON_NUMBER = 1,
  JSON_OBJECT = 2,
  JSON_ARRAY = 3,
  JSON_TRUE = 4,
  JSON_FALSE = 5,
  JSON_NULL = 6
};
typedef enum json_error {
  JSON_DONE = 1,
  JSON_NEED_MORE = 2,
  JSON_DONE_AT_END = 3,
  JSON_SYNTAX = 4,
  JSON_NO_MEMORY = 6,
  JSON_BAD_AFTER_COMMA = 7,
  JSON_BAD_STRUCTURE = 8,
  JSON_INTERNAL = 10
} json_error;
typedef struct json json_t;
struct json {
  uint32_t type;
  char* text;
  json_t *next, *previous, *parent, *child, *child_end;
};
typedef json_t talk_t, vessel_t, axp_t,
    render_t; /* one record; the name says the role a function expects */

#define TALK_DONE ((talk_t*)1)   /* where a result may be a code instead of a document: done */
#define TALK_FAILED ((talk_t*)2) /* the same: failed */
typedef struct rcs {
  char* text;
  uint32_t length;
  uint32_t capacity;
} rcs_t;
typedef struct json_buffer {
  char* text;
  size_t length, capacity;
} json_buffer_t;
typedef struct json_jpi {
  json_t* cursor;      /* the root once the document is complete */
  uint32_t state;      /* the rest is the parser's own: what may come next, */
  uint32_t lexer;      /* the kind of token that is half read, */
  size_t line;         /* the line that is read, from 1, */
  json_buffer_t token; /* and what the piece before held of the token */
} json_jpi_t;

rcs_t* rcs_create(uint32_t length);
int rcs_resize(rcs_t* rcs, uint32_t length);
int rcs_catc(rcs_t* pre, char c);
int rcs_catcs(rcs_t* pre, const char* pos, uint32_t n);
char* rcs_unwrap(rcs_t* rcs);
void rcs_free(rcs_t** rcs);
uint32_t rcs_length(const rcs_t* rcs);

json_t* json_new_value(uint32_t kind);
json_t* json_new_string(const char* text);
json_t* json_new_number(const char* text);
json_t* json_new_object(void);
json_t* json_new_array(void);
json_t* json_new_true(void);
json_t* json_new_false(void);
json_t* json_new_null(void);
json_error json_insert_child(json_t* parent, json_t* child);
json_error json_insert_pair_into_object(json_t* parent, const char* text_label, json_t* value);
int json_detach_child(json_t* parent, json_t* child);
void json_free_value(json_t** value);
json_t* json_find_first_label(const json_t* object, const char* text_label);
json_error json_tree_to_string(json_t* root, char** text);
json_error json_stream_output(FILE* file, json_t* root);
json_error json_parse_document(json_t** root, const char* text);
int json_jpi_init(json_jpi_t* jpi);
json_error json_parse_fragment(json_jpi_t* info, const char* text);
json_error json_stream_parse(FILE* file, json_t** document);
char* json_escape(const char* text);
char* json_unescape(const char* text);
char* json_format_string(const char* text);
void json_strip_white_spaces(char* text);
void json_render_tree(json_t* root);
void json_render_tree_indented(json_t* root, int level);

FAIRLEAD_API_END

#endif
