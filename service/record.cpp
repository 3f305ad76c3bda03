// Looks at records, and trusts nothing in them.
#include "service/record.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "base/same_file.h"
#include "fairlead/misc/process.h"
#include "log/out_of_memory.h"
#include "service/log_source.h"
#include "service/own_descriptors.h"

namespace fairlead {
namespace {

// A query in the way of which exclusive locks stand alone: those who wait for a daemon's end take
// shared ones.
constexpr int kShared = 0;

// F_OFD_GETLK, which not every C library names; the kernel has one number for all processors.
constexpr int kLockSeenByOpenFile = 36;

// Asked in the name of the open file instead of the process, so that the process' own lock shows.
bool locked_by_this_process(int fd) {
  struct flock lock = {};
  lock.l_type = F_RDLCK;
  lock.l_whence = SEEK_SET;
  return fcntl(fd, kLockSeenByOpenFile, &lock) == 0 && lock.l_type != F_UNLCK &&
         lock.l_pid == getpid();
}

std::string_view field(const char* content, size_t size, size_t offset, size_t room) {
  if (size <= offset) return {};
  const char* begin = content + offset;
  return {begin, strnlen(begin, std::min(room, size - offset))};
}

}  // namespace

pid_t lock_holder(int fd) { return lockfd_get(fd, kShared, 0, SEEK_SET, 0); }

int own_lock(const char* path) {
  struct stat record;
  if (!path || stat(path, &record) != 0) return -1;
  int found = -1;
  visit_descriptors([&](int fd) {
    struct stat status;
    if (fstat(fd, &status) != 0 || !same_file(record, status)) return false;
    if (!locked_by_this_process(fd)) return false;
    found = fd;
    return true;
  });
  return found;
}

OpenRecord::OpenRecord(const char* path) {
  if (!path) return;
  own_ = own_lock(path);
  if (own_ < 0) file_.reset(open(path, O_RDONLY | kAsItStands | O_CLOEXEC));
}

pid_t OpenRecord::holder() const { return own_ >= 0 ? getpid() : lock_holder(file_.get()); }

bool RecordTexts::read(int fd) {
  struct stat status;
  if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) return false;
  // Compared before it is cut to 32 bits, where a size_t has no more.
  if (status.st_size > static_cast<off_t>(kLongestRecord)) return false;
  const auto size = static_cast<size_t>(status.st_size);
  if (size < kShortestRecord || !read_whole(fd, size)) return false;

  const char* content = content_.get();
  object_.restart().add(field(content, size, kObjectOffset, kNameRoom));
  interface_.restart().add(field(content, size, kInterfaceOffset, kNameRoom));
  parameters_ = content_.get() + std::min(size, kParametersOffset);
  return object_.length() > 0;
}

// Less than was there a moment ago: the record is just being emptied.
bool RecordTexts::read_whole(int fd, size_t size) {
  content_.reset(static_cast<char*>(malloc(size + 1)));
  if (!content_) return out_of_memory<bool>(kServiceSource);
  ssize_t got;
  do {
    got = pread(fd, content_.get(), size, 0);
  } while (got < 0 && errno == EINTR);
  content_.get()[size] = '\0';
  return got == static_cast<ssize_t>(size);
}

}  // namespace fairlead
