// The tokens of JSON as a table: from a state, a byte leads to the next state or ends a token.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace fairlead {

enum class JsonToken : uint8_t {
  kObjectBegin,
  kObjectEnd,
  kArrayBegin,
  kArrayEnd,
  kColon,
  kComma,
  kString,
  kNumber,
  kTrue,
  kFalse,
  kNull,
  kEndOfText,
  kInvalid,
  kNoMemory,
  kCount
};

namespace lex {

// What has been read of a token. Named by it where that says most: kTr after "tr".
enum State : uint8_t {
  kBetween,
  kString,
  kEscape,
  kHex1,
  kHex2,
  kHex3,
  kHex4,
  kMinus,
  kZero,
  kInteger,
  kPoint,
  kFraction,
  kExponent,
  kExponentSign,
  kExponentDigits,
  kT,
  kTr,
  kTru,
  kF,
  kFa,
  kFal,
  kFals,
  kN,
  kNu,
  kNul,
  kStates
};

// Bytes that every state treats alike form a class; the bytes not named here are class kOther.
// The first three are those that a string's plain text cannot hold.
constexpr std::string_view kClasses[] = {
    {"\0", 1},   "\"", "\\", " \t\r\n", "{", "}", "[",       "]", ":", ",", "-", "+", ".", "0",
    "123456789", "a",  "b",  "e",       "E", "f", "cdABCDF", "l", "n", "r", "s", "t", "u", "/"};
constexpr uint8_t kEnd = 0, kQuote = 1, kSpace = 3;
constexpr uint8_t kLastSpecialInString = 2;
constexpr uint8_t kOther = std::size(kClasses);
constexpr size_t kClassCount = 32;  // a power of two, so that a row is found by a shift
static_assert(kOther < kClassCount);

constexpr std::array<uint8_t, 256> make_class_of() {
  std::array<uint8_t, 256> result{};
  for (uint8_t& entry : result) entry = kOther;
  for (uint8_t which = 0; which < kOther; ++which)
    for (char byte : kClasses[which]) result[static_cast<uint8_t>(byte)] = which;
  return result;
}
inline constexpr std::array<uint8_t, 256> kClassOf = make_class_of();

constexpr uint8_t class_of(char byte) { return kClassOf[static_cast<uint8_t>(byte)]; }

// Entries from kStates on end a token: which one is the distance.
constexpr uint8_t ends(JsonToken token) {
  return static_cast<uint8_t>(kStates + static_cast<uint8_t>(token));
}

struct Rule {
  State state;
  uint8_t next;
  std::string_view bytes;
};

constexpr std::string_view kDigits = "0123456789", kDigitsButZero = "123456789";
constexpr std::string_view kHexDigits = "0123456789abcdefABCDEF";

constexpr Rule kRules[] = {
    {kBetween, kBetween, " \t\r\n"},
    {kBetween, ends(JsonToken::kObjectBegin), "{"},
    {kBetween, ends(JsonToken::kObjectEnd), "}"},
    {kBetween, ends(JsonToken::kArrayBegin), "["},
    {kBetween, ends(JsonToken::kArrayEnd), "]"},
    {kBetween, ends(JsonToken::kColon), ":"},
    {kBetween, ends(JsonToken::kComma), ","},
    {kBetween, kString, "\""},
    {kString, ends(JsonToken::kString), "\""},
    {kString, kEscape, "\\"},
    {kEscape, kString, "\"\\/bfnrt"},
    {kEscape, kHex1, "u"},
    {kHex1, kHex2, kHexDigits},
    {kHex2, kHex3, kHexDigits},
    {kHex3, kHex4, kHexDigits},
    {kHex4, kString, kHexDigits},
    {kBetween, kMinus, "-"},
    {kBetween, kZero, "0"},
    {kBetween, kInteger, kDigitsButZero},
    {kMinus, kZero, "0"},
    {kMinus, kInteger, kDigitsButZero},
    {kZero, ends(JsonToken::kInvalid), kDigits},
    {kZero, kPoint, "."},
    {kZero, kExponent, "eE"},
    {kInteger, kInteger, kDigits},
    {kInteger, kPoint, "."},
    {kInteger, kExponent, "eE"},
    {kPoint, kFraction, kDigits},
    {kFraction, kFraction, kDigits},
    {kFraction, kExponent, "eE"},
    {kExponent, kExponentSign, "+-"},
    {kExponent, kExponentDigits, kDigits},
    {kExponentSign, kExponentDigits, kDigits},
    {kExponentDigits, kExponentDigits, kDigits},
    {kBetween, kT, "t"},
    {kT, kTr, "r"},
    {kTr, kTru, "u"},
    {kTru, ends(JsonToken::kTrue), "e"},
    {kBetween, kF, "f"},
    {kF, kFa, "a"},
    {kFa, kFal, "l"},
    {kFal, kFals, "s"},
    {kFals, ends(JsonToken::kFalse), "e"},
    {kBetween, kN, "n"},
    {kN, kNu, "u"},
    {kNu, kNul, "l"},
    {kNul, ends(JsonToken::kNull), "l"},
};

// What a byte does that no rule names.
constexpr uint8_t otherwise(uint8_t state) {
  switch (state) {
    case kString:
      return kString;  // any other byte, a raw control character included
    case kZero:
    case kInteger:
    case kFraction:
    case kExponentDigits:
      return ends(JsonToken::kNumber);
    default:
      return ends(JsonToken::kInvalid);
  }
}

using Table = std::array<std::array<uint8_t, kClassCount>, kStates>;

constexpr Table make_next() {
  Table table{};
  for (uint8_t state = 0; state < kStates; ++state) {
    for (uint8_t& entry : table[state]) entry = otherwise(state);
    table[state][kEnd] = ends(JsonToken::kEndOfText);
  }
  for (const Rule& rule : kRules)
    for (char byte : rule.bytes) table[rule.state][class_of(byte)] = rule.next;
  return table;
}
inline constexpr Table kNext = make_next();

}  // namespace lex
}  // namespace fairlead
