/* probe.c - a module that serves as net/probe: counts its calls, answers in every way an adapter
 * can, and misbehaves on request. */
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include "fairlead/fairlead.h"

int probe_sets; /* read by the tests through the loaded module */

/* Notes what it was given in "/tmp/.var/probe.set"; the value "refuse" is refused, and "odd" too,
 * in a way of its own. */
static int32_t set(const char* object, slash_t* path, talk_t* value) {
  char* text = value ? TalkString(value) : NULL;
  ++probe_sets;
  append_string("/tmp/.var/probe.set", "%s|%s|%s\n", object, path ? SlashString(path) : "-",
                text ? text : "-");
  const int result = text && strcmp(text, "refuse") == 0 ? 0
                     : text && strcmp(text, "odd") == 0  ? 5
                                                         : 1;
  free(text);
  return result;
}

/* Answers with the document in "/tmp/.var/probe.get"; "done" and "failed" are the codes, "crash" is
 * a crash. */
static talk_t* get(const char* object, slash_t* path) {
  char text[4096];
  (void)object;
  (void)path;
  if (!read_string("/tmp/.var/probe.get", text, sizeof text)) return NULL;
  if (strcmp(text, "done") == 0) return TALK_DONE;
  if (strcmp(text, "failed") == 0) return TALK_FAILED;
  if (strcmp(text, "array") == 0) return json_new_array();
  if (strcmp(text, "crash") == 0) raise(SIGSEGV);
  return StringTalk(text);
}

static talk_t* echo(const char* object, param_t* parameters) {
  vessel_t* answer = VesselCreate();
  char* list = parameters ? ParamString(parameters) : NULL;
  char count[16];
  snprintf(count, sizeof count, "%d", parameters ? ParamCount(parameters) : -1);
  VesselSetS(answer, "object", object);
  VesselSetS(answer, "count", count);
  if (list) VesselSetS(answer, "list", list);
  return answer;
}

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

static talk_t* string(const char* object, param_t* parameters) {
  (void)object, (void)parameters;
  return RenderCreate("just so");
}

static talk_t* array(const char* object, param_t* parameters) {
  (void)object, (void)parameters;
  return json_new_array();
}

/* long[SIZE]: a string of so many bytes. */
static talk_t* lengthy(const char* object, param_t* parameters) {
  (void)object;
  const size_t size = (size_t)atoi(ParamGetS(parameters, 1));
  char* text = malloc(size + 1);
  memset(text, 'x', size);
  text[size] = '\0';
  talk_t* answer = RenderCreate(text);
  free(text);
  return answer;
}

/* Writes straight into the channel, past the library, and leaves. */
static void answer_by_hand(const char* bytes) {
  for (int fd = 3; fd < 64; ++fd) {
    int kind = 0;
    socklen_t size = sizeof kind;
    if (getsockopt(fd, SOL_SOCKET, SO_TYPE, &kind, &size) == 0 && kind == SOCK_STREAM)
      while (*bytes && write(fd, bytes, 1) == 1) ++bytes;
  }
  _exit(0);
}

/* misbehave[HOW] */
static talk_t* misbehave(const char* object, param_t* parameters) {
  const char* how = ParamGetS(parameters, 1);
  (void)object;
  if (strcmp(how, "segv") == 0) raise(SIGSEGV);
  if (strcmp(how, "abort") == 0) abort();
  if (strcmp(how, "exit") == 0) _exit(3);
  if (strcmp(how, "leave") == 0) exit(3);
  if (strcmp(how, "log") == 0) LogWrite(LOG_MODE_CONSOLE | 6, "probe", __LINE__, "told");
  if (strcmp(how, "close") == 0)
    for (int fd = 3; fd < 256; ++fd) close(fd);
  if (strcmp(how, "wrong") == 0) answer_by_hand("{\"half\":");
  return RenderCreate("survived");
}

/* describe: name of the process and its descriptors above the standard ones, each with what it
 * leads to, and whether a program that it starts would get it. */
static talk_t* describe(const char* object, param_t* parameters) {
  char name[17] = "", path[32], target[64], list[1024] = "";
  (void)object, (void)parameters;
  get_proc_name(name);
  for (int fd = 3; fd < 64; ++fd) {
    snprintf(path, sizeof path, "/proc/self/fd/%d", fd);
    const ssize_t length = readlink(path, target, sizeof target - 1);
    if (length < 0) continue;
    snprintf(list + strlen(list), sizeof list - strlen(list), "%d=%.*s%s ", fd, (int)length, target,
             fcntl(fd, F_GETFD) & FD_CLOEXEC ? ", closed by exec" : "");
  }
  vessel_t* answer = VesselCreate();
  VesselSetS(answer, "name", name);
  VesselSetS(answer, "descriptors", list);
  return answer;
}

static adp_interface_t interfaces[] = {
    {"echo", echo, "list", "tells what it was given"},
    {"done", done, NULL, "answers done"},
    {"failed", failed, "none", NULL},
    {"nothing", nothing, NULL, NULL},
    {"string", string, NULL, NULL},
    {"array", array, NULL, NULL},
    {"lengthy", lengthy, NULL, NULL},
    {"misbehave", misbehave, NULL, NULL},
    {"describe", describe, NULL, NULL},
};

adp_set_t net_probe__set = set;
adp_get_t net_probe__get = get;
adp_interface_t* net_probe__if_array = interfaces;
int32_t net_probe__if_size = sizeof interfaces / sizeof interfaces[0];
