// Nodes from inside. A node and its text are one block, the text behind the record; a text that is
// set later and does not fit there has a block of its own, which the node owns as well.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "base/fail.h"
#include "fairlead/talk/json.h"

namespace fairlead {

// A node with every link null; null when memory runs out.
inline json_t* new_node(uint32_t kind) {
  // One byte more where a text may be set later: no block of another text then starts right behind
  // the record, where it would be taken for an inline one.
  const size_t size = sizeof(json_t) + (kind <= JSON_NUMBER ? 1 : 0);
  auto* node = static_cast<json_t*>(malloc(size));
  if (node) *node = {kind, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
  return node;
}

inline char* inline_text(json_t* node) { return reinterpret_cast<char*>(node + 1); }

// A node of kind JSON_STRING or JSON_NUMBER with a copy of `text`; null when memory runs out.
inline json_t* new_text_node(uint32_t kind, std::string_view text) {
  if (text.size() > SIZE_MAX - sizeof(json_t) - 1) return fail<json_t*>(ENOMEM);
  auto* node = static_cast<json_t*>(malloc(sizeof(json_t) + text.size() + 1));
  if (!node) return nullptr;
  char* copy = inline_text(node);
  memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  *node = {kind, copy, nullptr, nullptr, nullptr, nullptr, nullptr};
  return node;
}

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
