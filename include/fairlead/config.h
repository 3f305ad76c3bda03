/* config.h - the configuration store. */
#ifndef FAIRLEAD_CONFIG_H
#define FAIRLEAD_CONFIG_H

#include "fairlead/api.h"
#include "fairlead/talk/path.h"

FAIRLEAD_API_BEGIN

int ConfigSet(const char* name, slash_t* path, const char* path_text, talk_t* value);
int ConfigSetS(const char* name, slash_t* path, const char* path_text, const char* value);
talk_t* ConfigGet(const char* name, slash_t* path, const char* path_text);
char* ConfigGetS(const char* name, slash_t* path, const char* path_text, char* buffer, int size);
vessel_t* ConfigList(const char* name);
vessel_t* config_list_all(const char* directory);
int ConfigInstall(const char* project);
int ConfigUninstall(const char* project);

FAIRLEAD_API_END

#endif
