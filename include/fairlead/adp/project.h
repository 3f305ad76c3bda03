/* project.h - the project tree, the registry of dynamic adapters, and adapter lookup. */
#ifndef FAIRLEAD_ADP_PROJECT_H
#define FAIRLEAD_ADP_PROJECT_H

#include <stdint.h>

#include "fairlead/api.h"
#include "fairlead/talk/path.h"

FAIRLEAD_API_BEGIN

enum { ADP_DYN = 1, ADP_PRJ = 3, ADP_SHELL = 5, ADP_PURE = 6 };
vessel_t* ProjectList(void);
char* ProjectPath(const char* project, char* buffer, int size);
vessel_t* ProjectAdpList(const char* project);
vessel_t* ProjectCfgList(const char* project);
char* ProjectAdpPath(slash_t* path, char* buffer, int size);
char* ProjectOscPath(char* buffer, int size, const char* project, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
char* ProjectVarPath(char* buffer, int size, const char* name, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
int DynAdpCreate(const char* object, const char* adapter);
int DynAdpDelete(const char* object);
talk_t* DynAdpList(const char* name);
char* DynAdpPath(slash_t* path, char* buffer, int size);
int AdpPath(slash_t* path, const char* text, char* buffer, int size);

FAIRLEAD_API_END

#endif
