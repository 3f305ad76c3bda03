/* node.h - talk nodes: objects (Vessel), members (Axp) and strings (Render). */
#ifndef FAIRLEAD_TALK_NODE_H
#define FAIRLEAD_TALK_NODE_H

#include <stdint.h>

#include "fairlead/api.h"
#include "fairlead/talk/json.h"

FAIRLEAD_API_BEGIN

vessel_t* VesselCreate(void);
render_t* RenderCreate(const char* text);
render_t* StringRender(const char* text);
axp_t* AxpCreate(const char* name, talk_t* value);
void TalkFree(talk_t* talk);
uint32_t VesselCheck(const talk_t* talk);
uint32_t AxpCheck(const talk_t* talk);
uint32_t RenderCheck(const talk_t* talk);
axp_t* VesselEach(vessel_t* vessel, axp_t* previous);
axp_t* VesselTurn(vessel_t* vessel, axp_t* next);
int VesselCount(vessel_t* vessel);
axp_t* VesselFind(vessel_t* vessel, const char* name);
axp_t* VesselGet(vessel_t* vessel, const char* name);
talk_t* VesselGetX(vessel_t* vessel, const char* name);
const char* VesselGetS(vessel_t* vessel, const char* name);
int VesselAdd(vessel_t* vessel, axp_t* member);
int VesselSet(vessel_t* vessel, axp_t* member);
int VesselSetX(vessel_t* vessel, const char* name, talk_t* value);
int VesselSetS(vessel_t* vessel, const char* name, const char* text);
axp_t* VesselSplit(vessel_t* vessel, axp_t* member);
int VesselDelete(vessel_t* vessel, axp_t* member);
axp_t* VesselCut(vessel_t* vessel, const char* name);
int VesselClear(vessel_t* vessel, const char* name);
int VesselClearX(vessel_t* vessel, const char* name);
talk_t* VesselCutX(vessel_t* vessel, const char* name);
const char* RenderString(const talk_t* talk);
const char* AxpGet(const axp_t* member);
int AxpSet(axp_t* member, const char* name);
talk_t* AxpGetX(const axp_t* member);
const char* AxpGetS(const axp_t* member);
int AxpSetX(axp_t* member, talk_t* value);
int AxpSetS(axp_t* member, const char* text);
int AxpClearX(axp_t* member);
talk_t* AxpCutX(axp_t* member);

FAIRLEAD_API_END

#endif
