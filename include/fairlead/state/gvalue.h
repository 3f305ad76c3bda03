/* gvalue.h - named values shared by all processes. */
#ifndef FAIRLEAD_STATE_GVALUE_H
#define FAIRLEAD_STATE_GVALUE_H

#include <sys/types.h>

#include "fairlead/api.h"
#include "fairlead/talk/json.h"

FAIRLEAD_API_BEGIN

typedef struct gvalue {
  int fd;
  void* address;
  char path[256];
} gvalue_t;
gvalue_t* GvalueCreateDetails(const char* name, int capacity, int data_size, mode_t mode);
gvalue_t* GvalueCreate(const char* name);
int GvalueSet(gvalue_t* gvalue, const char* name, const void* value, int size);
void* GvalueGet(gvalue_t* gvalue, const char* name);
int GvalueSize(gvalue_t* gvalue, const char* name);
vessel_t* GvalueList(gvalue_t* gvalue);

FAIRLEAD_API_END

#endif
