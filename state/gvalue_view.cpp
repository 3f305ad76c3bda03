// Reading and writing a mapped store without trusting a number in it.
#include "state/gvalue_view.h"

#include <cstring>

namespace {

// Written and read by other processes at the same time: exactly one access, whole.
template <class Number>
Number load(const Number& shared) {
  return __atomic_load_n(&shared, __ATOMIC_ACQUIRE);
}

template <class Number>
void store(Number& shared, Number value) {
  __atomic_store_n(&shared, value, __ATOMIC_RELEASE);
}

// Whether a record's name is this one of `length` characters. The end is looked at first: names of
// one program mostly begin alike.
bool is_named(const char* found, const char* name, size_t length) {
  if (length < fairlead::kNameSize && found[length] != '\0') return false;
  return length == 0 || (found[length - 1] == name[length - 1] && memcmp(found, name, length) == 0);
}

}  // namespace

namespace fairlead {

void make_store(void* address, uint32_t capacity, uint32_t data_size) {
  auto& header = *static_cast<StoreHeader*>(address);
  const auto data_offset = static_cast<uint32_t>(data_offset_of(capacity));
  header = {0, capacity, sizeof(StoreHeader), 0, data_size, data_offset, 0};
  store(header.magic, kStoreMagic);  // last: with it the file counts as a store
}

StoreView::StoreView(void* address, size_t mapped_size) : bytes_(static_cast<char*>(address)) {
  if (mapped_size < sizeof(StoreHeader) || load(header()->magic) != kStoreMagic) return;
  const uint64_t capacity = load(header()->capacity);
  const uint64_t data_offset = load(header()->data_offset);
  const uint64_t data_size = load(header()->data_size);
  const uint64_t data_used = load(header()->data_used);
  const int64_t count = load(header()->count);
  if (load(header()->table_offset) != sizeof(StoreHeader)) return;
  if (data_offset != data_offset_of(capacity) || data_offset + data_size > mapped_size) return;
  if (data_used > data_size || count < 0 || count > static_cast<int64_t>(capacity)) return;

  capacity_ = static_cast<size_t>(capacity);
  count_ = static_cast<size_t>(count);
  data_offset_ = static_cast<size_t>(data_offset);
  data_size_ = static_cast<size_t>(data_size);
  data_used_ = static_cast<size_t>(data_used);
  usable_ = true;
}

StoredValue StoreView::value(size_t index) const {
  StoreRecord& record = table()[index];
  const int32_t size = load(record.value_size);  // first: see `place`
  const size_t offset = load(record.value_offset);
  if (size < 0 || offset < data_offset_ || offset - data_offset_ > data_size_) return {};
  if (static_cast<size_t>(size) > data_size_ - (offset - data_offset_)) return {};
  return {&record, {bytes_ + offset, static_cast<size_t>(size)}};
}

StoredValue StoreView::find(const char* name) const {
  const size_t length = strnlen(name, kNameSize);
  for (size_t index = count_; index > 0; --index) {
    if (!is_named(table()[index - 1].name, name, length)) continue;
    if (const StoredValue found = value(index - 1)) return found;
  }
  return {};
}

void StoreView::place(StoreRecord& record, const void* value, size_t size) {
  const size_t offset = data_offset_ + data_used_;
  memmove(bytes_ + offset, value, size);  // the value may itself lie in the store
  data_used_ += size;
  store(header()->data_used, static_cast<uint32_t>(data_used_));
  // In this order, and read in the other one, the old place never goes with the new, larger size.
  store(record.value_offset, static_cast<uint32_t>(offset));
  store(record.value_size, static_cast<int32_t>(size));
}

void StoreView::append(const char* name, const void* value, size_t size) {
  StoreRecord& added = table()[count_];
  memset(&added, 0, sizeof added);
  memcpy(added.name, name, strnlen(name, kNameSize));
  place(added, value, size);
  // Last: readers take no lock and see the record only when it is complete.
  ++count_;
  store(header()->count, static_cast<int32_t>(count_));
}

}  // namespace fairlead
