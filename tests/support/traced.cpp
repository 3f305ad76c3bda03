// Follows a child and its children from system call to system call.
#include "support/traced.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <map>

namespace fairlead_test {
namespace {

constexpr int kCallStop = SIGTRAP | 0x80;

template <class... Arguments>
long control(int request, Arguments... arguments) {
  return ptrace(static_cast<__ptrace_request>(request), arguments...);
}

#if defined(__x86_64__)
constexpr bool kCanFail = true;
constexpr size_t kNumberRegister = offsetof(user, regs.orig_rax);
constexpr size_t kResultRegister = offsetof(user, regs.rax);
#elif defined(__i386__)
constexpr bool kCanFail = true;
constexpr size_t kNumberRegister = offsetof(user, regs.orig_eax);
constexpr size_t kResultRegister = offsetof(user, regs.eax);
#else
constexpr bool kCanFail = false;
constexpr size_t kNumberRegister = 0;
constexpr size_t kResultRegister = 0;
#endif

// The test may have handlers that interrupt it.
pid_t wait_for(pid_t pid, int& status) {
  pid_t found;
  do {
    found = waitpid(pid, &status, __WALL);
  } while (found < 0 && errno == EINTR);
  return found;
}

class Tracer {
 public:
  Tracer(pid_t main, const TracePlan& plan, Traced& seen) : main_(main), plan_(plan), seen_(seen) {}

  // Until the action is over or its process dead; nobody is traced then.
  void run() {
    while (!over_ && step()) continue;
    while (!processes_.empty()) {
      const pid_t pid = processes_.begin()->first;
      processes_.erase(pid);
      let_go(pid);
    }
  }

 private:
  struct Process {
    CallMade call = {};
    bool failing = false;
  };

  bool step() {
    siginfo_t news = {};
    if (waitid(P_ALL, 0, &news, WEXITED | WSTOPPED | WNOWAIT | __WALL) != 0) return errno == EINTR;
    const pid_t pid = news.si_pid;
    const bool ended =
        news.si_code == CLD_EXITED || news.si_code == CLD_KILLED || news.si_code == CLD_DUMPED;
    if (pid == main_ && ended) return false;  // left for whoever waits for the child
    int status = 0;
    wait_for(pid, status);
    if (WIFSTOPPED(status))
      stopped(pid, status);
    else
      processes_.erase(pid);
    return true;
  }

  void stopped(pid_t pid, int status) {
    const int signal = WSTOPSIG(status), event = status >> 16;
    if (signal == kCallStop) return at_call(pid);
    if (event == PTRACE_EVENT_EXEC) {
      processes_.erase(pid);
      control(PTRACE_DETACH, pid, nullptr, nullptr);
    } else if (event != 0) {
      note_child(pid, event);
      if (pid != main_) processes_[pid];
      go_on(pid, 0);
    } else if (pid == main_ && signal == SIGSTOP) {
      mark();
    } else {
      go_on(pid, signal);
    }
  }

  // A new child stops by itself, perhaps only when nobody listens any more.
  void note_child(pid_t parent, int event) {
    if (event != PTRACE_EVENT_FORK && event != PTRACE_EVENT_VFORK && event != PTRACE_EVENT_CLONE)
      return;
    unsigned long child = 0;
    control(PTRACE_GETEVENTMSG, parent, nullptr, &child);
    if (child != 0) processes_[static_cast<pid_t>(child)];
  }

  // The action's process says so before the action and after it.
  void mark() {
    over_ = begun_;
    begun_ = true;
    if (over_)
      control(PTRACE_DETACH, main_, nullptr, nullptr);
    else
      go_on(main_, 0);
  }

  void at_call(pid_t pid) {
    __ptrace_syscall_info info = {};
    control(PTRACE_GET_SYSCALL_INFO, pid, sizeof info, &info);
    Process& process = processes_[pid];
    if (info.op == PTRACE_SYSCALL_INFO_ENTRY)
      entered(pid, process, info);
    else if (info.op == PTRACE_SYSCALL_INFO_EXIT)
      left(pid, process, info.exit.rval);
    if (plan_.signal && ++seen_.stops == plan_.nth) strike(pid, process);
    if (!plan_.signal && info.op == PTRACE_SYSCALL_INFO_ENTRY) ++seen_.stops;
    go_on(pid, 0);
  }

  // The release of a lock, which never fails.
  static bool unlocks(pid_t pid, const CallMade& call) {
    if (call.number == SYS_flock) return call.arguments[1] == LOCK_UN;
#ifdef SYS_fcntl64
    if (call.number != SYS_fcntl && call.number != SYS_fcntl64) return false;
#else
    if (call.number != SYS_fcntl) return false;
#endif
    const auto command = static_cast<int>(call.arguments[1]);
    if (command != F_SETLK && command != F_SETLKW) return false;
    const auto type = static_cast<short>(control(PTRACE_PEEKDATA, pid, call.arguments[2], nullptr));
    return type == F_UNLCK;
  }

