// A document as an indented listing on standard output.
#include <cstdio>

#include "base/bounded_text.h"
#include "fairlead/talk/text.h"
#include "talk/roles.h"

namespace {

using fairlead::is_axp;
using fairlead::is_render;
using fairlead::is_vessel;

// Walks the tree by its own links and remembers what the last print call returned.
class Listing {
 public:
  explicit Listing(const json_t* top) : top_(top) {}

  int print() {
    const json_t* node = top_;
    while (node) {
      begin(node);
      if (is_vessel(node) && node->child) {
        ++depth_;
        node = node->child;
      } else if (is_axp(node) && is_vessel(node->child)) {
        node = node->child;
      } else {
        node = following(node);
      }
    }
    return result_;
  }

 private:
  void begin(const json_t* node) {
    if (is_render(node))
      line("%s\n", node->text);
    else if (is_vessel(node))
      line("{\n");
    else if (is_axp(node) && is_vessel(node->child))
      line("\"%s\":\n", node->text);
    else if (is_axp(node))
      line(node->next ? "\"%s\":\"%s\",\n" : "\"%s\":\"%s\"\n", node->text, node->child->text);
  }

  // What comes after all of `node` has been printed; closes every object that ends with it.
  const json_t* following(const json_t* node) {
    for (;; node = node->parent) {
      if (is_vessel(node)) line(is_vessel_followed(node) ? "},\n" : "}\n");
      if (node == top_) return nullptr;
      if (is_vessel(node->parent)) {
        if (node->next) return node->next;
        --depth_;
      }
    }
  }

  static bool is_vessel_followed(const json_t* vessel) {
    return fairlead::is_string_node(vessel->parent) && vessel->parent->next;
  }

  __attribute__((format(printf, 2, 3))) void line(const char* format, ...) {
    fairlead::FixedText<4096> text;  // longer lines are cut
    va_list arguments;
    va_start(arguments, format);
    text.vformat(format, arguments);
    va_end(arguments);
    for (int level = 0; level < depth_; ++level) fputs("    ", stdout);
    result_ = printf("%s", text.text());
  }

  const json_t* top_;
  int depth_ = 0;
  int result_ = 0;
};

}  // namespace

extern "C" int TalkPrint(talk_t* talk) { return talk ? Listing(talk).print() : 0; }
