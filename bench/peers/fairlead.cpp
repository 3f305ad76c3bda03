#include "fairlead/fairlead.h"

#include <cstdlib>

#include "peer.h"

namespace bench {

namespace {

talk_t* as_talk(void* document) { return static_cast<talk_t*>(document); }

const char* find(void* document, Names path) {
  talk_t* at = as_talk(document);
  for (const char* name : path) at = VesselGetX(at, name);
  return RenderString(at);
}

}  // namespace

const Peer fairlead_peer = {
    .name = "fairlead",
    .parse = [](const std::string& text) -> void* { return StringVessel(text.c_str()); },
    .print = [](void* document) { free(VesselString(as_talk(document))); },
    .drop = [](void* document) { TalkFree(as_talk(document)); },
    .copy = [](void* document) -> void* { return TalkDup(as_talk(document)); },
    .equal = [](void* document,
                void* other) { return TalkEqual(as_talk(document), as_talk(other)) == 1; },
    .merge = [](void* document,
                void* changes) { VesselModify(as_talk(changes), as_talk(document)); },
    .find = find,
};

}  // namespace bench
