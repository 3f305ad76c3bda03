/* An adapter that gives every sort of answer: /prj/lab/answers.adp. */
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>

#include "fairlead/adp.h"
#include "fairlead/talk.h"

static talk_t* done(const char* object, param_t* parameters) {
  (void)object, (void)parameters;
  return TALK_DONE;
}

static talk_t* failed(const char* object, param_t* parameters) {
  (void)object, (void)parameters;
  return TALK_FAILED;
}

static talk_t* nothing(const char* object, param_t* parameters) {
  (void)object, (void)parameters;
  return NULL;
}

static talk_t* array(const char* object, param_t* parameters) {
  (void)object, (void)parameters;
  json_t* array = json_new_array();
  json_insert_child(array, json_new_string("a"));
  json_insert_child(array, json_new_number("1"));
  return array;
}

static talk_t* unfinished(const char* object, param_t* parameters) {
  (void)object, (void)parameters;
  json_t* object_without_value = json_new_object();
  json_insert_child(object_without_value, json_new_string("member"));
  return object_without_value;
}

static talk_t* crash(const char* object, param_t* parameters) {
  (void)object, (void)parameters;
  raise(SIGKILL);
  return TALK_DONE;
}

/* Its first parameter. */
static talk_t* echo(const char* object, param_t* parameters) {
  (void)object;
  return StringTalk(ParamGetS(parameters, 1));
}

static talk_t* count(const char* object, param_t* parameters) {
  (void)object;
  char text[] = {(char)('0' + ParamCount(parameters)), '\0'};
  return RenderCreate(text);
}

/* Done when the descriptor of the given number is open. */
static talk_t* is_open(const char* object, param_t* parameters) {
  (void)object;
  return fcntl(atoi(ParamGetS(parameters, 1)), F_GETFD) < 0 ? TALK_FAILED : TALK_DONE;
}

static int32_t set(const char* object, slash_t* path, talk_t* value) {
  (void)object, (void)path, (void)value;
  return 0;
}

/* The codes instead of documents, as scripts can answer them. */
static talk_t* get(const char* object, slash_t* path) {
  (void)object;
  if (SlashCount(path) < 1) return NULL;
  return *SlashGet(path, 1) == 'd' ? TALK_DONE : TALK_FAILED;
}

static adp_interface_t interfaces[] = {
    {"done", done, "", ""},   {"failed", failed, "", ""},         {"nothing", nothing, "", ""},
    {"array", array, "", ""}, {"unfinished", unfinished, "", ""}, {"echo", echo, "TEXT", "says it"},
    {"crash", crash, "", ""}, {"count", count, "", ""},           {"is_open", is_open, "", ""}};

adp_set_t lab_answers__set = set;
adp_get_t lab_answers__get = get;
adp_interface_t* lab_answers__if_array = interfaces;
int32_t lab_answers__if_size = sizeof interfaces / sizeof interfaces[0];
