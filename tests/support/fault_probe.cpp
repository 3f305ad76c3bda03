// Makes each call the way the library does, with the same 64-bit offsets and times.
#include "support/fault_probe.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using fairlead_test::Call;

namespace {

constexpr char kFile[] = "/tmp/probe";

// A descriptor that takes most calls; opened before a fault is armed, by its first use in a round
// without one.
int file() {
  static const int fd = open(kFile, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  return fd;
}

bool closed(int fd) {
  if (fd < 0) return false;
  close(fd);
  return true;
}

bool freed(void* block) {
  __asm__ volatile("" : "+r"(block));  // or the compiler drops an allocation nobody uses
  const bool made = block != nullptr;
  free(block);
  return made;
}

bool reaped(pid_t pid) {
  if (pid == 0) _exit(0);
  if (pid < 0) return false;
  return waitpid(pid, nullptr, 0) == pid;
}

bool done(int result) { return result == 0; }

timeval no_time() { return {0, 0}; }

constexpr Probe kProbes[] = {
    {Call::kMalloc, "malloc", [] { return freed(malloc(10)); }},
    {Call::kMalloc, "calloc", [] { return freed(calloc(1, 10)); }},
    {Call::kMalloc, "realloc", [] { return freed(realloc(nullptr, 10)); }},
    {Call::kMalloc, "strdup", [] { return freed(strdup(kFile)); }},
    {Call::kMalloc, "strndup", [] { return freed(strndup(kFile, 3)); }},
    {Call::kOpen, "open", [] { return closed(open(kFile, O_RDONLY | O_CLOEXEC)); }},
    {Call::kOpen, "openat", [] { return closed(openat(AT_FDCWD, kFile, O_RDONLY | O_CLOEXEC)); }},
    {Call::kOpen, "creat", [] { return closed(creat("/tmp/created", 0600)); }},
    {Call::kOpen, "mkstemp",
     [] {
       char path[] = "/tmp/made.XXXXXX";
       return closed(mkstemp(path));
     }},
    {Call::kOpen, "mkostemp",
     [] {
       char path[] = "/tmp/made.XXXXXX";
       return closed(mkostemp(path, O_CLOEXEC));
     }},
    {Call::kRead, "read",
     [] {
       char byte;
       return read(file(), &byte, 1) >= 0;
     }},
    {Call::kRead, "pread",
     [] {
       char byte;
       return pread(file(), &byte, 1, 0) >= 0;
     }},
    {Call::kWrite, "write", [] { return write(file(), "x", 1) == 1; }},
    {Call::kWrite, "pwrite", [] { return pwrite(file(), "x", 1, 0) == 1; }},
    {Call::kFsync, "fsync", [] { return done(fsync(file())); }},
    {Call::kFsync, "fdatasync", [] { return done(fdatasync(file())); }},
    {Call::kRename, "rename", [] { return done(rename(kFile, kFile)); }},
    {Call::kRename, "renameat", [] { return done(renameat(AT_FDCWD, kFile, AT_FDCWD, kFile)); }},
    {Call::kLink, "link", [] { return done(link(kFile, "/tmp/link")); }},
    {Call::kLink, "linkat",
     [] { return done(linkat(AT_FDCWD, kFile, AT_FDCWD, "/tmp/linkat", 0)); }},
    {Call::kLink, "symlink", [] { return done(symlink(kFile, "/tmp/symlink")); }},
    {Call::kUnlink, "unlink", [] { return done(unlink("/tmp/link")); }},
    {Call::kUnlink, "unlinkat", [] { return done(unlinkat(AT_FDCWD, "/tmp/linkat", 0)); }},
    {Call::kTruncate, "truncate", [] { return done(truncate(kFile, 4)); }},
    {Call::kTruncate, "ftruncate", [] { return done(ftruncate(file(), 4)); }},
    {Call::kMkdir, "mkdir", [] { return done(mkdir("/tmp/folder", 0700)); }},
    {Call::kMkdir, "mkdirat", [] { return done(mkdirat(AT_FDCWD, "/tmp/other", 0700)); }},
    {Call::kRmdir, "rmdir", [] { return done(rmdir("/tmp/folder")); }},
    {Call::kStat, "stat",
     [] {
       struct stat status;
       return done(stat(kFile, &status));
     }},
    {Call::kStat, "lstat",
     [] {
       struct stat status;
       return done(lstat(kFile, &status));
     }},
    {Call::kStat, "fstat",
     [] {
       struct stat status;
       return done(fstat(file(), &status));
     }},
    {Call::kStat, "fstatat",
     [] {
       struct stat status;
       return done(fstatat(AT_FDCWD, kFile, &status, 0));
     }},
    {Call::kMode, "chmod", [] { return done(chmod(kFile, 0600)); }},
    {Call::kMode, "fchmod", [] { return done(fchmod(file(), 0600)); }},
    {Call::kOwner, "chown", [] { return done(chown(kFile, getuid(), getgid())); }},
    {Call::kOwner, "fchown", [] { return done(fchown(file(), getuid(), getgid())); }},
    {Call::kDup, "dup", [] { return closed(dup(file())); }},
    {Call::kDup, "dup2", [] { return closed(dup2(file(), 99)); }},
    {Call::kDup, "dup3", [] { return closed(dup3(file(), 99, O_CLOEXEC)); }},
    {Call::kFcntl, "fcntl", [] { return fcntl(file(), F_GETFD) >= 0; }},
    {Call::kFlock, "flock", [] { return done(flock(file(), LOCK_EX | LOCK_NB)); }},
    {Call::kMmap, "mmap",
     [] {
       void* const at = mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
       return at != MAP_FAILED && done(munmap(at, 4096));
     }},
    {Call::kFopen, "fopen",
     [] {
       FILE* const stream = fopen(kFile, "re");
       return stream && done(fclose(stream));
     }},
    {Call::kFclose, "fclose",
     [] {
       FILE* const stream = fopen(kFile, "re");
       return stream && done(fclose(stream));
     }},
    {Call::kOpendir, "opendir",
     [] {
       DIR* const folder = opendir("/tmp");
       return folder && done(closedir(folder));
     }},
    {Call::kFork, "fork", [] { return reaped(fork()); }},
#if defined(__x86_64__) || defined(__i386__)
    {Call::kFork, "vfork", [] { return reaped(vfork()); }},
#endif
    {Call::kWaitpid, "waitpid",
     [] { return waitpid(-1, nullptr, WNOHANG) >= 0 || errno == ECHILD; }},
    {Call::kKill, "kill", [] { return done(kill(getpid(), 0)); }},
    {Call::kPipe, "pipe",
     [] {
       int ends[2];
       return done(pipe(ends)) && closed(ends[0]) && closed(ends[1]);
     }},
    {Call::kPipe, "pipe2",
     [] {
       int ends[2];
       return done(pipe2(ends, O_CLOEXEC)) && closed(ends[0]) && closed(ends[1]);
     }},
    {Call::kSocket, "socket",
     [] { return closed(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)); }},
    {Call::kSocketpair, "socketpair",
     [] {
       int ends[2];
       return done(socketpair(AF_UNIX, SOCK_STREAM, 0, ends)) && closed(ends[0]) && closed(ends[1]);
     }},
    {Call::kConnect, "connect",
     [] {
       const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
       const sockaddr unspecified = {};
       const bool connected = done(connect(fd, &unspecified, sizeof unspecified));
       const int error = errno;
       close(fd);
       errno = error;
       return connected;
     }},
    {Call::kSelect, "select",
     [] {
       timeval limit = no_time();
       return done(select(0, nullptr, nullptr, nullptr, &limit));
     }},
    {Call::kSelect, "pselect",
     [] {
       const timespec limit = {0, 0};
       return done(pselect(0, nullptr, nullptr, nullptr, &limit, nullptr));
     }},
    {Call::kIoctl, "ioctl",
     [] {
       int waiting;
       return done(ioctl(file(), FIONREAD, &waiting));
     }},
    {Call::kIoctl, "tcgetattr",
     [] {
       termios line;
       return done(tcgetattr(file(), &line)) || errno == ENOTTY;
     }},
};

}  // namespace

extern "C" const Probe* fault_probes(size_t* count) {
  *count = sizeof kProbes / sizeof kProbes[0];
  return kProbes;
}
