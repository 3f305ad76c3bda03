// The serializer: a tree as one compact text.
#include <cstdlib>
#include <cstring>

#include "base/owned.h"
#include "talk/json/assertion.h"
#include "talk/json/growing_text.h"
#include "talk/json/tree_writer.h"

namespace {

// Collects the text; once memory has run out it takes nothing more.
class TextOutput {
 public:
  TextOutput() = default;
  TextOutput(const TextOutput&) = delete;
  TextOutput& operator=(const TextOutput&) = delete;
  ~TextOutput() { fairlead::Freer()(text_.text); }

  void put(char c) {
    if (reserve(1)) raw(c);
  }

  void add(std::string_view text) {
    if (reserve(text.size())) raw(text);
  }

  void quoted(std::string_view text) {
    if (!reserve(text.size() + 2)) return;
    raw('"');
    raw(text);
    raw('"');
  }

  // The finished text in a block of its size; null when memory has run out.
  char* take() {
    put('\0');
    if (failed_) return nullptr;
    char* trimmed = static_cast<char*>(realloc(text_.text, text_.length));
    char* result = trimmed ? trimmed : text_.text;
    text_ = {};
    return result;
  }

 private:
  bool reserve(size_t size) {
    if (size <= text_.capacity - text_.length) return true;
    if (!failed_) failed_ = !fairlead::make_room(&text_, size);
    return !failed_;
  }

  void raw(char c) { text_.text[text_.length++] = c; }

  void raw(std::string_view text) {
    memcpy(text_.text + text_.length, text.data(), text.size());
    text_.length += text.size();
  }

  json_buffer_t text_{};
  bool failed_ = false;
};

}  // namespace

extern "C" json_error json_tree_to_string(json_t* root, char** text) {
  NODE_ASSERT_GIVEN(root);
  NODE_ASSERT_GIVEN(text);
  TextOutput output;
  const json_error result = fairlead::write_tree(root, output);
  if (result != JSON_DONE) return result;
  char* taken = output.take();
  if (!taken) return JSON_NO_MEMORY;
  *text = taken;
  return JSON_DONE;
}
