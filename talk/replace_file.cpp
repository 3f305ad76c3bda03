// The safe save: lock, write beside, sync, rename, sync the folder.
#include "talk/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "base/deadline.h"
#include "base/descriptor.h"
#include "base/errno_keeper.h"
#include "base/fail.h"
#include "base/owned.h"
#include "base/same_file.h"
#include "base/sync_folder.h"
#include "fairlead/misc/process.h"
#include "misc/locked_file.h"
#include "talk/save_paths.h"

namespace fairlead {
namespace {

constexpr mode_t kNewMode = 0660;
constexpr int kWriteLock = 1;

// A file that was waited for may have been replaced meanwhile: its lock is then worth nothing.
bool still_named(int fd, const char* path) {
  struct stat own, named;
  return fstat(fd, &own) == 0 && lstat(path, &named) == 0 && same_file(own, named);
}

bool write_all(int fd, std::string_view content) {
  const char* at = content.data();
  for (size_t left = content.size(); left > 0;) {
    const ssize_t written = write(fd, at, left);
    if (written < 0 && errno != EINTR) return false;
    if (written < 0) continue;
    at += written;
    left -= static_cast<size_t>(written);
  }
  return true;
}

// Some file systems let a signal interrupt such calls, which must not end a save.
bool completed(int (*call)(int fd, off_t size), int fd, off_t size) {
  int result;
  do {
    result = call(fd, size);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

bool synced(int fd) {
  return completed([](int file, off_t) { return fsync(file); }, fd, 0);
}

// Removes a temporary that no living save holds, waiting at most `seconds` for one that does.
bool remove_abandoned(const char* path, int seconds) {
  Descriptor old(lock_open(path, O_RDWR | O_NOFOLLOW | O_NONBLOCK, 0, seconds));
  if (!old) {
    if (errno == ELOOP) return unlink(path) == 0;  // a link put there leads who knows where
    return errno == ENOENT;
  }
  return !still_named(old.get(), path) || unlink(path) == 0 || errno == ENOENT;
}

// The file beside the target that becomes the target. Removed unless it did.
class Temporary {
 public:
  explicit Temporary(const char* path) : path_(path) {}
  ~Temporary() {
    ErrnoKeeper keep;
    if (file_) unlink(path_);  // before its lock goes with the descriptor
  }
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;

  // Makes the file and locks it. One that is there already and not locked was left by a killed
  // save.
  bool take(const Deadline& deadline) {
    while (!deadline.passed()) {
      Descriptor file(open(path_, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kNewMode));
      if (file) {
        if (!lockfd_set(file.get(), kWriteLock, 0, SEEK_SET, 0, kLockSeconds)) return false;
        if (!still_named(file.get(), path_)) continue;
        file_ = std::move(file);
        return true;
      }
      if (errno != EEXIST || !remove_abandoned(path_, kLockSeconds)) return false;
    }
    return fail<bool>(EBUSY);
  }

  bool fill(std::string_view content) {
    return write_all(file_.get(), content) && synced(file_.get());
  }

  // False when the temporary cannot be made to look like the target.
  bool adopt(const struct stat& target) {
    struct stat own;
    if (fstat(file_.get(), &own) != 0) return false;
    const bool owner_differs = own.st_uid != target.st_uid || own.st_gid != target.st_gid;
    if (owner_differs && fchown(file_.get(), target.st_uid, target.st_gid) != 0) return false;
    return fchmod(file_.get(), target.st_mode & 07777) == 0;
  }

  bool become(const char* target) {
    if (rename(path_, target) != 0) return false;
    file_.reset();
    return true;
  }

 private:
  const char* path_;
  Descriptor file_;
};

class Save {
 public:
  Save(const SavePaths& paths, std::string_view content) : paths_(paths), content_(content) {}

  bool run() {
    // One for all waits of a save together.
    for (const Deadline deadline(kLockSeconds); !deadline.passed();) {
      target_.reset(lock_open(paths_.target(), O_RDWR, 0, kLockSeconds));
      if (!target_ && errno != ENOENT) return false;
      if (target_ && !still_named(target_.get(), paths_.target())) continue;
      Temporary temporary(paths_.temporary());
      if (target_) return replace(temporary, deadline);
      if (!temporary.take(deadline)) return false;
      struct stat status;
      if (lstat(paths_.target(), &status) == 0) continue;  // made by another process meanwhile
      return temporary.fill(content_) && temporary.become(paths_.target()) &&
             sync_folder(paths_.folder());
    }
    return fail<bool>(EBUSY);
  }

 private:
  bool replace(Temporary& temporary, const Deadline& deadline) {
    struct stat status;
    if (fstat(target_.get(), &status) != 0) return false;
    if (!S_ISREG(status.st_mode)) return fail<bool>(EINVAL);
    if (!temporary.take(deadline) || !temporary.adopt(status))
      return not_allowed() && write_over(status.st_size);
    if (!temporary.fill(content_)) return false;
    if (!temporary.become(paths_.target()))
      return (not_allowed() || mounted()) && write_over(status.st_size);
    return sync_folder(paths_.folder());
  }

  // Why the folder takes no other file, or not with the target's owner.
  static bool not_allowed() { return errno == EACCES || errno == EPERM || errno == EROFS; }

  // Why a rename refuses a target that is a mount of its own.
  static bool mounted() { return errno == EBUSY || errno == EXDEV; }

  // The room is reserved first, so that a full disk shows before anything is lost. Written over by
  // one call, with blanks in the place of an old end: a process that dies before that is cut off
  // leaves what a reader takes for the new document.
  bool write_over(off_t old_size) {
    const auto size = static_cast<off_t>(content_.size());
    if (size >= old_size)
      return reserve(old_size, size) && write_all(target_.get(), content_) && put_on_disk(size);

    if (old_size >= SSIZE_MAX) return fail<bool>(ENOMEM);
    const auto length = static_cast<size_t>(old_size);
    const OwnedText padded(static_cast<char*>(malloc(length)));
    if (!padded) return false;
    memcpy(padded.get(), content_.data(), content_.size());
    memset(padded.get() + content_.size(), ' ', length - content_.size());
    return write_all(target_.get(), {padded.get(), length}) && put_on_disk(size);
  }

  bool reserve(off_t old_size, off_t size) {
    constexpr auto kCall = [](int fd, off_t length) {
      return fallocate(fd, FALLOC_FL_KEEP_SIZE, 0, length);
    };
    return size == old_size || completed(kCall, target_.get(), size) || errno == EOPNOTSUPP;
  }

  bool put_on_disk(off_t size) {
    return completed(ftruncate, target_.get(), size) && synced(target_.get());
  }

  const SavePaths& paths_;
  std::string_view content_;
  Descriptor target_;
};

}  // namespace

bool replace_file(const char* path, std::string_view content) {
  SavePaths paths;
  return paths.find(path) && Save(paths, content).run();
}

void remove_leftover(const char* path) {
  const ErrnoKeeper keep;
  SavePaths paths;
  if (paths.find(path)) remove_abandoned(paths.temporary(), 0);
}

void remove_unless_held(const char* temporary) {
  const ErrnoKeeper keep;
  if (!remove_abandoned(temporary, 0) && errno != EAGAIN) unlink(temporary);
}

bool is_leftover(std::string_view name) {
  return name.size() > kSavingSuffix.size() + 1 && name.front() == '.' &&
         name.ends_with(kSavingSuffix);
}

}  // namespace fairlead
