#include "floors.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench {

namespace {

constexpr size_t kAnswerSize = 200;

int syslog_socket = -1;
int shared_file = -1;
void* shared_address = nullptr;

void read_to_end(int fd) {
  char buffer[4096];
  while (read(fd, buffer, sizeof buffer) > 0) continue;
  close(fd);
}

// Runs `work` in a child with one end of a socket pair, and reads the other.
template <class Work>
void answered_by_child(Work work) {
  int ends[2];
  require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0, "socketpair");
  const pid_t child = fork();
  if (child == 0) {
    work(ends[1]);
    _exit(127);
  }
  close(ends[1]);
  read_to_end(ends[0]);
  require(waitpid(child, nullptr, 0) == child, "waitpid");
}

}  // namespace

void require(bool holds, const char* what) {
  if (holds) return;
  perror(what);
  exit(1);
}

void do_nothing(unsigned, const char*, int, const char*, ...) {}

void read_file(const char* path) {
  const int fd = open(path, O_RDONLY | O_CLOEXEC);
  require(fd >= 0, path);
  struct flock lock = {};
  lock.l_type = F_RDLCK;
  struct stat status;
  require(fcntl(fd, F_SETLK, &lock) == 0 && fstat(fd, &status) == 0, "lock and fstat");
  char buffer[1 << 17];
  require(read(fd, buffer, sizeof buffer) == status.st_size, "read");
  close(fd);
}

void replace_file(const char* folder, const char* path, const std::string& content) {
  const int old = open(path, O_RDONLY | O_CLOEXEC);
  const std::string temporary = std::string(folder) + "/.bench-new";
  const int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0660);
  require(fd >= 0, temporary.c_str());
  require(write(fd, content.data(), content.size()) == static_cast<ssize_t>(content.size()),
          "write");
  require(fsync(fd) == 0 && close(fd) == 0, "fsync");
  require(rename(temporary.c_str(), path) == 0, "rename");
  const int directory = open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  require(directory >= 0 && fsync(directory) == 0 && close(directory) == 0, folder);
  close(old);
}

void settle_disk(const char* folder) {
  static char byte = 'a';
  byte = byte == 'a' ? 'b' : 'a';
  const std::string path = std::string(folder) + "/.bench-settle";
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0660);
  require(fd >= 0 && write(fd, &byte, 1) == 1 && fsync(fd) == 0 && close(fd) == 0, path.c_str());
}

void look_for(const char* module, const char* script) {
  if (access(module, F_OK) != 0) (void)!access(script, F_OK);
}

void fork_and_answer() {
  answered_by_child([](int fd) {
    char answer[kAnswerSize];
    memset(answer, 'x', sizeof answer);
    _exit(write(fd, answer, sizeof answer) < 0);
  });
}

void fork_and_run(const char* script) {
  answered_by_child([&](int fd) {
    char number[16];
    snprintf(number, sizeof number, "%d", fd);
    setenv("pipeid", number, 1);
    execl(script, script, static_cast<char*>(nullptr));
  });
}

void open_syslog() {
  syslog_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = "/dev/log"};
  require(connect(syslog_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0,
          "/dev/log");
}

void send_to_syslog(const char* text) {
  require(send(syslog_socket, text, strlen(text), MSG_NOSIGNAL) > 0, "send");
}

void open_shared(const char* path, int size) {
  shared_file = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0660);
  require(shared_file >= 0 && ftruncate(shared_file, size) == 0, path);
  shared_address =
      mmap(nullptr, static_cast<size_t>(size), PROT_READ | PROT_WRITE, MAP_SHARED, shared_file, 0);
  require(shared_address != MAP_FAILED, "mmap");
}

void copy_under_lock(const void* bytes, int size) {
  require(flock(shared_file, LOCK_EX) == 0, "flock");
  memcpy(shared_address, bytes, static_cast<size_t>(size));
  require(flock(shared_file, LOCK_UN) == 0, "flock");
}

}  // namespace bench
