#include <json-c/json.h>

#include "peer.h"

namespace bench {

namespace {

json_object* as_object(void* document) { return static_cast<json_object*>(document); }

// json_tokener_parse stops at 32 levels; this goes as deep as the documents do.
void* parse(const std::string& text) {
  json_tokener* tokener = json_tokener_new_ex(1024);
  json_object* document =
      json_tokener_parse_ex(tokener, text.data(), static_cast<int>(text.size()));
  json_tokener_free(tokener);
  return document;
}

void* copy(void* document) {
  json_object* made = nullptr;
  json_object_deep_copy(as_object(document), &made, nullptr);
  return made;
}

const char* find(void* document, Names path) {
  json_object* at = as_object(document);
  for (const char* name : path) at = json_object_object_get(at, name);
  return json_object_get_string(at);
}

}  // namespace

const Peer json_c_peer = {
    .name = "json-c",
    .parse = parse,
    .print =
        [](void* document) {
          json_object_to_json_string_ext(as_object(document), JSON_C_TO_STRING_PLAIN);
        },
    .drop = [](void* document) { json_object_put(as_object(document)); },
    .copy = copy,
    .equal =
        [](void* document, void* other) {
          return json_object_equal(as_object(document), as_object(other)) != 0;
        },
    .merge = nullptr,
    .find = find,
};

}  // namespace bench
