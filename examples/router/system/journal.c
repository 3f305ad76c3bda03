/* journal.c - the adapter of system/journal, which keeps the last event that it was told of. Its
 * interface "note" is made to be the target of joints; reads are left to the configuration store.
 *
 *   joint create net/wan up system/journal note    from now on, "up" of net/wan is noted
 *   he system/journal                              what was noted last */
#include "fairlead/adp.h"
#include "fairlead/config.h"
#include "fairlead/talk.h"

/* note[OBJECT, EVENT, DATA]: what every target of a joint is told; the data may be missing. */
static talk_t* note(const char* object, param_t* parameters) {
  if (!parameters || ParamCount(parameters) < 2) return TALK_FAILED;
  vessel_t* entry = VesselCreate();
  talk_t* data = ParamCount(parameters) > 2 ? ParamGetT(parameters, 3) : NULL;
  int kept = VesselSetS(entry, "object", ParamGetS(parameters, 1)) &&
             VesselSetS(entry, "event", ParamGetS(parameters, 2));
  if (kept && data)
    kept = VesselSetX(entry, "data", TalkDup(data)); /* the list owns the original */
  kept = kept && ConfigSet(object, NULL, NULL, entry);
  TalkFree(entry);
  return kept ? TALK_DONE : TALK_FAILED;
}

static adp_interface_t interfaces[] = {
    {"note", note, "OBJECT,EVENT,DATA", "keeps an event as the last one"}};

adp_interface_t* system_journal__if_array = interfaces;
int32_t system_journal__if_size = 1;
