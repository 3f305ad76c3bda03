// Escaping and unescaping the text of strings.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "fairlead/talk/json.h"
#include "talk/json/assertion.h"

namespace {

// The letter that stands behind the backslash for `byte`, or NUL when it has none.
constexpr char letter_of(char byte) {
  switch (byte) {
    case '\\':
    case '"':
    case '/':
      return byte;
    case '\b':
      return 'b';
    case '\f':
      return 'f';
    case '\n':
      return 'n';
    case '\r':
      return 'r';
    case '\t':
      return 't';
    default:
      return '\0';
  }
}

constexpr char byte_of(char letter) {
  for (char byte : std::string_view("\\\"/\b\f\n\r\t"))
    if (letter_of(byte) == letter) return byte;
  return '\0';
}

bool is_control(char byte) { return static_cast<unsigned char>(byte) < 0x20; }

size_t escaped_size(char byte) {
  if (letter_of(byte)) return 2;
  return is_control(byte) ? 6 : 1;
}

char* put_escaped(char* out, char byte) {
  constexpr char kHex[] = "0123456789abcdef";
  if (const char letter = letter_of(byte)) {
    *out++ = '\\';
    *out++ = letter;
  } else if (is_control(byte)) {
    for (char c : std::string_view("\\u00")) *out++ = c;
    *out++ = kHex[byte >> 4];
    *out++ = kHex[byte & 15];
  } else {
    *out++ = byte;
  }
  return out;
}

// At most four digits at `text`, which may be cut short by its end.
long hex_value(const char* text, size_t length) {
  char digits[5] = {};
  memcpy(digits, text, length < 4 ? length : 4);
  return strtol(digits, nullptr, 16);
}

char* put_byte(char* out, long bits) {
  *out = static_cast<char>(bits);
  return out + 1;
}

char* put_tail(char* out, long value, int shift) {
  return put_byte(out, 0x80 | ((value >> shift) & 63));
}

char* put_utf8(char* out, long value) {
  if (value < 0x80) return put_byte(out, value);
  if (value < 0x800) return put_tail(put_byte(out, 0xC0 | value >> 6), value, 0);
  if (value < 0x10000)
    return put_tail(put_tail(put_byte(out, 0xE0 | value >> 12), value, 6), value, 0);
  // Out of reach of four digits, and of a pair, which is put together elsewhere.
  fprintf(stderr, "JSON: unsupported unicode value: 0x%lX\n", static_cast<unsigned long>(value));
  return out;
}

char* put_pair(char* out, long high, long low) {
  const long value = ((high - 0xD800) << 10) + low + 0x2400;
  out = put_byte(out, 0xF0 | value >> 18);
  return put_tail(put_tail(put_tail(out, value, 12), value, 6), value, 0);
}

struct Unescaped {
  const char* in;
  char* out;
};

// `in` is at the backslash of a "\u"; a sequence cut short by the end of the text counts as far as
// it goes.
Unescaped unescape_unicode(const char* in, char* out) {
  constexpr size_t kSequence = 6, kPair = 2 * kSequence, kPrefix = 2;
  const size_t length = strnlen(in, kPair);
  const long value = hex_value(in + kPrefix, length - kPrefix);
  if (value < 0xD800 || value > 0xDBFF)
    return {in + (length < kSequence ? length : kSequence), put_utf8(out, value)};
  // Whatever stands six characters on is taken for the low half.
  const size_t second = length < kSequence + kPrefix ? length : kSequence + kPrefix;
  return {in + length, put_pair(out, value, hex_value(in + second, length - second))};
}

Unescaped unescape_one(const char* in, char* out) {
  if (in[1] == 'u') return unescape_unicode(in, out);
  const char byte = byte_of(in[1]);
  NODE_ASSERT_TEXT(byte, "0");
  *out = byte;
  return {in + 2, out + 1};
}

}  // namespace

extern "C" char* json_escape(const char* text) {
  NODE_ASSERT_GIVEN(text);
  uint64_t size = 1;
  for (const char* at = text; *at; ++at) size += escaped_size(*at);
  if (size > SIZE_MAX / 2) return nullptr;

  auto* escaped = static_cast<char*>(malloc(static_cast<size_t>(size)));
  if (!escaped) return nullptr;
  char* out = escaped;
  for (const char* at = text; *at; ++at) out = put_escaped(out, *at);
  *out = '\0';
  return escaped;
}

extern "C" char* json_unescape(const char* text) {
  NODE_ASSERT(text);
  auto* unescaped = static_cast<char*>(malloc(strlen(text) + 1));
  if (!unescaped) return nullptr;
  Unescaped at = {text, unescaped};
  while (*at.in) {
    if (*at.in == '\\')
      at = unescape_one(at.in, at.out);
    else
      *at.out++ = *at.in++;
  }
  *at.out = '\0';
  return unescaped;
}
