// Nodes inside a document, addressed by slash path: segment by segment, the first member of that
// name in an object.
#pragma once

#include "fairlead/talk/path.h"

namespace fairlead {

// The value `depth` segments down, still in the document; null with errno EINVAL when there is
// none.
talk_t* find_at(talk_t* document, const slash_t* path, int depth);
inline talk_t* find_at(talk_t* document, const slash_t* path) {
  return find_at(document, path, path->count);
}

// Hands `value` to the document as the value at the path. What is missing on the way is made, what
// is no object there is replaced by one. False: no segment, no object, or the value cannot stand
// there; it is still the caller's.
bool put_at(talk_t* document, slash_t* path, talk_t* value);

// Frees the member at the path; false, and nothing changes, when it is not there.
bool remove_at(talk_t* document, slash_t* path);

// Detaches the value at the path for the caller; its member stays without a value.
talk_t* cut_at(talk_t* document, slash_t* path);

}  // namespace fairlead
