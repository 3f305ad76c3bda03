// An identifier as a request document.
#include "base/bounded_text.h"
#include "base/errno_keeper.h"
#include "base/fail.h"
#include "fairlead/talk/edit.h"
#include "fairlead/talk/node.h"
#include "fairlead/uii.h"
#include "talk/owned_talk.h"

namespace {

using namespace fairlead;

// Each gives false when memory runs out: a request with a part missing would ask for something
// else.
bool add_text(vessel_t* request, const char* name, const char* text) {
  return VesselSetS(request, name, text) == 1;
}

// No value adds nothing; errno, cleared before, tells when it is one that was lost.
bool add_copy(vessel_t* request, const char* name, talk_t* value) {
  if (!value) return errno != ENOMEM;
  OwnedTalk copy(TalkDup(value));
  if (!copy || !VesselSetX(request, name, copy.get())) return false;
  (void)copy.release();  // the request's now
  return true;
}

// From the highest number down: the order that readers of these documents have always seen.
bool add_call(vessel_t* request, uii_t* uii) {
  if (!add_text(request, "fn", UiiInterface(uii))) return false;
  for (int number = UiiParamCount(uii); number > 0; --number) {
    FixedText<16> name;
    name.format("%d", number);
    if (!add_copy(request, name.text(), UiiParamGetT(uii, number))) return false;
  }
  return true;
}

bool add_data(vessel_t* request, uii_t* uii) {
  if (UiiConfigCount(uii) > 0 && !add_text(request, "ab", UiiConfigString(uii))) return false;
  if (uii->kind != UII_SET && uii->kind != UII_MERGE) return true;
  return add_text(request, "op", uii->kind == UII_SET ? "=" : "|") &&
         add_copy(request, "v", UiiValueTalk(uii));
}

OwnedTalk request_for(uii_t* uii) {
  const ErrnoKeeper keep;
  errno = 0;
  OwnedTalk request(VesselCreate());
  if (!request || !add_text(request.get(), "adp", UiiObjectString(uii))) return {};
  const bool whole =
      UiiInterface(uii) ? add_call(request.get(), uii) : add_data(request.get(), uii);
  return whole ? std::move(request) : OwnedTalk();
}

}  // namespace

extern "C" vessel_t* UiiTalk(uii_t* uii) {
  if (UiiObjectCount(uii) < 1) return fail<vessel_t*>(EINVAL);
  OwnedTalk request = request_for(uii);
  return request ? request.release() : fail<vessel_t*>(ENOMEM);
}
