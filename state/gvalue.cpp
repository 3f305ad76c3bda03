// Named values in an open store: written under a lock, read without one.
#include "fairlead/state/gvalue.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/bounded_text.h"
#include "base/fail.h"
#include "fairlead/talk/node.h"
#include "state/gvalue_store.h"
#include "state/gvalue_view.h"
#include "talk/owned_talk.h"

namespace {

using fairlead::fail;
using fairlead::FileLock;
using fairlead::FixedText;
using fairlead::kNameSize;
using fairlead::OpenStore;
using fairlead::OwnedTalk;
using fairlead::StoredValue;
using fairlead::StoreView;

// The default store, opened by the first call that needs it and kept until the process ends. That
// may be in any thread, as all of them may log.
struct {
  gvalue_t* default_store;
} process;

gvalue_t* opened_default_store() {
  return __atomic_load_n(&process.default_store, __ATOMIC_ACQUIRE);
}

// Of threads that open it at the same time, all get the handle of the first.
gvalue_t* open_default_store() {
  gvalue_t* const opened = GvalueCreate("default");
  gvalue_t* first = nullptr;
  if (!opened || __atomic_compare_exchange_n(&process.default_store, &first, opened, false,
                                             __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE))
    return opened;
  return first;
}

// The handle's store, or null with errno from the open of the default store.
const OpenStore* resolve(gvalue_t* gvalue) {
  if (!gvalue) gvalue = opened_default_store();
  return static_cast<const OpenStore*>(gvalue ? gvalue : open_default_store());
}

StoreView view_of(const OpenStore& store) { return {store.address, store.mapped_size}; }

// An flock belongs to the open file, which a forked child shares with its parent; a record lock
// belongs to the process and keeps these two apart. The flock keeps out everyone else.
class WriteLock {
 public:
  explicit WriteLock(int fd)
      : file_(fd, FileLock::Interrupted::kFails), fd_(fd), held_(file_ && change(F_WRLCK)) {}
  ~WriteLock() {
    fairlead::ErrnoKeeper keep;
    if (held_) change(F_UNLCK);
  }
  WriteLock(const WriteLock&) = delete;
  WriteLock& operator=(const WriteLock&) = delete;

  explicit operator bool() const { return held_; }

 private:
  bool change(short type) const {
    struct flock whole = {};
    whole.l_type = type;
    whole.l_whence = SEEK_SET;
    return fcntl(fd_, F_SETLKW, &whole) == 0;
  }

  FileLock file_;
  int fd_;
  bool held_;
};

// A write behind the end of a file that was cut would kill the process.
bool whole(const OpenStore& store) {
  struct stat status;
  return fstat(store.fd, &status) == 0 && status.st_size >= static_cast<off_t>(store.mapped_size);
}

// The space stays as large as it was: addresses that were handed out go on being valid. The new
// bytes go in first, so that a reader never sees a setting of zero in between.
void overwrite(std::span<char> space, const void* value, size_t size) {
  memmove(space.data(), value, size);
  memset(space.data() + size, 0, space.size() - size);
}

int set(StoreView& view, const char* name, const void* value, size_t size) {
  const StoredValue found = view.find(name);
  if (found && size <= found.bytes.size()) {
    overwrite(found.bytes, value, size);
    return 1;
  }
  if ((!found && view.full()) || size >= view.free_space()) return fail<int>(ENOMEM);
  if (found)
    view.place(*found.record, value, size);
  else
    view.append(name, value, size);
  return 1;
}

StoredValue look_up(gvalue_t* gvalue, const char* name) {
  if (!name) return fail<StoredValue>(EINVAL);
  const OpenStore* const store = resolve(gvalue);
  if (!store) return {};
  const StoreView view = view_of(*store);
  const StoredValue found = view ? view.find(name) : StoredValue();
  return found ? found : fail<StoredValue>(ENOENT);
}

// False when memory runs out. A nameless value cannot be a member and is left out.
bool add_member(vessel_t* list, const StoredValue& value) {
  FixedText<kNameSize + 1> name;
  name.add({value.record->name, strnlen(value.record->name, kNameSize)});
  if (name.length() == 0) return true;
  FixedText<16> size;
  size.format("%d", static_cast<int>(value.bytes.size()));

  OwnedTalk text(RenderCreate(size.text()));
  OwnedTalk member(text ? AxpCreate(name.text(), text.get()) : nullptr);
  if (!member) return false;
  text.release();
  // Not by VesselSetS, which would look for each name among all the others first.
  return VesselAdd(list, member.release()) == 1;
}

}  // namespace

const int32_t* fairlead::default_store_count() {
  const gvalue_t* const store = opened_default_store();
  return store ? &static_cast<const StoreHeader*>(store->address)->count : nullptr;
}

extern "C" int GvalueSet(gvalue_t* gvalue, const char* name, const void* value, int size) {
  if (!name || !value || size < 0) return fail<int>(EINVAL);
  const OpenStore* const store = resolve(gvalue);
  if (!store) return 0;
  if (!store->writable) return fail<int>(EACCES);
  const WriteLock lock(store->fd);
  if (!lock) return 0;
  if (!whole(*store)) return fail<int>(ENOENT);
  StoreView view = view_of(*store);
  return view ? set(view, name, value, static_cast<size_t>(size)) : fail<int>(ENOENT);
}

extern "C" void* GvalueGet(gvalue_t* gvalue, const char* name) {
  return look_up(gvalue, name).bytes.data();
}

extern "C" int GvalueSize(gvalue_t* gvalue, const char* name) {
  const StoredValue found = look_up(gvalue, name);
  return found ? static_cast<int>(found.bytes.size()) : -1;
}

extern "C" vessel_t* GvalueList(gvalue_t* gvalue) {
  const OpenStore* const store = resolve(gvalue);
  if (!store) return nullptr;
  const StoreView view = view_of(*store);
  if (view.count() == 0) return nullptr;
  OwnedTalk list(VesselCreate());
  if (!list) return nullptr;
  for (size_t index = view.count(); index > 0; --index) {
    const StoredValue value = view.value(index - 1);
    if (value && !add_member(list.get(), value)) return fail<vessel_t*>(ENOMEM);
  }
  return list.release();
}
