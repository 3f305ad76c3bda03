// A document in one piece: what is printed parses to the same text, by tree, by events, by stream,
// indented and stripped again.
#include <cstring>

#include "fairlead/talk.h"
#include "fuzzing.h"

namespace {

using fuzzing::ExactText;

struct Tree {
  json_t* root = nullptr;
  json_error result;

  explicit Tree(const std::string& text) {
    result = json_parse_document(&root, ExactText(text).get());
    REQUIRE((result == JSON_DONE) == (root != nullptr));
  }
  ~Tree() {
    if (root) json_free_value(&root);
  }
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  std::string text() const {
    char* text = nullptr;
    REQUIRE(json_tree_to_string(root, &text) == JSON_DONE);
    return fuzzing::owned_string(text);
  }
};

std::string parsed(const std::string& text) {
  const Tree tree(text);
  REQUIRE(tree.root);
  return tree.text();
}

std::string streamed(json_t* root) {
  char* text = nullptr;
  size_t size = 0;
  FILE* stream = open_memstream(&text, &size);
  REQUIRE(json_stream_output(stream, root) == JSON_DONE);
  fclose(stream);
  return fuzzing::owned_string(text);
}

// Writes the text again, out of the events of a parse.
struct Writer {
  std::string text;
  bool first = true;

  void separate() {
    if (!first) text += ',';
    first = false;
  }
  static Writer& of(void* context) { return *static_cast<Writer*>(context); }
  template <char kBracket>
  static int begin(void* context) {
    of(context).separate();
    of(context).text += kBracket;
    of(context).first = true;
    return 1;
  }
  template <char kBracket>
  static int end(void* context) {
    of(context).text += kBracket;
    of(context).first = false;
    return 1;
  }
  static int label(void* context, const char* text, size_t length) {
    of(context).separate();
    of(context).text += '"' + std::string(text, length) + "\":";
    of(context).first = true;
    return 1;
  }
  static int value(void* context, uint32_t kind, const char* text, size_t length) {
    of(context).separate();
    const std::string quote = kind == JSON_STRING ? "\"" : "";
    of(context).text += quote + std::string(text, length) + quote;
    return 1;
  }
};

json_error write_events(const std::string& text, Writer& writer) {
  constexpr json_saxy_t kEvents = {Writer::begin<'{'>, Writer::end<'}'>, Writer::begin<'['>,
                                   Writer::end<']'>,   Writer::label,    Writer::value};
  return json_saxy_parse(ExactText(text).get(), &kEvents, &writer);
}

// An escaped quote is read in ways of their own by both (json.h).
void check_layout(const std::string& source, const std::string& text) {
  const std::string lines = fuzzing::owned_string(json_format_string(ExactText(text).get()));
  REQUIRE(parsed(lines) == text);
  ExactText stripped(source);
  json_strip_white_spaces(stripped.get());
  REQUIRE(parsed(stripped.get()) == text);
}

}  // namespace

void fuzzing::prepare() {}

void fuzzing::check(Input input) {
  const std::string source = ExactText(input.rest()).get();
  char* const escaped = json_escape(source.c_str());
  REQUIRE(owned_string(json_unescape(escaped)) == source);
  free(escaped);

  const Tree tree(source);
  Writer writer;
  REQUIRE(write_events(source, writer) == tree.result);
  if (!tree.root) return;

  const std::string text = tree.text();
  REQUIRE(parsed(text) == text);
  REQUIRE(streamed(tree.root) == text);
  REQUIRE(writer.text == text);
  if (text.find('\\') == std::string::npos) check_layout(source, text);
}
