// Texts a machine word at a time.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>

namespace fairlead {

using TextWord = size_t;

// Whether that pays: on a small machine a word holds little, and the code would be more.
inline constexpr bool kByWords =
    std::endian::native == std::endian::little && sizeof(TextWord) == 8;

inline constexpr size_t kTextWordSize = sizeof(TextWord);

// What follows this much of a text is left to the C library, which is quicker with long ones.
inline constexpr size_t kShortText = 4 * kTextWordSize;

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

// For a word of little-endian order that holds a NUL: the bytes before it, and the bits of those
// and of the NUL. A word without one has all its bits.
inline size_t bytes_before_nul(TextWord word) {
  return static_cast<size_t>(std::countr_zero(nul_bytes(word))) / 8;
}
constexpr TextWord bits_up_to_nul(TextWord word) {
  const TextWord nuls = nul_bytes(word);
  return nuls ^ (nuls - 1);
}

}  // namespace fairlead
