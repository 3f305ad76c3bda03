// The file of a value store, byte for byte, as all processes of the machine share it. Every field
// is a 32-bit number in the machine's byte order; every offset counts from the start of the file.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fairlead {

inline constexpr uint32_t kStoreMagic = 0x53475600;
inline constexpr size_t kNameSize = 64;

struct StoreHeader {
  uint32_t magic;
  uint32_t capacity;      // records the table has room for
  uint32_t table_offset;  // always the size of this header
  int32_t count;          // records in use
  uint32_t data_size;     // bytes of the value area
  uint32_t data_offset;   // the value area follows the table
  uint32_t data_used;     // bytes of the value area that were handed out
};

struct StoreRecord {
  char name[kNameSize];  // padded with zero bytes; not ended when it fills the field
  uint32_t value_offset;
  int32_t value_size;
};

static_assert(offsetof(StoreHeader, magic) == 0);
static_assert(offsetof(StoreHeader, capacity) == 4);
static_assert(offsetof(StoreHeader, table_offset) == 8);
static_assert(offsetof(StoreHeader, count) == 12);
static_assert(offsetof(StoreHeader, data_size) == 16);
static_assert(offsetof(StoreHeader, data_offset) == 20);
static_assert(offsetof(StoreHeader, data_used) == 24);
static_assert(sizeof(StoreHeader) == 28);

static_assert(offsetof(StoreRecord, name) == 0);
static_assert(offsetof(StoreRecord, value_offset) == 64);
static_assert(offsetof(StoreRecord, value_size) == 68);
static_assert(sizeof(StoreRecord) == 72);

// Wide enough for every capacity and size that a header can state.
constexpr uint64_t data_offset_of(uint64_t capacity) {
  return sizeof(StoreHeader) + capacity * sizeof(StoreRecord);
}

static_assert(data_offset_of(100) + 25600 == 32828);

}  // namespace fairlead
