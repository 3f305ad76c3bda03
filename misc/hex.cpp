// Hexadecimal text, with the oddities that programs and scripts have come to rely on.
#include <cerrno>

#include "base/ascii.h"
#include "base/fail.h"
#include "fairlead/misc/encoders.h"

namespace {

using fairlead::fail;

// Characters and bytes are signed on every machine: the boards these come from have them so.
int code(char c) { return static_cast<signed char>(c); }

// Characters below "0" count as negative, which brings back what hex2string made of signed bytes.
int unchecked_value(char c) {
  const int value = code(fairlead::to_upper(c)) - '0';
  return value < 10 ? value : value + '0' - 55;
}

// The letters are told apart by "B" and "b", so that "A" is taken for a digit and "a" for an upper
// case letter.
int off_by_one_value(char c) {
  if (c >= 'b') return c - 87;
  return c >= 'B' ? c - 55 : c - '0';
}

}  // namespace

extern "C" int string2hex(const char* text, unsigned char* bytes, int count) {
  if (!text || !bytes) return fail<int>(EINVAL);
  for (int i = 0; i < count; ++i, text += 2)
    bytes[i] = static_cast<unsigned char>(unchecked_value(text[0]) * 16 + unchecked_value(text[1]));
  return count;
}

extern "C" void hex2string(const char* bytes, char* text, int count) {
  if (!bytes || !text || count < 0) return fail<void>(EINVAL);
  for (int i = 0; i < count; ++i) {
    const int high = code(bytes[i]) / 16, low = code(bytes[i]) % 16;
    *text++ = static_cast<char>(high + '0');
    *text++ = static_cast<char>(low + (low > 9 ? 55 : '0'));
  }
  *text = '\0';
}

extern "C" uint32_t hexstr2int(const char* text) {
  if (!text) return fail<uint32_t>(EINVAL);
  uint32_t value = 0;
  for (; fairlead::is_hex_digit(*text); ++text)
    value = value * 16 + static_cast<uint32_t>(off_by_one_value(*text));
  return value;
}
