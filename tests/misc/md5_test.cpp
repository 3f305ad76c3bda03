// MD5: the vectors of RFC 1321, every length around a block, every way to cut the input.
#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include "fairlead/misc.h"
#include "support/device_test.h"

namespace {

using Md5Test = fairlead_test::DeviceTest;

std::string hex(const unsigned char (&digest)[16]) {
  std::string text;
  char pair[3];
  for (unsigned char byte : digest) {
    snprintf(pair, sizeof pair, "%02x", byte);
    text += pair;
  }
  return text;
}

std::string final_of(md5_t& context) {
  unsigned char digest[16];
  md5_final(&context, digest);
  return hex(digest);
}

std::string md5_of(const std::string& bytes, size_t chunk = 1 << 20) {
  md5_t context;
  md5_init(&context);
  for (size_t at = 0; at < bytes.size(); at += chunk)
    md5_update(&context, bytes.data() + at,
               static_cast<unsigned>(std::min(chunk, bytes.size() - at)));
  return final_of(context);
}

std::string some_bytes(size_t length) {
  std::string bytes;
  for (size_t i = 0; i < length; ++i) bytes += static_cast<char>(i * 167 + 13);
  return bytes;
}

TEST_F(Md5Test, md5_gives_the_digests_of_the_rfc) {
  EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", md5_of(""));
  EXPECT_EQ("0cc175b9c0f1b6a831c399e269772661", md5_of("a"));
  EXPECT_EQ("900150983cd24fb0d6963f7d28e17f72", md5_of("abc"));
  EXPECT_EQ("f96b697d7cb7938d525a2f31aaf161d0", md5_of("message digest"));
  EXPECT_EQ("c3fcd3d76192e4007dfb496cca67e13b", md5_of("abcdefghijklmnopqrstuvwxyz"));
  EXPECT_EQ("d174ab98d277d9f5a5611c2c9f419d9f",
            md5_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"));
  EXPECT_EQ("57edf4a22be3c955ac49da2e2107b67a",
            md5_of("1234567890123456789012345678901234567890123456789012345678901234567890123456789"
                   "0"));
}

TEST_F(Md5Test, md5_agrees_with_md5sum_at_every_length_up_to_two_blocks) {
  fairlead_test::make_directories("/tmp/lengths");
  for (size_t length = 0; length <= 130; ++length)
    fairlead_test::put_file("/tmp/lengths/" + std::to_string(length), some_bytes(length));
  ASSERT_EQ(0, system("cd /tmp/lengths && md5sum * > /tmp/sums"));

  std::ifstream sums("/tmp/sums");
  int compared = 0;
  for (std::string digest, name; sums >> digest >> name; ++compared)
    EXPECT_EQ(digest, md5_of(some_bytes(std::stoul(name)))) << name;
  EXPECT_EQ(131, compared);
}

TEST_F(Md5Test, md5_does_not_depend_on_how_the_input_is_cut) {
  const std::string bytes = some_bytes(1000);
  const std::string whole = md5_of(bytes);
  for (size_t chunk = 1; chunk <= 130; ++chunk) EXPECT_EQ(whole, md5_of(bytes, chunk)) << chunk;
}

TEST_F(Md5Test, md5_takes_input_at_any_address) {
  const std::string bytes = some_bytes(128);
  const std::string expected = md5_of(bytes);
  for (size_t shift = 1; shift < 8; ++shift) {
    const std::string moved = std::string(shift, '-') + bytes;
    md5_t context;
    md5_init(&context);
    md5_update(&context, moved.data() + shift, 128);
    EXPECT_EQ(expected, final_of(context)) << shift;
  }
}

TEST_F(Md5Test, md5_update_of_nothing_changes_nothing) {
  md5_t context;
  md5_init(&context);
  errno = 0;
  md5_update(&context, nullptr, 0);
  md5_update(&context, "", 0);
  EXPECT_EQ(0, errno) << "nor is it an error";
  EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", final_of(context));
}

TEST_F(Md5Test, md5_init_sets_the_words_of_the_rfc) {
  md5_t context;
  md5_init(&context);
  EXPECT_EQ(0u, context.count[0]);
  EXPECT_EQ(0u, context.count[1]);
  EXPECT_EQ(0x67452301u, context.state[0]);
  EXPECT_EQ(0xefcdab89u, context.state[1]);
  EXPECT_EQ(0x98badcfeu, context.state[2]);
  EXPECT_EQ(0x10325476u, context.state[3]);
}

TEST_F(Md5Test, md5_update_counts_bits_low_word_first) {
  md5_t context;
  md5_init(&context);
  md5_update(&context, "abc", 3);
  EXPECT_EQ(24u, context.count[0]);
  EXPECT_EQ(0u, context.count[1]);
  EXPECT_EQ('c', context.buffer[2]);
}

TEST_F(Md5Test, md5_update_carries_the_count_over_32_bits) {
  md5_t context;
  md5_init(&context);
  context.count[0] = 0xfffffe00;
  md5_update(&context, some_bytes(65).data(), 65);
  EXPECT_EQ(8u, context.count[0]);
  EXPECT_EQ(1u, context.count[1]);
}

TEST_F(Md5Test, md5_digests_half_a_gigabyte_in_one_call) {
  constexpr unsigned kLength = 1u << 29;  // 2 to the power of 32 bits
  void* const zeros = mmap(nullptr, kLength, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (zeros == MAP_FAILED) GTEST_SKIP() << "no room for so much";
  md5_t context;
  md5_init(&context);
  md5_update(&context, zeros, kLength);
  EXPECT_EQ(0, munmap(zeros, kLength));
  EXPECT_EQ(0u, context.count[0]);
  EXPECT_EQ(1u, context.count[1]);
  EXPECT_EQ("aa559b4e3523a6c931f08f4df52d58f2", final_of(context));  // what md5sum says
}

TEST_F(Md5Test, md5_final_leaves_nothing_of_the_input) {
  md5_t context;
  md5_init(&context);
  md5_update(&context, "secret", 6);
  final_of(context);
  const md5_t cleared = {};
  EXPECT_EQ(0, memcmp(&cleared, &context, sizeof context));
}

TEST_F(Md5Test, md5_padding_is_one_bit_and_then_zeros) {
  ASSERT_EQ(64u, sizeof md5_padding);
  EXPECT_EQ(0x80, md5_padding[0]);
  for (int i = 1; i < 64; ++i) EXPECT_EQ(0, md5_padding[i]) << i;
}

TEST_F(Md5Test, md5_transform_of_the_padding_gives_the_empty_digest) {
  md5_t context;
  md5_init(&context);
  md5_transform(context.state, md5_padding);
  unsigned char digest[16];
  md5_encode(digest, context.state, sizeof digest);
  EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", hex(digest));
}

TEST_F(Md5Test, md5_encode_and_decode_put_the_low_byte_first) {
  const uint32_t words[] = {0x04030201, 0xfffefdfc};
  unsigned char bytes[8];
  md5_encode(bytes, words, sizeof bytes);
  EXPECT_EQ(0, memcmp("\x01\x02\x03\x04\xfc\xfd\xfe\xff", bytes, sizeof bytes));

  uint32_t back[2] = {};
  md5_decode(back, bytes, sizeof bytes);
  EXPECT_EQ(words[0], back[0]);
  EXPECT_EQ(words[1], back[1]);
}

TEST_F(Md5Test, md5_encode_and_decode_leave_out_an_incomplete_word) {
  const uint32_t words[] = {0x04030201, 5};
  unsigned char bytes[] = {9, 9, 9, 9, 9, 9, 9};
  md5_encode(bytes, words, sizeof bytes);
  EXPECT_EQ(4, bytes[3]);
  EXPECT_EQ(9, bytes[4]);

  uint32_t back[] = {7, 7};
  md5_decode(back, bytes, sizeof bytes);
  EXPECT_EQ(words[0], back[0]);
  EXPECT_EQ(7u, back[1]);
}

TEST_F(Md5Test, md5_functions_refuse_null) {
  md5_t context;
  md5_init(&context);
  unsigned char block[64] = {};
  uint32_t words[4] = {};
  const auto refused = [](auto call) {
    errno = 0;
    call();
    EXPECT_EQ(EINVAL, errno);
  };
  refused([] { md5_init(nullptr); });
  refused([] { md5_update(nullptr, "a", 1); });
  refused([&] { md5_update(&context, nullptr, 1); });
  refused([&] { md5_final(nullptr, block); });
  refused([&] { md5_final(&context, nullptr); });
  refused([&] { md5_transform(nullptr, block); });
  refused([&] { md5_transform(words, nullptr); });
  refused([&] { md5_encode(nullptr, words, 4); });
  refused([&] { md5_encode(block, nullptr, 4); });
  refused([&] { md5_decode(nullptr, block, 4); });
  refused([&] { md5_decode(words, nullptr, 4); });
  EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", final_of(context));
}

}  // namespace
