/* handle.h - adapter handles and calls in the caller's process. */
#ifndef FAIRLEAD_ADP_HANDLE_H
#define FAIRLEAD_ADP_HANDLE_H

#include <stdint.h>

#include "fairlead/api.h"
#include "fairlead/state/glink.h"
#include "fairlead/talk/path.h"

FAIRLEAD_API_BEGIN

typedef int32_t (*adp_set_t)(const char* object, slash_t* path, talk_t* value);
typedef talk_t* (*adp_get_t)(const char* object, slash_t* path);
typedef talk_t* (*adp_call_t)(const char* object, param_t* parameters);
typedef struct adp_interface {
  const char* name;
  adp_call_t function;
  const char* opt;
  const char* intro;
} adp_interface_t;
typedef struct adp_module {
  int32_t references;
  glink_t link;
  char file[256];
  char project[64];
  char adapter[64];
  void* library;
  adp_set_t set;
  adp_get_t get;
  adp_interface_t* interface_table;
  int32_t interface_count;
} adp_module_t;
typedef struct adp {
  int32_t type;
  char name[256];
  char file[256];
  adp_module_t* module;
} adp_t;

adp_t* AdpFileOpen(slash_t* object, const char* object_text);
void AdpFileClose(adp_t* adp);
int32_t AdpAbSet(adp_t* adp, slash_t* path, const char* path_text, talk_t* value,
                 const char* value_text);
talk_t* AdpAbGet(adp_t* adp, slash_t* path, const char* path_text);
vessel_t* AdpIfList(adp_t* adp);
talk_t* AdpIfCall(adp_t* adp, const char* name, param_t* parameters, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
int32_t AdpSet(slash_t* object, const char* object_text, slash_t* path, const char* path_text,
               talk_t* value, const char* value_text);
talk_t* AdpGet(slash_t* object, const char* object_text, slash_t* path, const char* path_text);
talk_t* AdpCall(slash_t* object, const char* object_text, const char* name, param_t* parameters,
                const char* format, ...) __attribute__((format(printf, 5, 6)));
vessel_t* AdpCallList(slash_t* object, const char* object_text);

FAIRLEAD_API_END

#endif
