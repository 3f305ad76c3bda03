// The diagnostic dump: one line per node on the standard output stream.
#include <cstdio>

#include "talk/json/assertion.h"
#include "talk/json/node.h"

namespace {

// Deeper nodes are not indented further: a dump then stays in proportion to its document.
constexpr int kDeepest = 40;

void print_node(const json_t* node, int level) {
  if (level > kDeepest) level = kDeepest;
  printf("%*s", level > 0 ? 2 * level : 0, "");
  const char* text = node->text ? node->text : "";
  switch (node->type) {
    case JSON_STRING:
      printf("STRING: %s\n", text);
      break;
    case JSON_NUMBER:
      printf("NUMBER: %s\n", text);
      break;
    case JSON_OBJECT:
      puts("OBJECT: ");
      break;
    case JSON_ARRAY:
      puts("ARRAY: ");
      break;
    case JSON_TRUE:
      puts("TRUE:");
      break;
    case JSON_FALSE:
      puts("FALSE:");
      break;
    case JSON_NULL:
      puts("NULL:");
      break;
    default:
      printf("UNKNOWN: %u\n", static_cast<unsigned>(node->type));
  }
}

}  // namespace

extern "C" void json_render_tree(json_t* root) {
  NODE_ASSERT_GIVEN(root);
  json_render_tree_indented(root, 0);
}

extern "C" void json_render_tree_indented(json_t* root, int level) {
  NODE_ASSERT_GIVEN(root);
  const json_t* node = root;
  while (true) {
    print_node(node, level);
    if (node->child) {
      node = node->child;
      ++level;
      continue;
    }
    while (node != root && !node->next) {
      node = node->parent;
      --level;
    }
    if (node == root) return;
    node = node->next;
  }
}
