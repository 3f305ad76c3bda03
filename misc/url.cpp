// Form encoding: what stands behind the "?" of a URL.
#include <cerrno>
#include <climits>

#include "base/ascii.h"
#include "base/fail.h"
#include "base/owned.h"
#include "fairlead/misc/encoders.h"

namespace {

using fairlead::fail;
using fairlead::hex_value;
using fairlead::is_hex_digit;

bool is_kept(char c) {
  return fairlead::is_letter(c) || fairlead::is_digit(c) || c == '-' || c == '.' || c == '_';
}

char* put_escaped(char* out, char c) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  *out++ = '%';
  *out++ = kDigits[byte >> 4];
  *out++ = kDigits[byte & 15];
  return out;
}

}  // namespace

extern "C" char* url_encode(const char* data, int length, int* result_length) {
  if (!data || length < 0) return fail<char*>(EINVAL);
  if (length > INT_MAX / 3) return fail<char*>(ENOMEM);
  fairlead::OwnedText result(static_cast<char*>(malloc(static_cast<size_t>(length) * 3 + 1)));
  if (!result) return nullptr;
  char* out = result.get();
  for (int i = 0; i < length; ++i) {
    if (is_kept(data[i]))
      *out++ = data[i];
    else if (data[i] == ' ')
      *out++ = '+';
    else
      out = put_escaped(out, data[i]);
  }
  *out = '\0';
  if (result_length) *result_length = static_cast<int>(out - result.get());
  return result.release();
}

extern "C" int url_decode(char* text, int length) {
  if (!text || length < 0) return fail<int>(EINVAL);
  char* out = text;
  const char* const end = text + length;
  for (const char* from = text; from < end; ++from) {
    if (*from == '%' && end - from > 2 && is_hex_digit(from[1]) && is_hex_digit(from[2])) {
      *out++ = static_cast<char>(hex_value(from[1]) * 16 + hex_value(from[2]));
      from += 2;
    } else {
      *out++ = *from == '+' ? ' ' : *from;
    }
  }
  *out = '\0';
  return static_cast<int>(out - text);
}
