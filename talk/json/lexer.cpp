// The lexer's long way: tokens with escapes, numbers, literals, and tokens cut by a piece's end.
#include "talk/json/lexer.h"

#include <cstdio>

#include "talk/json/growing_text.h"

namespace fairlead {

namespace {

// `end` is the byte that ended the token: behind a number, the last one of any other.
ScannedToken finish(JsonToken token, const char* begin, const char* end) {
  const auto length = static_cast<size_t>(end - begin);
  switch (token) {
    case JsonToken::kString:
      return {token, {begin, length}, end + 1};
    case JsonToken::kTrue:
    case JsonToken::kFalse:
    case JsonToken::kNull:
      return {token, {begin, length + 1}, end + 1};
    default:
      return {token, {begin, length}, end};
  }
}

}  // namespace

ScannedToken scan_token(json_jpi_t* info, uint8_t state, const char* begin, const char* at,
                        const char* end) {
  while (true) {
    if (state == lex::kString) at = end_of_plain_run(at, end);
    const uint8_t next = lex::kNext[state][lex::class_of(*at)];
    if (next >= lex::kStates) {
      const auto token = static_cast<JsonToken>(next - lex::kStates);
      info->lexer = token == JsonToken::kEndOfText ? state : uint8_t{lex::kBetween};
      return finish(token, begin, at);
    }
    state = next;
    ++at;
  }
}

ScannedToken resume_token(json_jpi_t* info, const char* text, const char* end) {
  if (info->lexer >= lex::kStates) {
    fprintf(stderr, "JSON: *state missing: %d\n", static_cast<int>(info->lexer));
    return {JsonToken::kInvalid, {}, text};
  }
  ScannedToken rest = scan_token(info, static_cast<uint8_t>(info->lexer), text, text, end);
  json_buffer_t* kept = &info->token;
  if (rest.token == JsonToken::kEndOfText || kept->length == 0) return rest;
  if (!append(kept, rest.text)) return {JsonToken::kNoMemory, {}, rest.next};
  rest.text = {kept->text, kept->length};
  kept->length = 0;  // the block is read until the next token is kept
  return rest;
}

bool keep_begun_token(json_jpi_t* info, std::string_view text) {
  return append(&info->token, text);
}

void drop_kept_token(json_jpi_t* info) {
  free(info->token.text);
  info->token = {};
}

}  // namespace fairlead
