// Cuts text into tokens. The text may come in pieces: what is half read at the end of one is kept
// in the parse state and continued in the next.
#pragma once

#include <string_view>

#include "fairlead/talk/json.h"
#include "talk/json/lexer_table.h"

namespace fairlead {

class JsonLexer {
 public:
  JsonLexer(json_jpi_t* info, const char* text) : info_(info), at_(text) {}

  JsonToken next();

  // What the last string (without its quotes), number or literal token is made of; valid until the
  // next call of next().
  std::string_view text() const { return text_; }

  // At the end of a piece: a token has begun and is not complete.
  bool in_token() const { return info_->lexer != lex::kBetween; }

  // Saves the begun token for the lexer of the next piece; false when memory runs out.
  bool keep_begun_token();

 private:
  JsonToken scan(uint8_t state, const char* begin, const char* at);
  JsonToken finish(JsonToken token, uint8_t state, const char* begin, const char* end);
  bool join_kept(std::string_view rest);

  json_jpi_t* info_;
  const char* at_;
  std::string_view text_;
};

// Frees what keep_begun_token saved.
void drop_kept_token(json_jpi_t* info);

}  // namespace fairlead
