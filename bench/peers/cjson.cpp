#include <cjson/cJSON.h>

#include <cstdlib>

#include "peer.h"

namespace bench {

namespace {

cJSON* as_cjson(void* document) { return static_cast<cJSON*>(document); }

// What cJSON's users write where they merge settings: objects are gone into, the rest is replaced.
void merge(cJSON* document, const cJSON* changes) {
  for (const cJSON* change = changes->child; change; change = change->next) {
    cJSON* own = cJSON_GetObjectItemCaseSensitive(document, change->string);
    if (own && cJSON_IsObject(own) && cJSON_IsObject(change))
      merge(own, change);
    else if (own)
      cJSON_ReplaceItemViaPointer(document, own, cJSON_Duplicate(change, true));
    else
      cJSON_AddItemToObject(document, change->string, cJSON_Duplicate(change, true));
  }
}

const char* find(void* document, Names path) {
  cJSON* at = as_cjson(document);
  for (const char* name : path) at = cJSON_GetObjectItemCaseSensitive(at, name);
  return cJSON_GetStringValue(at);
}

}  // namespace

const Peer cjson_peer = {
    .name = "cJSON",
    .parse = [](const std::string& text) -> void* { return cJSON_Parse(text.c_str()); },
    .print = [](void* document) { free(cJSON_PrintUnformatted(as_cjson(document))); },
    .drop = [](void* document) { cJSON_Delete(as_cjson(document)); },
    .copy = [](void* document) -> void* { return cJSON_Duplicate(as_cjson(document), true); },
    .equal =
        [](void* document, void* other) {
          return cJSON_Compare(as_cjson(document), as_cjson(other), true) != 0;
        },
    .merge = [](void* document, void* changes) { merge(as_cjson(document), as_cjson(changes)); },
    .find = find,
};

}  // namespace bench
