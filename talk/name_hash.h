// The hash of member names. It is keyed, so that whoever writes a document can't choose names that
// fall together (the construction is HalfSipHash-1-3).
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace fairlead {

struct HashKey {
  uint32_t words[2];
};

class NameHash {
 public:
  explicit NameHash(const HashKey& key)
      : v0_(key.words[0]),
        v1_(key.words[1]),
        v2_(key.words[0] ^ 0x6c796765),
        v3_(key.words[1] ^ 0x74656462) {}

  uint32_t of(std::string_view name) {
    size_t at = 0;
    for (; name.size() - at >= sizeof(uint32_t); at += sizeof(uint32_t))
      absorb(word(name.data() + at, sizeof(uint32_t)));
    absorb(word(name.data() + at, name.size() - at) ^ static_cast<uint32_t>(name.size()) << 24);
    v2_ ^= 0xff;
    for (int i = 0; i < 3; ++i) round();
    return v1_ ^ v3_;
  }

 private:
  static uint32_t word(const char* bytes, size_t size) {
    uint32_t value = 0;
    memcpy(&value, bytes, size);
    return value;
  }

  static uint32_t turned(uint32_t value, int bits) { return value << bits | value >> (32 - bits); }

  void absorb(uint32_t value) {
    v3_ ^= value;
    round();
    v0_ ^= value;
  }

  void round() {
    v0_ += v1_, v1_ = turned(v1_, 5) ^ v0_, v0_ = turned(v0_, 16);
    v2_ += v3_, v3_ = turned(v3_, 8) ^ v2_;
    v0_ += v3_, v3_ = turned(v3_, 7) ^ v0_;
    v2_ += v1_, v1_ = turned(v1_, 13) ^ v2_, v2_ = turned(v2_, 16);
  }

  uint32_t v0_, v1_, v2_, v3_;
};

}  // namespace fairlead
