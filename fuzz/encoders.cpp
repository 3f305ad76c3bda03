// Encoders: what is encoded comes back, what is decoded is encoded as it was where there is one
// form only, and a digest does not depend on how the input is cut.
#include <cstring>

#include "fairlead/misc.h"
#include "fuzzing.h"

namespace {

using fuzzing::ExactText;
using fuzzing::owned_string;

std::string without_zeros(std::string bytes) {
  std::erase(bytes, '\0');
  return bytes;
}

void check_base64(const std::string& bytes) {
  const std::string text = without_zeros(bytes);
  char* const encoded = base64_encode(ExactText(text).get());
  REQUIRE(encoded && strlen(encoded) == (text.size() + 2) / 3 * 4);
  int length = -1;
  char* const back = decode64_block(encoded, &length, 1);
  REQUIRE(length == static_cast<int>(text.size()) && owned_string(back) == text);
  free(encoded);

  // The input as base64 text, with and without the rule for "=".
  int plain = -1, padded = -1;
  char* const strict = decode64_block(ExactText(text).get(), &plain, 0);
  char* const lenient = decode64_block(ExactText(text).get(), &padded, 1);
  const size_t end = std::min(text.find('='), text.size());
  constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const bool valid = text.find_first_not_of(kAlphabet) >= end;
  REQUIRE((lenient != nullptr) == valid);
  REQUIRE((strict != nullptr) == (valid && end == text.size()));
  if (lenient) REQUIRE(padded == static_cast<int>(end / 4 * 3 + (end % 4 ? end % 4 - 1 : 0)));
  if (strict) REQUIRE(plain == padded && memcmp(strict, lenient, static_cast<size_t>(plain)) == 0);
  free(strict);
  free(lenient);
}

std::string plain_decoded(const std::string& text) {
  std::string decoded;
  for (size_t i = 0; i < text.size(); ++i) {
    const std::string pair = text.substr(i + 1, 2);
    if (text[i] == '%' && pair.size() == 2 && isxdigit(static_cast<unsigned char>(pair[0])) &&
        isxdigit(static_cast<unsigned char>(pair[1]))) {
      decoded += static_cast<char>(std::stoi(pair, nullptr, 16));
      i += 2;
    } else {
      decoded += text[i] == '+' ? ' ' : text[i];
    }
  }
  return decoded;
}

void check_url(const std::string& bytes) {
  int length = -1;
  const ExactText source(bytes);
  char* const encoded = url_encode(ExactText(bytes).get(), static_cast<int>(bytes.size()), &length);
  REQUIRE(encoded && length == static_cast<int>(strlen(encoded)));
  REQUIRE(url_decode(encoded, length) == static_cast<int>(bytes.size()));
  REQUIRE(memcmp(encoded, bytes.data(), bytes.size()) == 0);
  free(encoded);

  ExactText text(bytes);
  const int decoded = url_decode(text.get(), static_cast<int>(bytes.size()));
  REQUIRE(decoded >= 0 && decoded <= static_cast<int>(bytes.size()));
  REQUIRE(text.get()[decoded] == '\0');
  REQUIRE(std::string(text.get(), static_cast<size_t>(decoded)) == plain_decoded(bytes));
}

// As encoders.h has it: a digit of any character, and the numbers of shell scripts.
int digit(char c) {
  const int code = static_cast<signed char>(c >= 'a' && c <= 'z' ? c - 32 : c);
  return code - '0' < 10 ? code - '0' : code - 55;
}

uint32_t number(const std::string& text) {
  static const std::string kDigits = "0123456789?BCDEF?A";
  uint32_t value = 0;
  for (const char c : text) {
    if (!strchr("0123456789abcdefABCDEF", c) || c == '\0') break;
    const char upper = static_cast<char>(toupper(c));
    value = value * 16 + (c == 'a' ? 42 : static_cast<uint32_t>(kDigits.find(upper)));
  }
  return value;
}

void check_hex(const std::string& bytes) {
  const int count = static_cast<int>(bytes.size());
  ExactText text(std::string(bytes.size() * 2, ' '));
  hex2string(bytes.data(), text.get(), count);
  REQUIRE(strlen(text.get()) == bytes.size() * 2);
  std::string back(bytes.size(), '\0');
  REQUIRE(string2hex(text.get(), reinterpret_cast<unsigned char*>(back.data()), count) == count);
  REQUIRE(back == bytes);

  std::string half(bytes.size() / 2, '\0');
  for (size_t i = 0; i < half.size(); ++i)
    half[i] = static_cast<char>(digit(bytes[2 * i]) * 16 + digit(bytes[2 * i + 1]));
  ExactText room(half.size() ? std::string(half.size(), '?') : "");
  REQUIRE(string2hex(ExactText(bytes).get(), reinterpret_cast<unsigned char*>(room.get()),
                     count / 2) == count / 2);
  REQUIRE(std::string(room.get(), half.size()) == half);
  REQUIRE(hexstr2int(ExactText(bytes).get()) == number(bytes));
}

void check_copies(const std::string& bytes, unsigned size) {
  const std::string text = ExactText(bytes).get();
  ExactText room(std::string(size, '?'));
  REQUIRE(string_copy(room.get(), ExactText(text).get(), static_cast<int>(size + 1)));
  REQUIRE(room.get() == text.substr(0, size));
  ExactText upper(text), lower(text);
  lowtoupp(upper.get());
  upptolow(lower.get());
  upptolow(upper.get());
  REQUIRE(strcmp(upper.get(), lower.get()) == 0);
}

std::string digest(const std::string& bytes, size_t piece) {
  md5_t context;
  md5_init(&context);
  for (size_t at = 0; at < bytes.size(); at += piece) {
    const std::string part = bytes.substr(at, piece);
    md5_update(&context, part.data(), static_cast<unsigned>(part.size()));
  }
  unsigned char result[16];
  md5_final(&context, result);
  return {reinterpret_cast<char*>(result), sizeof result};
}

// Text that is taken is written in one form, which is taken again and is the same.
void check_mac(const std::string& bytes) {
  mac_t mac = {0, 0};
  if (string2mac(ExactText(bytes).get(), &mac) != 1) return;
  char text[18];
  REQUIRE(mac2string(&mac, text) == 1 && strlen(text) == 17);
  for (int i = 0; i < 17; ++i) REQUIRE(i % 3 == 2 ? text[i] == ':' : isxdigit(text[i]));
  mac_t again = {0, 0};
  REQUIRE(string2mac(text, &again) == 1);
  REQUIRE(again.high == mac.high && again.low == mac.low);
}

}  // namespace

void fuzzing::prepare() {}

void fuzzing::check(Input input) {
  const unsigned number = input.byte();
  const std::string bytes = input.rest();
  check_base64(bytes);
  check_url(bytes);
  check_hex(bytes);
  check_copies(bytes, number);
  check_mac(bytes);
  REQUIRE(digest(bytes, 1 + number) == digest(bytes, bytes.size() + 1));
}
