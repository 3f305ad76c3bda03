// Reads the state of this process from /proc and the system calls that tell it.
#include "support/census.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fairlead_test {
namespace {

// Flags that say nothing: one that the C library sets for itself, and one without effect, which old
// kernels and emulators keep (SA_INTERRUPT).
constexpr int kMeaningless = 0x04000000 | 0x20000000;

// Names in a folder of /proc that are numbers; `own` is the descriptor of the listing itself.
std::set<int> numbers_in(const char* path, int& own) {
  std::set<int> found;
  DIR* const folder = opendir(path);
  if (!folder) return found;
  own = dirfd(folder);
  while (const dirent* entry = readdir(folder))
    if (entry->d_name[0] >= '0' && entry->d_name[0] <= '9') found.insert(atoi(entry->d_name));
  closedir(folder);
  return found;
}

bool is_default_value_store(const std::string& target) {
  return target.rfind("/tmp/.var/gvalue/default", 0) == 0;
}

std::map<int, std::string> list_descriptors() {
  std::map<int, std::string> found;
  int own = -1;
  for (const int fd : numbers_in("/proc/self/fd", own)) {
    if (fd == own) continue;
    char target[512];
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    const ssize_t length = readlink(link.c_str(), target, sizeof target);
    if (length < 0) continue;
    const std::string text(target, static_cast<size_t>(length));
    if (is_default_value_store(text)) continue;
    found[fd] = text + (fcntl(fd, F_GETFD) & FD_CLOEXEC ? ", close-on-exec" : "");
  }
  return found;
}

// From the process list: a child that ended and was not reaped stands there too.
std::map<int, std::string> list_children() {
  std::map<int, std::string> found;
  int own = -1;
  for (const int pid : numbers_in("/proc", own)) {
    std::string line;
    std::getline(std::ifstream("/proc/" + std::to_string(pid) + "/stat"), line);
    // "PID (NAME) STATE PARENT ...", where a name may hold blanks and braces.
    const size_t open = line.find('('), close = line.rfind(')');
    if (open == std::string::npos || close == std::string::npos) continue;
    std::istringstream rest(line.substr(close + 1));
    std::string state;
    int parent = 0;
    rest >> state >> parent;
    if (parent == getpid()) found[pid] = line.substr(open, close - open + 1) + " " + state;
  }
  return found;
}

std::set<int> signals_in(const sigset_t& mask) {
  std::set<int> numbers;
  for (int number = 1; number < NSIG; ++number)
    if (sigismember(&mask, number) == 1) numbers.insert(number);
  return numbers;
}

std::set<int> list_blocked() {
  sigset_t mask;
  sigprocmask(SIG_SETMASK, nullptr, &mask);
  return signals_in(mask);
}

std::map<int, std::string> list_handlers() {
  std::map<int, std::string> found;
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action;
    if (sigaction(number, nullptr, &action) != 0) continue;
    std::ostringstream text;
    text << reinterpret_cast<void*>(action.sa_handler) << " flags " << std::hex
         << (action.sa_flags & ~kMeaningless) << std::dec << " mask";
    for (const int blocked : signals_in(action.sa_mask)) text << " " << blocked;
    found[number] = text.str();
  }
  return found;
}

bool alarm_is_armed() {
  itimerval timer;
  getitimer(ITIMER_REAL, &timer);
  return timer.it_value.tv_sec != 0 || timer.it_value.tv_usec != 0;
}

// Read from /proc: asking the system call means changing it for a moment.
std::string file_mode_mask() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.rfind("Umask:", 0) == 0) return line.substr(7);
  return "unknown";
}

void compare(const char* what, const std::map<int, std::string>& before,
             const std::map<int, std::string>& after, std::ostringstream& out) {
  for (const auto& [key, value] : before) {
    const auto match = after.find(key);
    if (match == after.end())
      out << what << " " << key << " (" << value << ") is gone\n";
    else if (match->second != value)
      out << what << " " << key << " was " << value << ", is " << match->second << "\n";
  }
  for (const auto& [key, value] : after)
    if (!before.count(key)) out << what << " " << key << " (" << value << ") is new\n";
}

void compare_blocked(const std::set<int>& before, const std::set<int>& after,
                     std::ostringstream& out) {
  for (const int number : after)
    if (!before.count(number)) out << "signal " << number << " is blocked\n";
  for (const int number : before)
    if (!after.count(number)) out << "signal " << number << " is not blocked any more\n";
}

}  // namespace

Census take_census() {
  Census census;
  census.descriptors = list_descriptors();
  census.children = list_children();
  census.blocked = list_blocked();
  census.handlers = list_handlers();
  census.alarm = alarm_is_armed();
  census.directory = std::filesystem::current_path().string();
  census.umask = file_mode_mask();
  return census;
}

std::string difference(const Census& before, const Census& after) {
  std::ostringstream out;
  compare("descriptor", before.descriptors, after.descriptors, out);
  compare("child", before.children, after.children, out);
  compare_blocked(before.blocked, after.blocked, out);
  compare("handler of signal", before.handlers, after.handlers, out);
  if (before.alarm != after.alarm)
    out << "alarm " << (after.alarm ? "left armed" : "cancelled") << "\n";
  if (before.directory != after.directory)
    out << "working directory is " << after.directory << "\n";
  if (before.umask != after.umask)
    out << "file mode mask was " << before.umask << ", is " << after.umask << "\n";
  return out.str();
}

}  // namespace fairlead_test
