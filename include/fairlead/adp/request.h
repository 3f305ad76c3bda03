/* request.h - whole requests. */
#ifndef FAIRLEAD_ADP_REQUEST_H
#define FAIRLEAD_ADP_REQUEST_H

#include <stdint.h>

#include "fairlead/api.h"
#include "fairlead/uii.h"

FAIRLEAD_API_BEGIN

int32_t He(uii_t* identifier, talk_t** out);
int32_t TalkHe(talk_t* request, talk_t** out);

FAIRLEAD_API_END

#endif
