#include <jansson.h>

#include <cstdlib>

#include "peer.h"

namespace bench {

namespace {

json_t* as_json(void* document) { return static_cast<json_t*>(document); }

const char* find(void* document, Names path) {
  json_t* at = as_json(document);
  for (const char* name : path) at = json_object_get(at, name);
  return json_string_value(at);
}

}  // namespace

const Peer jansson_peer = {
    .name = "jansson",
    .parse = [](const std::string& text) -> void* { return json_loads(text.c_str(), 0, nullptr); },
    .print = [](void* document) { free(json_dumps(as_json(document), JSON_COMPACT)); },
    .drop = [](void* document) { json_decref(as_json(document)); },
    .copy = [](void* document) -> void* { return json_deep_copy(as_json(document)); },
    .equal = [](void* document,
                void* other) { return json_equal(as_json(document), as_json(other)) != 0; },
    .merge =
        [](void* document, void* changes) {
          json_object_update_recursive(as_json(document), as_json(changes));
        },
    .find = find,
};

}  // namespace bench
