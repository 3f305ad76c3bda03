/* state.h - shared run-time state: everything of the state subsystem. */
#ifndef FAIRLEAD_STATE_H
#define FAIRLEAD_STATE_H

#include "fairlead/state/glink.h"
#include "fairlead/state/gvalue.h"
#include "fairlead/state/joint.h"

#endif
