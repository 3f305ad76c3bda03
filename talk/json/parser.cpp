// The incremental parser: builds the tree from what the grammar reads.
#include "talk/json/parser.h"

#include <cstring>
#include <utility>

#include "talk/json/assertion.h"
#include "talk/json/grammar.h"
#include "talk/json/lexer.h"
#include "talk/json/node.h"
#include "talk/json/node_pool.h"

namespace {

using fairlead::JsonLexer;
using fairlead::kGoOn;
using fairlead::NodePool;
namespace grammar = fairlead::grammar;

// What the nodes of a text take at least, where values are short.
constexpr size_t kNodeBytesPerCharacter = 2;

// `info->cursor` is what the next token belongs to: the open container, or a label without a value.
class TreeBuilder {
 public:
  TreeBuilder(json_t* cursor, NodePool& pool) : cursor_(cursor), pool_(pool) {}

  json_error open(uint32_t kind) {
    json_t* node = pool_.node(kind);
    if (!node) return JSON_NO_MEMORY;
    if (cursor_) fairlead::link_last(cursor_, node);
    cursor_ = node;
    return kGoOn;
  }

  json_error close(grammar::State& around) {
    json_t* const parent = cursor_->parent;
    around = grammar::kComplete;
    if (!parent) return kGoOn;
    const bool member = parent->type == JSON_STRING;
    around = member ? grammar::kMemberEnd : grammar::kElementEnd;
    cursor_ = member ? parent->parent : parent;
    return kGoOn;
  }

  json_error label(std::string_view text) {
    json_t* node = pool_.text_node(JSON_STRING, text);
    if (!node) return JSON_NO_MEMORY;
    fairlead::link_last(cursor_, node);
    cursor_ = node;
    return kGoOn;
  }

  json_error value(uint32_t kind, std::string_view text) {
    json_t* node = kind <= JSON_NUMBER ? pool_.text_node(kind, text) : pool_.node(kind);
    if (!node) return JSON_NO_MEMORY;
    fairlead::link_last(cursor_, node);
    if (cursor_->type == JSON_STRING) cursor_ = cursor_->parent;
    return kGoOn;
  }

  json_t* cursor() const { return cursor_; }

 private:
  json_t* cursor_;
  NodePool& pool_;
};

// Between two pieces the record was in the caller's hands.
void check_cursor(const json_jpi_t* info) {
  switch (info->state) {
    case grammar::kDocument:
    case grammar::kComplete:
      return;
    case grammar::kColon:
    case grammar::kMemberValue:
      NODE_ASSERT_GIVEN(info->cursor);
      NODE_ASSERT(info->cursor->type == JSON_STRING);
      return;
    case grammar::kElement:
    case grammar::kElementEnd:
      NODE_ASSERT_GIVEN(info->cursor);
      NODE_ASSERT(info->cursor->type == JSON_ARRAY);
      return;
    default:
      NODE_ASSERT_GIVEN(info->cursor);
      NODE_ASSERT(info->cursor->type == JSON_OBJECT);
  }
}

fairlead::NodePoolState pool_state(json_jpi_t* info) {
  return {static_cast<fairlead::NodeSlab*>(std::exchange(info->slab, nullptr)), info->total};
}

void keep(json_jpi_t* info, fairlead::NodePoolState state) {
  info->slab = state.slab;
  info->total = state.total;
}

json_error read_piece(json_jpi_t* info, const char* text) {
  JsonLexer lexer(info, text);
  NodePool pool(pool_state(info));
  TreeBuilder builder(info->cursor, pool);
  const json_error result = fairlead::read_document(info, lexer, builder);
  info->cursor = builder.cursor();
  if (result == JSON_NEED_MORE) keep(info, pool.pause());
  if (result != JSON_NEED_MORE || !lexer.in_token()) return result;
  return fairlead::keep_begun_token(info, lexer.text()) ? result : JSON_NO_MEMORY;
}

json_error end_of_pieces(json_jpi_t* info) {
  if (info->state == grammar::kComplete) return JSON_DONE;
  fairlead::abandon_parse(info);
  return JSON_INTERNAL;
}

}  // namespace

void fairlead::abandon_parse(json_jpi_t* info) {
  drop_kept_token(info);
  json_t* root = info->cursor;
  while (root && root->parent) root = root->parent;
  if (root) json_free_value(&root);
  const NodePool leaves_the_slab(pool_state(info));
  *info = {nullptr, grammar::kFailed, lex::kBetween, info->line, {}, nullptr, 0};
}

json_error fairlead::end_unfinished(json_jpi_t* info, bool empty) {
  const json_error result = grammar::end_of_document(info, empty);
  abandon_parse(info);
  return result;
}

extern "C" json_error json_parse_document(json_t** root, const char* text) {
  NODE_ASSERT_GIVEN(root);
  NODE_ASSERT_NULL(*root);
  NODE_ASSERT_GIVEN(text);
  json_jpi_t info;
  json_jpi_init(&info);
  info.total = kNodeBytesPerCharacter * strlen(text);
  const json_error result = json_parse_fragment(&info, text);
  if (result == JSON_NEED_MORE) return fairlead::end_unfinished(&info, text[0] == '\0');
  if (result != JSON_DONE_AT_END) return result;
  *root = info.cursor;
  return JSON_DONE;
}

extern "C" int json_jpi_init(json_jpi_t* jpi) {
  NODE_ASSERT_GIVEN(jpi);
  *jpi = {nullptr, grammar::kDocument, fairlead::lex::kBetween, 1, {}, nullptr, 0};
  return 1;
}

extern "C" json_error json_parse_fragment(json_jpi_t* info, const char* text) {
  NODE_ASSERT_GIVEN(info);
  if (!text) return end_of_pieces(info);
  if (info->state >= grammar::kStates) return JSON_INTERNAL;
  check_cursor(info);
  const json_error result = read_piece(info, text);
  if (result == JSON_DONE_AT_END)
    fairlead::drop_kept_token(info);
  else if (result != JSON_NEED_MORE)
    fairlead::abandon_parse(info);
  return result;
}
