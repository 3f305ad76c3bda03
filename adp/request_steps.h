// The steps of a request, the same for identifiers and documents, in the caller's process and
// isolated.
#pragma once

#include <cstdint>

#include "fairlead/talk/path.h"

namespace fairlead {

// The road a request takes to its adapter.
struct RequestRoad {
  int32_t (*set)(slash_t* object, const char* object_text, slash_t* path, const char* path_text,
                 talk_t* value, const char* value_text);
  talk_t* (*get)(slash_t* object, const char* object_text, slash_t* path, const char* path_text);
  talk_t* (*call)(slash_t* object, const char* object_text, const char* name, param_t* parameters,
                  const char* format, ...);
  bool empty_merge_is_done;  // the two roads differ here, and scripts rely on either
};

const RequestRoad& plain_road();
const RequestRoad& isolated_road();

// What a request addresses: object and configuration path, each as record or text.
struct RequestTarget {
  slash_t* object;
  const char* object_text;
  slash_t* path;
  const char* path_text;
};

// Each sets *out and returns the status of the request.
int32_t answer_read(const RequestRoad& road, const RequestTarget& target, talk_t** out);
int32_t answer_set(const RequestRoad& road, const RequestTarget& target, talk_t* value,
                   talk_t** out);
int32_t answer_merge(const RequestRoad& road, const RequestTarget& target, talk_t* value,
                     talk_t** out);

// The status that an interface's codes and nothing have; 0 for any document.
int32_t status_of(const talk_t* answer);

}  // namespace fairlead
