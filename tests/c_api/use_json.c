/* use_json.c - the node tree: built by hand, parsed in pieces, written out. */
#include <stdlib.h>

#include "check.h"
#include "fairlead/talk.h"

static void build_a_tree(void) {
  json_t* root = json_new_object();
  json_t* list = json_new_array();
  char* text = NULL;
  CHECK(json_insert_child(list, json_new_number("1")) == JSON_DONE);
  CHECK(json_insert_child(list, json_new_true()) == JSON_DONE);
  CHECK(json_insert_pair_into_object(root, "list", list) == JSON_DONE);
  CHECK(json_find_first_label(root, "list") != NULL);
  CHECK(json_tree_to_string(root, &text) == JSON_DONE);
  CHECK_TEXT("{\"list\":[1,true]}", text);
  free(text);
  json_free_value(&root);
  CHECK(root == NULL);
}

static void parse_in_pieces(void) {
  json_jpi_t state;
  CHECK(json_jpi_init(&state) == 1);
  CHECK(json_parse_fragment(&state, "{\"a\":\"b") == JSON_NEED_MORE);
  CHECK(json_parse_fragment(&state, "c\"}") == JSON_DONE_AT_END);
  CHECK(state.cursor && state.cursor->type == JSON_OBJECT);
  json_free_value(&state.cursor);
}

static void collect_text(void) {
  rcs_t* text = rcs_create(4);
  CHECK(rcs_catcs(text, "abc", 3) == 1);
  CHECK(rcs_catc(text, 'd') == 1);
  CHECK(rcs_length(text) == 4);
  CHECK_OWN_TEXT("abcd", rcs_unwrap(text));
}

void use_json(void) {
  build_a_tree();
  parse_in_pieces();
  collect_text();
}
