// What a node is, asked without touching errno.
#pragma once

#include <cstring>

#include "fairlead/talk/json.h"
#include "talk/json/node.h"

namespace fairlead {

inline bool is_string_node(const json_t* node) { return node && node->type == JSON_STRING; }

inline bool is_vessel(const json_t* node) { return node && node->type == JSON_OBJECT; }

inline bool is_render(const json_t* node) { return is_string_node(node) && !node->child; }

inline bool is_axp(const json_t* node) {
  return is_string_node(node) && (is_string_node(node->child) || is_vessel(node->child));
}

// The text of a string node; null for anything else.
inline const char* name_of(const json_t* node) {
  return is_string_node(node) ? node->text : nullptr;
}

// Whether a node has the name of `wanted`, which has one.
inline bool named_as(const json_t* node, const json_t& wanted) {
  return name_of(node) && same_text(*node, wanted);
}

// The first node of that name among `node` and its later siblings; a null name fits every node that
// has one.
inline json_t* first_named(json_t* node, const char* name) {
  for (; node; node = node->next) {
    const char* own = name_of(node);
    if (own && (!name || strcmp(own, name) == 0)) return node;
  }
  return nullptr;
}

// A node that stands elsewhere, or below itself, would tear both trees.
inline bool may_be_linked(const json_t* child, const json_t* parent) {
  return child && child != parent && !child->parent;
}

}  // namespace fairlead
