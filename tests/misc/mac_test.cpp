// Hardware addresses: text to numbers and back, arithmetic, ranges.
#include "fairlead/misc.h"
#include "misc_support.h"

namespace {

class MacTest : public fairlead_test::DeviceTest {};

constexpr mac_t kAddress = {0x001a, 0x2b3c4d5e};

std::string text_of(const mac_t& mac) {
  char text[18];
  EXPECT_EQ(1, mac2string(&mac, text));
  return text;
}

TEST_F(MacTest, string2mac_reads_six_octets) {
  mac_t mac = {0, 0};
  EXPECT_EQ(1, string2mac("00:1A:2b:3C:4d:5E", &mac));
  EXPECT_EQ(0x001au, mac.high);
  EXPECT_EQ(0x2b3c4d5eu, mac.low);
}

TEST_F(MacTest, string2mac_keeps_the_upper_half_of_the_first_word) {
  mac_t mac = {0xabcd0000 | 0x1234, 7};
  EXPECT_EQ(1, string2mac("1:2:3:4:5:6", &mac));
  EXPECT_EQ(0xabcd0102u, mac.high);
  EXPECT_EQ(0x03040506u, mac.low);
}

TEST_F(MacTest, string2mac_keeps_the_low_8_bits_of_each_number) {
  mac_t mac = {0, 0};
  EXPECT_EQ(1, string2mac("100:fff:12345678:0x2a: 7:00000000009", &mac));
  EXPECT_EQ("00:FF:78:2A:07:09", text_of(mac));
}

// Where a long has 32 bits, scanf would end a number of nine digits at the largest there is.
TEST_F(MacTest, string2mac_reads_numbers_of_any_length) {
  mac_t mac = {0, 0};
  const std::string zeros(1000, '0');
  const std::string text =
      "123456701:12345678123456702:" + zeros + "3:f" + zeros + "4:0x123456705:\t-00ffffffffa";
  EXPECT_EQ(1, string2mac(text.c_str(), &mac));
  EXPECT_EQ("01:02:03:04:05:06", text_of(mac));
}

TEST_F(MacTest, string2mac_reads_signs_and_blanks_in_front_of_a_number_only) {
  mac_t mac = {0, 0};
  EXPECT_EQ(1, string2mac(" \t\n\v\f\r+1:-1:0X2:-0x3: 0:0", &mac));
  EXPECT_EQ("01:FF:02:FD:00:00", text_of(mac));
  for (const char* text :
       {"1 :2:3:4:5:6", "+ 1:2:3:4:5:6", "+-1:2:3:4:5:6", "1:2:3:4:5:-", "1:2::4:5:6"})
    EXPECT_EQ(0, string2mac(text, &mac)) << text;
}

TEST_F(MacTest, string2mac_does_not_look_behind_the_sixth_number) {
  mac_t mac = {0, 0};
  EXPECT_EQ(1, string2mac("1:2:3:4:5:6:7", &mac));
  EXPECT_EQ(1, string2mac("1:2:3:4:5:6, the lamp", &mac));
  EXPECT_EQ("01:02:03:04:05:06", text_of(mac));
}

TEST_F(MacTest, string2mac_with_fewer_numbers_leaves_the_address_alone) {
  mac_t mac = kAddress;
  errno = 0;
  for (const char* text :
       {"", "1:2:3:4:5", "1:2:3:4:5:", "1:2:3:4:5:g", "1-2-3-4-5-6", "001a2b3c4d5e"})
    EXPECT_EQ(0, string2mac(text, &mac)) << text;
  EXPECT_EQ(0, errno);
  EXPECT_EQ(kAddress.high, mac.high);
  EXPECT_EQ(kAddress.low, mac.low);
}

TEST_F(MacTest, mac2string_writes_upper_case_pairs) {
  EXPECT_EQ("00:1A:2B:3C:4D:5E", text_of(kAddress));
  EXPECT_EQ("00:00:00:00:00:00", text_of({0, 0}));
  EXPECT_EQ("FF:FF:FF:FF:FF:FF", text_of({0xffffffff, 0xffffffff}));
}

TEST_F(MacTest, mac2serial_writes_twelve_digits) {
  char text[13];
  EXPECT_EQ(1, mac2serial(&kAddress, text));
  EXPECT_STREQ("001A2B3C4D5E", text);
  const mac_t upper_half = {0xabcd0001, 2};
  EXPECT_EQ(1, mac2serial(&upper_half, text));
  EXPECT_STREQ("000100000002", text);
}

TEST_F(MacTest, serial2mac_does_nothing) {
  mac_t mac = kAddress;
  EXPECT_EQ(0, serial2mac("112233445566", &mac));
  EXPECT_EQ(0, serial2mac(nullptr, nullptr));
  EXPECT_EQ("00:1A:2B:3C:4D:5E", text_of(mac));
}

TEST_F(MacTest, mac2add_adds_to_the_last_four_octets) {
  mac_t mac = kAddress;
  EXPECT_EQ(0x2b3c4d5eu, mac2add(&mac, 2));
  EXPECT_EQ(0x2b3c4d60u, mac2add(&mac, 0));
  EXPECT_EQ("00:1A:2B:3C:4D:60", text_of(mac));
}

TEST_F(MacTest, mac2add_wraps_without_a_carry) {
  mac_t mac = {0x001a, 0xffffffff};
  EXPECT_EQ(0xffffffffu, mac2add(&mac, 1));
  EXPECT_EQ("00:1A:00:00:00:00", text_of(mac));
  EXPECT_EQ(0u, mac2add(&mac, 0xffffffff));
  EXPECT_EQ("00:1A:FF:FF:FF:FF", text_of(mac));
}

TEST_F(MacTest, macrang_includes_both_bounds) {
  const mac_t lower = {1, 5}, upper = {2, 9};
  EXPECT_EQ(1, macrang(&lower, &lower, &upper));
  EXPECT_EQ(1, macrang(&upper, &lower, &upper));
  EXPECT_EQ(1, macrang(&lower, &lower, &lower));
}

TEST_F(MacTest, macrang_compares_each_word_on_its_own) {
  const mac_t lower = {0, 5}, upper = {2, 9};
  const mac_t between_as_a_whole = {1, 10}, below = {1, 4}, high_above = {3, 7}, inside = {1, 7};
  EXPECT_EQ(0, macrang(&between_as_a_whole, &lower, &upper));
  EXPECT_EQ(0, macrang(&below, &lower, &upper));
  EXPECT_EQ(0, macrang(&high_above, &lower, &upper));
  EXPECT_EQ(1, macrang(&inside, &lower, &upper));
}

TEST_F(MacTest, macrang_compares_without_sign) {
  const mac_t lower = {0, 1}, upper = {0xffffffff, 0xffffffff};
  const mac_t high_bit = {0x80000000, 0x80000000};
  EXPECT_EQ(1, macrang(&high_bit, &lower, &upper));
}

TEST_F(MacTest, null_arguments_are_refused) {
  mac_t mac = kAddress;
  char text[18];
  const auto refused = [](uint32_t result) {
    EXPECT_EQ(0u, result);
    EXPECT_EQ(EINVAL, errno);
    errno = 0;
  };
  errno = 0;
  refused(static_cast<uint32_t>(string2mac(nullptr, &mac)));
  refused(static_cast<uint32_t>(string2mac("1:2:3:4:5:6", nullptr)));
  refused(static_cast<uint32_t>(mac2string(nullptr, text)));
  refused(static_cast<uint32_t>(mac2string(&mac, nullptr)));
  refused(static_cast<uint32_t>(mac2serial(nullptr, text)));
  refused(static_cast<uint32_t>(mac2serial(&mac, nullptr)));
  refused(mac2add(nullptr, 1));
  refused(static_cast<uint32_t>(macrang(nullptr, &mac, &mac)));
  refused(static_cast<uint32_t>(macrang(&mac, nullptr, &mac)));
  refused(static_cast<uint32_t>(macrang(&mac, &mac, nullptr)));
}

}  // namespace
