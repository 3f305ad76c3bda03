// Nodes from inside. A node and its text are one block, the text behind the record and padded with
// NULs to whole words; a text that is set later and does not fit there has a block of its own,
// which the node owns as well. Before the record stands the slab that the node shares with others,
// or null for a node on its own.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "base/fail.h"
#include "fairlead/talk/json.h"
#include "talk/json/text_word.h"

namespace fairlead {

struct NodeSlab;

inline constexpr size_t kNodeSize = sizeof(NodeSlab*) + sizeof(json_t);

inline NodeSlab* slab_of(const json_t* node) {
  return reinterpret_cast<NodeSlab* const*>(node)[-1];
}

inline char* inline_text(json_t* node) { return reinterpret_cast<char*>(node + 1); }

inline bool has_inline_text(const json_t* node) {
  return node->text == reinterpret_cast<const char*>(node + 1);
}

// Whether two nodes have the same text; both have one.
inline bool same_text(const json_t& a, const json_t& b) {
  size_t at = 0;
  if (kByWords && has_inline_text(&a) && has_inline_text(&b)) {
    for (; at < kShortText; at += kTextWordSize) {
      const TextWord word = load_word(a.text + at);
      const TextWord difference = word ^ load_word(b.text + at);
      if (nul_bytes(word)) return (difference & bits_up_to_nul(word)) == 0;
      if (difference) return false;
    }
  }
  return strcmp(a.text + at, b.text + at) == 0;
}

// The padded size of a text that lies behind its record and is short; 0 for any other.
inline size_t short_text_size(const json_t& node) {
  if (!kByWords || !has_inline_text(&node)) return 0;
  for (size_t at = 0; at < kShortText; at += kTextWordSize)
    if (nul_bytes(load_word(node.text + at))) return at + kTextWordSize;
  return 0;
}

// The node in a space of kNodeSize bytes or more, without a value yet; null for no space.
inline json_t* node_in(void* space, NodeSlab* slab) {
  if (!space) return nullptr;
  *static_cast<NodeSlab**>(space) = slab;
  return reinterpret_cast<json_t*>(static_cast<NodeSlab**>(space) + 1);
}

// Gives a node its first value, with every link null. Null stays null.
inline json_t* with_kind(json_t* node, uint32_t kind) {
  if (node) *node = {kind, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
  return node;
}

// The same with a text, which goes behind the record.
inline json_t* with_text(json_t* node, uint32_t kind, std::string_view text) {
  if (!node) return nullptr;
  char* copy = inline_text(node);
  memset(copy + padded_size(text.size()) - kTextWordSize, '\0', kTextWordSize);
  memcpy(copy, text.data(), text.size());
  *node = {kind, copy, nullptr, nullptr, nullptr, nullptr, nullptr};
  return node;
}

// A space of this size on its own.
inline json_t* node_alone(size_t size) { return node_in(malloc(size), nullptr); }

// What a node with this text needs; SIZE_MAX, which is nowhere to be had, where that has no number.
inline size_t node_size(std::string_view text) {
  constexpr size_t kLongest = SIZE_MAX - kNodeSize - kTextWordSize;
  return text.size() < kLongest ? kNodeSize + padded_size(text.size()) : SIZE_MAX;
}

// Puts a copy of `text` in the place of a node's text, behind its record; false if it has no room
// there. It may be the present text or a part of it.
bool overwrite_text(json_t* node, std::string_view text);

// Gives a node a copy of `text`, which may be the node's present text or a part of it.
// False when memory runs out: the old text stays.
bool set_node_text(json_t* node, std::string_view text);

// Makes an unlinked node the last child, whatever the kinds of the two.
inline void link_last(json_t* parent, json_t* child) {
  json_t* last = parent->child_end;
  child->parent = parent;
  child->previous = last;
  child->next = nullptr;
  (last ? last->next : parent->child) = child;
  parent->child_end = child;
}

// Takes a node out of its siblings and its parent.
inline void unlink_node(json_t* node) {
  json_t* const parent = node->parent;
  if (node->previous)
    node->previous->next = node->next;
  else if (parent)
    parent->child = node->next;
  if (node->next)
    node->next->previous = node->previous;
  else if (parent)
    parent->child_end = node->previous;
  node->parent = node->previous = node->next = nullptr;
}

// A string node is a label, and not a value, in an object or where nothing is above it.
inline bool is_label(const json_t* node) {
  return node->type == JSON_STRING && (!node->parent || node->parent->type == JSON_OBJECT);
}

}  // namespace fairlead
