// Form encoding: what stays, what is escaped, and every byte there and back.
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fairlead/misc.h"
#include "support/device_test.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using UrlTest = fairlead_test::DeviceTest;

std::string encoded(const std::string& bytes) {
  int length = -7;
  char* const text = url_encode(bytes.data(), static_cast<int>(bytes.size()), &length);
  if (!text) return "<null>";
  EXPECT_EQ(strlen(text), static_cast<size_t>(length));
  const std::string copy = text;
  free(text);
  return copy;
}

std::string decoded(std::string text) {
  const int length = url_decode(text.data(), static_cast<int>(text.size()));
  EXPECT_EQ('\0', text[static_cast<size_t>(length)]);
  return text.substr(0, static_cast<size_t>(length));
}

TEST_F(UrlTest, url_encode_escapes_with_upper_case_digits) {
  EXPECT_EQ("a+b%2Fc", encoded("a b/c"));
  EXPECT_EQ("%C3%BC%0A%7E%2B%25", encoded("\xc3\xbc\n~+%"));
}

TEST_F(UrlTest, url_encode_keeps_letters_digits_and_three_signs) {
  const std::string kept = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._";
  EXPECT_EQ(kept, encoded(kept));
  for (int byte = 0; byte < 256; ++byte) {
    const std::string one(1, static_cast<char>(byte));
    char escaped[4];
    snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned>(byte));
    const bool stays = byte != 0 && kept.find(one) != std::string::npos;
    EXPECT_EQ(stays ? one : byte == ' ' ? "+" : escaped, encoded(one)) << byte;
  }
}

TEST_F(UrlTest, url_encode_takes_the_given_length) {
  EXPECT_EQ("", encoded(""));
  EXPECT_EQ("a%00b", encoded(std::string("a\0b", 3)));
  char* const text = url_encode("abc", 2, nullptr);
  EXPECT_STREQ("ab", text);
  free(text);
}

TEST_F(UrlTest, url_encode_triples_at_most) {
  EXPECT_EQ(300u, encoded(std::string(100, '\xff')).size());
}

TEST_F(UrlTest, every_byte_comes_back) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  EXPECT_EQ(all, decoded(encoded(all)));
}

TEST_F(UrlTest, url_decode_takes_digits_of_either_case) {
  EXPECT_EQ("a b/c", decoded("a+b%2fc"));
  EXPECT_EQ("a b/c", decoded("a+b%2Fc"));
  EXPECT_EQ("\xab\xcd\xef", decoded("%aB%Cd%eF"));
  for (unsigned byte = 0; byte < 256; ++byte) {
    char lower[4];
    snprintf(lower, sizeof lower, "%%%02x", byte);
    EXPECT_EQ(std::string(1, static_cast<char>(byte)), decoded(lower));
  }
}

TEST_F(UrlTest, url_decode_copies_a_percent_without_two_characters_behind_it) {
  EXPECT_EQ("%", decoded("%"));
  EXPECT_EQ("a%2", decoded("a%2"));
  EXPECT_EQ("a%", decoded("a%"));
  EXPECT_EQ("%%%", decoded("%%%"));
}

TEST_F(UrlTest, url_decode_copies_a_percent_without_two_digits_behind_it) {
  EXPECT_EQ("%zz", decoded("%zz"));
  EXPECT_EQ("%2g", decoded("%2g"));
  EXPECT_EQ("%g2", decoded("%g2"));
  EXPECT_EQ("%A", decoded("%%41"));
  EXPECT_EQ("% 4", decoded("%+4"));
  EXPECT_EQ("%/0%:0%@0%G0%`0", decoded("%/0%:0%@0%G0%`0"));
}

TEST_F(UrlTest, url_decode_looks_no_further_than_the_length) {
  char text[] = "a%41%41";
  EXPECT_EQ(4, url_decode(text, 6));
  EXPECT_STREQ("aA%4", text);
  char nothing[] = "+";
  EXPECT_EQ(0, url_decode(nothing, 0));
  EXPECT_STREQ("", nothing);
}

TEST_F(UrlTest, url_decode_leaves_a_decoded_percent_alone) { EXPECT_EQ("%41", decoded("%2541")); }

TEST_F(UrlTest, url_decode_gives_zero_bytes_too) {
  EXPECT_EQ(std::string("a\0b", 3), decoded("a%00b"));
}

TEST_F(UrlTest, url_functions_refuse_null_and_negative_lengths) {
  int length = 7;
  errno = 0;
  EXPECT_EQ(nullptr, url_encode(nullptr, 1, &length));
  EXPECT_EQ(EINVAL, errno);
  errno = 0;
  EXPECT_EQ(nullptr, url_encode("a", -1, &length));
  EXPECT_EQ(EINVAL, errno);
  errno = 0;
  EXPECT_EQ(0, url_decode(nullptr, 1));
  EXPECT_EQ(EINVAL, errno);
  char text[] = "+";
  errno = 0;
  EXPECT_EQ(0, url_decode(text, -1));
  EXPECT_EQ(EINVAL, errno);
  EXPECT_STREQ("+", text);
  EXPECT_EQ(7, length);
}

TEST_F(UrlTest, url_encode_tells_when_memory_runs_out) {
  int length = 7;
  const fairlead_test::Fault fault(Call::kMalloc, {.error = ENOMEM});
  errno = 0;
  EXPECT_EQ(nullptr, url_encode("a", 1, &length));
  EXPECT_EQ(ENOMEM, errno);
  EXPECT_EQ(7, length);
  EXPECT_TRUE(fault.fired());
}

TEST_F(UrlTest, url_encode_refuses_what_could_not_be_counted) {
  errno = 0;
  EXPECT_EQ(nullptr, url_encode("a", INT_MAX / 3 + 1, nullptr));
  EXPECT_EQ(ENOMEM, errno);
}

}  // namespace
