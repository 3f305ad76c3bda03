// The serializer: a tree as one compact text.
#include <cstdlib>
#include <cstring>
#include <span>
#include <utility>

#include "base/owned.h"
#include "talk/json/assertion.h"
#include "talk/json/growing_text.h"
#include "talk/json/tree_writer.h"

namespace {

// A text of up to this length, as most are, is made without a block that grows.
constexpr size_t kFirstRoom = 4096;

// Collects the text; once memory has run out it takes nothing more.
class TextOutput {
 public:
  explicit TextOutput(std::span<char, kFirstRoom> first)
      : begin_(first.data()), at_(begin_), end_(begin_ + first.size()) {}
  TextOutput(const TextOutput&) = delete;
  TextOutput& operator=(const TextOutput&) = delete;
  ~TextOutput() { fairlead::Freer()(block_); }

  void put(char c) {
    if (reserve(1)) *at_++ = c;
  }

  void add(std::string_view text) {
    if (!reserve(text.size())) return;
    memcpy(at_, text.data(), text.size());
    at_ += text.size();
  }

  void quoted(const json_t& node, bool label) {
    put('"');
    if (fairlead::kByWords && fairlead::has_inline_text(&node) && copy_short(node.text, label))
      return;
    add(node.text);
    put('"');
    if (label) put(':');
  }

  // The finished text in a block of its size; null when memory has run out.
  char* take() {
    put('\0');
    if (failed_) return nullptr;
    const auto size = static_cast<size_t>(at_ - begin_);
    if (block_) return fairlead::trim(fairlead::OwnedText(std::exchange(block_, nullptr)), size);
    auto* const text = static_cast<char*>(malloc(size));
    if (text) memcpy(text, begin_, size);
    return text;
  }

 private:
  // Most texts are a word or two: copied by words, they take half the time of strlen and memcpy.
  // Ends the string too; false when its text is longer.
  bool copy_short(const char* text, bool label) {
    if (!reserve(fairlead::kShortText + 2)) return false;
    for (size_t done = 0; done < fairlead::kShortText; done += fairlead::kTextWordSize) {
      const fairlead::TextWord word = fairlead::load_word(text + done);
      memcpy(at_ + done, &word, sizeof word);
      if (!fairlead::nul_bytes(word)) continue;
      at_ += done + fairlead::bytes_before_nul(word);
      at_[0] = '"';
      at_[1] = ':';
      at_ += label ? 2 : 1;
      return true;
    }
    return false;
  }

  bool reserve(size_t size) { return size <= static_cast<size_t>(end_ - at_) || make_room(size); }

  bool make_room(size_t more) {
    if (failed_) return false;
    const auto length = static_cast<size_t>(at_ - begin_);
    const Room room =
        bigger({block_, length, static_cast<size_t>(end_ - begin_)}, {begin_, length}, more);
    failed_ = !room.begin;
    if (failed_) return false;
    block_ = begin_ = room.begin;
    at_ = begin_ + length;
    end_ = room.end;
    return true;
  }

  struct Room {
    char *begin, *end;
  };

  // Given copies, so that this object's members can live in registers.
  [[gnu::noinline]] static Room bigger(json_buffer_t buffer, std::string_view text, size_t more) {
    const bool first = !buffer.text;
    if (!fairlead::make_room(&buffer, more)) return {nullptr, nullptr};
    if (first) memcpy(buffer.text, text.data(), text.size());
    return {buffer.text, buffer.text + buffer.capacity};
  }

  char *begin_, *at_, *end_;
  char* block_ = nullptr;
  bool failed_ = false;
};

}  // namespace

extern "C" json_error json_tree_to_string(json_t* root, char** text) {
  NODE_ASSERT_GIVEN(root);
  NODE_ASSERT_GIVEN(text);
  char first[kFirstRoom];
  TextOutput output(first);
  const json_error result = fairlead::write_tree(root, output);
  if (result != JSON_DONE) return result;
  char* taken = output.take();
  if (!taken) return JSON_NO_MEMORY;
  *text = taken;
  return JSON_DONE;
}
