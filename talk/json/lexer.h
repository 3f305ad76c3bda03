// Cuts text into tokens. The text may come in pieces: what is half read at the end of one is kept
// in the parse state and continued in the next.
#pragma once

#include <cstring>
#include <string_view>

#include "fairlead/talk/json.h"
#include "talk/json/lexer_table.h"
#include "talk/json/plain_run.h"

namespace fairlead {

// A token that was read the long way: what it is, its text, and where the next one starts.
struct ScannedToken {
  JsonToken token;
  std::string_view text;
  const char* next;
};

// Reads on from `state`, which the bytes before `at` led to, to the end of the token.
ScannedToken scan_token(json_jpi_t* info, uint8_t state, const char* begin, const char* at,
                        const char* end);

// Reads the rest of a token that the piece before has begun.
ScannedToken resume_token(json_jpi_t* info, const char* text, const char* end);

// Saves what a piece has begun of a token; false when memory runs out.
bool keep_begun_token(json_jpi_t* info, std::string_view text);
void drop_kept_token(json_jpi_t* info);

class JsonLexer {
 public:
  JsonLexer(json_jpi_t* info, const char* text)
      : info_(info), begin_(text), at_(text), end_(text + strlen(text)) {}

  // Takes the token made of the byte `mark` if it follows at once: the usual case in compact text.
  bool skip(char mark) {
    if (*at_ != mark) return false;
    ++at_;
    return true;
  }

  // Inlined by force, as the speed of the parsers hangs on keeping these members in registers.
  __attribute__((always_inline)) JsonToken next() {
    if (in_token()) return take(resume_token(info_, at_, end_));
    uint8_t kind = lex::class_of(*at_);
    while (kind == lex::kSpace) kind = lex::class_of(*++at_);
    if (kind == lex::kQuote) return string();
    const uint8_t state = lex::kNext[lex::kBetween][kind];
    if (state < lex::kStates) return take(scan_token(info_, state, at_, at_ + 1, end_));
    if (kind != lex::kEnd) ++at_;
    return static_cast<JsonToken>(state - lex::kStates);
  }

  // What the last string (without its quotes), number or literal token is made of, or what the
  // piece holds of a begun one.
  std::string_view text() const { return text_; }

  // At the end of a piece: a token has begun and is not complete.
  bool in_token() const { return info_->lexer != lex::kBetween; }

  // Adds the lines read so far in this piece to the line counter, which only a diagnostic or a
  // further piece has use for.
  void count_lines() {
    for (const char* at = begin_; at != at_; ++at)
      if (*at == '\n') ++info_->line;
  }

 private:
  __attribute__((always_inline)) JsonToken string() {
    const char* const begin = at_ + 1;
    const char* const end = end_of_plain_run(begin, end_);
    if (*end != '"') return take(scan_token(info_, lex::kString, begin, end, end_));
    text_ = {begin, static_cast<size_t>(end - begin)};
    at_ = end + 1;
    return JsonToken::kString;
  }

  JsonToken take(const ScannedToken& scanned) {
    text_ = scanned.text;
    at_ = scanned.next;
    return scanned.token;
  }

  json_jpi_t* info_;
  const char *begin_, *at_, *end_;
  std::string_view text_;
};

}  // namespace fairlead
