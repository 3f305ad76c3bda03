// Walking a document along a slash path.
#include "talk/member_path.h"

#include "base/fail.h"
#include "fairlead/talk/node.h"
#include "talk/owned_talk.h"
#include "talk/roles.h"

namespace fairlead {
namespace {

// A value and the objects that are still to be made above it, each with one member. They are whole
// before the document gets them, so that one that fails to be made leaves nothing behind there.
class Branch {
 public:
  explicit Branch(talk_t* value) : value_(value), top_(value) {}
  ~Branch() {
    if (top_ == value_) return;
    ErrnoKeeper keep;
    AxpCutX(value_->parent);  // still the caller's
    TalkFree(top_);
  }
  Branch(const Branch&) = delete;
  Branch& operator=(const Branch&) = delete;

  bool grow(const char* name) {
    OwnedTalk object(VesselCreate());
    axp_t* member = object ? AxpCreate(name, top_) : nullptr;
    if (!member || !VesselAdd(object.get(), member)) return false;
    top_ = object.release();
    return true;
  }

  bool append_to(vessel_t* object, const char* name) {
    axp_t* member = AxpCreate(name, top_);
    return member && VesselAdd(object, member) && handed_over();
  }

  // The member's former value comes back where this one may not stand.
  bool replace_in(axp_t* member) {
    OwnedTalk former(AxpCutX(member));
    if (AxpSetX(member, top_)) return handed_over();
    if (former) AxpSetX(member, former.release());
    return false;
  }

 private:
  bool handed_over() {
    top_ = value_;
    return true;
  }

  talk_t* value_;
  talk_t* top_;
};

bool is_above(const talk_t* value, const talk_t* document) {
  while (document && document != value) document = document->parent;
  return document != nullptr;
}

}  // namespace

talk_t* find_at(talk_t* document, const slash_t* path, int depth) {
  talk_t* node = document;
  for (int index = 1; node && index <= depth; ++index)
    node = VesselGetX(node, SlashGet(path, index));
  return node;
}

bool put_at(talk_t* document, slash_t* path, talk_t* value) {
  if (path->count < 1 || !is_vessel(document)) return fail<bool>(EINVAL);
  if (is_above(value, document)) return fail<bool>(EINVAL);
  vessel_t* object = document;
  int depth = 1;
  axp_t* member = VesselGet(object, SlashGet(path, depth));
  while (member && depth < path->count && is_vessel(member->child)) {
    object = member->child;
    member = VesselGet(object, SlashGet(path, ++depth));
  }

  Branch branch(value);
  for (int index = path->count; index > depth; --index)
    if (!branch.grow(SlashGet(path, index))) return false;
  return member ? branch.replace_in(member) : branch.append_to(object, SlashGet(path, depth));
}

bool remove_at(talk_t* document, slash_t* path) {
  if (path->count < 1 || !is_vessel(document)) return fail<bool>(EINVAL);
  return VesselClear(find_at(document, path, path->count - 1), SlashGet(path, -1)) == 1;
}

talk_t* cut_at(talk_t* document, slash_t* path) {
  return VesselCutX(find_at(document, path, path->count - 1), SlashGet(path, -1));
}

}  // namespace fairlead
