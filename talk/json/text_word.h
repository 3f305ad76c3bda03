// Texts a machine word at a time.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>

namespace fairlead {

using TextWord = size_t;

inline constexpr size_t kTextWordSize = sizeof(TextWord);

// The bytes that a text of this length takes with its NUL, padded with more of them to whole words.
constexpr size_t padded_size(size_t length) { return (length / kTextWordSize + 1) * kTextWordSize; }

inline TextWord load_word(const char* at) {
  TextWord word;
  memcpy(&word, at, sizeof word);
  return word;
}

// Sets the high bit of each byte that is 0, and perhaps of some that lie above one that is.
constexpr TextWord nul_bytes(TextWord word) {
  constexpr TextWord kOnes = ~TextWord{0} / 255, kHighBits = kOnes * 128;
  return (word - kOnes) & ~word & kHighBits;
}

// How many bytes stand before the first NUL of a word that holds one, in the order of memory.
inline size_t bytes_before_nul(TextWord word) {
  if constexpr (std::endian::native == std::endian::little)
    return static_cast<size_t>(std::countr_zero(nul_bytes(word))) / 8;
  size_t count = 0;
  for (; (word & ~(~TextWord{0} >> 8)) != 0; word <<= 8) ++count;
  return count;
}

}  // namespace fairlead
