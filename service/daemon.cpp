// The daemon's side: a record made, and held by a lock for as long as the daemon lives.
#include "service/daemon.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "base/descriptor.h"
#include "base/errno_keeper.h"
#include "base/fail.h"
#include "base/same_file.h"
#include "fairlead/misc/process.h"
#include "fairlead/service.h"
#include "service/record_layout.h"

namespace {

using namespace fairlead;

constexpr mode_t kRecordMode = 0666;
constexpr int kExclusive = 1;
constexpr int kAttempts = 8;  // each is lost to a stop that removed the record meanwhile

bool write_at(int fd, std::string_view text, size_t offset) {
  while (!text.empty()) {
    const ssize_t written = pwrite(fd, text.data(), text.size(), static_cast<off_t>(offset));
    if (written < 0 && errno != EINTR) return false;
    if (written < 0) continue;
    text.remove_prefix(static_cast<size_t>(written));
    offset += static_cast<size_t>(written);
  }
  return true;
}

std::string_view with_terminator(const char* text) { return {text, strlen(text) + 1}; }

// The first character comes last: without it the object has no name, and a record that a dying
// daemon left half written does not count.
bool write_texts(int fd, const char* object, const char* interface, const char* parameters) {
  std::string_view rest = with_terminator(object);
  rest.remove_prefix(1);
  return write_at(fd, rest, kObjectOffset + 1) &&
         write_at(fd, with_terminator(interface), kInterfaceOffset) &&
         write_at(fd, with_terminator(parameters ? parameters : ""), kParametersOffset) &&
         write_at(fd, {object, 1}, kObjectOffset);
}

bool empty_record(int fd) {
  int result;
  do {
    result = ftruncate(fd, 0);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

bool fill(int fd, const char* object, const char* interface, const char* parameters) {
  if (!empty_record(fd)) return false;
  if (write_texts(fd, object, interface, parameters)) return true;
  const ErrnoKeeper keep;
  empty_record(fd);  // nobody may start the service from half of it
  return false;
}

bool held_elsewhere() { return errno == EAGAIN || errno == EACCES; }

bool still_named(int fd, const char* path) {
  struct stat own, named;
  return fstat(fd, &own) == 0 && stat(path, &named) == 0 && same_file(own, named);
}

// Inherited by programs on purpose: the lock must outlive the start of one.
Descriptor open_record(const char* path, int flags) {
  Descriptor record =
      beside_standard(Descriptor(open(path, O_RDWR | O_CREAT | O_CLOEXEC | flags, kRecordMode)));
  return record && fcntl(record.get(), F_SETFD, 0) == 0 ? std::move(record) : Descriptor();
}

// The record, locked.
Descriptor take(const char* path, int flags) {
  for (int attempts = 0; attempts < kAttempts; ++attempts) {
    Descriptor record = open_record(path, flags);
    if (!record) return {};
    if (!lockfd_set(record.get(), kExclusive, 0, SEEK_SET, 0, 0)) {
      if (held_elsewhere()) errno = EBUSY;
      return {};
    }
    if (still_named(record.get(), path)) return record;
  }
  return fail<Descriptor>(EBUSY);
}

}  // namespace

int fairlead::register_daemon(const char* path, int flags, const char* object,
                              const char* interface, const char* parameters) {
  if (!path || !object || !interface) return fail(EINVAL, -1);
  Descriptor record = take(path, flags);
  if (!record || !fill(record.get(), object, interface, parameters)) return -1;
  return record.release();
}

extern "C" int DaemonRegister(const char* path, const char* object, const char* interface,
                              const char* parameters) {
  return register_daemon(path, 0, object, interface, parameters);
}

extern "C" int DaemonFree(int fd) { return lock_close(fd); }
