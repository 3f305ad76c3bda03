// The diagnostic dump.
#include <string>

#include "json_support.h"
#include "support/capture.h"

namespace {

using fairlead_test::capture;
using fairlead_test::parsed;
using fairlead_test::Tree;

class JsonDumpTest : public fairlead_test::DeviceTest {};

TEST_F(JsonDumpTest, render_tree_prints_a_line_per_node) {
  Tree tree = parsed(R"({"a":[1,"x"],"b":true,"c":false,"d":null})");
  EXPECT_EQ(
      "OBJECT: \n"
      "  STRING: a\n"
      "    ARRAY: \n"
      "      NUMBER: 1\n"
      "      STRING: x\n"
      "  STRING: b\n"
      "    TRUE:\n"
      "  STRING: c\n"
      "    FALSE:\n"
      "  STRING: d\n"
      "    NULL:\n",
      capture([&] { json_render_tree(tree.get()); }).out);
}

TEST_F(JsonDumpTest, render_tree_indented_starts_at_its_level_and_stays_in_the_subtree) {
  Tree tree = parsed(R"({"a":[1],"b":2})");
  EXPECT_EQ("    STRING: a\n      ARRAY: \n        NUMBER: 1\n",
            capture([&] { json_render_tree_indented(tree->child, 2); }).out);
}

TEST_F(JsonDumpTest, render_tree_shows_broken_nodes_too) {
  Tree array(json_new_array());
  json_insert_child(array.get(), json_new_value(JSON_STRING));
  EXPECT_EQ("ARRAY: \n  STRING: \n", capture([&] { json_render_tree(array.get()); }).out);
  Tree unknown(json_new_value(9));
  EXPECT_EQ("UNKNOWN: 9\n", capture([&] { json_render_tree(unknown.get()); }).out);
}

TEST_F(JsonDumpTest, render_tree_indents_no_deeper_than_forty_levels) {
  const std::string brackets = std::string(60, '[') + std::string(60, ']');
  Tree tree = parsed("{\"a\":" + brackets + "}");
  const std::string out = capture([&] { json_render_tree(tree.get()); }).out;
  EXPECT_NE(std::string::npos, out.find("\n" + std::string(80, ' ') + "ARRAY: "));
  EXPECT_EQ(std::string::npos, out.find(std::string(81, ' ')));
}

TEST_F(JsonDumpTest, render_tree_aborts_on_null) {
  EXPECT_ASSERTION(json_render_tree(nullptr), "root != ((void *)0)");
  EXPECT_ASSERTION(json_render_tree_indented(nullptr, 0), "root != ((void *)0)");
}

}  // namespace
