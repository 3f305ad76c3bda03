/* Sixty-four steps written out, four rounds of sixteen; only for machines with the low byte first.
 */
#include "plain_md5.h"

#include <stdint.h>
#include <string.h>

#define F(x, y, z) (((x) & (y)) | (~(x) & (z)))
#define G(x, y, z) (((x) & (z)) | ((y) & ~(z)))
#define H(x, y, z) ((x) ^ (y) ^ (z))
#define I(x, y, z) ((y) ^ ((x) | ~(z)))
#define STEP(mix, a, b, c, d, word, shift, sine)          \
  do {                                                    \
    (a) += mix((b), (c), (d)) + (word) + (sine);          \
    (a) = ((a) << (shift) | (a) >> (32 - (shift))) + (b); \
  } while (0)

static void add_block(uint32_t state[4], const unsigned char* block) {
  uint32_t a = state[0], b = state[1], c = state[2], d = state[3], words[16];
  memcpy(words, block, sizeof words);
  STEP(F, a, b, c, d, words[0], 7, 0xd76aa478);
  STEP(F, d, a, b, c, words[1], 12, 0xe8c7b756);
  STEP(F, c, d, a, b, words[2], 17, 0x242070db);
  STEP(F, b, c, d, a, words[3], 22, 0xc1bdceee);
  STEP(F, a, b, c, d, words[4], 7, 0xf57c0faf);
  STEP(F, d, a, b, c, words[5], 12, 0x4787c62a);
  STEP(F, c, d, a, b, words[6], 17, 0xa8304613);
  STEP(F, b, c, d, a, words[7], 22, 0xfd469501);
  STEP(F, a, b, c, d, words[8], 7, 0x698098d8);
  STEP(F, d, a, b, c, words[9], 12, 0x8b44f7af);
  STEP(F, c, d, a, b, words[10], 17, 0xffff5bb1);
  STEP(F, b, c, d, a, words[11], 22, 0x895cd7be);
  STEP(F, a, b, c, d, words[12], 7, 0x6b901122);
  STEP(F, d, a, b, c, words[13], 12, 0xfd987193);
  STEP(F, c, d, a, b, words[14], 17, 0xa679438e);
  STEP(F, b, c, d, a, words[15], 22, 0x49b40821);
  STEP(G, a, b, c, d, words[1], 5, 0xf61e2562);
  STEP(G, d, a, b, c, words[6], 9, 0xc040b340);
  STEP(G, c, d, a, b, words[11], 14, 0x265e5a51);
  STEP(G, b, c, d, a, words[0], 20, 0xe9b6c7aa);
  STEP(G, a, b, c, d, words[5], 5, 0xd62f105d);
  STEP(G, d, a, b, c, words[10], 9, 0x02441453);
  STEP(G, c, d, a, b, words[15], 14, 0xd8a1e681);
  STEP(G, b, c, d, a, words[4], 20, 0xe7d3fbc8);
  STEP(G, a, b, c, d, words[9], 5, 0x21e1cde6);
  STEP(G, d, a, b, c, words[14], 9, 0xc33707d6);
  STEP(G, c, d, a, b, words[3], 14, 0xf4d50d87);
  STEP(G, b, c, d, a, words[8], 20, 0x455a14ed);
  STEP(G, a, b, c, d, words[13], 5, 0xa9e3e905);
  STEP(G, d, a, b, c, words[2], 9, 0xfcefa3f8);
  STEP(G, c, d, a, b, words[7], 14, 0x676f02d9);
  STEP(G, b, c, d, a, words[12], 20, 0x8d2a4c8a);
  STEP(H, a, b, c, d, words[5], 4, 0xfffa3942);
  STEP(H, d, a, b, c, words[8], 11, 0x8771f681);
  STEP(H, c, d, a, b, words[11], 16, 0x6d9d6122);
  STEP(H, b, c, d, a, words[14], 23, 0xfde5380c);
  STEP(H, a, b, c, d, words[1], 4, 0xa4beea44);
  STEP(H, d, a, b, c, words[4], 11, 0x4bdecfa9);
  STEP(H, c, d, a, b, words[7], 16, 0xf6bb4b60);
  STEP(H, b, c, d, a, words[10], 23, 0xbebfbc70);
  STEP(H, a, b, c, d, words[13], 4, 0x289b7ec6);
  STEP(H, d, a, b, c, words[0], 11, 0xeaa127fa);
  STEP(H, c, d, a, b, words[3], 16, 0xd4ef3085);
  STEP(H, b, c, d, a, words[6], 23, 0x04881d05);
  STEP(H, a, b, c, d, words[9], 4, 0xd9d4d039);
  STEP(H, d, a, b, c, words[12], 11, 0xe6db99e5);
  STEP(H, c, d, a, b, words[15], 16, 0x1fa27cf8);
  STEP(H, b, c, d, a, words[2], 23, 0xc4ac5665);
  STEP(I, a, b, c, d, words[0], 6, 0xf4292244);
  STEP(I, d, a, b, c, words[7], 10, 0x432aff97);
  STEP(I, c, d, a, b, words[14], 15, 0xab9423a7);
  STEP(I, b, c, d, a, words[5], 21, 0xfc93a039);
  STEP(I, a, b, c, d, words[12], 6, 0x655b59c3);
  STEP(I, d, a, b, c, words[3], 10, 0x8f0ccc92);
  STEP(I, c, d, a, b, words[10], 15, 0xffeff47d);
  STEP(I, b, c, d, a, words[1], 21, 0x85845dd1);
  STEP(I, a, b, c, d, words[8], 6, 0x6fa87e4f);
  STEP(I, d, a, b, c, words[15], 10, 0xfe2ce6e0);
  STEP(I, c, d, a, b, words[6], 15, 0xa3014314);
  STEP(I, b, c, d, a, words[13], 21, 0x4e0811a1);
  STEP(I, a, b, c, d, words[4], 6, 0xf7537e82);
  STEP(I, d, a, b, c, words[11], 10, 0xbd3af235);
  STEP(I, c, d, a, b, words[2], 15, 0x2ad7d2bb);
  STEP(I, b, c, d, a, words[9], 21, 0xeb86d391);
  state[0] += a;
  state[1] += b;
  state[2] += c;
  state[3] += d;
}

void plain_md5(const unsigned char* data, size_t length, unsigned char digest[16]) {
  uint32_t state[4] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
  const uint64_t bits = (uint64_t)length * 8;
  unsigned char last[128] = {0};
  for (; length >= 64; length -= 64, data += 64) add_block(state, data);
  memcpy(last, data, length);
  last[length] = 0x80;
  const size_t size = length < 56 ? 64 : 128;
  memcpy(last + size - sizeof bits, &bits, sizeof bits);
  for (size_t at = 0; at < size; at += 64) add_block(state, last + at);
  memcpy(digest, state, sizeof state);
}
