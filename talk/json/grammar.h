// The grammar of a document: which token may stand where, and what it does.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <cstdio>

#include "fairlead/talk/json.h"
#include "talk/json/lexer.h"

namespace fairlead {

namespace grammar {

// What may come next.
enum State : uint8_t {
  kDocument,     // "{"
  kFirstLabel,   // a label or "}"
  kColon,        // ":"
  kMemberValue,  // a value
  kMemberEnd,    // "," or "}"
  kLabel,        // a label
  kElement,      // a value or "]", after "[" and after ","
  kElementEnd,   // "," or "]"
  kComplete,     // white space
  kStates,
  kFailed = kStates  // nothing: the parse has ended
};

enum class Action : uint8_t { kRefuse, kOpen, kClose, kLabel, kValue, kMove };

struct Step {
  Action action = Action::kRefuse;
  State next = kDocument;    // with kClose, what is around the container decides
  uint8_t kind = JSON_NULL;  // of the node that kOpen and kValue make
};

using Row = std::array<Step, static_cast<size_t>(JsonToken::kCount)>;
using Table = std::array<Row, kStates>;

constexpr Step& at(Table& table, State state, JsonToken token) {
  return table[state][static_cast<size_t>(token)];
}

constexpr void allow_values(Table& table, State state, State after) {
  at(table, state, JsonToken::kObjectBegin) = {Action::kOpen, kFirstLabel, JSON_OBJECT};
  at(table, state, JsonToken::kArrayBegin) = {Action::kOpen, kElement, JSON_ARRAY};
  at(table, state, JsonToken::kString) = {Action::kValue, after, JSON_STRING};
  at(table, state, JsonToken::kNumber) = {Action::kValue, after, JSON_NUMBER};
  at(table, state, JsonToken::kTrue) = {Action::kValue, after, JSON_TRUE};
  at(table, state, JsonToken::kFalse) = {Action::kValue, after, JSON_FALSE};
  at(table, state, JsonToken::kNull) = {Action::kValue, after, JSON_NULL};
}

constexpr Table make_table() {
  Table table{};
  at(table, kDocument, JsonToken::kObjectBegin) = {Action::kOpen, kFirstLabel, JSON_OBJECT};
  at(table, kFirstLabel, JsonToken::kObjectEnd) = {Action::kClose};
  at(table, kFirstLabel, JsonToken::kString) = {Action::kLabel, kColon};
  at(table, kColon, JsonToken::kColon) = {Action::kMove, kMemberValue};
  allow_values(table, kMemberValue, kMemberEnd);
  at(table, kMemberEnd, JsonToken::kComma) = {Action::kMove, kLabel};
  at(table, kMemberEnd, JsonToken::kObjectEnd) = {Action::kClose};
  at(table, kLabel, JsonToken::kString) = {Action::kLabel, kColon};
  allow_values(table, kElement, kElementEnd);
  at(table, kElement, JsonToken::kArrayEnd) = {Action::kClose};  // a trailing comma is let pass
  at(table, kElementEnd, JsonToken::kComma) = {Action::kMove, kElement};
  at(table, kElementEnd, JsonToken::kArrayEnd) = {Action::kClose};
  return table;
}
inline constexpr Table kTable = make_table();

inline json_error end_of_text(State state, bool in_token) {
  if (state != kComplete) return JSON_NEED_MORE;
  return in_token ? JSON_SYNTAX : JSON_DONE_AT_END;
}

// Tells the developer at the console where the document is wrong.
inline json_error report_misplaced(const json_jpi_t* info, State state) {
  fprintf(stderr, "JSON: state %d: defaulted at line %zd\n", static_cast<int>(state),
          static_cast<ssize_t>(info->line));
  return JSON_SYNTAX;
}

inline json_error refuse(const json_jpi_t* info, State state, JsonToken token) {
  if (token == JsonToken::kNoMemory) return JSON_NO_MEMORY;
  if (state == kComplete) return JSON_SYNTAX;
  if (state == kLabel && token == JsonToken::kInvalid) return JSON_BAD_AFTER_COMMA;
  return report_misplaced(info, state);
}

// The whole text gave JSON_NEED_MORE: it is cut short, or it is nothing but white space.
inline json_error end_of_document(const json_jpi_t* info, bool empty) {
  if (empty || info->state != kDocument || info->lexer != lex::kBetween) return JSON_NEED_MORE;
  return report_misplaced(info, kDocument);
}

}  // namespace grammar

// Reads one piece of text. `events` is told what was read by open(kind), label(text),
// value(kind, text) and close(around), which sets what may follow the closed container. Each
// returns kGoOn or the result that ends the parse.
inline constexpr json_error kGoOn = json_error{};

template <class Events>
json_error read_document(json_jpi_t* info, JsonLexer& lexer, Events& events) {
  using grammar::Action;
  auto state = static_cast<grammar::State>(info->state);
  while (true) {
    const JsonToken token = lexer.next();
    if (token == JsonToken::kEndOfText) break;
    grammar::Step step = grammar::kTable[state][static_cast<size_t>(token)];
    json_error result = kGoOn;
    if (step.action == Action::kLabel) [[likely]] {
      result = events.label(lexer.text());
    } else if (step.action == Action::kValue) [[likely]] {
      result = events.value(step.kind, lexer.text());
    } else if (step.action == Action::kOpen) {
      result = events.open(step.kind);
    } else if (step.action == Action::kClose) {
      result = events.close(step.next);
    } else if (step.action == Action::kRefuse) {
      lexer.count_lines();
      return grammar::refuse(info, state, token);
    }
    if (result != kGoOn) return result;

    state = step.next;
    if (state == grammar::kColon && lexer.skip(':'))
      state = grammar::kMemberValue;
    else if (state == grammar::kMemberEnd && lexer.skip(','))
      state = grammar::kLabel;
    else if (state == grammar::kElementEnd && lexer.skip(','))
      state = grammar::kElement;
  }
  info->state = state;
  if (state != grammar::kComplete) lexer.count_lines();
  return grammar::end_of_text(state, lexer.in_token());
}

}  // namespace fairlead
