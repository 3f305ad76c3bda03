// Whole files compared and copied, in blocks.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/descriptor.h"
#include "base/fail.h"
#include "fairlead/misc/files.h"
#include "misc/locked_file.h"

namespace {

using fairlead::Descriptor;
using fairlead::fail;
using fairlead::LockedFile;

constexpr size_t kBlockSize = 4096;
constexpr mode_t kCopyMode = 0644;

ssize_t read_block(int fd, char* block, size_t size) {
  ssize_t got;
  do {
    got = read(fd, block, size);
  } while (got < 0 && errno == EINTR);
  return got;
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

bool same_file(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

int compare(int a, int b, off_t size) {
  char block_a[kBlockSize], block_b[kBlockSize];
  int result = 0;
  while (size > 0) {
    const ssize_t got = read_full(a, block_a, kBlockSize);
    if (got < 1 || read_full(b, block_b, kBlockSize) != got) return -1;
    if (memcmp(block_a, block_b, static_cast<size_t>(got)) != 0) result = 1;
    size -= got;
  }
  return result;
}

int copy_blocks(int source, int destination) {
  char block[kBlockSize];
  int total = 0;
  for (;;) {
    const ssize_t got = read_block(source, block, sizeof block);
    if (got < 0) return -1;
    if (got == 0) return total;
    if (write(destination, block, static_cast<size_t>(got)) != got) return -1;
    total += static_cast<int>(got);
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
  Descriptor from(open(source, O_RDONLY | O_CLOEXEC));
  if (!from) return -1;
  struct stat status_from, status_to;
  if (fstat(from.get(), &status_from) != 0) return -1;
  // Opening the destination empties it: a file copied onto itself would be lost.
  if (stat(destination, &status_to) == 0 && same_file(status_from, status_to))
    return static_cast<int>(status_from.st_size);

  Descriptor to(open(destination, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kCopyMode));
  return to ? copy_blocks(from.get(), to.get()) : -1;
}
