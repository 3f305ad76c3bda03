// A checked view of a mapped store.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "state/gvalue_layout.h"

namespace fairlead {

// Writes the header of an empty store into a mapping that has room for it.
void make_store(void* address, uint32_t capacity, uint32_t data_size);

// A record and the bytes it names; no record when there is none, or its value lies outside.
struct StoredValue {
  StoreRecord* record = nullptr;
  std::span<char> bytes;

  explicit operator bool() const { return record != nullptr; }
};

// Whoever may write the file can change it at any moment. So each number is read once, checked
// against the mapped size, and used as it was when it was checked.
class StoreView {
 public:
  // One reading of the header. False afterwards: it contradicts itself or the size.
  StoreView(void* address, size_t mapped_size);
  explicit operator bool() const { return usable_; }

  size_t count() const { return count_; }
  bool full() const { return count_ >= capacity_; }
  size_t free_space() const { return data_size_ - data_used_; }

  StoredValue value(size_t index) const;

  // The newest one of that name, of which only the first 64 characters count.
  StoredValue find(const char* name) const;

  // Copies a value into the free space, which must exceed its size, and points the record to it.
  void place(StoreRecord& record, const void* value, size_t size);

  // Makes the next free record one of that name and value.
  void append(const char* name, const void* value, size_t size);

 private:
  StoreHeader* header() const { return reinterpret_cast<StoreHeader*>(bytes_); }
  StoreRecord* table() const {
    return reinterpret_cast<StoreRecord*>(bytes_ + sizeof(StoreHeader));
  }

  char* bytes_;
  bool usable_ = false;
  size_t capacity_ = 0;
  size_t count_ = 0;
  size_t data_offset_ = 0;
  size_t data_size_ = 0;
  size_t data_used_ = 0;
};

}  // namespace fairlead
