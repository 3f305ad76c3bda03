// Reads the state of this process from /proc and the system calls that tell it.
#include "support/census.h"

#include <dirent.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fairlead_test {
namespace {

std::map<int, std::string> list_descriptors() {
  std::map<int, std::string> found;
  DIR* folder = opendir("/proc/self/fd");
  if (!folder) return found;
  while (const dirent* entry = readdir(folder)) {
    const int fd = atoi(entry->d_name);
    if (entry->d_name[0] == '.' || fd == dirfd(folder)) continue;
    char target[512];
    const ssize_t length =
        readlink(("/proc/self/fd/" + std::string(entry->d_name)).c_str(), target, sizeof target);
    found[fd] = length < 0 ? "?" : std::string(target, static_cast<size_t>(length));
  }
  closedir(folder);
  return found;
}

std::vector<std::string> list_children() {
  std::vector<std::string> found;
  const std::string self = std::to_string(getpid());
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream file(entry.path() / "children");
    std::string pid;
    while (file >> pid) found.push_back(pid);
  }
  return found;
}

std::vector<int> list_blocked() {
  sigset_t mask;
  sigprocmask(SIG_SETMASK, nullptr, &mask);
  std::vector<int> blocked;
  for (int number = 1; number < NSIG; ++number)
    if (sigismember(&mask, number) == 1) blocked.push_back(number);
  return blocked;
}

std::map<int, std::string> list_handlers() {
  std::map<int, std::string> found;
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action;
    if (sigaction(number, nullptr, &action) != 0 || action.sa_handler == SIG_DFL) continue;
    std::ostringstream text;
    text << reinterpret_cast<void*>(action.sa_handler) << " flags " << std::hex << action.sa_flags;
    found[number] = text.str();
  }
  return found;
}

template <class Map>
void compare(const char* what, const Map& before, const Map& after, std::ostringstream& out) {
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

}  // namespace

Census take_census() {
  itimerval timer;
  getitimer(ITIMER_REAL, &timer);
  return {list_descriptors(),
          list_children(),
          list_blocked(),
          list_handlers(),
          timer.it_value.tv_sec != 0 || timer.it_value.tv_usec != 0,
          std::filesystem::current_path().string()};
}

std::string difference(const Census& before, const Census& after) {
  std::ostringstream out;
  compare("descriptor", before.descriptors, after.descriptors, out);
  compare("handler of signal", before.handlers, after.handlers, out);
  if (before.children != after.children)
    out << "children: " << before.children.size() << " before, " << after.children.size()
        << " after\n";
  if (before.blocked != after.blocked) out << "the set of blocked signals differs\n";
  if (before.alarm != after.alarm)
    out << "alarm " << (after.alarm ? "left armed" : "cancelled") << "\n";
  if (before.directory != after.directory)
    out << "working directory is " << after.directory << "\n";
  return out.str();
}

}  // namespace fairlead_test
