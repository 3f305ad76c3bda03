// The MD5 digest of RFC 1321.
#include <bit>
#include <cerrno>
#include <cstring>

#include "base/fail.h"
#include "fairlead/misc/encoders.h"

namespace {

constexpr unsigned kBlockSize = sizeof md5_t::buffer;
constexpr unsigned kLengthAt = kBlockSize - sizeof md5_t::count;  // in the last block

// The integer part of 2^32 * |sin(n)|, n from 1, in radians.
constexpr uint32_t kSines[] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};

uint32_t low_byte_first(uint32_t word) {
  return std::endian::native == std::endian::big ? __builtin_bswap32(word) : word;
}

// The four functions that mix three words of the state, one per round.
struct Choose {
  uint32_t operator()(uint32_t x, uint32_t y, uint32_t z) const { return z ^ (x & (y ^ z)); }
};
struct ChooseByLast {
  uint32_t operator()(uint32_t x, uint32_t y, uint32_t z) const { return y ^ (z & (x ^ y)); }
};
struct Parity {
  uint32_t operator()(uint32_t x, uint32_t y, uint32_t z) const { return x ^ y ^ z; }
};
struct Blend {
  uint32_t operator()(uint32_t x, uint32_t y, uint32_t z) const { return y ^ (x | ~z); }
};

// Sixteen steps. Four of them stand in the loop: after four, each word of the state is back in its
// place, so none is ever moved, while the code stays a quarter of what 64 steps would take.
template <int kRound, unsigned kFirst, unsigned kStride, int k1, int k2, int k3, int k4, class Mix>
__attribute__((always_inline)) inline void run_round(uint32_t (&state)[4],
                                                     const uint32_t (&words)[16], Mix mix) {
  auto [a, b, c, d] = state;
  const uint32_t* sine = kSines + size_t{16} * kRound;
  unsigned index = kFirst;
  const auto next = [&](uint32_t sum) __attribute__((always_inline)) {
    sum += words[index % 16] + *sine++;
    index += kStride;
    return sum;
  };
  for (int step = 0; step < 16; step += 4) {
    a = b + std::rotl(next(a + mix(b, c, d)), k1);
    d = a + std::rotl(next(d + mix(a, b, c)), k2);
    c = d + std::rotl(next(c + mix(d, a, b)), k3);
    b = c + std::rotl(next(b + mix(c, d, a)), k4);
  }
  state[0] = a, state[1] = b, state[2] = c, state[3] = d;
}

unsigned buffered(const md5_t& context) { return context.count[0] / 8 % kBlockSize; }

void count_bytes(md5_t& context, unsigned length) {
  const uint32_t bits = length << 3;
  context.count[0] += bits;
  context.count[1] += (length >> 29) + (context.count[0] < bits);
}

}  // namespace

extern "C" {

const unsigned char md5_padding[64] = {0x80};

void md5_init(md5_t* context) {
  if (!context) return fairlead::fail<void>(EINVAL);
  *context = {{0, 0}, {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476}, {}};
}

void md5_update(md5_t* context, const void* data, unsigned int length) {
  if (!context || (!data && length > 0)) return fairlead::fail<void>(EINVAL);
  auto from = static_cast<const unsigned char*>(data);
  unsigned filled = buffered(*context);
  count_bytes(*context, length);
  while (length >= kBlockSize - filled) {
    const unsigned taken = kBlockSize - filled;
    if (filled > 0) memcpy(context->buffer + filled, from, taken);
    md5_transform(context->state, filled > 0 ? context->buffer : from);
    from += taken;
    length -= taken;
    filled = 0;
  }
  if (length > 0) memcpy(context->buffer + filled, from, length);
}

void md5_final(md5_t* context, unsigned char digest[16]) {
  if (!context || !digest) return fairlead::fail<void>(EINVAL);
  unsigned char bits[sizeof context->count];
  md5_encode(bits, context->count, sizeof bits);
  const unsigned filled = buffered(*context);
  md5_update(context, md5_padding, kLengthAt - filled + (filled < kLengthAt ? 0 : kBlockSize));
  md5_update(context, bits, sizeof bits);
  md5_encode(digest, context->state, sizeof context->state);
  memset(context, 0, sizeof *context);
}

void md5_transform(uint32_t state[4], const unsigned char block[64]) {
  if (!state || !block) return fairlead::fail<void>(EINVAL);
  uint32_t words[16];
  md5_decode(words, block, sizeof words);
  uint32_t mixed[4] = {state[0], state[1], state[2], state[3]};
  run_round<0, 0, 1, 7, 12, 17, 22>(mixed, words, Choose());
  run_round<1, 1, 5, 5, 9, 14, 20>(mixed, words, ChooseByLast());
  run_round<2, 5, 3, 4, 11, 16, 23>(mixed, words, Parity());
  run_round<3, 0, 7, 6, 10, 15, 21>(mixed, words, Blend());
  for (int i = 0; i < 4; ++i) state[i] += mixed[i];
}

void md5_encode(unsigned char* output, const uint32_t* input, unsigned int length) {
  if (!output || !input) return fairlead::fail<void>(EINVAL);
  for (unsigned i = 0; i < length / 4; ++i) {
    const uint32_t word = low_byte_first(input[i]);
    memcpy(output + size_t{4} * i, &word, sizeof word);
  }
}

void md5_decode(uint32_t* output, const unsigned char* input, unsigned int length) {
  if (!output || !input) return fairlead::fail<void>(EINVAL);
  for (unsigned i = 0; i < length / 4; ++i) {
    uint32_t word;
    memcpy(&word, input + size_t{4} * i, sizeof word);
    output[i] = low_byte_first(word);
  }
}

}  // extern "C"
