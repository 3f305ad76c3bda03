// Whole files compared and copied, in blocks.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

#include "base/descriptor.h"
#include "base/fail.h"
#include "base/same_file.h"
#include "fairlead/misc/files.h"
#include "misc/locked_file.h"

namespace {

using fairlead::Descriptor;
using fairlead::fail;
using fairlead::LockedFile;
using fairlead::same_file;

constexpr size_t kBlockSize = 4096;
constexpr mode_t kPermissions = 0777;

ssize_t read_block(int fd, char* block, size_t size) {
  ssize_t got;
  do {
    got = read(fd, block, size);
  } while (got < 0 && errno == EINTR);
  return got;
}

ssize_t write_block(int fd, const char* block, size_t size) {
  ssize_t written;
  do {
    written = write(fd, block, size);
  } while (written < 0 && errno == EINTR);
  return written;
}

// Fills the block as far as the file goes.
ssize_t read_full(int fd, char* block, size_t size) {
  size_t filled = 0;
  while (filled < size) {
    const ssize_t got = read_block(fd, block + filled, size - filled);
    if (got < 0) return -1;
    if (got == 0) break;
    filled += static_cast<size_t>(got);
  }
  return static_cast<ssize_t>(filled);
}

// Nothing is left to compare when both are read to the size they had, found equal or not.
int compare(int a, int b, off_t size) {
  char block_a[kBlockSize], block_b[kBlockSize];
  int result = 0;
  while (size > 0) {
    const auto wanted = static_cast<ssize_t>(std::min<off_t>(size, kBlockSize));
    if (read_full(a, block_a, static_cast<size_t>(wanted)) != wanted ||
        read_full(b, block_b, static_cast<size_t>(wanted)) != wanted)
      return -1;
    if (memcmp(block_a, block_b, static_cast<size_t>(wanted)) != 0) result = 1;
    size -= wanted;
  }
  return result;
}

// A count of bytes as a result; it stops where int ends.
int to_result(off_t count) { return static_cast<int>(std::min<off_t>(count, INT_MAX)); }

int copy_blocks(int source, int destination) {
  char block[kBlockSize];
  off_t total = 0;
  for (;;) {
    const ssize_t got = read_block(source, block, sizeof block);
    if (got < 0) return -1;
    if (got == 0) return to_result(total);
    const ssize_t written = write_block(destination, block, static_cast<size_t>(got));
    if (written < 0) return -1;
    if (written < got) return fail(ENOSPC, -1);  // a short write tells no reason of its own
    total += written;
  }
}

}  // namespace

extern "C" int file_cmp(const char* a, const char* b) {
  if (!a || !*a || !b || !*b) return fail(EINVAL, -1);
  LockedFile file_a(a, O_RDONLY | O_NONBLOCK);
  if (!file_a) return -1;
  LockedFile file_b(b, O_RDONLY | O_NONBLOCK);
  if (!file_b) return -1;
  struct stat status_a, status_b;
  if (fstat(file_a.get(), &status_a) != 0 || fstat(file_b.get(), &status_b) != 0) return -1;
  if (status_a.st_size != status_b.st_size) return -1;
  return compare(file_a.get(), file_b.get(), status_a.st_size);
}

extern "C" int file_copy(const char* source, const char* destination) {
  if (!source || !destination) return fail(EINVAL, -1);
  struct stat status_from, status_to;
  const Descriptor from(open(source, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!from || fstat(from.get(), &status_from) != 0) return -1;
  if (S_ISDIR(status_from.st_mode)) return fail(EISDIR, -1);  // before the destination is emptied

  const mode_t mode = status_from.st_mode & kPermissions;
  const Descriptor to(open(destination, O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, mode));
  if (!to || fstat(to.get(), &status_to) != 0) return -1;
  // Emptied only now: a file copied onto itself would be lost.
  if (same_file(status_from, status_to)) return to_result(status_from.st_size);
  if (S_ISREG(status_to.st_mode) && ftruncate(to.get(), 0) != 0) return -1;
  return copy_blocks(from.get(), to.get());
}
