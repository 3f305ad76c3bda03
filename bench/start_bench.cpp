// Whole processes beside an empty C program, started in turn: how long one lives, and how much
// memory it ever had.
//
// usage: tools/device-root build/bench/bench/start_bench [STARTS]
#include <fcntl.h>
#include <spawn.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "device.h"
#include "floors.h"
#include "in_turn.h"

namespace {

using bench::require;
using Arguments = char* const*;

constexpr char kLoaderCache[] = "/etc/ld.so.cache";
constexpr char kMakeCache[] =
    "PATH=/usr/sbin:/sbin:$PATH ldconfig -i -X -C /etc/ld.so.cache '" LIBRARY_FOLDER "'";

char* const kEmpty[] = {const_cast<char*>(EMPTY_PROGRAM), nullptr};
char* const kVersion[] = {const_cast<char*>(HE_PROGRAM), const_cast<char*>("--version"), nullptr};
char* const kRead[] = {const_cast<char*>(HE_PROGRAM), const_cast<char*>("bench/wan:routes/7/via"),
                       nullptr};

// The device root has a link to the machine's own cache there, which does not know the library.
void make_loader_cache() {
  unlink(kLoaderCache);
  require(system(kMakeCache) == 0 && access(kLoaderCache, R_OK) == 0, kLoaderCache);
}

void start(Arguments arguments) {
  static posix_spawn_file_actions_t quiet;
  static const int made = [] {
    posix_spawn_file_actions_init(&quiet);
    return posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
  }();
  pid_t child = 0;
  int status = 0;
  require(made == 0 && posix_spawn(&child, arguments[0], &quiet, nullptr, arguments, environ) == 0,
          arguments[0]);
  require(waitpid(child, &status, 0) == child && status == 0, arguments[0]);
}

void start_empty() { start(kEmpty); }
void start_version() { start(kVersion); }
void start_read() { start(kRead); }

long peak_of(pid_t process) {
  char path[64], line[256];
  snprintf(path, sizeof path, "/proc/%d/status", static_cast<int>(process));
  FILE* file = fopen(path, "re");
  require(file, path);
  long kilobytes = -1;
  while (fgets(line, sizeof line, file))
    if (sscanf(line, "VmHWM: %ld", &kilobytes) == 1) break;
  fclose(file);
  return kilobytes;
}

// What the process ever had in memory, in KB, asked when it is about to end: the kernel's account
// for the waiting parent would begin with the memory of the parent itself.
long peak(Arguments arguments) {
  const pid_t child = fork();
  if (child == 0) {
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (dup2(null, 1) == 1 && ptrace(PTRACE_TRACEME, 0, 0, 0) == 0) execv(arguments[0], arguments);
    _exit(127);
  }
  int status = 0;
  require(waitpid(child, &status, 0) == child && WIFSTOPPED(status), "ptrace");
  require(ptrace(PTRACE_SETOPTIONS, child, 0, PTRACE_O_TRACEEXIT) == 0, "ptrace");
  require(ptrace(PTRACE_CONT, child, 0, 0) == 0 && waitpid(child, &status, 0) == child, "ptrace");
  require(status >> 8 == (SIGTRAP | (PTRACE_EVENT_EXIT << 8)), "the end of the program");
  const long kilobytes = peak_of(child);
  require(
      ptrace(PTRACE_CONT, child, 0, 0) == 0 && waitpid(child, &status, 0) == child && status == 0,
      arguments[0]);
  return kilobytes;
}

void measure_peaks(int starts) {
  std::vector<double> empty, read;
  for (int number = 0; number < starts; ++number) {
    empty.push_back(static_cast<double>(peak(kEmpty)));
    read.push_back(static_cast<double>(peak(kRead)));
  }
  const double floor = bench::median(empty), own = bench::median(read);
  printf("%-28s %-44s %12.4f KB   fairlead %12.4f KB   ratio %8.3f   rounds %d\n",
         "he, read: peak memory", "empty C program", floor, own, own / floor, starts);
}

}  // namespace

int main(int count, char** arguments) {
  const int starts = count > 1 ? atoi(arguments[1]) : 200;
  const bench::Effort effort = {.seconds = 0, .rounds = starts};
  bench::arrange_device(MANY_ADAPTER);
  make_loader_cache();
  bench::measure("he --version", {"empty C program", start_empty}, {"", start_version}, 1, effort);
  bench::measure("he, read", {"empty C program", start_empty}, {"", start_read}, 1, effort);
  measure_peaks(starts / 10 + 1);
  return 0;
}
