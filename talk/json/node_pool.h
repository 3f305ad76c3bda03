// Slabs: blocks that many nodes share. Whoever makes many nodes at once makes them in a pool; a
// slab is freed when the last of its nodes has gone, in whichever tree and thread that is by then.
// A configuration of 4 KB is read in about 0.6, and copied and freed in about 0.7 of the time that
// a block for each node takes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "talk/json/node.h"

namespace fairlead {

// What stands before the nodes.
struct NodeSlab {
  uint32_t live;  // nodes that have not gone, and kFilling more while a pool fills it
  uint32_t made;
  uint32_t used;  // bytes, of this record too
  uint32_t size;
};

// `nodes` of the slab have gone; none of them may be touched any more.
void leave_slab(NodeSlab* slab, uint32_t nodes);

// What a pool knows, for one that goes on later.
struct NodePoolState {
  NodeSlab* slab;  // that is being filled
  size_t total;    // bytes of nodes made, or expected from the start
};

// Makes nodes in slabs that grow with their number: no more than about a third of the memory is
// ever unused. The first few nodes and those with a long text get blocks of their own, so that what
// is kept of a small tree keeps no more than itself.
class NodePool {
 public:
  explicit NodePool(NodePoolState state) : state_(state) {}
  ~NodePool() { close(); }
  NodePool(const NodePool&) = delete;
  NodePool& operator=(const NodePool&) = delete;

  // An unlinked node; null when memory runs out. No text may be set later where there is none now.
  json_t* node(uint32_t kind) { return with_kind(place(kNodeSize), kind); }
  json_t* text_node(uint32_t kind, std::string_view text) {
    return with_text(place(node_size(text)), kind, text);
  }

  // A string with the text of another one. A configuration is copied in four fifths of the time
  // that it takes to measure each text and to have the C library copy it.
  json_t* string_like(const json_t& node) {
    const size_t size = short_text_size(node);
    if (size == 0) return text_node(JSON_STRING, node.text);
    json_t* const copy = place(kNodeSize + size);
    if (!copy) return nullptr;
    for (size_t at = 0; at < size; at += kTextWordSize)
      memcpy(inline_text(copy) + at, node.text + at, kTextWordSize);
    *copy = {JSON_STRING, inline_text(copy), nullptr, nullptr, nullptr, nullptr, nullptr};
    return copy;
  }

  // Leaves the slab open for the pool that is made of the result.
  NodePoolState pause();

 private:
  static constexpr size_t kLongestShared = 256;

  // The size is one of whole words.
  json_t* place(size_t size) {
    NodeSlab* const slab = state_.slab;
    if (!slab || size > kLongestShared || size > slab->size - slab->used) return place_anew(size);
    void* const space = reinterpret_cast<char*>(slab) + slab->used;
    slab->used += static_cast<uint32_t>(size);
    ++slab->made;
    return node_in(space, slab);
  }
  json_t* place_anew(size_t size);
  bool open_slab(size_t size);
  void close();

  NodePoolState state_;
};

}  // namespace fairlead
