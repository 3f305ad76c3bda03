// Base64: groups and padding, what is refused, and every byte there and back.
#include <climits>
#include <cstdlib>
#include <optional>
#include <string>

#include "fairlead/misc.h"
#include "support/device_test.h"
#include "support/faults.h"

namespace {

using fairlead_test::Call;
using Base64Test = fairlead_test::DeviceTest;

constexpr int kPadded = 1;
constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string taken(char* text) {
  if (!text) return "<null>";
  const std::string copy = text;
  free(text);
  return copy;
}

std::string encoded(const std::string& bytes) {
  return taken(encode64_block(bytes.c_str(), static_cast<int>(bytes.size())));
}

// The bytes with their length; nothing when the text is refused.
std::optional<std::string> decoded(const std::string& text, int flags = kPadded) {
  int length = -7;
  char* const bytes = decode64_block(text.c_str(), &length, flags);
  if (!bytes) {
    EXPECT_EQ(-7, length);
    return std::nullopt;
  }
  EXPECT_EQ('\0', bytes[length]);
  const std::string copy(bytes, static_cast<size_t>(length));
  free(bytes);
  return copy;
}

TEST_F(Base64Test, base64_encode_gives_the_vectors_of_the_rfc) {
  EXPECT_EQ("", taken(base64_encode("")));
  EXPECT_EQ("Zg==", taken(base64_encode("f")));
  EXPECT_EQ("Zm8=", taken(base64_encode("fo")));
  EXPECT_EQ("Zm9v", taken(base64_encode("foo")));
  EXPECT_EQ("Zm9vYg==", taken(base64_encode("foob")));
  EXPECT_EQ("Zm9vYmE=", taken(base64_encode("fooba")));
  EXPECT_EQ("Zm9vYmFy", taken(base64_encode("foobar")));
}

TEST_F(Base64Test, base64_encode_pads_the_last_group) {
  EXPECT_EQ("YWJj", taken(base64_encode("abc")));
  EXPECT_EQ("YWI=", taken(base64_encode("ab")));
  EXPECT_EQ("YQ==", taken(base64_encode("a")));
}

TEST_F(Base64Test, encode64_block_takes_the_first_bytes) {
  EXPECT_EQ("YWI=", taken(encode64_block("abcdef", 2)));
  EXPECT_EQ("", taken(encode64_block("abcdef", 0)));
}

TEST_F(Base64Test, encode64_block_ends_at_a_zero_byte) {
  EXPECT_EQ("YWI=", taken(encode64_block("ab\0def", 6)));
  EXPECT_EQ("YWJj", taken(encode64_block("abc", 1000)));
}

TEST_F(Base64Test, base64_encode_breaks_no_lines) {
  const std::string text = taken(base64_encode(std::string(3000, 'x').c_str()));
  EXPECT_EQ(4000u, text.size());
  EXPECT_EQ(std::string::npos, text.find_first_not_of(kAlphabet));
}

TEST_F(Base64Test, base64_uses_all_64_characters_in_order) {
  const std::string bytes = decoded(kAlphabet).value();
  ASSERT_EQ(48u, bytes.size());
  EXPECT_EQ(0x00, bytes[0]);
  EXPECT_EQ('\x10', bytes[1]);
  EXPECT_EQ('\x83', bytes[2]);
  const std::string tail = bytes.substr(3);  // the first byte is a zero, which ends what is encoded
  EXPECT_EQ(std::string(kAlphabet).substr(4), encoded(tail));
}

TEST_F(Base64Test, every_byte_but_zero_comes_back_at_every_place_of_a_group) {
  for (int byte = 1; byte < 256; ++byte)
    for (size_t place = 0; place < 3; ++place)
      for (size_t length = place + 1; length <= 4; ++length) {
        std::string bytes(length, 'x');
        bytes[place] = static_cast<char>(byte);
        EXPECT_EQ(bytes, decoded(encoded(bytes))) << byte << " at " << place << " of " << length;
      }
}

TEST_F(Base64Test, every_length_comes_back) {
  for (size_t length = 0; length <= 130; ++length) {
    const std::string bytes(length, '\xa5');
    EXPECT_EQ((length + 2) / 3 * 4, encoded(bytes).size());
    EXPECT_EQ(bytes, decoded(encoded(bytes))) << length;
  }
}

TEST_F(Base64Test, decode64_block_gives_zero_bytes_too) {
  EXPECT_EQ(std::string("\0\0\0", 3), decoded("AAAA"));
  EXPECT_EQ(std::string("a\0b", 3), decoded("YQBi"));
}

TEST_F(Base64Test, base64_decode_takes_text_with_and_without_padding) {
  EXPECT_EQ("ab", taken(base64_decode("YWI=")));
  EXPECT_EQ("ab", taken(base64_decode("YWI")));
  EXPECT_EQ("a", taken(base64_decode("YQ==")));
  EXPECT_EQ("a", taken(base64_decode("YQ")));
  EXPECT_EQ("", taken(base64_decode("")));
}

TEST_F(Base64Test, base64_decode_ignores_all_that_follows_the_first_padding) {
  EXPECT_EQ("ab", taken(base64_decode("YWI= and anything else\n")));
  EXPECT_EQ("abc", taken(base64_decode("YWJj=\x80")));
  EXPECT_EQ("", taken(base64_decode("=YWJj")));
  EXPECT_EQ("a", taken(base64_decode("YQ=YWJj")));
}

TEST_F(Base64Test, decode64_block_without_the_flag_refuses_padding) {
  EXPECT_EQ("ab", decoded("YWI", 0));
  EXPECT_EQ(std::nullopt, decoded("YWI=", 0));
  EXPECT_EQ(std::nullopt, decoded("YWJj=", 0));
  EXPECT_EQ(std::nullopt, decoded("YWI=", 2));
  EXPECT_EQ("ab", decoded("YWI=", 3));
}

TEST_F(Base64Test, decode64_block_of_an_incomplete_group_gives_one_byte_fewer) {
  EXPECT_EQ("", decoded("Y"));
  EXPECT_EQ("a", decoded("YW"));
  EXPECT_EQ("ab", decoded("YWJ"));
  EXPECT_EQ("abc", decoded("YWJj"));
  EXPECT_EQ("abc", decoded("YWJjY"));
}

TEST_F(Base64Test, decode64_block_accepts_no_other_byte_at_any_place) {
  for (int byte = 1; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    const bool valid = std::string(kAlphabet).find(c) != std::string::npos;
    for (size_t length = 1; length <= 5; ++length)
      for (size_t place = 0; place < length; ++place) {
        std::string text(length, 'A');
        text[place] = c;
        errno = 0;
        EXPECT_EQ(valid, decoded(text, 0).has_value()) << byte << " at " << place;
        EXPECT_EQ(valid ? 0 : EINVAL, errno);
      }
  }
}

TEST_F(Base64Test, base64_decode_refuses_blanks_and_line_ends) {
  EXPECT_EQ(nullptr, base64_decode("YW Jj"));
  EXPECT_EQ(nullptr, base64_decode("YWJj\n"));
  EXPECT_EQ(nullptr, base64_decode(" YWJj"));
}

TEST_F(Base64Test, decode64_block_needs_no_length) {
  EXPECT_EQ("abc", taken(decode64_block("YWJj", nullptr, 0)));
}

TEST_F(Base64Test, base64_functions_refuse_null_and_negative_lengths) {
  const auto refused = [](char* result) {
    EXPECT_EQ(nullptr, result);
    EXPECT_EQ(EINVAL, errno);
    errno = 0;
  };
  errno = 0;
  refused(encode64_block(nullptr, 1));
  refused(encode64_block("a", -1));
  refused(encode64_block("a", INT_MIN));
  refused(base64_encode(nullptr));
  refused(decode64_block(nullptr, nullptr, 1));
  refused(base64_decode(nullptr));
}

TEST_F(Base64Test, base64_functions_tell_when_memory_runs_out) {
  for (const auto call : {base64_encode, base64_decode}) {
    const fairlead_test::Fault fault(Call::kMalloc, {.error = ENOMEM});
    errno = 0;
    EXPECT_EQ(nullptr, call("YWJj"));
    EXPECT_EQ(ENOMEM, errno);
    EXPECT_TRUE(fault.fired());
  }
}

}  // namespace
