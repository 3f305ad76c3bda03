// The functions that stand in for the C library's: each asks for a verdict, then makes the real
// call. 32-bit programs with 64-bit offsets and times call some of them under other names, so every
// name stands here.
#include <dirent.h>
#include <dlfcn.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "support/faults.h"

namespace fairlead_test {
namespace {

// The next definition of a symbol after this program's own.
template <class Function>
Function next_symbol(std::atomic<void*>& known, const char* name) {
  void* address = known.load();
  if (!address) {
    address = dlsym(RTLD_NEXT, name);
    if (!address) abort();
    known = address;
  }
  return reinterpret_cast<Function>(address);
}

template <class Result>
struct Failed {
  static Result value() { return static_cast<Result>(-1); }
};

template <class Record>
struct Failed<Record*> {
  static Record* value() { return nullptr; }
};

template <>
struct Failed<void*> {
  static void* value() { return reinterpret_cast<void*>(-1); }  // MAP_FAILED
};

}  // namespace
}  // namespace fairlead_test

// Opens a stand-in for `symbol`; `real` is the true function inside it.
#define STAND_IN(kind, symbol, result, parameters)                                      \
  extern "C" result stand_in_##symbol parameters __asm__(#symbol);                      \
  extern "C" result stand_in_##symbol parameters {                                      \
    static std::atomic<void*> known;                                                    \
    const auto real = fairlead_test::next_symbol<result(*) parameters>(known, #symbol); \
    [[maybe_unused]] const fairlead_test::Verdict verdict =                             \
        fairlead_test::judge(fairlead_test::Call::kind);                                \
    if (verdict.fails) return fairlead_test::Failed<result>::value();

#define END_STAND_IN }

#define PLAIN(kind, symbol, result, parameters, arguments) \
  STAND_IN(kind, symbol, result, parameters)               \
  return real arguments;                                   \
  END_STAND_IN

// The last, optional argument is handed on whether it was given or not: reading a register or a
// stack slot that nobody filled is harmless where it is not used.
#define OPTIONAL_LAST(kind, symbol, parameters, last, arguments) \
  STAND_IN(kind, symbol, int, parameters)                        \
  va_list rest;                                                  \
  va_start(rest, last);                                          \
  void* const extra = va_arg(rest, void*);                       \
  va_end(rest);                                                  \
  return real arguments;                                         \
  END_STAND_IN

OPTIONAL_LAST(kOpen, open, (const char* path, int flags, ...), flags, (path, flags, extra))
OPTIONAL_LAST(kOpen, open64, (const char* path, int flags, ...), flags, (path, flags, extra))
OPTIONAL_LAST(kOpen, openat, (int at, const char* path, int flags, ...), flags,
              (at, path, flags, extra))
OPTIONAL_LAST(kOpen, openat64, (int at, const char* path, int flags, ...), flags,
              (at, path, flags, extra))
PLAIN(kOpen, creat, int, (const char* path, mode_t mode), (path, mode))
PLAIN(kOpen, creat64, int, (const char* path, mode_t mode), (path, mode))
PLAIN(kOpen, mkstemp, int, (char* path), (path))
PLAIN(kOpen, mkstemp64, int, (char* path), (path))
PLAIN(kOpen, mkostemp, int, (char* path, int flags), (path, flags))
PLAIN(kOpen, mkostemp64, int, (char* path, int flags), (path, flags))
PLAIN(kRead, read, ssize_t, (int fd, void* data, size_t size),
      (fd, data, std::min(size, verdict.at_most)))
PLAIN(kRead, pread, ssize_t, (int fd, void* data, size_t size, long at),
      (fd, data, std::min(size, verdict.at_most), at))
PLAIN(kRead, pread64, ssize_t, (int fd, void* data, size_t size, off64_t at),
      (fd, data, std::min(size, verdict.at_most), at))
PLAIN(kWrite, write, ssize_t, (int fd, const void* data, size_t size),
      (fd, data, std::min(size, verdict.at_most)))
PLAIN(kWrite, pwrite, ssize_t, (int fd, const void* data, size_t size, long at),
      (fd, data, std::min(size, verdict.at_most), at))
PLAIN(kWrite, pwrite64, ssize_t, (int fd, const void* data, size_t size, off64_t at),
      (fd, data, std::min(size, verdict.at_most), at))
PLAIN(kFsync, fsync, int, (int fd), (fd))
PLAIN(kFsync, fdatasync, int, (int fd), (fd))
PLAIN(kRename, rename, int, (const char* from, const char* to), (from, to))
PLAIN(kRename, renameat, int, (int from_at, const char* from, int to_at, const char* to),
      (from_at, from, to_at, to))
PLAIN(kRename, renameat2, int,
      (int from_at, const char* from, int to_at, const char* to, unsigned flags),
      (from_at, from, to_at, to, flags))
PLAIN(kLink, link, int, (const char* from, const char* to), (from, to))
PLAIN(kLink, linkat, int, (int from_at, const char* from, int to_at, const char* to, int flags),
      (from_at, from, to_at, to, flags))
PLAIN(kLink, symlink, int, (const char* target, const char* path), (target, path))
PLAIN(kUnlink, unlink, int, (const char* path), (path))
PLAIN(kUnlink, unlinkat, int, (int at, const char* path, int flags), (at, path, flags))
PLAIN(kTruncate, truncate, int, (const char* path, long size), (path, size))
PLAIN(kTruncate, truncate64, int, (const char* path, off64_t size), (path, size))
PLAIN(kTruncate, ftruncate, int, (int fd, long size), (fd, size))
PLAIN(kTruncate, ftruncate64, int, (int fd, off64_t size), (fd, size))
PLAIN(kMkdir, mkdir, int, (const char* path, mode_t mode), (path, mode))
PLAIN(kMkdir, mkdirat, int, (int at, const char* path, mode_t mode), (at, path, mode))
PLAIN(kRmdir, rmdir, int, (const char* path), (path))
PLAIN(kStat, stat, int, (const char* path, void* status), (path, status))
PLAIN(kStat, stat64, int, (const char* path, void* status), (path, status))
PLAIN(kStat, lstat, int, (const char* path, void* status), (path, status))
PLAIN(kStat, lstat64, int, (const char* path, void* status), (path, status))
PLAIN(kStat, fstat, int, (int fd, void* status), (fd, status))
PLAIN(kStat, fstat64, int, (int fd, void* status), (fd, status))
PLAIN(kStat, fstatat, int, (int at, const char* path, void* status, int flags),
      (at, path, status, flags))
PLAIN(kStat, fstatat64, int, (int at, const char* path, void* status, int flags),
      (at, path, status, flags))
PLAIN(kMode, chmod, int, (const char* path, mode_t mode), (path, mode))
PLAIN(kMode, fchmod, int, (int fd, mode_t mode), (fd, mode))
PLAIN(kOwner, chown, int, (const char* path, uid_t user, gid_t group), (path, user, group))
PLAIN(kOwner, fchown, int, (int fd, uid_t user, gid_t group), (fd, user, group))
PLAIN(kClose, close, int, (int fd), (fd))
PLAIN(kDup, dup, int, (int fd), (fd))
PLAIN(kDup, dup2, int, (int from, int to), (from, to))
PLAIN(kDup, dup3, int, (int from, int to, int flags), (from, to, flags))
OPTIONAL_LAST(kFcntl, fcntl, (int fd, int command, ...), command, (fd, command, extra))
OPTIONAL_LAST(kFcntl, fcntl64, (int fd, int command, ...), command, (fd, command, extra))
PLAIN(kFlock, flock, int, (int fd, int operation), (fd, operation))
PLAIN(kMmap, mmap, void*, (void* at, size_t size, int access, int flags, int fd, long from),
      (at, size, access, flags, fd, from))
PLAIN(kMmap, mmap64, void*, (void* at, size_t size, int access, int flags, int fd, off64_t from),
      (at, size, access, flags, fd, from))
PLAIN(kFopen, fopen, FILE*, (const char* path, const char* mode), (path, mode))
PLAIN(kFopen, fopen64, FILE*, (const char* path, const char* mode), (path, mode))
PLAIN(kFopen, fdopen, FILE*, (int fd, const char* mode), (fd, mode))
PLAIN(kFclose, fclose, int, (FILE * file), (file))
PLAIN(kOpendir, opendir, DIR*, (const char* path), (path))
PLAIN(kOpendir, fdopendir, DIR*, (int fd), (fd))
PLAIN(kFork, fork, pid_t, (), ())
PLAIN(kWaitpid, waitpid, pid_t, (pid_t pid, int* status, int options), (pid, status, options))
PLAIN(kKill, kill, int, (pid_t pid, int signal_number), (pid, signal_number))
PLAIN(kPipe, pipe, int, (int* ends), (ends))
PLAIN(kPipe, pipe2, int, (int* ends, int flags), (ends, flags))
PLAIN(kSocket, socket, int, (int family, int type, int protocol), (family, type, protocol))
PLAIN(kSocketpair, socketpair, int, (int family, int type, int protocol, int* ends),
      (family, type, protocol, ends))
PLAIN(kConnect, connect, int, (int fd, const sockaddr* address, socklen_t size),
      (fd, address, size))
PLAIN(kSelect, select, int, (int count, void* in, void* out, void* error, void* limit),
      (count, in, out, error, limit))
PLAIN(kSelect, pselect, int,
      (int count, void* in, void* out, void* error, const void* limit, const void* mask),
      (count, in, out, error, limit, mask))
PLAIN(kSelect, poll, int, (pollfd * files, nfds_t count, int limit), (files, count, limit))
PLAIN(kSelect, ppoll, int, (pollfd * files, nfds_t count, const void* limit, const sigset_t* mask),
      (files, count, limit, mask))
OPTIONAL_LAST(kIoctl, ioctl, (int fd, unsigned long request, ...), request, (fd, request, extra))
PLAIN(kIoctl, tcgetattr, int, (int fd, void* line), (fd, line))
PLAIN(kIoctl, tcsetattr, int, (int fd, int when, const void* line), (fd, when, line))
PLAIN(kIoctl, tcflush, int, (int fd, int queue), (fd, queue))
PLAIN(kMask, sigprocmask, int, (int how, const sigset_t* set, sigset_t* former), (how, set, former))
PLAIN(kSleep, nanosleep, int, (const void* time, void* left), (time, left))

#if __SIZEOF_POINTER__ == 4  // the names of the calls with a 64-bit time
PLAIN(kStat, __stat64_time64, int, (const char* path, void* status), (path, status))
PLAIN(kStat, __lstat64_time64, int, (const char* path, void* status), (path, status))
PLAIN(kStat, __fstat64_time64, int, (int fd, void* status), (fd, status))
PLAIN(kStat, __fstatat64_time64, int, (int at, const char* path, void* status, int flags),
      (at, path, status, flags))
OPTIONAL_LAST(kFcntl, __fcntl_time64, (int fd, int command, ...), command, (fd, command, extra))
OPTIONAL_LAST(kIoctl, __ioctl_time64, (int fd, unsigned long request, ...), request,
              (fd, request, extra))
PLAIN(kSelect, __select64, int, (int count, void* in, void* out, void* error, void* limit),
      (count, in, out, error, limit))
PLAIN(kSelect, __pselect64, int,
      (int count, void* in, void* out, void* error, const void* limit, const void* mask),
      (count, in, out, error, limit, mask))
PLAIN(kSelect, __ppoll64, int,
      (pollfd * files, nfds_t count, const void* limit, const sigset_t* mask),
      (files, count, limit, mask))
PLAIN(kSleep, __nanosleep64, int, (const void* time, void* left), (time, left))
#endif

#if defined(__x86_64__) || defined(__i386__)
// A function that calls vfork may not return in the child, so this one asks where to go and jumps
// there with the caller's stack as it was.
extern "C" __attribute__((visibility("hidden"))) pid_t refuse_vfork() { return -1; }

extern "C" __attribute__((visibility("hidden"))) void* choose_vfork() {
  static std::atomic<void*> known;
  void* const real =
      reinterpret_cast<void*>(fairlead_test::next_symbol<pid_t (*)()>(known, "vfork"));
  const bool refused = fairlead_test::judge(fairlead_test::Call::kFork).fails;
  return refused ? reinterpret_cast<void*>(refuse_vfork) : real;
}

#ifdef __x86_64__
__asm__(
    ".text\n.globl vfork\n.type vfork, @function\nvfork:\n"
    "subq $8, %rsp\ncall choose_vfork\naddq $8, %rsp\njmp *%rax\n.size vfork, .-vfork\n");
#else
__asm__(
    ".text\n.globl vfork\n.type vfork, @function\nvfork:\n"
    "subl $12, %esp\ncall choose_vfork\naddl $12, %esp\njmp *%eax\n.size vfork, .-vfork\n");
#endif
#endif
