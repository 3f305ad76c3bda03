// The store file of named values, byte for byte, and an open store. The layout is shared by all
// processes of the machine, in its byte order.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

#include "fairlead/state/gvalue.h"

namespace fairlead {

inline constexpr uint32_t kStoreMagic = 0x53475600;
inline constexpr size_t kNameSize = 64;

struct StoreHeader {
  uint32_t magic;
  uint32_t capacity;  // records
  uint32_t table_offset;
  int32_t count;  // records in use
  uint32_t data_size;
  uint32_t data_offset;
  uint32_t data_used;
};

struct StoreRecord {
  char name[kNameSize];  // not ended when it fills the field
  uint32_t offset;       // from the start of the file
  int32_t size;
};

static_assert(sizeof(StoreHeader) == 28 && offsetof(StoreHeader, count) == 12 &&
              offsetof(StoreHeader, data_used) == 24);
static_assert(sizeof(StoreRecord) == 72 && offsetof(StoreRecord, offset) == 64 &&
              offsetof(StoreRecord, size) == 68);

// What a handle leads to. The file may be written by anyone: nothing in it is used before it is
// checked against the mapped size.
struct OpenStore : gvalue_t {
  size_t mapped;
  bool writable;
  pid_t opener;  // a forked child shares the opener's lock and must get one of its own

  StoreHeader* header() const { return static_cast<StoreHeader*>(address); }
  StoreRecord* table() const { return reinterpret_cast<StoreRecord*>(header() + 1); }
  char* bytes() const { return static_cast<char*>(address); }

  size_t capacity() const {
    const size_t room = (mapped - sizeof(StoreHeader)) / sizeof(StoreRecord);
    const size_t stated = header()->capacity;
    return stated < room ? stated : room;
  }

  // Records in use: never more than there is room for.
  size_t count() const {
    const int32_t stated = header()->count;
    if (stated < 1) return 0;
    return static_cast<size_t>(stated) < capacity() ? static_cast<size_t>(stated) : capacity();
  }

  bool holds(const StoreRecord& record) const {
    return record.size >= 0 && record.offset <= mapped &&
           static_cast<size_t>(record.size) <= mapped - record.offset;
  }
};

}  // namespace fairlead
