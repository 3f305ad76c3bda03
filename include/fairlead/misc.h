/* misc.h - system helpers: everything of the misc subsystem. */
#ifndef FAIRLEAD_MISC_H
#define FAIRLEAD_MISC_H

#include "fairlead/misc/clock.h"
#include "fairlead/misc/encoders.h"
#include "fairlead/misc/files.h"
#include "fairlead/misc/network.h"
#include "fairlead/misc/process.h"

#endif
