// Text that doubles its block as it grows, so that building it costs no more than its length.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "base/owned.h"
#include "fairlead/talk/json.h"

namespace fairlead {

// Makes room for `more` bytes behind the text; false when memory runs out: the text stays.
__attribute__((noinline)) inline bool make_room(json_buffer_t* text, size_t more) {
  constexpr size_t kFirst = 64;
  if (more > SIZE_MAX - text->length) return false;
  const size_t needed = text->length + more;
  size_t capacity = text->capacity > SIZE_MAX / 2 ? needed : text->capacity * 2;
  if (capacity < needed) capacity = needed;
  if (capacity < kFirst) capacity = kFirst;
  auto* block = static_cast<char*>(realloc(text->text, capacity));
  if (!block) return false;
  text->text = block;
  text->capacity = capacity;
  return true;
}

inline bool append(json_buffer_t* text, std::string_view piece) {
  if (piece.size() > text->capacity - text->length && !make_room(text, piece.size())) return false;
  if (!piece.empty()) memcpy(text->text + text->length, piece.data(), piece.size());
  text->length += piece.size();
  return true;
}

// A finished text in a block of `size` bytes; one that cannot be shrunk is as good.
inline char* trim(OwnedText text, size_t size) {
  char* trimmed = static_cast<char*>(realloc(text.get(), size));
  if (!trimmed) return text.release();
  static_cast<void>(text.release());
  return trimmed;
}

}  // namespace fairlead
