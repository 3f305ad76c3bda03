// Nodes: making, linking, finding, unlinking, freeing.
#include <cerrno>
#include <string>

#include "fairlead/talk/node.h"
#include "json_support.h"

namespace {

using fairlead_test::parsed;
using fairlead_test::text_of;
using fairlead_test::Tree;

class JsonNodeTest : public fairlead_test::DeviceTest {
 protected:
  // Children's texts in order, after checking every link on the way.
  static std::string order(const json_t* parent) {
    std::string texts;
    const json_t* previous = nullptr;
    for (const json_t* child = parent->child; child; child = child->next) {
      EXPECT_EQ(parent, child->parent);
      EXPECT_EQ(previous, child->previous);
      if (child->text) texts += child->text;
      previous = child;
    }
    EXPECT_EQ(previous, parent->child_end);
    return texts;
  }

  static void expect_unlinked(const json_t* node) {
    EXPECT_EQ(nullptr, node->parent);
    EXPECT_EQ(nullptr, node->previous);
    EXPECT_EQ(nullptr, node->next);
  }
};

TEST_F(JsonNodeTest, new_value_has_its_kind_and_nothing_else) {
  for (uint32_t kind = JSON_STRING; kind <= 8; ++kind) {
    Tree node(json_new_value(kind));
    EXPECT_EQ(kind, node->type);
    EXPECT_EQ(nullptr, node->text);
    EXPECT_EQ(nullptr, node->child);
    EXPECT_EQ(nullptr, node->child_end);
    expect_unlinked(node.get());
  }
}

TEST_F(JsonNodeTest, new_string_and_number_hold_a_copy) {
  std::string text = "12";
  Tree string(json_new_string(text.c_str()));
  Tree number(json_new_number(text.c_str()));
  text = "xx";
  EXPECT_EQ(uint32_t{JSON_STRING}, string->type);
  EXPECT_STREQ("12", string->text);
  EXPECT_EQ(uint32_t{JSON_NUMBER}, number->type);
  EXPECT_STREQ("12", number->text);
}

TEST_F(JsonNodeTest, an_empty_string_is_a_text_too) {
  Tree string(json_new_string(""));
  EXPECT_STREQ("", string->text);
}

TEST_F(JsonNodeTest, the_named_constructors_make_their_kinds) {
  const std::pair<json_t*, uint32_t> cases[] = {{json_new_object(), JSON_OBJECT},
                                                {json_new_array(), JSON_ARRAY},
                                                {json_new_true(), JSON_TRUE},
                                                {json_new_false(), JSON_FALSE},
                                                {json_new_null(), JSON_NULL}};
  for (auto [node, kind] : cases) EXPECT_EQ(kind, Tree(node)->type);
}

TEST_F(JsonNodeTest, insert_child_appends) {
  Tree array(json_new_array());
  for (const char* text : {"a", "b", "c"})
    EXPECT_EQ(JSON_DONE, json_insert_child(array.get(), json_new_string(text)));
  EXPECT_EQ("abc", order(array.get()));
}

TEST_F(JsonNodeTest, insert_child_lets_an_object_hold_labels_only) {
  for (uint32_t kind = JSON_STRING; kind <= 7; ++kind) {
    Tree object(json_new_object());
    Tree child(json_new_value(kind));
    const json_error expected = kind == JSON_STRING ? JSON_DONE : JSON_BAD_STRUCTURE;
    EXPECT_EQ(expected, json_insert_child(object.get(), child.get())) << kind;
    if (expected == JSON_DONE) static_cast<void>(child.release());
  }
}

TEST_F(JsonNodeTest, insert_child_lets_labels_and_arrays_hold_values) {
  for (uint32_t parent_kind : {JSON_STRING, JSON_ARRAY}) {
    for (uint32_t kind = JSON_STRING; kind <= 7; ++kind) {
      Tree parent(json_new_value(parent_kind));
      Tree child(json_new_value(kind));
      const json_error expected = kind <= JSON_NULL ? JSON_DONE : JSON_BAD_STRUCTURE;
      EXPECT_EQ(expected, json_insert_child(parent.get(), child.get())) << kind;
      if (expected == JSON_DONE) static_cast<void>(child.release());
    }
  }
}

TEST_F(JsonNodeTest, insert_child_refuses_a_label_that_has_its_value_as_a_value) {
  Tree array(json_new_array());
  Tree label(json_new_string("label"));
  json_insert_child(label.get(), json_new_true());
  EXPECT_EQ(JSON_BAD_STRUCTURE, json_insert_child(array.get(), label.get()));
  EXPECT_EQ(nullptr, array->child);
  expect_unlinked(label.get());
}

TEST_F(JsonNodeTest, insert_child_accepts_a_filled_container_as_a_value) {
  Tree array(json_new_array());
  EXPECT_EQ(JSON_DONE, json_insert_child(array.get(), parsed(R"({"a":1})").release()));
  EXPECT_EQ(R"([{"a":1}])", text_of(array));
}

TEST_F(JsonNodeTest, insert_child_refuses_a_parent_of_any_other_kind) {
  for (uint32_t kind : {1u, 4u, 5u, 6u, 7u}) {
    Tree parent(json_new_value(kind));
    Tree child(json_new_string("a"));
    EXPECT_EQ(JSON_BAD_STRUCTURE, json_insert_child(parent.get(), child.get())) << kind;
    EXPECT_EQ(nullptr, parent->child);
    expect_unlinked(child.get());
  }
}

TEST_F(JsonNodeTest, insert_child_lets_a_label_have_a_second_child) {
  Tree label(json_new_string("label"));
  EXPECT_EQ(JSON_DONE, json_insert_child(label.get(), json_new_string("a")));
  EXPECT_EQ(JSON_DONE, json_insert_child(label.get(), json_new_string("b")));
  EXPECT_EQ("ab", order(label.get()));
}

TEST_F(JsonNodeTest, insert_child_aborts_on_misuse) {
  Tree node(json_new_array());
  EXPECT_ASSERTION(json_insert_child(nullptr, node.get()), "parent != ((void *)0)");
  EXPECT_ASSERTION(json_insert_child(node.get(), nullptr), "child != ((void *)0)");
  EXPECT_ASSERTION(json_insert_child(node.get(), node.get()), "parent != child");
}

TEST_F(JsonNodeTest, insert_pair_makes_a_member) {
  Tree object(json_new_object());
  EXPECT_EQ(JSON_DONE, json_insert_pair_into_object(object.get(), "a", json_new_number("1")));
  EXPECT_EQ(JSON_DONE, json_insert_pair_into_object(object.get(), "b", json_new_object()));
  EXPECT_EQ(R"({"a":1,"b":{}})", text_of(object));
}

TEST_F(JsonNodeTest, insert_pair_refused_leaves_both_as_they_were) {
  Tree object(json_new_object());
  Tree unknown(json_new_value(7));
  EXPECT_EQ(JSON_BAD_STRUCTURE, json_insert_pair_into_object(object.get(), "a", unknown.get()));
  EXPECT_EQ("{}", text_of(object));
  expect_unlinked(unknown.get());
}

TEST_F(JsonNodeTest, insert_pair_aborts_on_misuse) {
  Tree object(json_new_object()), array(json_new_array());
  json_t* const o = object.get();
  EXPECT_ASSERTION(json_insert_pair_into_object(nullptr, "a", o), "parent != ((void *)0)");
  EXPECT_ASSERTION(json_insert_pair_into_object(o, nullptr, o), "text_label != ((void *)0)");
  EXPECT_ASSERTION(json_insert_pair_into_object(o, "a", nullptr), "value != ((void *)0)");
  EXPECT_ASSERTION(json_insert_pair_into_object(o, "a", o), "parent != value");
  EXPECT_ASSERTION(json_insert_pair_into_object(array.get(), "a", o),
                   "parent->type == JSON_OBJECT");
}

TEST_F(JsonNodeTest, detach_child_from_the_front_the_middle_and_the_end) {
  Tree array = parsed(R"({"abcd":["a","b","c","d"]})");
  json_t* const list = array->child->child;
  for (auto [index, left] : {std::pair<int, const char*>{0, "bcd"}, {1, "bd"}, {1, "b"}, {0, ""}}) {
    json_t* child = list->child;
    for (int i = 0; i < index; ++i) child = child->next;
    EXPECT_EQ(1, json_detach_child(list, child));
    expect_unlinked(child);
    EXPECT_EQ(left, order(list));
    json_free_value(&child);
  }
}

TEST_F(JsonNodeTest, detach_child_refuses_null_and_strangers) {
  Tree a(json_new_array()), b(json_new_array());
  for (auto [parent, child] :
       {std::pair<json_t*, json_t*>{nullptr, a.get()}, {a.get(), nullptr}, {a.get(), b.get()}}) {
    errno = 0;
    EXPECT_EQ(0, json_detach_child(parent, child));
    EXPECT_EQ(EINVAL, errno);
  }
}

TEST_F(JsonNodeTest, free_value_clears_the_pointer) {
  json_t* root = parsed(R"({"a":{"b":[1,2,{"c":null}]},"d":"e"})").release();
  json_free_value(&root);
  EXPECT_EQ(nullptr, root);
}

TEST_F(JsonNodeTest, free_value_inside_a_tree_removes_it_cleanly) {
  Tree tree = parsed(R"({"a":{"x":1},"b":[2],"c":3})");
  json_t* middle = tree->child->next;
  json_free_value(&middle);
  EXPECT_EQ("ac", order(tree.get()));
  json_t* first = tree->child;
  json_free_value(&first);
  EXPECT_EQ("c", order(tree.get()));
  json_t* last = tree->child_end;
  json_free_value(&last);
  EXPECT_EQ("{}", text_of(tree));
}

TEST_F(JsonNodeTest, free_value_takes_a_pointer_of_the_tree_itself) {
  Tree tree = parsed(R"({"a":{"x":1},"b":[1,2,3],"c":3})");
  json_free_value(&tree->child->child);
  EXPECT_EQ(nullptr, tree->child->child_end);
  json_free_value(&tree->child);
  json_t* const list = tree->child->child;
  json_free_value(&list->child);
  json_free_value(&list->child->next);
  EXPECT_EQ(R"({"b":[2],"c":3})", text_of(tree));
  json_free_value(&list->child_end);
  json_free_value(&tree->child_end->previous);
  EXPECT_EQ(R"({"c":3})", text_of(tree));
}

// A text lies in its node's block until a longer one is set.
TEST_F(JsonNodeTest, free_value_frees_a_text_that_was_replaced) {
  Tree tree = parsed(R"({"inside":1,"outside":2})");
  EXPECT_EQ(1, AxpSet(tree->child, tree->child->text + 2));
  EXPECT_EQ(1, AxpSet(tree->child_end, "a text that is longer than before"));
  EXPECT_EQ(1, AxpSet(tree->child_end, tree->child_end->text + 7));
  EXPECT_EQ(R"({"side":1,"that is longer than before":2})", text_of(tree));
}

TEST_F(JsonNodeTest, set_gives_a_node_without_text_one) {
  Tree tree(json_new_object());
  json_t* label = json_new_value(JSON_STRING);
  json_insert_child(tree.get(), label);
  json_insert_child(label, json_new_true());
  EXPECT_EQ(1, AxpSet(label, ""));
  EXPECT_EQ(1, AxpSet(label, "a"));
  EXPECT_EQ(R"({"a":true})", text_of(tree));
}

TEST_F(JsonNodeTest, free_value_aborts_without_a_node) {
  json_t* none = nullptr;
  EXPECT_ASSERTION(json_free_value(&none), "*value");
  EXPECT_ASSERTION(json_free_value(nullptr), "*value");
}

TEST_F(JsonNodeTest, find_first_label_takes_the_first_namesake) {
  Tree tree = parsed(R"({"a":1,"b":2,"b":3})");
  EXPECT_EQ(tree->child->next, json_find_first_label(tree.get(), "b"));
  EXPECT_EQ(nullptr, json_find_first_label(tree.get(), "B"));
  EXPECT_EQ(nullptr, json_find_first_label(tree.get(), ""));
}

TEST_F(JsonNodeTest, find_first_label_passes_over_a_label_without_text) {
  Tree object(json_new_object());
  json_insert_child(object.get(), json_new_value(JSON_STRING));
  EXPECT_EQ(nullptr, json_find_first_label(object.get(), "a"));
}

TEST_F(JsonNodeTest, find_first_label_aborts_on_misuse) {
  Tree object(json_new_object()), array(json_new_array());
  EXPECT_ASSERTION(json_find_first_label(nullptr, "a"), "object != ((void *)0)");
  EXPECT_ASSERTION(json_find_first_label(object.get(), nullptr), "text_label != ((void *)0)");
  EXPECT_ASSERTION(json_find_first_label(array.get(), "a"), "object->type == JSON_OBJECT");
}

TEST_F(JsonNodeTest, new_string_and_number_abort_without_text) {
  EXPECT_ASSERTION(json_new_string(nullptr), "text != ((void *)0)");
  EXPECT_ASSERTION(json_new_number(nullptr), "text != ((void *)0)");
}

}  // namespace
