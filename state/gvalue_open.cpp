// Opening a store: the first process that asks makes the file, all map it.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "base/bounded_text.h"
#include "base/descriptor.h"
#include "base/fail.h"
#include "base/leads_up.h"
#include "base/mapping.h"
#include "base/owned.h"
#include "base/percent.h"
#include "fairlead/adp/project.h"
#include "fairlead/misc/files.h"
#include "state/gvalue_store.h"
#include "state/gvalue_view.h"

namespace {

using fairlead::fail;
using fairlead::FileLock;
using fairlead::kPathSize;
using fairlead::OpenStore;
using fairlead::StoreHeader;

constexpr uint64_t kDefaultCapacity = 100;
constexpr uint64_t kBytesPerRecord = 256;
constexpr mode_t kDefaultMode = 0660;
constexpr uint64_t kLargestFile = INT32_MAX;  // value offsets and sizes are 32-bit numbers
constexpr int kAttempts = 8;  // each is lost to another process that removed the file
constexpr int kLooks = 100;   // at an empty file, before its maker counts as dead
constexpr timespec kLookPause = {0, 1000000};

// All handles, newest first. They live until the process ends, and a leak check of the program must
// not count them. Any thread may add one.
struct {
  OpenStore* last_opened;
} process;

struct Geometry {
  uint64_t capacity;
  uint64_t data_size;

  Geometry(int wanted_capacity, int wanted_size)
      : capacity(wanted_capacity < 1 ? kDefaultCapacity : static_cast<uint64_t>(wanted_capacity)),
        data_size(wanted_size < 1 ? capacity * kBytesPerRecord
                                  : static_cast<uint64_t>(wanted_size)) {}

  uint64_t file_size() const { return fairlead::data_offset_of(capacity) + data_size; }
};

enum class Outcome {
  kReady,
  kFailed,    // errno is set
  kEmpty,     // still without content
  kBroken,    // no store this library made
  kVanished,  // removed by another process meanwhile
};

// One attempt at the store file. Unless its handle is handed out, the file is removed, whoever made
// it: that is the recovery, the next process to ask makes a fresh one.
class Attempt {
 public:
  explicit Attempt(const char* path) : path_(path) {}
  ~Attempt() { remove(); }
  Attempt(const Attempt&) = delete;
  Attempt& operator=(const Attempt&) = delete;

  Outcome open(const Geometry& geometry, mode_t mode) {
    file_ = opened(O_RDWR | O_CREAT | O_EXCL, mode);
    if (file_) return create(geometry);
    return errno == EEXIST ? join() : Outcome::kFailed;
  }

  gvalue_t* hand_out() {
    fairlead::Owned<OpenStore> store = fairlead::zeroed<OpenStore>();
    if (!store) return nullptr;
    fairlead::BoundedText(store->path, sizeof store->path).add(path_);
    store->writable = writable_;
    store->mapped_size = mapping_.size();
    store->address = mapping_.release();
    store->fd = file_.release();
    store->opened_before = __atomic_exchange_n(&process.last_opened, store.get(), __ATOMIC_RELAXED);
    return store.release();
  }

 private:
  // The descriptor stays open as long as the process, whatever that prints meanwhile.
  fairlead::Descriptor opened(int flags, mode_t mode = 0) const {
    return fairlead::beside_standard(fairlead::Descriptor(sm_open(path_, flags, mode)));
  }

  Outcome create(const Geometry& geometry) {
    const FileLock lock(file_.get(), FileLock::Interrupted::kTriesAgain);
    if (!lock) return Outcome::kFailed;
    const Outcome seen = look();
    if (seen == Outcome::kBroken) return discard();
    if (seen != Outcome::kEmpty) return seen;
    if (geometry.file_size() > kLargestFile) return fail(EFBIG, Outcome::kFailed);
    if (!set_length(static_cast<off_t>(geometry.file_size()))) return Outcome::kFailed;
    mapping_ = {file_.get(), static_cast<size_t>(geometry.file_size()), PROT_READ | PROT_WRITE};
    if (!mapping_) return Outcome::kFailed;
    fairlead::make_store(mapping_.address(), static_cast<uint32_t>(geometry.capacity),
                         static_cast<uint32_t>(geometry.data_size));
    return Outcome::kReady;
  }

