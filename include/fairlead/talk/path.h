/* path.h - slash paths and parameter lists. */
#ifndef FAIRLEAD_TALK_PATH_H
#define FAIRLEAD_TALK_PATH_H

#include <stdint.h>

#include "fairlead/api.h"
#include "fairlead/talk/json.h"

FAIRLEAD_API_BEGIN

#define SLASH_MAX 20
#define PARAM_MAX 20
typedef struct slash {
  int32_t count;
  char* segment[SLASH_MAX];
  char* string;
} slash_t;
typedef struct param_entry {
  char* text;
  talk_t* talk;
} param_entry_t;
typedef struct param {
  char* string;
  int32_t count;
  param_entry_t* entry[PARAM_MAX];
} param_t;
int SlashAnalysis(slash_t* slash, char* text);
int SlashCount(const slash_t* slash);
char* SlashGet(const slash_t* slash, int index);
char* SlashString(slash_t* slash);
void SlashClear(slash_t* slash);
int ParamAnalysis(param_t* param, char* text);
int ParamCount(const param_t* param);
param_entry_t* ParamGet(const param_t* param, int index);
char* ParamGetS(const param_t* param, int index);
talk_t* ParamGetT(param_t* param, int index);
char* ParamString(param_t* param);
void ParamClear(param_t* param);

FAIRLEAD_API_END

#endif
