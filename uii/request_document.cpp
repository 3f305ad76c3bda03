// An identifier as a request document.
#include "base/bounded_text.h"
#include "base/fail.h"
#include "fairlead/talk/edit.h"
#include "fairlead/talk/node.h"
#include "fairlead/uii.h"
#include "talk/owned_talk.h"

namespace {

using namespace fairlead;

constexpr int32_t kSetKind = 3;
constexpr int32_t kMergeKind = 4;

void add_text(vessel_t* request, const char* name, const char* text) {
  if (text) VesselSetS(request, name, text);
}

void add_copy(vessel_t* request, const char* name, talk_t* value) {
  OwnedTalk copy(value ? TalkDup(value) : nullptr);
  if (copy && VesselSetX(request, name, copy.get())) (void)copy.release();
}

// From the highest number down: the order that readers of these documents have always seen.
void add_parameters(vessel_t* request, uii_t* uii) {
  for (int number = UiiParamCount(uii); number > 0; --number) {
    FixedText<16> name;
    name.format("%d", number);
    add_copy(request, name.text(), UiiParamGetT(uii, number));
  }
}

}  // namespace

extern "C" vessel_t* UiiTalk(uii_t* uii) {
  if (!uii) return fail<vessel_t*>(EINVAL);
  vessel_t* request = VesselCreate();
  if (!request) return nullptr;

  add_text(request, "adp", UiiObjectString(uii));
  if (UiiInterface(uii)) {
    add_text(request, "fn", UiiInterface(uii));
    add_parameters(request, uii);
    return request;
  }
  add_text(request, "ab", UiiConfigString(uii));
  if (uii->kind != kSetKind && uii->kind != kMergeKind) return request;
  add_text(request, "op", uii->kind == kSetKind ? "=" : "|");
  add_copy(request, "v", UiiValueTalk(uii));
  return request;
}