  // The space is reserved at once: a store without pages would kill its writers on a full /tmp.
  bool set_length(off_t size) {
    if (ftruncate(file_.get(), size) != 0) return false;
    int refused;
    do {
      refused = posix_fallocate(file_.get(), 0, size);
    } while (refused == EINTR);
    return refused == 0 || refused == EOPNOTSUPP || refused == ENOSYS || fail<bool>(refused);
  }

  Outcome join() {
    if (!open_existing()) return errno == ENOENT ? Outcome::kVanished : Outcome::kFailed;
    Outcome seen = look();
    for (int looks = 1; seen == Outcome::kEmpty || seen == Outcome::kBroken; ++looks) {
      if (looks > 1) nanosleep(&kLookPause, nullptr);
      seen = look_locked(looks == kLooks);
    }
    return seen;
  }

  // A file that is just being made is whole once its maker lets go of the lock.
  Outcome look_locked(bool last) {
    const FileLock lock(file_.get(), FileLock::Interrupted::kTriesAgain);
    if (!lock) return Outcome::kFailed;
    const Outcome seen = look();
    return seen == Outcome::kBroken || (seen == Outcome::kEmpty && last) ? discard() : seen;
  }

  // A pipe put in the store's place must not stop the process: opened without waiting.
  bool open_existing() {
    file_ = opened(O_RDWR | O_NONBLOCK);
    writable_ = static_cast<bool>(file_);
    if (!file_) file_ = opened(O_RDONLY | O_NONBLOCK);
    return static_cast<bool>(file_);
  }

  Outcome look() {
    struct stat status;
    if (fstat(file_.get(), &status) != 0) return Outcome::kFailed;
    if (status.st_nlink == 0) return Outcome::kVanished;
    if (!S_ISREG(status.st_mode)) return Outcome::kBroken;
    if (status.st_size == 0) return Outcome::kEmpty;
    const auto size = static_cast<uint64_t>(status.st_size);
    if (size < sizeof(StoreHeader) || size > kLargestFile) return Outcome::kBroken;
    mapping_ = {file_.get(), static_cast<size_t>(size),
                writable_ ? PROT_READ | PROT_WRITE : PROT_READ};
    if (!mapping_) return Outcome::kFailed;
    return fairlead::StoreView(mapping_.address(), mapping_.size()) ? Outcome::kReady
                                                                    : Outcome::kBroken;
  }

  // With the lock held, so that no process removes what another one has just made in its place.
  Outcome discard() {
    remove();
    return fail(ENOENT, Outcome::kFailed);
  }

  void remove() {
    if (!file_) return;
    const fairlead::ErrnoKeeper keep;
    struct stat status;
    if (fstat(file_.get(), &status) != 0 || status.st_nlink > 0) sm_unlink(path_);
  }

  const char* path_;
  fairlead::Descriptor file_;
  fairlead::Mapping mapping_;
  bool writable_ = true;
};

}  // namespace

extern "C" gvalue_t* GvalueCreateDetails(const char* name, int capacity, int data_size,
                                         mode_t mode) {
  if (!name || fairlead::leads_up(name)) return fail<gvalue_t*>(EINVAL);
  // Callers write "%%" for a percent sign. Halved, the name still fills whatever the path has room
  // for.
  fairlead::FixedText<2 * kPathSize> file_name;
  file_name.add(name);
  fairlead::halve_percent(file_name.text());
  char path[kPathSize];
  if (!ProjectVarPath(path, sizeof path, "gvalue", nullptr)) return nullptr;
  // Without the formatter, whose pages nothing else in a short process touches.
  const size_t length = strlen(path);
  fairlead::BoundedText(path + length, sizeof path - length).add('/').add(file_name.text());

  for (int attempts = 0; attempts < kAttempts; ++attempts) {
    Attempt attempt(path);
    const Outcome outcome = attempt.open(Geometry(capacity, data_size), mode);
    if (outcome == Outcome::kReady) return attempt.hand_out();
    if (outcome != Outcome::kVanished) return nullptr;
  }
  return fail<gvalue_t*>(ENOENT);
}

extern "C" gvalue_t* GvalueCreate(const char* name) {
  return GvalueCreateDetails(name, 0, 0, kDefaultMode);
}
