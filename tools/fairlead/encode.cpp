// Encoders and digests.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/bounded_text.h"
#include "base/owned.h"
#include "fairlead/misc/encoders.h"
#include "tools/fairlead/output.h"
#include "tools/fairlead/report.h"

namespace control {

namespace {

using fairlead::OwnedText;

// Decoded bytes may be no text: they go out as they are, and as text in JSON.
Exit show_bytes(const Call& call, const char* bytes, size_t length) {
  if (call.options.json) return show_text(call, "text", bytes);
  fwrite(bytes, 1, length, stdout);
  putchar('\n');
  return kDone;
}

Exit decode_hex(const Call& call, const char* digits) {
  const size_t length = strlen(digits);
  if (length % 2 != 0 || strspn(digits, "0123456789abcdefABCDEF") != length)
    return refuse("'%s' is no even number of hexadecimal digits", digits);
  const OwnedText bytes(static_cast<char*>(calloc(1, length / 2 + 1)));
  if (!bytes) return fail("out of memory");
  string2hex(digits, reinterpret_cast<unsigned char*>(bytes.get()), static_cast<int>(length / 2));
  return show_bytes(call, bytes.get(), length / 2);
}

}  // namespace

Exit encode_md5(const Call& call) {
  md5_t context;
  unsigned char digest[16];
  md5_init(&context);
  md5_update(&context, call.argument(0), static_cast<unsigned int>(strlen(call.argument(0))));
  md5_final(&context, digest);
  fairlead::FixedText<33> text;
  for (const unsigned char byte : digest) text.format("%02x", byte);
  return show_text(call, "md5", text.text());
}

Exit encode_base64(const Call& call) {
  if (!call.options.decode) {
    const OwnedText text(base64_encode(call.argument(0)));
    return text ? show_text(call, "base64", text.get()) : fail("out of memory");
  }
  int length = 0;
  const OwnedText bytes(decode64_block(call.argument(0), &length, 1));
  if (!bytes) return refuse("'%s' is no base64", call.argument(0));
  return show_bytes(call, bytes.get(), static_cast<size_t>(length));
}

Exit encode_url(const Call& call) {
  const auto length = static_cast<int>(strlen(call.argument(0)));
  if (!call.options.decode) {
    const OwnedText text(url_encode(call.argument(0), length, nullptr));
    return text ? show_text(call, "url", text.get()) : fail("out of memory");
  }
  const OwnedText text(strdup(call.argument(0)));
  if (!text) return fail("out of memory");
  const int decoded = url_decode(text.get(), length);
  return show_bytes(call, text.get(), static_cast<size_t>(decoded));
}

Exit encode_hex(const Call& call) {
  const char* text = call.argument(0);
  if (call.options.decode) return decode_hex(call, text);
  // hex2string takes bytes for signed, so that those from 0x80 on would give no digits.
  const size_t size = 2 * strlen(text) + 1;
  const OwnedText digits(static_cast<char*>(malloc(size)));
  if (!digits) return fail("out of memory");
  fairlead::BoundedText shown(digits.get(), size);
  for (; *text; ++text) shown.format("%02X", static_cast<unsigned char>(*text));
  return show_text(call, "hex", shown.text());
}

}  // namespace control
