// The serializer: a tree as one compact text.
#include <cstdlib>
#include <cstring>
#include <utility>

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
  ~TextOutput() { fairlead::Freer()(begin_); }

  void put(char c) {
    if (reserve(1)) *at_++ = c;
  }

  void add(std::string_view text) {
    if (reserve(text.size())) copy(text);
  }

  void quoted(std::string_view text) {
    if (!reserve(text.size() + 2)) return;
    *at_++ = '"';
    copy(text);
    *at_++ = '"';
  }

  // The finished text in a block of its size; null when memory has run out.
  char* take() {
    put('\0');
    if (failed_) return nullptr;
    const auto size = static_cast<size_t>(at_ - begin_);
    return fairlead::trim(fairlead::OwnedText(std::exchange(begin_, nullptr)), size);
  }

 private:
  // Always leaves a byte, so that there is a block even for an empty piece.
  bool reserve(size_t size) { return size < static_cast<size_t>(end_ - at_) || grow(size + 1); }

  [[gnu::noinline]] bool grow(size_t more) {
    if (failed_) return false;
    // A copy, so that this object's members can live in registers.
    json_buffer_t buffer{begin_, static_cast<size_t>(at_ - begin_),
                         static_cast<size_t>(end_ - begin_)};
    failed_ = !fairlead::make_room(&buffer, more);
    begin_ = buffer.text;
    at_ = begin_ + buffer.length;
    end_ = begin_ + buffer.capacity;
    return !failed_;
  }

  void copy(std::string_view text) {
    memcpy(at_, text.data(), text.size());
    at_ += text.size();
  }

  char *begin_ = nullptr, *at_ = nullptr, *end_ = nullptr;
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
