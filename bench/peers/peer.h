// The JSON libraries that fairlead's documents are measured beside, behind the same few operations.
// One table of functions for each, in a source of its own: two of them claim the same names.
#pragma once

#include <span>
#include <string>

namespace bench {

using Names = std::span<const char* const>;

// A null function: this library has no such operation.
struct Peer {
  const char* name;
  void* (*parse)(const std::string& text);
  void (*print)(void* document);  // makes the text and frees it
  void (*drop)(void* document);
  void* (*copy)(void* document);
  bool (*equal)(void* document, void* other);
  void (*merge)(void* document, void* changes);
  const char* (*find)(void* document, Names path);
};

extern const Peer fairlead_peer, cjson_peer, json_c_peer, jansson_peer, rapidjson_peer;

inline const Peer* const kPeers[] = {&fairlead_peer, &cjson_peer, &json_c_peer, &jansson_peer,
                                     &rapidjson_peer};

}  // namespace bench
