// The lexer: runs over the text by the table and hands out tokens as spans of it.
#include "talk/json/lexer.h"

#include <cstdio>

#include "talk/json/growing_text.h"

namespace fairlead {

JsonToken JsonLexer::next() {
  if (in_token()) {
    if (info_->lexer < lex::kStates) return scan(static_cast<uint8_t>(info_->lexer), at_, at_);
    fprintf(stderr, "JSON: *state missing: %d\n", static_cast<int>(info_->lexer));
    return JsonToken::kInvalid;
  }
  const char* at = at_;
  uint8_t kind = lex::class_of(*at);
  while (kind == lex::kSpace || kind == lex::kLineFeed) {
    if (kind == lex::kLineFeed) ++info_->line;
    kind = lex::class_of(*++at);
  }
  const uint8_t state = lex::kNext[lex::kBetween][kind];
  if (state < lex::kStates) return scan(state, state == lex::kString ? at + 1 : at, at + 1);
  at_ = kind == lex::kEnd ? at : at + 1;
  return static_cast<JsonToken>(state - lex::kStates);
}

// From `state`, which the bytes before `at` led to, to the end of the token that starts at `begin`.
JsonToken JsonLexer::scan(uint8_t state, const char* begin, const char* at) {
  while (true) {
    uint8_t kind = lex::class_of(*at);
    if (state == lex::kString)
      while (kind > lex::kLastSpecialInString) kind = lex::class_of(*++at);
    const uint8_t next = lex::kNext[state][kind];
    if (next >= lex::kStates)
      return finish(static_cast<JsonToken>(next - lex::kStates), state, begin, at);
    if (kind == lex::kLineFeed) ++info_->line;
    state = next;
    ++at;
  }
}

// `end` is the byte that ended the token: behind a number, the last one of any other.
JsonToken JsonLexer::finish(JsonToken token, uint8_t state, const char* begin, const char* end) {
  const bool literal =
      token == JsonToken::kTrue || token == JsonToken::kFalse || token == JsonToken::kNull;
  const bool cut = token == JsonToken::kEndOfText;
  text_ = {begin, static_cast<size_t>(end - begin) + (literal ? 1 : 0)};
  at_ = literal || token == JsonToken::kString ? end + 1 : end;
  info_->lexer = cut ? state : uint8_t{lex::kBetween};
  if (cut || info_->token.length == 0) return token;
  return join_kept(text_) ? token : JsonToken::kNoMemory;
}

// The kept part stays in its block, to be read until the next token is kept.
bool JsonLexer::join_kept(std::string_view rest) {
  if (!append(&info_->token, rest)) return false;
  text_ = {info_->token.text, info_->token.length};
  info_->token.length = 0;
  return true;
}

bool JsonLexer::keep_begun_token() { return !in_token() || append(&info_->token, text_); }

void drop_kept_token(json_jpi_t* info) {
  free(info->token.text);
  info->token = {};
}

}  // namespace fairlead
