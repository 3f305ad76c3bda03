// Writes a tree as compact text, piece by piece, to whatever takes the pieces.
#pragma once

#include <string_view>

#include "talk/json/node.h"

namespace fairlead {

inline const char* literal(uint32_t kind) {
  return kind == JSON_TRUE ? "true" : kind == JSON_FALSE ? "false" : "null";
}

// What stands at a node before its children. `inner` is set to the first child that follows.
template <class Output>
json_error write_begin(const json_t* node, Output& output, const json_t*& inner) {
  if (node->type == JSON_STRING) {
    if (!node->text) return JSON_BAD_STRUCTURE;
    const bool label = is_label(node);
    output.quoted(*node, label);
    if (!label) return JSON_DONE;
    inner = node->child;
    return inner ? JSON_DONE : JSON_BAD_STRUCTURE;
  }
  if (node->type == JSON_OBJECT || node->type == JSON_ARRAY) {
    output.put(node->type == JSON_OBJECT ? '{' : '[');
    inner = node->child;
    return JSON_DONE;
  }
  if (node->type > JSON_NULL) return JSON_INTERNAL;
  const char* const text = node->type == JSON_NUMBER ? node->text : literal(node->type);
  if (!text) return JSON_BAD_STRUCTURE;
  output.add(text);
  return JSON_DONE;
}

// `output` has put(char), add(text) and quoted(node), and remembers by itself when one has failed.
// The way back up is the parent link: no stack is needed at any depth.
template <class Output>
json_error write_tree(const json_t* root, Output& output) {
  const json_t* node = root;
  while (true) {
    const json_t* inner = nullptr;
    const json_error result = write_begin(node, output, inner);
    if (result != JSON_DONE) return result;
    if (inner) {
      node = inner;
      continue;
    }
    while (true) {
      if (node->type == JSON_OBJECT) output.put('}');
      if (node->type == JSON_ARRAY) output.put(']');
      if (node == root || !node->parent) return JSON_DONE;
      if (node->next) break;
      node = node->parent;
    }
    output.put(',');
    node = node->next;
  }
}

}  // namespace fairlead
