/* text.h - talk documents as text, files, messages and listings. */
#ifndef FAIRLEAD_TALK_TEXT_H
#define FAIRLEAD_TALK_TEXT_H

#include "fairlead/api.h"
#include "fairlead/talk/json.h"

FAIRLEAD_API_BEGIN

vessel_t* StringVessel(const char* text);
talk_t* StringTalk(const char* text);
char* VesselString(vessel_t* vessel);
char* TalkString(talk_t* talk);
vessel_t* FileVessel(const char* path);
int VesselFile(vessel_t* vessel, const char* path);
talk_t* FdTalk(int fd);
int TalkPrint(talk_t* talk);

FAIRLEAD_API_END

#endif
