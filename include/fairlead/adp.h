/* adp.h - adapters: everything of the adapter subsystem. */
#ifndef FAIRLEAD_ADP_H
#define FAIRLEAD_ADP_H

#include "fairlead/adp/handle.h"
#include "fairlead/adp/isolated.h"
#include "fairlead/adp/project.h"
#include "fairlead/adp/request.h"
#include "fairlead/adp/shell.h"

#endif
