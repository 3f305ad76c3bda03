/* talk.h - talk documents: everything of the talk subsystem. */
#ifndef FAIRLEAD_TALK_H
#define FAIRLEAD_TALK_H

#include "fairlead/talk/edit.h"
#include "fairlead/talk/json.h"
#include "fairlead/talk/node.h"
#include "fairlead/talk/path.h"
#include "fairlead/talk/text.h"

#endif
