/* fairlead.h - the whole library. */
#ifndef FAIRLEAD_FAIRLEAD_H
#define FAIRLEAD_FAIRLEAD_H

#include "fairlead/adp.h"
#include "fairlead/atcmd.h"
#include "fairlead/config.h"
#include "fairlead/log.h"
#include "fairlead/misc.h"
#include "fairlead/service.h"
#include "fairlead/state.h"
#include "fairlead/talk.h"
#include "fairlead/uii.h"

#endif
