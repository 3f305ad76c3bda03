// Opening a store: made by the first process that asks, mapped by all.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "base/bounded_text.h"
#include "base/descriptor.h"
#include "base/fail.h"
#include "base/owned.h"
#include "base/percent.h"
#include "fairlead/adp/project.h"
#include "fairlead/misc/files.h"
#include "state/value_store.h"

namespace {

using namespace fairlead;

constexpr int kDefaultCapacity = 100;
constexpr int kBytesPerRecord = 256;
constexpr mode_t kDefaultMode = 0660;
constexpr int kLooks = 100;  // at an empty file whose creator may be about to fill it
constexpr useconds_t kLookPause = 1000;

// A whole-file lock until the end of the block.
class FileLock {
 public:
  explicit FileLock(int fd) : fd_(fd), held_(flock(fd, LOCK_EX) == 0) {}
  ~FileLock() {
    ErrnoKeeper keep;
    if (held_) flock(fd_, LOCK_UN);
  }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  explicit operator bool() const { return held_; }

 private:
  int fd_;
  bool held_;
};

struct Geometry {
  uint64_t capacity;
  uint64_t data_size;

  uint64_t data_offset() const { return sizeof(StoreHeader) + capacity * sizeof(StoreRecord); }
  uint64_t file_size() const { return data_offset() + data_size; }
};

Geometry geometry_of(int capacity, int data_size) {
  const uint64_t records = capacity < 1 ? kDefaultCapacity : static_cast<uint64_t>(capacity);
  return {records, data_size < 1 ? records * kBytesPerRecord : static_cast<uint64_t>(data_size)};
}

// The store file while it is being opened. Unless the handle is handed out, the file is removed,
// whoever made it: the next process to ask makes a fresh one.
class Opening {
 public:
  explicit Opening(const char* path) : path_(path) {}
  ~Opening() {
    ErrnoKeeper keep;
    if (address_ != MAP_FAILED) munmap(address_, size_);
    if (file_ && still_in_place()) unlink(path_);
  }
  Opening(const Opening&) = delete;
  Opening& operator=(const Opening&) = delete;

  gvalue_t* open(const Geometry& geometry, mode_t mode) {
    for (;;) {
      file_.reset(sm_open(path_, O_RDWR | O_CREAT | O_EXCL, mode));
      if (file_) {
        const int filled = fill(geometry);
        if (filled < 0) return nullptr;
        if (filled > 0) return hand_out();
        file_.reset();  // removed as broken before it was locked: once more
        continue;
      }
      if (errno != EEXIST) return nullptr;
      if (open_existing()) break;
      if (errno != ENOENT) return nullptr;  // else removed in between: once more
    }
    return map(writable_) && check() ? hand_out() : nullptr;
  }

 private:
  // 1: mapped and ready; 0: the file is no longer in its place; -1: failed.
  int fill(const Geometry& geometry) {
    FileLock lock(file_.get());
    struct stat status;
    if (!lock || fstat(file_.get(), &status) != 0) return -1;
    if (status.st_nlink == 0) return 0;
    if (status.st_size != 0) return map(true) && check() ? 1 : -1;
    if (geometry.file_size() > UINT32_MAX) return fail(ENOMEM, -1);
    if (!reserve(static_cast<off_t>(geometry.file_size())) || !map(true)) return -1;
    *static_cast<StoreHeader*>(address_) = {kStoreMagic,
                                            static_cast<uint32_t>(geometry.capacity),
                                            sizeof(StoreHeader),
                                            0,
                                            static_cast<uint32_t>(geometry.data_size),
                                            static_cast<uint32_t>(geometry.data_offset()),
                                            0};
    return 1;
  }

  // With its blocks: a full file system must show here, not as a SIGBUS at some later write to the
  // mapping.
  bool reserve(off_t size) const {
    const int error = posix_fallocate(file_.get(), 0, size);
    if (error == 0) return true;
    if (error != EOPNOTSUPP && error != EINVAL) return fail<bool>(error);
    return ftruncate(file_.get(), size) == 0;
  }

