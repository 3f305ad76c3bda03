// Builds text inside a fixed buffer: always ended by a NUL, cut where the room ends, and the cut is
// remembered.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace fairlead {

class BoundedText {
 public:
  // `size` counts the terminator and must be at least 1.
  BoundedText(char* buffer, size_t size) : buffer_(buffer), size_(size) { buffer_[0] = '\0'; }
  // Begins with a text that may lie in the buffer.
  BoundedText(char* buffer, size_t size, const char* first) : buffer_(buffer), size_(size) {
    const size_t wanted = strlen(first);
    cut_ = wanted >= size;
    length_ = cut_ ? size - 1 : wanted;
    memmove(buffer_, first, length_);
    buffer_[length_] = '\0';
  }
  BoundedText(const BoundedText&) = delete;
  BoundedText& operator=(const BoundedText&) = delete;

  BoundedText& add(std::string_view piece) {
    const size_t room = size_ - 1 - length_;
    const size_t taken = piece.size() < room ? piece.size() : room;
    if (taken > 0) memcpy(buffer_ + length_, piece.data(), taken);
    length_ += taken;
    buffer_[length_] = '\0';
    if (taken < piece.size()) cut_ = true;
    return *this;
  }

  // Apart from the other, so that not each place that adds a text measures it.
  BoundedText& add(const char* piece) { return add(std::string_view(piece)); }

  BoundedText& add(char c) { return add(std::string_view(&c, 1)); }

  __attribute__((format(printf, 2, 3))) BoundedText& format(const char* pattern, ...) {
    va_list arguments;
    va_start(arguments, pattern);
    vformat(pattern, arguments);
    va_end(arguments);
    return *this;
  }

  __attribute__((format(printf, 2, 0))) BoundedText& vformat(const char* pattern,
                                                             va_list arguments) {
    const size_t room = size_ - length_;
    const int wanted = vsnprintf(buffer_ + length_, room, pattern, arguments);
    if (wanted < 0) {
      buffer_[length_] = '\0';
      cut_ = failed_ = true;
    } else if (static_cast<size_t>(wanted) >= room) {
      length_ = size_ - 1;
      cut_ = true;
    } else {
      length_ += static_cast<size_t>(wanted);
    }
    return *this;
  }

  // Empty again.
  BoundedText& restart() {
    buffer_[length_ = 0] = '\0';
    cut_ = false;
    return *this;
  }

  char* text() { return buffer_; }
  const char* text() const { return buffer_; }
  size_t length() const { return length_; }
  bool cut() const { return cut_; }
  bool failed() const { return failed_; }  // the formatter refused a pattern or an argument

 private:
  char* buffer_;
  size_t size_;
  size_t length_ = 0;
  bool cut_ = false;
  bool failed_ = false;
};

template <size_t N>
struct TextStorage {
  char storage[N];
};

// A bounded text with its own room for N - 1 characters.
template <size_t N>
class FixedText : private TextStorage<N>, public BoundedText {
 public:
  FixedText() : BoundedText(this->storage, N) {}
};

// The one size of every path the library builds.
inline constexpr size_t kPathSize = 256;
using PathText = FixedText<kPathSize>;

}  // namespace fairlead
