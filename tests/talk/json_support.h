// What the tests of the node tree share: owned trees and texts, and the check for an assertion.
#pragma once

#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "fairlead/talk/json.h"
#include "support/device_test.h"

namespace fairlead_test {

struct TreeFreer {
  void operator()(json_t* root) const { json_free_value(&root); }
};
using Tree = std::unique_ptr<json_t, TreeFreer>;

// The tree of a text; empty, with a failed test, when it cannot be read.
inline Tree parsed(const std::string& text) {
  json_t* root = nullptr;
  EXPECT_EQ(JSON_DONE, json_parse_document(&root, text.c_str())) << text.substr(0, 200);
  return Tree(root);
}

// Only the result; what was read is freed.
inline json_error parse_result(const std::string& text) {
  json_t* root = nullptr;
  const json_error result = json_parse_document(&root, text.c_str());
  EXPECT_EQ(result == JSON_DONE, root != nullptr);
  Tree owner(root);
  return result;
}

inline std::string take(char* text) {
  std::string copy = text ? text : "<null>";
  free(text);
  return copy;
}

// The compact text, or "<code>" when there is none.
inline std::string text_of(json_t* root) {
  char* text = nullptr;
  const json_error result = json_tree_to_string(root, &text);
  return result == JSON_DONE ? take(text) : "<" + std::to_string(result) + ">";
}
inline std::string text_of(const Tree& tree) { return text_of(tree.get()); }

// A regular expression that matches exactly this text.
inline std::string literally(std::string_view text) {
  std::string pattern;
  for (char c : text) {
    if (std::string_view("\\^$.|?*+()[]{}").find(c) != std::string_view::npos) pattern += '\\';
    pattern += c;
  }
  return pattern;
}

// `count` times the same text.
inline std::string times(size_t count, std::string_view text) {
  std::string result;
  result.reserve(count * text.size());
  for (size_t i = 0; i < count; ++i) result += text;
  return result;
}

}  // namespace fairlead_test

#define EXPECT_ASSERTION(statement, text)                  \
  EXPECT_EXIT(statement, testing::KilledBySignal(SIGABRT), \
              fairlead_test::literally("Assertion `" text "' failed"))
