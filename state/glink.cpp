// The intrusive list: the first element's `previous` is the last element.
#include "fairlead/state/glink.h"

#include "base/fail.h"

namespace {

using fairlead::fail;

bool unlinked(const glink_t* element) { return !element->next && !element->previous; }

glink_t* reset(glink_t* element) {
  element->next = element->previous = nullptr;
  return element;
}

void insert_front(glink_t* list, glink_t* element) {
  glink_t* first = list->next;
  element->next = first;
  element->previous = first ? first->previous : element;
  if (first) first->previous = element;
  list->next = element;
}

void insert_before(glink_t* element, glink_t* position) {
  element->next = position;
  element->previous = position->previous;
  position->previous->next = element;
  position->previous = element;
}

void remove_first(glink_t* list) {
  glink_t* first = list->next;
  list->next = first->next;
  if (first->next) first->next->previous = first->previous;
  reset(first);
}

void remove_inner(glink_t* list, glink_t* element) {
  glink_t* follower = element->next ? element->next : list->next;
  follower->previous = element->previous;
  element->previous->next = element->next;
  reset(element);
}

void remove(glink_t* list, glink_t* element) {
  if (element == list->next)
    remove_first(list);
  else
    remove_inner(list, element);
}

}  // namespace

extern "C" int GlinkInit(glink_t* link) {
  if (!link) return fail<int>(EINVAL);
  reset(link);
  return 1;
}

extern "C" int GlinkIsEmpty(const glink_t* list) {
  if (!list) return fail(EINVAL, 1);
  return list->next ? 0 : 1;
}

extern "C" int GlinkPut(glink_t* list, glink_t* element) {
  if (!list || !element || !unlinked(element)) return fail<int>(EINVAL);
  glink_t* first = list->next;
  if (!first) {
    insert_front(list, element);
    return 1;
  }
  element->previous = first->previous;
  first->previous->next = element;
  first->previous = element;
  return 1;
}

extern "C" glink_t* GlinkGet(glink_t* list) {
  if (!list) return fail<glink_t*>(EINVAL);
  glink_t* first = list->next;
  if (first) remove_first(list);
  return first;
}

extern "C" glink_t* GlinkPop(glink_t* list) {
  if (!list) return fail<glink_t*>(EINVAL);
  if (!list->next) return nullptr;
  glink_t* last = list->next->previous;
  remove(list, last);
  return last;
}

extern "C" int GlinkInsert(glink_t* list, glink_t* element, glink_t* position) {
  if (!list || !element || !unlinked(element)) return fail<int>(EINVAL);
  if (!list->next || !position || position == list->next)
    insert_front(list, element);
  else
    insert_before(element, position);
  return 1;
}

extern "C" int GlinkDelete(glink_t* list, glink_t* element) {
  if (!list || !element || !element->previous) return fail<int>(EINVAL);
  if (!list->next) return 0;
  remove(list, element);
  return 1;
}
