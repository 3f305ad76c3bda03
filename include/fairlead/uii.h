/* uii.h - interface identifiers: one line of text that names a request. */
#ifndef FAIRLEAD_UII_H
#define FAIRLEAD_UII_H

#include <stdint.h>

#include "fairlead/api.h"
#include "fairlead/talk/path.h"

FAIRLEAD_API_BEGIN

typedef struct uii {
  char* text;
  char* work;
  int32_t kind;
  slash_t object;
  char* interface;
  param_t parameter;
  slash_t config;
  char* value;
  talk_t* talk;
} uii_t;
uii_t* UiiCreate(const char* text);
uii_t* UiiBuild(int count, const char* const* text);
uii_t* UiiFormat(const char* format, ...) __attribute__((format(printf, 1, 2)));
int UiiAnalysis(uii_t* uii);
void UiiFree(uii_t* uii);
char* UiiAssembly(const char* object, const char* interface, const char* parameter, char* buffer,
                  int size);
const char* UiiString(uii_t* uii);
int UiiObjectCount(uii_t* uii);
int UiiConfigCount(uii_t* uii);
const char* UiiObject(uii_t* uii, int index);
const char* UiiConfig(uii_t* uii, int index);
const char* UiiObjectString(uii_t* uii);
const char* UiiConfigString(uii_t* uii);
char** UiiValue(uii_t* uii);
const char* UiiValueString(uii_t* uii);
talk_t* UiiValueTalk(uii_t* uii);
const char* UiiInterface(uii_t* uii);
param_t* UiiParameter(uii_t* uii);
int UiiParamCount(uii_t* uii);
param_entry_t* UiiParamGet(uii_t* uii, int index);
talk_t* UiiParamGetT(uii_t* uii, int index);
const char* UiiParamGetS(uii_t* uii, int index);
const char* UiiParamString(uii_t* uii);

FAIRLEAD_API_END

#endif
