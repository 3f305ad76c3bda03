// The serializer: compact text, children in order, and what it refuses.
#include <string>

#include "fairlead/talk/node.h"
#include "json_support.h"

namespace {

using fairlead_test::parsed;
using fairlead_test::text_of;
using fairlead_test::Tree;

class JsonSerializeTest : public fairlead_test::DeviceTest {};

TEST_F(JsonSerializeTest, tree_to_string_gives_back_what_was_read) {
  for (const char* text :
       {"{}", R"({"a":"b","c":{"d":"e"}})", R"({"n":1.50e+3,"s":"\u00e9"})",
        R"({"list":[1,"two",{"three":3},[4],[],{},true,false,null]})", R"({"":""})"})
    EXPECT_EQ(text, text_of(parsed(text)));
}

TEST_F(JsonSerializeTest, tree_to_string_writes_the_literals) {
  Tree array(json_new_array());
  for (auto make : {json_new_true, json_new_false, json_new_null})
    json_insert_child(array.get(), make());
  EXPECT_EQ("[true,false,null]", text_of(array));
}

TEST_F(JsonSerializeTest, tree_to_string_writes_strings_as_they_are) {
  Tree array(json_new_array());
  json_insert_child(array.get(), json_new_string("a\"b\\c\n"));
  EXPECT_EQ("[\"a\"b\\c\n\"]", text_of(array));
}

TEST_F(JsonSerializeTest, tree_to_string_of_a_subtree_stops_at_its_end) {
  Tree tree = parsed(R"({"a":{"b":1},"c":[2,"three"]})");
  EXPECT_EQ(R"({"b":1})", text_of(tree->child->child));
  EXPECT_EQ(R"("c":[2,"three"])", text_of(tree->child_end));
  EXPECT_EQ(R"("three")", text_of(tree->child_end->child->child_end));
}

TEST_F(JsonSerializeTest, tree_to_string_takes_a_lone_string_for_a_label) {
  Tree string(json_new_string("lone"));
  EXPECT_EQ("<8>", text_of(string));
  json_insert_child(string.get(), json_new_number("1"));
  EXPECT_EQ(R"("lone":1)", text_of(string));
}

TEST_F(JsonSerializeTest, tree_to_string_refuses_a_label_without_value) {
  Tree tree = parsed(R"({"a":1,"b":2})");
  json_t* value = tree->child_end->child;
  json_free_value(&value);
  EXPECT_EQ("<8>", text_of(tree));
}

TEST_F(JsonSerializeTest, tree_to_string_refuses_a_node_without_its_text) {
  for (uint32_t kind : {JSON_STRING, JSON_NUMBER}) {
    Tree array(json_new_array());
    json_insert_child(array.get(), json_new_value(kind));
    EXPECT_EQ("<8>", text_of(array));
  }
}

TEST_F(JsonSerializeTest, tree_to_string_writes_an_empty_number_as_it_is) {
  EXPECT_EQ("", text_of(Tree(json_new_number(""))));
}

TEST_F(JsonSerializeTest, tree_to_string_refuses_an_unknown_kind) {
  Tree unknown(json_new_value(7));
  EXPECT_EQ("<10>", text_of(unknown));
}

TEST_F(JsonSerializeTest, tree_to_string_refused_leaves_the_callers_text) {
  Tree unknown(json_new_value(7));
  char kept[] = "kept";
  char* text = kept;
  EXPECT_EQ(JSON_INTERNAL, json_tree_to_string(unknown.get(), &text));
  EXPECT_EQ(kept, text);
}

TEST_F(JsonSerializeTest, tree_to_string_handles_texts_of_any_length) {
  Tree array(json_new_array());
  std::string expected = "[";
  for (size_t length = 0; length < 300; length += 7) {
    const std::string text(length, 'x');
    json_insert_child(array.get(), json_new_string(text.c_str()));
    expected += (length ? ",\"" : "\"") + text + "\"";
  }
  EXPECT_EQ(expected + "]", text_of(array));
}

// A text lies behind its node's record until one is set that does not fit there.
TEST_F(JsonSerializeTest, tree_to_string_writes_texts_wherever_they_lie) {
  for (size_t first = 0; first < 40; ++first) {
    for (size_t then = 0; then < 40; ++then) {
      Tree array(json_new_array());
      json_t* string = json_new_string(std::string(first, 'x').c_str());
      json_insert_child(array.get(), string);
      const std::string text(then, 'y');
      ASSERT_EQ(1, AxpSet(string, text.c_str()));
      EXPECT_EQ("[\"" + text + "\"]", text_of(array));
    }
  }
}

TEST_F(JsonSerializeTest, tree_to_string_grows_at_any_byte) {
  for (size_t length = 4000; length < 4200; ++length) {
    const std::string text = "{\"" + std::string(length, 'n') + R"(":{"a":["b",{}]}})";
    EXPECT_EQ(text, text_of(parsed(text.c_str())));
  }
}

TEST_F(JsonSerializeTest, tree_to_string_aborts_on_null) {
  Tree node(json_new_object());
  char* text = nullptr;
  EXPECT_ASSERTION(json_tree_to_string(nullptr, &text), "root != ((void *)0)");
  EXPECT_ASSERTION(json_tree_to_string(node.get(), nullptr), "text != ((void *)0)");
}

}  // namespace
