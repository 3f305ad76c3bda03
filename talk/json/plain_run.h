// Runs over the plain bytes of a string a machine word at a time.
#pragma once

#include <bit>
#include <cstddef>

#include "talk/json/lexer_table.h"
#include "talk/json/text_word.h"

namespace fairlead {

// The first byte at or behind `at` that ends a run of plain text: a quote, a backslash or the NUL
// at `end`.
inline const char* end_of_plain_run(const char* at, const char* end) {
  constexpr TextWord kOnes = ~TextWord{0} / 255;
  while (static_cast<size_t>(end - at) >= kTextWordSize) {
    const TextWord word = load_word(at);
    const TextWord hits = nul_bytes(word ^ kOnes * '"') | nul_bytes(word ^ kOnes * '\\');
    if (hits == 0) {
      at += kTextWordSize;
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
