// Hexadecimal text, its oddities included.
#include <cstdio>
#include <cstring>
#include <string>

#include "fairlead/misc.h"
#include "support/device_test.h"

namespace {

using HexTest = fairlead_test::DeviceTest;

std::string hex_of(unsigned byte) {
  const char one = static_cast<char>(byte);
  char text[] = "----";
  hex2string(&one, text, 1);
  EXPECT_EQ('-', text[3]);
  return text;
}

unsigned byte_of(const char* pair) {
  unsigned char byte = 0;
  EXPECT_EQ(1, string2hex(pair, &byte, 1));
  return byte;
}

TEST_F(HexTest, hex2string_gives_two_upper_case_digits_below_0x80) {
  EXPECT_EQ("3C", hex_of(0x3c));
  for (unsigned byte = 0; byte < 0x80; ++byte) {
    char expected[3];
    snprintf(expected, sizeof expected, "%02X", byte);
    EXPECT_EQ(expected, hex_of(byte));
  }
}

TEST_F(HexTest, hex2string_counts_down_from_the_digit_0_from_0x80_on) {
  EXPECT_EQ("0/", hex_of(0xff));
  EXPECT_EQ("0!", hex_of(0xf1));
  EXPECT_EQ("/0", hex_of(0xf0));
  EXPECT_EQ("(0", hex_of(0x80));
  EXPECT_EQ(")!", hex_of(0x81));
  for (int byte = -128; byte < 0; ++byte) {
    const char expected[] = {static_cast<char>('0' - -byte / 16),
                             static_cast<char>('0' - -byte % 16), '\0'};
    EXPECT_EQ(expected, hex_of(static_cast<unsigned>(byte) & 0xff)) << byte;
  }
}

TEST_F(HexTest, hex2string_ends_the_text) {
  char text[] = "--------";
  hex2string("\x01\x2a\x7f", text, 3);
  EXPECT_STREQ("012A7F", text);
  EXPECT_EQ('-', text[7]);
  hex2string("", text, 0);
  EXPECT_STREQ("", text);
}

TEST_F(HexTest, string2hex_takes_digits_of_either_case) {
  for (unsigned byte = 0; byte < 256; ++byte) {
    char upper[3], lower[3];
    snprintf(upper, sizeof upper, "%02X", byte);
    snprintf(lower, sizeof lower, "%02x", byte);
    EXPECT_EQ(byte, byte_of(upper));
    EXPECT_EQ(byte, byte_of(lower));
  }
}

TEST_F(HexTest, string2hex_brings_back_what_hex2string_made_of_every_byte) {
  for (unsigned byte = 0; byte < 256; ++byte) EXPECT_EQ(byte, byte_of(hex_of(byte).c_str()));
}

TEST_F(HexTest, string2hex_checks_no_digit) {
  EXPECT_EQ((35u * 16 + 35) & 0xff, byte_of("ZZ"));
  EXPECT_EQ(35u, byte_of("0z"));
  EXPECT_EQ(3u, byte_of("0:"));  // 58 - 55
  EXPECT_EQ(9u, byte_of("09"));
  EXPECT_EQ(10u, byte_of("0A"));
  EXPECT_EQ((-16u) & 0xff, byte_of("0 "));
  EXPECT_EQ((-128u - '0') & 0xff, byte_of("0\x80"));  // a character is signed
}

TEST_F(HexTest, string2hex_reads_as_many_pairs_as_asked_for) {
  unsigned char bytes[] = {9, 9, 9};
  EXPECT_EQ(2, string2hex("0aFf77", bytes, 2));
  EXPECT_EQ(0x0a, bytes[0]);
  EXPECT_EQ(0xff, bytes[1]);
  EXPECT_EQ(9, bytes[2]);
  EXPECT_EQ(0, string2hex("", bytes, 0));
  EXPECT_EQ(-1, string2hex("", bytes, -1));
  EXPECT_EQ(0x0a, bytes[0]);
}

TEST_F(HexTest, hexstr2int_reads_digits_while_there_are_any) {
  EXPECT_EQ(31u, hexstr2int("1f"));
  EXPECT_EQ(16u, hexstr2int("10"));
  EXPECT_EQ(0x12u, hexstr2int("12 34"));
  EXPECT_EQ(0x12u, hexstr2int("12g"));
  EXPECT_EQ(0x12u, hexstr2int("12G"));
}

TEST_F(HexTest, hexstr2int_without_a_digit_gives_0) {
  for (const char* text : {"", "x1", " 1", "-1", "+1", "g", "G", "/", ":", "@", "`", "\xff"})
    EXPECT_EQ(0u, hexstr2int(text)) << text;
  EXPECT_EQ(0u, hexstr2int("0x1f"));
}

TEST_F(HexTest, hexstr2int_takes_the_letters_a_for_other_numbers) {
  EXPECT_EQ(17u, hexstr2int("A"));
  EXPECT_EQ(42u, hexstr2int("a"));
  EXPECT_EQ(17u * 16 + 17, hexstr2int("AA"));
  EXPECT_EQ(42u * 16 + 1, hexstr2int("a1"));
}

TEST_F(HexTest, hexstr2int_of_each_other_digit_is_its_value) {
  const std::string upper = "0123456789ABCDEF", lower = "0123456789abcdef";
  for (unsigned value = 0; value < 16; ++value) {
    if (value == 10) continue;
    EXPECT_EQ(value, hexstr2int(upper.substr(value, 1).c_str()));
    EXPECT_EQ(value, hexstr2int(lower.substr(value, 1).c_str()));
  }
}

TEST_F(HexTest, hexstr2int_wraps_at_32_bits) {
  EXPECT_EQ(0xffffffffu, hexstr2int("ffffffff"));
  EXPECT_EQ(0x23456789u, hexstr2int("123456789"));
  EXPECT_EQ(0u, hexstr2int("100000000"));
}

TEST_F(HexTest, hexadecimal_functions_refuse_null_and_negative_counts) {
  unsigned char bytes[2] = {};
  char text[] = "00";
  const auto refused = [](auto call) {
    errno = 0;
    call();
    EXPECT_EQ(EINVAL, errno);
  };
  refused([&] { EXPECT_EQ(0, string2hex(nullptr, bytes, 1)); });
  refused([&] { EXPECT_EQ(0, string2hex(text, nullptr, 1)); });
  refused([&] { hex2string(nullptr, text, 1); });
  refused([&] { hex2string(text, nullptr, 1); });
  refused([&] { hex2string("a", text, -1); });
  refused([] { EXPECT_EQ(0u, hexstr2int(nullptr)); });
  EXPECT_STREQ("00", text);
}

}  // namespace
