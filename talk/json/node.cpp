// Nodes: making, linking, unlinking, freeing.
#include "talk/json/node.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include "base/fail.h"
#include "base/owned.h"
#include "talk/json/assertion.h"
#include "talk/json/node_pool.h"

namespace {

using fairlead::fail;
using fairlead::NodeSlab;
using fairlead::OwnedText;

// Frees nodes one after another. Those that follow each other in one slab leave it together.
class Release {
 public:
  Release() = default;
  ~Release() { leave(); }
  Release(const Release&) = delete;
  Release& operator=(const Release&) = delete;

  void operator()(json_t* node) {
    if (node->text && !fairlead::has_inline_text(node)) free(node->text);
    NodeSlab* const slab = fairlead::slab_of(node);
    if (!slab) {
      free(reinterpret_cast<NodeSlab**>(node) - 1);
      return;
    }
    if (slab != slab_) leave();
    slab_ = slab;
    ++gone_;
  }

 private:
  void leave() {
    if (slab_) fairlead::leave_slab(slab_, gone_);
    gone_ = 0;
  }

  NodeSlab* slab_ = nullptr;
  uint32_t gone_ = 0;
};

// Frees an unlinked node and all below it. Each node is freed when its last child is gone, so the
// way back is the parent link and no stack is needed.
void release_tree(json_t* top) {
  Release release;
  json_t* at = top;
  while (true) {
    while (at->child) at = at->child;
    for (json_t* next = nullptr; !next;) {
      json_t* const parent = at->parent;
      next = at->next;
      const bool last = at == top;
      release(at);
      if (last) return;
      at = next ? next : parent;
    }
  }
}

json_t* text_node(uint32_t kind, std::string_view text) {
  return fairlead::with_text(fairlead::node_alone(fairlead::node_size(text)), kind, text);
}

// Where a value may stand: under a label or in an array.
json_error check_value(const json_t* child) {
  if (child->type > JSON_NULL) return JSON_BAD_STRUCTURE;
  if (child->type == JSON_OBJECT || child->type == JSON_ARRAY) return JSON_DONE;
  return child->child ? JSON_BAD_STRUCTURE : JSON_DONE;
}

json_error check_insert(const json_t* parent, const json_t* child) {
  switch (parent->type) {
    case JSON_OBJECT:
      return child->type == JSON_STRING ? JSON_DONE : JSON_BAD_STRUCTURE;
    case JSON_STRING:
    case JSON_ARRAY:
      return check_value(child);
    default:
      return JSON_BAD_STRUCTURE;
  }
}

}  // namespace

bool fairlead::overwrite_text(json_t* node, std::string_view text) {
  if (!has_inline_text(node)) return false;
  const size_t room = padded_size(strlen(node->text));
  if (text.size() >= room) return false;
  memmove(node->text, text.data(), text.size());
  memset(node->text + text.size(), '\0', room - text.size());
  return true;
}

bool fairlead::set_node_text(json_t* node, std::string_view text) {
  if (overwrite_text(node, text)) return true;
  if (text.size() == SIZE_MAX) return fail<bool>(ENOMEM);
  OwnedText copy(static_cast<char*>(malloc(text.size() + 1)));
  if (!copy) return false;
  memcpy(copy.get(), text.data(), text.size());
  copy.get()[text.size()] = '\0';
  if (!has_inline_text(node)) free(node->text);
  node->text = copy.release();
  return true;
}

extern "C" json_t* json_new_value(uint32_t kind) {
  // One byte more where a text may be set later: no block of another text then starts right behind
  // the record, where it would be taken for an inline one.
  const size_t size = fairlead::kNodeSize + (kind <= JSON_NUMBER ? 1 : 0);
  return fairlead::with_kind(fairlead::node_alone(size), kind);
}

extern "C" json_t* json_new_string(const char* text) {
  NODE_ASSERT_GIVEN(text);
  return text_node(JSON_STRING, text);
}

extern "C" json_t* json_new_number(const char* text) {
  NODE_ASSERT_GIVEN(text);
  return text_node(JSON_NUMBER, text);
}

extern "C" json_t* json_new_object(void) { return json_new_value(JSON_OBJECT); }

extern "C" json_t* json_new_array(void) { return json_new_value(JSON_ARRAY); }

extern "C" json_t* json_new_true(void) { return json_new_value(JSON_TRUE); }

extern "C" json_t* json_new_false(void) { return json_new_value(JSON_FALSE); }

extern "C" json_t* json_new_null(void) { return json_new_value(JSON_NULL); }

extern "C" json_error json_insert_child(json_t* parent, json_t* child) {
  NODE_ASSERT_GIVEN(parent);
  NODE_ASSERT_GIVEN(child);
  NODE_ASSERT(parent != child);
  const json_error result = check_insert(parent, child);
  if (result == JSON_DONE) fairlead::link_last(parent, child);
  return result;
}

extern "C" json_error json_insert_pair_into_object(json_t* parent, const char* text_label,
                                                   json_t* value) {
  NODE_ASSERT_GIVEN(parent);
  NODE_ASSERT_GIVEN(text_label);
  NODE_ASSERT_GIVEN(value);
  NODE_ASSERT(parent != value);
  NODE_ASSERT(parent->type == JSON_OBJECT);
  json_t* label = json_new_string(text_label);
  if (!label) return JSON_NO_MEMORY;

  const json_error result = json_insert_child(label, value);
  if (result != JSON_DONE) {
    json_free_value(&label);
    return result;
  }
  return json_insert_child(parent, label);
}

extern "C" int json_detach_child(json_t* parent, json_t* child) {
  if (!parent || !child || child->parent != parent) return fail<int>(EINVAL);
  fairlead::unlink_node(child);
  return 1;
}

extern "C" void json_free_value(json_t** value) {
  NODE_ASSERT_TEXT(value && *value, "*value");
  // Cleared first: the caller's pointer may be one of the tree's own, which unlinking changes.
  json_t* const node = std::exchange(*value, nullptr);
  fairlead::unlink_node(node);
  release_tree(node);
}

extern "C" json_t* json_find_first_label(const json_t* object, const char* text_label) {
  NODE_ASSERT_GIVEN(object);
  NODE_ASSERT_GIVEN(text_label);
  NODE_ASSERT(object->type == JSON_OBJECT);
  for (json_t* label = object->child; label; label = label->next)
    if (label->type == JSON_STRING && label->text && strcmp(label->text, text_label) == 0)
      return label;
  return nullptr;
}
