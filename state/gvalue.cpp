// Values in an open store: written under a lock, read without one.
#include "fairlead/state/gvalue.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/bounded_text.h"
#include "base/descriptor.h"
#include "base/fail.h"
#include "fairlead/misc/files.h"
#include "fairlead/talk/node.h"
#include "state/value_store.h"
#include "talk/owned_talk.h"

namespace {

using namespace fairlead;

// The default store, opened by the first call that needs it and kept until the process ends. Not
// guarded: one thread.
struct {
  gvalue_t* store;
} process;

OpenStore* resolve(gvalue_t* gvalue) {
  if (!gvalue && !process.store) process.store = GvalueCreate("default");
  return static_cast<OpenStore*>(gvalue ? gvalue : process.store);
}

// From the last to the first: the newest of two records of a name wins.
StoreRecord* find(const OpenStore& store, const char* name) {
  for (size_t index = store.count(); index > 0; --index) {
    StoreRecord& record = store.table()[index - 1];
    if (strncmp(record.name, name, kNameSize) == 0 && store.holds(record)) return &record;
  }
  return nullptr;
}

bool same_file(int a, int b) {
  struct stat status_a, status_b;
  return fstat(a, &status_a) == 0 && fstat(b, &status_b) == 0 &&
         status_a.st_dev == status_b.st_dev && status_a.st_ino == status_b.st_ino;
}

// flock belongs to the open file, which a forked child shares with its parent: the child opens the
// store anew.
void take_own_lock_file(OpenStore& store) {
  if (store.opener == getpid()) return;
  store.opener = getpid();
  Descriptor own(sm_open(store.path, O_RDWR, 0));
  if (own && same_file(own.get(), store.fd)) dup3(own.get(), store.fd, O_CLOEXEC);
}

class WriteLock {
 public:
  explicit WriteLock(OpenStore& store) : fd_(store.fd) {
    take_own_lock_file(store);
    held_ = flock(fd_, LOCK_EX) == 0;
  }
  ~WriteLock() {
    ErrnoKeeper keep;
    if (held_) flock(fd_, LOCK_UN);
  }
  WriteLock(const WriteLock&) = delete;
  WriteLock& operator=(const WriteLock&) = delete;
  explicit operator bool() const { return held_; }

 private:
  int fd_;
  bool held_ = false;
};

// The space stays as large as it was: addresses that were handed out go on being valid.
int overwrite(const OpenStore& store, const StoreRecord& record, const void* value, size_t size) {
  char* space = store.bytes() + record.offset;
  memmove(space, value, size);  // the value may lie in the store itself
  memset(space + size, 0, static_cast<size_t>(record.size) - size);
  return 1;
}

// Hands out value space; 0 with ENOMEM when the free space does not exceed the size.
uint32_t place(const OpenStore& store, const void* value, size_t size) {
  StoreHeader& header = *store.header();
  const size_t used = header.data_used, total = header.data_size;
  const size_t offset = sizeof(StoreHeader) + size_t{header.capacity} * sizeof(StoreRecord) + used;
  if (used > total || size >= total - used || offset > store.mapped || size > store.mapped - offset)
    return fail<uint32_t>(ENOMEM);
  memmove(store.bytes() + offset, value, size);
  header.data_used = static_cast<uint32_t>(used + size);
  return static_cast<uint32_t>(offset);
}

int append(const OpenStore& store, const char* name, const void* value, size_t size) {
  const size_t index = store.count();
  if (index >= store.capacity()) return fail<int>(ENOMEM);
  const uint32_t offset = place(store, value, size);
  if (offset == 0) return 0;
  StoreRecord& record = store.table()[index];
  record = {};
  memcpy(record.name, name, strnlen(name, kNameSize));
  record.offset = offset;
  record.size = static_cast<int32_t>(size);
  store.header()->count = static_cast<int32_t>(index + 1);
  return 1;
}

}  // namespace

extern "C" int GvalueSet(gvalue_t* gvalue, const char* name, const void* value, int size) {
  if (!name || !value || size < 0) return fail<int>(EINVAL);
  OpenStore* store = resolve(gvalue);
  if (!store) return 0;
  if (!store->writable) return fail<int>(EACCES);
  const WriteLock lock(*store);
  if (!lock) return 0;

  const auto bytes = static_cast<size_t>(size);
  StoreRecord* record = find(*store, name);
  if (!record) return append(*store, name, value, bytes);
  if (size <= record->size) return overwrite(*store, *record, value, bytes);
  const uint32_t offset = place(*store, value, bytes);
  if (offset == 0) return 0;
  record->offset = offset;
  record->size = size;
  return 1;
}

extern "C" void* GvalueGet(gvalue_t* gvalue, const char* name) {
  if (!name) return fail<void*>(EINVAL);
  const OpenStore* store = resolve(gvalue);
  if (!store) return nullptr;
  const StoreRecord* record = find(*store, name);
  return record ? store->bytes() + record->offset : fail<void*>(ENOENT);
}

extern "C" int GvalueSize(gvalue_t* gvalue, const char* name) {
  if (!name) return fail(EINVAL, -1);
  const OpenStore* store = resolve(gvalue);
  if (!store) return -1;
  const StoreRecord* record = find(*store, name);
  return record ? record->size : fail(ENOENT, -1);
}

extern "C" vessel_t* GvalueList(gvalue_t* gvalue) {
  const OpenStore* store = resolve(gvalue);
  if (!store) return nullptr;
  size_t index = store->count();
  if (index == 0) return nullptr;
  OwnedTalk list(VesselCreate());
  if (!list) return nullptr;
  for (; index > 0; --index) {
    const StoreRecord& record = store->table()[index - 1];
    FixedText<kNameSize + 1> name;
    name.add({record.name, strnlen(record.name, kNameSize)});
    FixedText<16> size;
    size.format("%d", record.size);
    VesselSetS(list.get(), name.text(), size.text());
  }
  return list.release();
}
