// Paths and parameter lists: pieces as in a plain model, and a text that is rebuilt splits into the
// same pieces again.
#include <cstring>
#include <vector>

#include "fairlead/talk.h"
#include "fuzzing.h"

namespace {

using fuzzing::ExactText;
using Pieces = std::vector<std::string>;

constexpr size_t kLongestPath = 255;

std::string trimmed(std::string text) {
  text.erase(text.find_last_not_of(" \t\r\n") + 1);
  text.erase(0, text.find_first_not_of(' '));
  return text;
}

Pieces expected_segments(const std::string& source) {
  Pieces pieces;
  std::string piece;
  for (const char c : trimmed(source) + '/') {
    if (c != '/') {
      piece += c;
      continue;
    }
    if (!piece.empty() && pieces.size() < SLASH_MAX) pieces.push_back(piece);
    piece.clear();
  }
  return pieces;
}

class Path {
 public:
  explicit Path(const std::string& source) : text_(source) {
    const int result = SlashAnalysis(&slash_, text_.get());
    REQUIRE(result == (SlashCount(&slash_) > 0));
    for (int i = 1; i <= SlashCount(&slash_); ++i) pieces_.push_back(SlashGet(&slash_, i));
    REQUIRE(!SlashGet(&slash_, SlashCount(&slash_) + 1));
    if (const char* text = SlashString(&slash_)) string_ = text;
  }
  ~Path() { SlashClear(&slash_); }
  Path(const Path&) = delete;
  Path& operator=(const Path&) = delete;

  const Pieces& pieces() const { return pieces_; }
  const std::string& string() const { return string_; }

 private:
  ExactText text_;
  slash_t slash_ = {};
  Pieces pieces_;
  std::string string_;
};

void check_path(const std::string& source) {
  const Path path(source);
  REQUIRE(path.pieces() == expected_segments(source));
  REQUIRE(path.string().size() <= kLongestPath);
  // It may have been cut, and white space at its ends would go.
  if (path.string().size() == kLongestPath || path.string() != trimmed(path.string())) return;
  REQUIRE(Path(path.string()).string() == path.string());
}

// Said once more, character by character, in the words of the header.
Pieces expected_parameters(const std::string& source) {
  const std::string text = trimmed(source);
  Pieces pieces(1);
  int quotes = 0, brackets = 0, braces = 0;
  bool lost = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool bare = quotes % 2 == 0 && brackets == 0 && braces == 0;
    if (pieces.size() < PARAM_MAX && bare && c == ',') {
      pieces.emplace_back();
      lost = false;
      while (i + 1 < text.size() && text[i + 1] == ' ') ++i;
      continue;
    }
    if (pieces.size() < PARAM_MAX && bare && c == ' ') lost = true;
    if (!lost) pieces.back() += c;
    if (c == '"') ++quotes;
    if (quotes % 2 != 0) continue;
    brackets += (c == '[') - (c == ']');
    braces += (c == '{') - (c == '}');
  }
  return pieces;
}

class Parameters {
 public:
  explicit Parameters(const std::string& source) : text_(source) {
    result_ = ParamAnalysis(&param_, text_.get());
    if (result_ != 1) return;
    for (int i = 1; i <= ParamCount(&param_); ++i) add(i);
    string_ = ParamString(&param_);
  }
  ~Parameters() { ParamClear(&param_); }
  Parameters(const Parameters&) = delete;
  Parameters& operator=(const Parameters&) = delete;

  int result() const { return result_; }
  const Pieces& pieces() const { return pieces_; }
  const std::string& string() const { return string_; }

 private:
  // White space at the front goes; what has nothing else is no document, nor is a broken object.
  static void check_document(talk_t* talk, const std::string& text) {
    const size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string::npos) return REQUIRE(!talk);
    if (text[begin] == '{') return REQUIRE(!talk || VesselCheck(talk));
    REQUIRE(talk && RenderCheck(talk));
    REQUIRE(RenderString(talk) == text.substr(begin));
  }

  void add(int index) {
    const char* text = ParamGetS(&param_, index);
    REQUIRE(ParamGet(&param_, index)->text == text);
    pieces_.push_back(text ? text : "");
    talk_t* const talk = ParamGetT(&param_, index);
    REQUIRE(talk == ParamGetT(&param_, index));
    if (text) check_document(talk, text);
  }

  ExactText text_;
  param_t param_ = {};
  int result_;
  Pieces pieces_;
  std::string string_;
};

void check_parameters(const std::string& source) {
  const Parameters parameters(source);
  REQUIRE(parameters.result() == !trimmed(source).empty());
  if (parameters.result() != 1) return;
  REQUIRE(parameters.pieces() == expected_parameters(source));
  std::string joined;
  for (const std::string& piece : parameters.pieces())
    joined += (&piece == &parameters.pieces()[0] ? "" : ",") + piece;
  REQUIRE(parameters.string() == joined);
}

}  // namespace

void fuzzing::prepare() {}

void fuzzing::check(Input input) {
  const std::string source = ExactText(input.rest()).get();
  check_path(source);
  check_parameters(source);
}
