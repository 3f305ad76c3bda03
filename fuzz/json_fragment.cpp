// A document in pieces, cut anywhere: the verdict and the tree are those of the whole.
#include <algorithm>
#include <cstring>

#include "fairlead/talk.h"
#include "fuzzing.h"

namespace {

using fuzzing::ExactText;

std::string written(json_t* root) {
  char* text = nullptr;
  REQUIRE(json_tree_to_string(root, &text) == JSON_DONE);
  json_free_value(&root);
  return fuzzing::owned_string(text);
}

struct Verdict {
  json_error result;
  std::string text;
  bool operator==(const Verdict&) const = default;
};

Verdict whole(const std::string& source) {
  json_t* root = nullptr;
  const json_error result = json_parse_document(&root, ExactText(source).get());
  return {result, root ? written(root) : ""};
}

// Pieces of changing lengths up to `longest`.
Verdict in_pieces(const std::string& source, unsigned seed) {
  const unsigned longest = 1 + seed % 32;
  json_jpi_t parse;
  json_jpi_init(&parse);
  json_error result = JSON_NEED_MORE;
  for (size_t at = 0; at < source.size();) {
    const size_t length = std::min<size_t>(1 + seed++ % longest, source.size() - at);
    result = json_parse_fragment(&parse, ExactText(source.substr(at, length)).get());
    if (result != JSON_NEED_MORE && result != JSON_DONE_AT_END) return {result, ""};
    at += length;
  }
  if (result == JSON_DONE_AT_END) return {JSON_DONE, written(parse.cursor)};
  REQUIRE(json_parse_fragment(&parse, nullptr) == JSON_INTERNAL);
  REQUIRE(!parse.cursor);
  return {JSON_NEED_MORE, ""};
}

bool blank(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

// A stream that ends inside the document says so in another way.
Verdict from_stream(std::string source) {
  if (source.empty()) return {JSON_NEED_MORE, ""};  // no stream is made of no memory
  FILE* stream = fmemopen(source.data(), source.size(), "r");
  json_t* root = nullptr;
  const json_error result = json_stream_parse(stream, &root);
  fclose(stream);
  return {result == JSON_INTERNAL ? JSON_NEED_MORE : result, root ? written(root) : ""};
}

}  // namespace

void fuzzing::prepare() {}

void fuzzing::check(Input input) {
  const unsigned seed = input.byte();
  const std::string source = ExactText(input.rest()).get();
  const Verdict expected = whole(source);
  REQUIRE(from_stream(source) == expected);
  // As long as nothing but white space has come, the document may be still to come.
  if (blank(source))
    REQUIRE(in_pieces(source, seed).result == JSON_NEED_MORE);
  else
    REQUIRE(in_pieces(source, seed) == expected);
}
