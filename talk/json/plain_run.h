// Runs over the plain bytes of a string a machine word at a time.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>

#include "talk/json/lexer_table.h"

namespace fairlead {

// The first byte at or behind `at` that ends a run of plain text: a quote, a backslash or the NUL
// at `end`.
inline const char* end_of_plain_run(const char* at, const char* end) {
  using Word = size_t;
  constexpr Word kOnes = ~Word{0} / 255, kHighBits = kOnes * 128;
  // Sets the high bit of the first byte that is 0, and perhaps of later ones.
  const auto zero_bytes = [](Word word) { return (word - kOnes) & ~word & kHighBits; };

  while (static_cast<size_t>(end - at) >= sizeof(Word)) {
    Word word;
    memcpy(&word, at, sizeof word);
    const Word hits = zero_bytes(word ^ kOnes * '"') | zero_bytes(word ^ kOnes * '\\');
    if (hits == 0) {
      at += sizeof word;
    } else if constexpr (std::endian::native == std::endian::little) {
      return at + std::countr_zero(hits) / 8;
    } else {
      break;
    }
  }
  while (lex::class_of(*at) > lex::kLastSpecialInString) ++at;
  return at;
}

}  // namespace fairlead
