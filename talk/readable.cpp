// Texts that are written as they are, and what of them can be read again.
#include "talk/readable.h"

#include <cstring>

#include "base/ascii.h"
#include "base/fail.h"
#include "fairlead/talk/text.h"
#include "talk/json/node.h"

namespace fairlead {
namespace {

constexpr char kHexDigits[] = "0123456789abcdefABCDEF";
constexpr char kEscapes[] = "\"\\/bfnrt";
constexpr size_t kUnicodeDigits = 4;

// Behind an escape, `at` being the backslash; null when it is none.
const char* behind_escape(const char* at) {
  const char kind = at[1];
  if (kind == 'u')
    return strspn(at + 2, kHexDigits) >= kUnicodeDigits ? at + 2 + kUnicodeDigits : nullptr;
  return kind != '\0' && strchr(kEscapes, kind) ? at + 2 : nullptr;
}

bool is_string_body(const char* text) {
  while (text && *(text += strcspn(text, "\"\\")) != '\0')
    text = *text == '\\' ? behind_escape(text) : nullptr;
  return text != nullptr;
}

// Behind one digit or more; null when there is none.
const char* behind_digits(const char* at) {
  const char* const end = at + strspn(at, "0123456789");
  return end > at ? end : nullptr;
}

bool is_number(const char* at) {
  if (*at == '-') ++at;
  at = *at == '0' ? at + 1 : behind_digits(at);
  if (at && *at == '.') at = behind_digits(at + 1);
  if (at && to_upper(*at) == 'E')
    at = behind_digits(at[1] == '+' || at[1] == '-' ? at + 2 : at + 1);
  return at && *at == '\0';
}

bool has_one_value_at_most(const talk_t& node) { return !node.child || !node.child->next; }

bool is_readable_node(const talk_t& node) {
  if (is_label(&node) && !has_one_value_at_most(node)) return false;
  if (!node.text) return true;
  if (node.type == JSON_STRING) return is_string_body(node.text);
  return node.type != JSON_NUMBER || is_number(node.text);
}

// The next node of the tree, parents before children; null behind the last one.
const talk_t* next_node(const talk_t* node, const talk_t* root) {
  if (node->child) return node->child;
  while (node != root && !node->next) node = node->parent;
  return node == root ? nullptr : node->next;
}

}  // namespace

bool is_readable(const talk_t* document) {
  for (const talk_t* node = document; node; node = next_node(node, document))
    if (!is_readable_node(*node)) return false;
  return true;
}

int save_readable(vessel_t* document, const char* path) {
  return is_readable(document) ? VesselFile(document, path) : fail<int>(EINVAL);
}

}  // namespace fairlead