  void entered(pid_t pid, Process& process, const __ptrace_syscall_info& info) {
    process.call = {pid, static_cast<long>(info.entry.nr), {}, 0};
    for (size_t i = 0; i < 6; ++i) process.call.arguments[i] = info.entry.args[i];
    if (plan_.signal || !may_fail(process.call.number, plan_.error)) return;
    if (plan_.error && unlocks(pid, process.call)) return;
    if (++calls_ != plan_.nth) return;
    seen_.met = process.failing = true;
    seen_.number = process.call.number;
    if (process.call.number != SYS_close) control(PTRACE_POKEUSER, pid, kNumberRegister, -1L);
  }

  void left(pid_t pid, Process& process, int64_t result) {
    process.call.result = result;
    if (process.failing) {
      control(PTRACE_POKEUSER, pid, kResultRegister, static_cast<long>(-plan_.error));
      process.call.result = -plan_.error;
      process.failing = false;
    }
    if (plan_.watch) plan_.watch(process.call);
  }

  void strike(pid_t pid, const Process& process) {
    seen_.met = true;
    seen_.number = process.call.number;
    kill(plan_.to_caller ? main_ : pid, plan_.signal);
  }

  void go_on(pid_t pid, int signal) const {
    const int how = begun_ ? PTRACE_SYSCALL : PTRACE_CONT;
    control(how, pid, nullptr, reinterpret_cast<void*>(static_cast<long>(signal)));
  }

  void let_go(pid_t pid) {
    if (pid == main_ || control(PTRACE_INTERRUPT, pid, nullptr, nullptr) != 0) return;
    int status = 0;
    if (wait_for(pid, status) != pid || !WIFSTOPPED(status)) return;
    note_child(pid, status >> 16);
    const bool signalled = status >> 16 == 0 && WSTOPSIG(status) != kCallStop;
    control(PTRACE_DETACH, pid, nullptr,
            reinterpret_cast<void*>(static_cast<long>(signalled ? WSTOPSIG(status) : 0)));
  }

  pid_t main_;
  const TracePlan& plan_;
  Traced& seen_;
  std::map<pid_t, Process> processes_;
  int calls_ = 0;
  bool begun_ = false;
  bool over_ = false;
};

bool is_one_of(long number, std::initializer_list<long> numbers) {
  return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

}  // namespace

bool can_trace() {
  static const bool can = kCanFail && run_traced(
                                          {}, [] { getppid(); },
                                          [] {
                                            return 42;
                                          }).stops > 0;
  return can;
}

bool may_fail(long number, int error) {
  if (error == 0) return true;
  if (is_one_of(number, {SYS_exit,           SYS_exit_group,    SYS_rt_sigaction,
                         SYS_rt_sigprocmask, SYS_rt_sigreturn,  SYS_restart_syscall,
                         SYS_getpid,         SYS_getppid,       SYS_gettid,
                         SYS_getuid,         SYS_geteuid,       SYS_getgid,
                         SYS_getegid,        SYS_umask,         SYS_brk,
                         SYS_munmap,         SYS_mprotect,      SYS_madvise,
                         SYS_futex,          SYS_setitimer,     SYS_set_robust_list,
                         SYS_rseq,           SYS_rt_sigpending, SYS_clock_gettime,
                         SYS_getrandom,      SYS_tgkill}))
    return false;
#ifdef __i386__
  if (is_one_of(number, {SYS_sigreturn, SYS_clock_gettime64, SYS_waitpid})) return false;
#endif
  if (is_one_of(number, {SYS_wait4, SYS_waitid, SYS_nanosleep, SYS_clock_nanosleep}))
    return error == EINTR;
  if (is_one_of(number, {SYS_clone, SYS_fork, kVforkCall, SYS_mmap}))
    return error == ENOMEM || error == EAGAIN;
  if (is_one_of(number, {SYS_close, SYS_kill})) return error == EINTR || error == EIO;
  return true;
}

Traced run_traced(const TracePlan& plan, const std::function<void()>& action,
                  const std::function<int()>& then, const std::function<void()>& first) {
  Traced seen;
  Gate go;
  Child child([&] {
    if (!go.wait()) return 99;
    first();
    kill(getpid(), SIGSTOP);
    action();
    kill(getpid(), SIGSTOP);
    return then();
  });
  constexpr long kFollow = PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK |
                           PTRACE_O_TRACECLONE | PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL;
  if (control(PTRACE_SEIZE, child.pid(), nullptr, kFollow) != 0) return seen;
  go.open();
  Tracer(child.pid(), plan, seen).run();
  seen.ended = child.wait();
  return seen;
}

}  // namespace fairlead_test
