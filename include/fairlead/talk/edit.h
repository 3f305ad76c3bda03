/* edit.h - whole-document operations: merge, prune, copy, compare. */
#ifndef FAIRLEAD_TALK_EDIT_H
#define FAIRLEAD_TALK_EDIT_H

#include "fairlead/api.h"
#include "fairlead/talk/json.h"

FAIRLEAD_API_BEGIN

int VesselModify(vessel_t* source, vessel_t* target);
int AxpModify(axp_t* source, axp_t* target);
int VesselAddRule(vessel_t* rule, vessel_t* target);
int VesselDeleteRule(vessel_t* rule, vessel_t* target);
vessel_t* VesselDup(vessel_t* vessel);
axp_t* AxpDup(axp_t* member);
talk_t* TalkDup(talk_t* talk);
int TalkEqual(const talk_t* a, const talk_t* b);

FAIRLEAD_API_END

#endif