  // Another process may have put a fresh store in the place of a broken one.
  bool still_in_place() const {
    struct stat own, named;
    return fstat(file_.get(), &own) == 0 && stat(path_, &named) == 0 &&
           own.st_dev == named.st_dev && own.st_ino == named.st_ino;
  }

  // Never blocks: what is no regular file, such as a FIFO, is broken.
  bool open_existing() {
    file_.reset(sm_open(path_, O_RDWR | O_NONBLOCK, 0));
    writable_ = static_cast<bool>(file_);
    if (!file_ && errno != ENOENT) file_.reset(sm_open(path_, O_RDONLY | O_NONBLOCK, 0));
    return static_cast<bool>(file_);
  }

  // The size of a file that was empty at first sight; perhaps its creator is just filling it.
  bool settled_size(off_t& size) const {
    for (int look = 0; look < kLooks; ++look) {
      struct stat status;
      {
        FileLock lock(file_.get());
        if (!lock || fstat(file_.get(), &status) != 0) return false;
      }
      size = status.st_size;
      if (size != 0 || !S_ISREG(status.st_mode)) break;
      usleep(kLookPause);
    }
    return true;
  }

  bool map(bool writable) {
    struct stat status;
    if (fstat(file_.get(), &status) != 0) return false;
    off_t size = status.st_size;
    if (size == 0 && !settled_size(size)) return false;
    if (size < static_cast<off_t>(sizeof(StoreHeader)) || size > static_cast<off_t>(UINT32_MAX))
      return fail<bool>(ENOENT);
    size_ = static_cast<size_t>(size);
    address_ =
        mmap(nullptr, size_, PROT_READ | (writable ? PROT_WRITE : 0), MAP_SHARED, file_.get(), 0);
    return address_ != MAP_FAILED;
  }

  // A store whose own numbers contradict each other or the file counts as missing, like one without
  // the magic.
  bool check() const {
    const StoreHeader header = *static_cast<const StoreHeader*>(address_);
    const Geometry geometry = {header.capacity, header.data_size};
    const bool consistent =
        header.magic == kStoreMagic && header.table_offset == sizeof(StoreHeader) &&
        header.data_offset == geometry.data_offset() && geometry.file_size() <= size_ &&
        header.count >= 0 && static_cast<uint32_t>(header.count) <= header.capacity &&
        header.data_used <= header.data_size;
    return consistent || fail<bool>(ENOENT);
  }

  gvalue_t* hand_out() {
    Owned<OpenStore> store = zeroed<OpenStore>();
    if (!store) return nullptr;
    BoundedText(store->path, sizeof store->path).add(path_);
    store->address = address_;
    store->mapped = size_;
    store->writable = writable_;
    store->opener = getpid();
    store->fd = file_.release();
    address_ = MAP_FAILED;
    return store.release();
  }

  const char* path_;
  Descriptor file_;
  void* address_ = MAP_FAILED;
  size_t size_ = 0;
  bool writable_ = true;
};

}  // namespace

extern "C" gvalue_t* GvalueCreateDetails(const char* name, int capacity, int data_size,
                                         mode_t mode) {
  if (!name) return fail<gvalue_t*>(EINVAL);
  // The name has always been taken for a format, so that "%%" in it is one percent sign of the
  // file's name.
  const OwnedText file_name(strdup(name));
  if (!file_name) return nullptr;
  halve_percent(file_name.get());
  char path[kPathSize];
  if (!ProjectVarPath(path, sizeof path, "gvalue", "%s", file_name.get())) return nullptr;
  return Opening(path).open(geometry_of(capacity, data_size), mode);
}

extern "C" gvalue_t* GvalueCreate(const char* name) {
  return GvalueCreateDetails(name, 0, 0, kDefaultMode);
}
