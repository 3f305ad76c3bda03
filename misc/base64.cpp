// Base64 of RFC 4648, without line breaks.
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>

#include "base/assertion.h"
#include "base/fail.h"
#include "base/owned.h"
#include "fairlead/misc/encoders.h"

namespace {

using fairlead::fail;
using fairlead::Owned;
using fairlead::OwnedText;

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint8_t kInvalid = 0x80;  // set in no value of 6 bits
constexpr int kPadded = 1;          // flag: "=" ends the text

constexpr std::array<uint8_t, 256> kValues = [] {
  std::array<uint8_t, 256> values = {};
  for (auto& value : values) value = kInvalid;
  for (uint8_t i = 0; i < 64; ++i) values[static_cast<unsigned char>(kAlphabet[i])] = i;
  return values;
}();

const unsigned char* bytes_of(const char* text) {
  return reinterpret_cast<const unsigned char*>(text);
}

void encode_group(const unsigned char* from, char* out) {
  const uint32_t bits = uint32_t{from[0]} << 16 | uint32_t{from[1]} << 8 | from[2];
  out[0] = kAlphabet[bits >> 18];
  out[1] = kAlphabet[bits >> 12 & 63];
  out[2] = kAlphabet[bits >> 6 & 63];
  out[3] = kAlphabet[bits & 63];
}

char* encode(const unsigned char* from, size_t length) {
  OwnedText result(static_cast<char*>(malloc((length + 2) / 3 * 4 + 1)));
  if (!result) return nullptr;
  char* out = result.get();
  for (; length >= 3; length -= 3, from += 3, out += 4) encode_group(from, out);
  if (length > 0) {
    const unsigned char last[3] = {from[0], length > 1 ? from[1] : uint8_t{0}, 0};
    encode_group(last, out);
    if (length == 1) out[2] = '=';
    out[3] = '=';
    out += 4;
  }
  *out = '\0';
  return result.release();
}

bool decode_group(const unsigned char* from, unsigned char* out) {
  const uint32_t a = kValues[from[0]], b = kValues[from[1]];
  const uint32_t c = kValues[from[2]], d = kValues[from[3]];
  const uint32_t bits = a << 18 | b << 12 | c << 6 | d;
  out[0] = static_cast<unsigned char>(bits >> 16);
  out[1] = static_cast<unsigned char>(bits >> 8);
  out[2] = static_cast<unsigned char>(bits);
  return !((a | b | c | d) & kInvalid);
}

// The last group of 1 to 4 characters gives one byte fewer than it has characters.
bool decode_last(const unsigned char* from, size_t count, unsigned char* out) {
  unsigned char group[4] = {'A', 'A', 'A', 'A'}, bytes[3];
  memcpy(group, from, count);
  if (!decode_group(group, bytes)) return false;
  memcpy(out, bytes, count - 1);
  return true;
}

void check_room(const unsigned char* last, const unsigned char* end) {
  if (last >= end)
    fairlead::assertion_failed("misc:304: decode64_block", "(bp + i) < &buffer[size]");
}

}  // namespace

extern "C" {

char* encode64_block(const char* text, int length) {
  if (!text || length < 0) return fail<char*>(EINVAL);
  return encode(bytes_of(text), strnlen(text, static_cast<size_t>(length)));
}

char* base64_encode(const char* text) {
  if (!text) return fail<char*>(EINVAL);
  return encode(bytes_of(text), strlen(text));
}

char* decode64_block(const char* text, int* length, int flags) {
  if (!text) return fail<char*>(EINVAL);
  size_t left = flags & kPadded ? strcspn(text, "=") : strlen(text);
  if (left > INT_MAX) return fail<char*>(ENOMEM);
  const size_t size = left + 1;
  Owned<unsigned char> result(static_cast<unsigned char*>(malloc(size)));
  if (!result) return nullptr;

  unsigned char* out = result.get();
  const unsigned char* const end = out + size;
  const unsigned char* from = bytes_of(text);
  for (; left > 4; left -= 4, from += 4, out += 3) {
    check_room(out + 2, end);
    if (!decode_group(from, out)) return fail<char*>(EINVAL);
  }
  if (left > 0) {
    check_room(out + left - 1, end);
    if (!decode_last(from, left, out)) return fail<char*>(EINVAL);
    out += left - 1;
  }
  *out = '\0';
  if (length) *length = static_cast<int>(out - result.get());
  return reinterpret_cast<char*>(result.release());
}

char* base64_decode(const char* text) { return decode64_block(text, nullptr, kPadded); }

}  // extern "C"
